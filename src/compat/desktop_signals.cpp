// SIGNALQQ, SIGNALFPEQQ and RAISEQQ.
#include "compat/desktop_signals.h"

#include "frame/fortran.h"

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <iterator>
#include <unistd.h>

using namespace qxport;

// Desktop number, the host's signal. Two desktop numbers share SIGUSR1; the first is the one that hears it.
const int32_t sigXlatTable[12][2] = {
    {QXPORT_SIGQQ_INT, SIGINT},
    {QXPORT_SIGQQ_ILL, SIGILL},
    {QXPORT_SIGQQ_FPE, SIGFPE},
    {QXPORT_SIGQQ_SEGV, SIGSEGV},
    {QXPORT_SIGQQ_TERM, SIGTERM},
    {QXPORT_SIGQQ_USR1, SIGUSR1},
    {QXPORT_SIGQQ_USR2, SIGUSR2},
    {20, SIGUSR1},
    {QXPORT_SIGQQ_ABRT, SIGABRT},
    {0, 0},
    {0, 0},
    {0, 0},
};

void *sigQQForHandlers[9] = {};

namespace {

constexpr size_t IN_USE = std::size(sigQQForHandlers);
constexpr size_t NONE = std::size(sigXlatTable);
constexpr size_t DESKTOP = 0, HOST = 1;

// Of the size of a register, so that a handler may have declared INTEGER(8) what it gets.
using Handler = int32_t (*)(intptr_t);
using ExceptionHandler = int32_t (*)(intptr_t, intptr_t);

// A cell is read while a signal is handled.
void *procedure_of(size_t entry) {
  return __atomic_load_n(&sigQQForHandlers[entry], __ATOMIC_RELAXED);
}

void set_procedure(size_t entry, void *procedure) {
  __atomic_store_n(&sigQQForHandlers[entry], procedure, __ATOMIC_RELAXED);
}

// The first of the table's leading `count` entries whose column has the number, or NONE.
size_t find(size_t column, int32_t number, size_t count) {
  for (size_t entry = 0; entry < count; ++entry)
    if (sigXlatTable[entry][column] == number)
      return entry;
  return NONE;
}

struct ExceptionCode {
  int host;
  int32_t desktop;
};
constexpr ExceptionCode EXCEPTION_CODES[] = {
    {FPE_FLTDIV, QXPORT_FPEQQ_ZERODIVIDE}, {FPE_FLTOVF, QXPORT_FPEQQ_OVERFLOW},
    {FPE_FLTUND, QXPORT_FPEQQ_UNDERFLOW},  {FPE_FLTRES, QXPORT_FPEQQ_INEXACT},
    {FPE_FLTINV, QXPORT_FPEQQ_INVALID},
};

int32_t desktop_exception(int code) {
  for (const ExceptionCode &known : EXCEPTION_CODES)
    if (known.host == code)
      return known.desktop;
  return QXPORT_FPEQQ_OTHER;
}

bool catch_signal(int signal) {
  struct sigaction action = {};
  // The host passes over what a handler answers.
  action.sa_sigaction = reinterpret_cast<void (*)(int, siginfo_t *, void *)>(
      reinterpret_cast<void (*)()>(portlib_signalQQhandler));
  action.sa_flags = SA_SIGINFO | SA_NODEFER | SA_RESTART;
  return sigaction(signal, &action, nullptr) == 0;
}

intptr_t install(int32_t number, void (*handler)()) {
  const size_t entry = find(DESKTOP, number, IN_USE);
  if (entry == NONE)
    return -1;
  // The procedure stands ready before the first signal can come.
  void *const former = procedure_of(entry);
  set_procedure(entry, reinterpret_cast<void *>(handler));
  if (catch_signal(sigXlatTable[entry][HOST]))
    return 0;
  set_procedure(entry, former);
  return -1;
}

}  // namespace

int32_t portlib_signalQQhandler(int signal, siginfo_t *information, void *) {
  const size_t entry = find(HOST, signal, IN_USE);
  void *procedure = entry == NONE ? nullptr : procedure_of(entry);
  if (procedure == nullptr)
    return 0;
  // What the handler does must not change what the interrupted code reads in errno.
  const int before = errno;
  // By value, unlike every other Fortran call: handlers of the desktop's programs are declared so.
  const int32_t number = sigXlatTable[entry][DESKTOP];
  const int32_t answer =
      signal == SIGFPE && information != nullptr
          ? reinterpret_cast<ExceptionHandler>(procedure)(number, desktop_exception(information->si_code))
          : reinterpret_cast<Handler>(procedure)(number);
  errno = before;
  return answer;
}

// N = SIGNALQQ(SIGNUM, HANDLER)
intptr_t signalqq_(const int32_t *signum, void (*handler)()) {
  return install(*signum, handler);
}

// N = SIGNALFPEQQ(HANDLER)
intptr_t signalfpeqq_(void (*handler)()) {
  return install(QXPORT_SIGQQ_FPE, handler);
}

// N = RAISEQQ(SIGNUM)
// Number 0 is found at the table's end: it sends nothing and only asks.
int32_t raiseqq_(const int32_t *signum) {
  const size_t entry = find(DESKTOP, *signum, std::size(sigXlatTable));
  return entry == NONE ? -1 : kill(getpid(), sigXlatTable[entry][HOST]);
}
