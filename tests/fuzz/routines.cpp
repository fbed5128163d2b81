#include "fuzz/routine.h"

#include <qxport_calls.inc>
