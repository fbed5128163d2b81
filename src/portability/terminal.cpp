// ISATTY and TTYNAM: is a Fortran unit connected to a terminal, and to which.
#include "contract/services.h"
#include "frame/errors.h"
#include "frame/strings.h"

#include <unistd.h>

using namespace qxport;

namespace {

constexpr int64_t TERMINAL_NAME_CAPACITY = 255;

// A CHARACTER function's caller passes the result's length where a subroutine's caller passes the unit's
// address. No linker puts data below 4 MiB, on targets of 64 and of 32 bits.
constexpr uintptr_t LOWEST_ADDRESS = 4 << 20;

void terminal_name(char *name, charlen name_len, int32_t unit) {
  blank_fill(name, name_len);
  char text[TERMINAL_NAME_CAPACITY + 1] = {};
  int64_t length = TERMINAL_NAME_CAPACITY;
  const int descriptor = __msportlib_d_gethandle(unit, text, &length);
  if (descriptor < 0)
    set_and_record_status(EBADF);
  else if (isatty(descriptor) == 0)
    set_and_record_status(ENOTTY);
  else
    CstrToFstr(name, text, name_len, static_cast<charlen>(length));
}

}  // namespace

// L = ISATTY(UNIT)
int32_t isatty_(const int32_t *unit) {
  const int descriptor = __msportlib_d_gethandle(*unit, nullptr, nullptr);
  if (descriptor < 0) {
    set_and_record_status(EBADF);
    return 0;
  }
  return isatty(descriptor) != 0 ? 1 : 0;
}

// CALL TTYNAM(NAME, UNIT)
// NAME = TTYNAM(UNIT), through EXTERNAL: the result's length and the unit's address come in the other order.
void ttynam_(char *name, const int32_t *unit, charlen name_len) {
  const uintptr_t second = reinterpret_cast<uintptr_t>(unit);
  if (second < LOWEST_ADDRESS)
    terminal_name(name, static_cast<charlen>(second), *reinterpret_cast<const int32_t *>(name_len));
  else
    terminal_name(name, name_len, *unit);
}

QXPORT_ALIAS(isatty_)
QXPORT_ALIAS(ttynam_)
