#include "contract/services.h"
#include "frame/fortran.h"

using namespace qxport;

// The what-marker lets identification tools find the text in a program's file.
const char for__portlib_version_string[] =
    "@(#)Zelta Fortran portability library\t" QXPORT_VERSION_TEXT "\t" QXPORT_BUILD_DATE;

namespace {

constexpr size_t WHAT_MARKER = 4;

}  // namespace

// N = FOR_QXPORT_VERSION(STRING)
int32_t for_qxport_version_(char *string, charlen string_len) {
  store_padded(string, string_len, for__portlib_version_string + WHAT_MARKER,
               sizeof(for__portlib_version_string) - WHAT_MARKER - 1);
  return 2;
}

// N = FOR_QXCORE_VERSION(STRING)
int32_t for_qxcore_version_(char *string, charlen string_len) {
  return for_qxcore_version(string, string_len);
}

QXPORT_ALIAS(for_qxport_version_)
QXPORT_ALIAS(for_qxcore_version_)
