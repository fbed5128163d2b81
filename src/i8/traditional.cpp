// Variants of the Unix-style routines, errors and strings, and services of the run-time.
#include "i8/variants.h"

using namespace qxport;
using namespace qxport::i8;

extern "C" {

#include <qxport_i8_traditional.inc>

}  // extern "C"
