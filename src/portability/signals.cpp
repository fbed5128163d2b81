// SIGNAL: what happens when a signal arrives. The host hands a handler the number by value and Fortran
// procedures take it by reference, so there is one native handler for all of them.
#include "portability/signals.h"

#include "frame/errors.h"
#include "frame/fortran.h"

#include <cerrno>
#include <csignal>

using namespace qxport;

namespace {

constexpr uint32_t SIGNALS = 33;

intptr_t refuse() {
  set_and_record_status(EINVAL);
  return EINVAL;
}

intptr_t install(int signum, void (*handler)(int)) {
  return reinterpret_cast<intptr_t>(signal(signum, handler));
}

}  // namespace

// An entry is one machine word, so that a signal finds the one procedure or the other. It is overwritten and
// never cleared.
void (*sigForHandlers[SIGNALS])(int32_t *);

void portlib_handler(int signal) {
  if (static_cast<uint32_t>(signal) >= SIGNALS)
    return;
  const auto procedure = __atomic_load_n(&sigForHandlers[signal], __ATOMIC_RELAXED);
  if (procedure == nullptr)
    return;
  // What the procedure does must not change what the interrupted code reads in errno.
  const int before = errno;
  AnyKind number(signal);
  procedure(number);
  errno = before;
}

// N = SIGNAL(SIGNUM, PROC, FLAG)
intptr_t signal_(const int32_t *signum, void (*proc)(), const int32_t *flag) {
  if (static_cast<uint32_t>(*signum) >= SIGNALS)
    return refuse();
  if (*flag < 0) {
    // In this order: a signal that comes in between finds the procedure.
    __atomic_store_n(&sigForHandlers[*signum], reinterpret_cast<void (*)(int32_t *)>(proc), __ATOMIC_RELAXED);
    return install(*signum, portlib_handler);
  }
  switch (*flag) {
  case 0:
    return install(*signum, SIG_DFL);
  case 1:
    return install(*signum, SIG_IGN);
  default:
    return refuse();
  }
}

QXPORT_ALIAS(signal_)
