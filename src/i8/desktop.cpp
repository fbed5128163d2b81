// Variants of the desktop-style routines.
#include "i8/variants.h"

using namespace qxport;
using namespace qxport::i8;

extern "C" {

#include <qxport_i8_desktop.inc>

}  // extern "C"
