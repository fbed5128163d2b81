// GETARG, IARGC and NARGS: the command line as programs ask for it.
#include "contract/services.h"
#include "frame/fortran.h"

using namespace qxport;

namespace {

// No address is below it, and no CHARACTER variable of an argument is as long.
constexpr uintptr_t LEAST_ADDRESS = 65536;

template <typename Integer>
void argument(const Integer *n, char *buffer, Integer *status, charlen buffer_len) {
  const int32_t number = *n;
  int32_t length;
  for_getarg(&number, buffer, &length, buffer_len);
  if (status == nullptr)
    return;
  constexpr int32_t limit = sizeof(Integer) == sizeof(int16_t) ? INT16_MAX : INT32_MAX;
  *status = static_cast<Integer>(length < limit ? length : limit);
}

// A caller by name that leaves the status out passes the length in its place.
template <typename Integer>
void argument_by_name(const Integer *n, char *buffer, Integer *status, charlen buffer_len) {
  const uintptr_t third = reinterpret_cast<uintptr_t>(status);
  if (third < LEAST_ADDRESS)
    argument<Integer>(n, buffer, nullptr, static_cast<charlen>(third));
  else
    argument(n, buffer, status, buffer_len);
}

}  // namespace

// CALL GETARG(N, BUFFER [, STATUS])
void getarg_(const int32_t *n, char *buffer, int32_t *status, charlen buffer_len) {
  argument_by_name(n, buffer, status, buffer_len);
}

void qxport_getarg_(const int32_t *n, char *buffer, int32_t *status, charlen buffer_len) {
  argument(n, buffer, status, buffer_len);
}

// CALL GETARG(N, BUFFER [, STATUS]), with INTEGER(2) arguments
void getargi2_(const int16_t *n, char *buffer, int16_t *status, charlen buffer_len) {
  argument_by_name(n, buffer, status, buffer_len);
}

void qxport_getargi2_(const int16_t *n, char *buffer, int16_t *status, charlen buffer_len) {
  argument(n, buffer, status, buffer_len);
}

// N = IARGC()
int32_t iargc_() {
  const int32_t count = for_nargs();
  return count > 0 ? count - 1 : 0;  // a program may be started without even its name
}

// N = NARGS()
int32_t nargs_() {
  return for_nargs();
}

QXPORT_ALIAS(iargc_)
QXPORT_ALIAS(nargs_)
