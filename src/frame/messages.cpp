#include "frame/messages.h"

#include "frame/strings.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>

using namespace qxport;

namespace {

constexpr int32_t FIRST_CODE = 1000;
constexpr int32_t LAST_MATH_TYPE = 6;

int32_t write_message(const char *format, int32_t code) {
  errno = code;
  return fprintf(stderr, format, code, err_array[code - FIRST_CODE]);
}

}  // namespace

const char *const err_array[12] = {
    " ",
    "Input parameters contain invalid parameter address",
    "Logical unit number is invalid or not open.",
    "An intermediate value exceeds the available range",
    "Only signal KILL (9) is supported on Windows* OS",
    "Invalid seek was performed. Check errno",
    "Output was truncated, buffer provided was too small",
    "Input value was invalid",
    "Portability function 'ALARM' can't work without 'lpthread' library",
    " ",
};

const char *const ErrMesArr[8] = {
    "Unknown error",
    "Domain error",
    "Singularity error",
    "Overflow error",
    "Underflow error",
    "Total loss of precision",
    "Partial loss of precision",
};

int32_t _zelta_lib_warn(int32_t code) {
  return write_message("*** W - %d - %s\n", code);
}

void _zelta_lib_err(int32_t code) {
  write_message("*** E - %d - %s\n", code);
  exit(code);
}

// CALL MATHERRQQ(NAME, NAMELEN, TYPE, RETVAL)
// The length is NAMELEN's; the hidden one says nothing.
void matherrqq_(const char *name, const int16_t *namelen, int32_t *type, int16_t *retval, charlen) {
  const CString text(name, *namelen);
  if (text) {
    // The caller sees the correction of a type that is none.
    if (*type < 1 || *type > LAST_MATH_TYPE)
      *type = 0;
    printf("%s: %s\n", text.get(), ErrMesArr[*type]);
    // The line stands there at once, also when the program leaves without flushing the C library's streams.
    fflush(stdout);
  }
  *retval = 0;
}
