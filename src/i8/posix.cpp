// Variants of the POSIX binding.
#include "i8/variants.h"

using namespace qxport;
using namespace qxport::i8;

extern "C" {

#include <qxport_i8_posix.inc>

}  // extern "C"
