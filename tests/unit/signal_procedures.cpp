// SIGNAL: dispositions, procedures and what it refuses, on the host's signals.
#include "outcome.h"
#include "portability/signals.h"

#include <csignal>
#include <dlfcn.h>
#include <unistd.h>

namespace {

bool arrives_at_once;

}  // namespace

sighandler_t signal(int number, sighandler_t handler) noexcept {
  static const auto hosts = reinterpret_cast<sighandler_t (*)(int, sighandler_t)>(dlsym(RTLD_NEXT, "signal"));
  const sighandler_t former = hosts(number, handler);
  if (arrives_at_once)
    raise(number);
  return former;
}

namespace {

volatile sig_atomic_t calls_of_a, calls_of_b, number_of_a, number_of_b;

void procedure_a(int32_t *number) {
  calls_of_a = calls_of_a + 1;
  number_of_a = *number;
  *number = -77;
  errno = 1234;
}

void procedure_b(int32_t *number) {
  calls_of_b = calls_of_b + 1;
  number_of_b = *number;
}

void native_handler(int) {}

// A Fortran procedure as an actual argument.
template <typename Procedure>
void (*argument(Procedure *procedure))() {
  return reinterpret_cast<void (*)()>(procedure);
}

struct Answer {
  intptr_t former;
  ErrorState state;
  bool operator==(const Answer &) const = default;
  friend std::ostream &operator<<(std::ostream &out, const Answer &answer) {
    return out << answer.former << ", " << answer.state;
  }
};

Answer signal_of(int32_t signum, void (*proc)(), int32_t flag) {
  const int32_t signum_before = signum, flag_before = flag;
  reset_error_state();
  const intptr_t former = signal_(&signum, proc, &flag);
  EXPECT_EQ(signum, signum_before);
  EXPECT_EQ(flag, flag_before);
  return {former, error_state()};
}

Answer answers(intptr_t former) {
  return {former, untouched()};
}

template <typename Handler>
Answer answers_handler(Handler *handler) {
  return answers(reinterpret_cast<intptr_t>(handler));
}

const Answer REFUSED = {EINVAL, {EINVAL, SENTINEL, {EINVAL}}};
const Answer FAILED = {-1, {EINVAL, SENTINEL, {}}};

struct sigaction action_of(int number) {
  struct sigaction action = {};
  EXPECT_EQ(sigaction(number, nullptr, &action), 0) << number;
  return action;
}

class SignalProcedures : public testing::Test {
protected:
  SignalProcedures() { reset(); }
  ~SignalProcedures() override { reset(); }

  static void reset() {
    for (const int number : {SIGUSR1, SIGUSR2, SIGURG})
      signal(number, SIG_DFL);
    std::fill(std::begin(sigForHandlers), std::end(sigForHandlers), nullptr);
    for (volatile sig_atomic_t *seen : {&calls_of_a, &calls_of_b, &number_of_a, &number_of_b})
      *seen = 0;
  }
};

TEST_F(SignalProcedures, ProcedureIsCalledWithTheNumber) {
  EXPECT_EQ(signal_of(SIGUSR1, argument(procedure_a), -1), answers(0));
  errno = 4321;
  raise(SIGUSR1);
  EXPECT_EQ(errno, 4321);
  EXPECT_EQ(calls_of_a, 1);
  EXPECT_EQ(number_of_a, SIGUSR1);
}

// The number that the procedure gets is a copy of its own.
TEST_F(SignalProcedures, ProcedureStaysFromSignalToSignal) {
  EXPECT_EQ(signal_of(SIGUSR1, argument(procedure_a), -1), answers(0));
  for (int i = 1; i <= 5; ++i) {
    raise(SIGUSR1);
    EXPECT_EQ(calls_of_a, i);
    EXPECT_EQ(number_of_a, SIGUSR1);
  }
}

TEST_F(SignalProcedures, EachSignalHasItsOwn) {
  EXPECT_EQ(signal_of(SIGUSR1, argument(procedure_a), -1), answers(0));
  EXPECT_EQ(signal_of(SIGUSR2, argument(procedure_b), -1), answers(0));
  raise(SIGUSR2);
  EXPECT_EQ(calls_of_a, 0);
  EXPECT_EQ(calls_of_b, 1);
  EXPECT_EQ(number_of_b, SIGUSR2);
  raise(SIGUSR1);
  EXPECT_EQ(calls_of_a, 1);
  EXPECT_EQ(calls_of_b, 1);
}

TEST_F(SignalProcedures, AnyNegativeFlagRegisters) {
  for (const int32_t flag : {-1, -2, INT32_MIN}) {
    reset();
    EXPECT_EQ(signal_of(SIGUSR1, argument(procedure_a), flag), answers(0)) << flag;
    raise(SIGUSR1);
    EXPECT_EQ(calls_of_a, 1) << flag;
  }
}

TEST_F(SignalProcedures, ReplacedProcedureIsTheSameHandler) {
  EXPECT_EQ(signal_of(SIGUSR1, argument(procedure_a), -1), answers(0));
  EXPECT_EQ(signal_of(SIGUSR1, argument(procedure_b), -1), answers_handler(portlib_handler));
  raise(SIGUSR1);
  EXPECT_EQ(calls_of_a, 0);
  EXPECT_EQ(calls_of_b, 1);
}

TEST_F(SignalProcedures, FormerDisposition) {
  EXPECT_EQ(signal_of(SIGUSR1, nullptr, 1), answers(0));
  EXPECT_EQ(signal_of(SIGUSR1, argument(procedure_a), -1), answers(1));
  EXPECT_EQ(signal_of(SIGUSR1, nullptr, 1), answers_handler(portlib_handler));
  EXPECT_EQ(signal_of(SIGUSR1, nullptr, 0), answers(1));
  EXPECT_EQ(signal_of(SIGUSR1, nullptr, 0), answers(0));
  signal(SIGUSR1, native_handler);
  EXPECT_EQ(signal_of(SIGUSR1, nullptr, 0), answers_handler(native_handler));
}

TEST_F(SignalProcedures, IgnoredSignalDoesNothing) {
  EXPECT_EQ(signal_of(SIGUSR1, argument(procedure_a), -1), answers(0));
  EXPECT_EQ(signal_of(SIGUSR1, argument(procedure_b), 1), answers_handler(portlib_handler));
  EXPECT_EQ(action_of(SIGUSR1).sa_handler, SIG_IGN);
  raise(SIGUSR1);
  EXPECT_EQ(calls_of_a + calls_of_b, 0);
}

TEST_F(SignalProcedures, DefaultActionComesBack) {
  EXPECT_EQ(signal_of(SIGUSR1, argument(procedure_a), -1), answers(0));
  EXPECT_EQ(signal_of(SIGUSR1, nullptr, 0), answers_handler(portlib_handler));
  EXPECT_EQ(action_of(SIGUSR1).sa_handler, SIG_DFL);
}

// The table is written by a registration and by nothing else.
TEST_F(SignalProcedures, TableKeepsTheProcedure) {
  EXPECT_EQ(signal_of(SIGUSR1, argument(procedure_a), -1), answers(0));
  EXPECT_EQ(sigForHandlers[SIGUSR1], procedure_a);
  for (const int32_t flag : {0, 1, 2}) {
    signal_of(SIGUSR1, argument(procedure_b), flag);
    EXPECT_EQ(sigForHandlers[SIGUSR1], procedure_a) << flag;
  }
  for (int number = 0; number < 33; ++number)
    EXPECT_EQ(sigForHandlers[number], number == SIGUSR1 ? procedure_a : nullptr) << number;
}

TEST_F(SignalProcedures, NumbersOutOfRangeAreRefused) {
  for (const int32_t number : {33, 34, 64, 65, 1000, INT32_MAX, -1, -2, INT32_MIN})
    for (const int32_t flag : {-1, 0, 1, 2})
      EXPECT_EQ(signal_of(number, argument(procedure_a), flag), REFUSED) << number << ' ' << flag;
  EXPECT_EQ(action_of(SIGRTMIN).sa_handler, SIG_DFL);
}

TEST_F(SignalProcedures, OtherFlagsAreRefusedAndChangeNothing) {
  EXPECT_EQ(signal_of(SIGUSR1, argument(procedure_a), -1), answers(0));
  for (const int32_t flag : {2, 3, 22, INT32_MAX})
    EXPECT_EQ(signal_of(SIGUSR1, argument(procedure_b), flag), REFUSED) << flag;
  raise(SIGUSR1);
  EXPECT_EQ(calls_of_a, 1);
  EXPECT_EQ(calls_of_b, 0);
}

// What is in range and no signal that a program may have is left to the host, which refuses it.
TEST_F(SignalProcedures, SignalsThatTheHostRefuses) {
  for (const int32_t number : {0, SIGKILL, SIGSTOP, 32}) {
    for (const int32_t flag : {-1, 0, 1})
      EXPECT_EQ(signal_of(number, argument(procedure_a), flag), FAILED) << number << ' ' << flag;
    EXPECT_EQ(sigForHandlers[number], procedure_a) << number;
  }
}

TEST_F(SignalProcedures, EverySignalOfTheHost) {
  for (int number = 1; number < 32; ++number) {
    if (number == SIGKILL || number == SIGSTOP)
      continue;
    const auto former = reinterpret_cast<intptr_t>(action_of(number).sa_handler);
    EXPECT_EQ(signal_of(number, argument(procedure_b), -1), answers(former)) << number;
    EXPECT_EQ(signal_of(number, nullptr, 0), answers_handler(portlib_handler)) << number;
    signal(number, reinterpret_cast<void (*)(int)>(former));
  }
}

// As the host's signal() has it: the signal itself is held off while the procedure runs, and system calls are
// taken up again.
TEST_F(SignalProcedures, SemanticsOfTheHost) {
  EXPECT_EQ(signal_of(SIGUSR1, argument(procedure_a), -1), answers(0));
  const struct sigaction installed = action_of(SIGUSR1);
  EXPECT_EQ(installed.sa_handler, portlib_handler);
  signal(SIGUSR2, native_handler);
  EXPECT_EQ(installed.sa_flags, action_of(SIGUSR2).sa_flags);
}

// The procedure changes the disposition of its own signal and of another.
TEST_F(SignalProcedures, ProcedureMayCallSignal) {
  const auto change = [](int32_t *number) {
    calls_of_a = calls_of_a + 1;
    const int32_t register_it = -1, other = SIGUSR2;
    signal_(number, argument(procedure_b), &register_it);
    signal_(&other, argument(procedure_b), &register_it);
  };
  EXPECT_EQ(signal_of(SIGUSR1, argument(+change), -1), answers(0));
  raise(SIGUSR1);
  EXPECT_EQ(calls_of_a, 1);
  EXPECT_EQ(calls_of_b, 0);
  raise(SIGUSR1);
  EXPECT_EQ(calls_of_b, 1);
  raise(SIGUSR2);
  EXPECT_EQ(calls_of_a, 1);
  EXPECT_EQ(calls_of_b, 2);
}

// The number is the call's own.
TEST_F(SignalProcedures, ProcedureThatAnotherSignalInterruptsKeepsItsNumber) {
  static int32_t behind;
  const auto interrupted = [](int32_t *number) {
    raise(SIGUSR2);
    behind = *number;
  };
  EXPECT_EQ(signal_of(SIGUSR1, argument(+interrupted), -1), answers(0));
  EXPECT_EQ(signal_of(SIGUSR2, argument(procedure_b), -1), answers(0));
  raise(SIGUSR1);
  EXPECT_EQ(number_of_b, SIGUSR2);
  EXPECT_EQ(behind, SIGUSR1);
}

TEST_F(SignalProcedures, HandlerOfASignalWithoutAProcedureDoesNothing) {
  errno = ERRNO_SENTINEL;
  for (const int number : {-1, 0, 1, 32, 33, 64, INT32_MAX, INT32_MIN})
    portlib_handler(number);
  EXPECT_EQ(errno, ERRNO_SENTINEL);
  EXPECT_EQ(calls_of_a + calls_of_b, 0);
}

// The entry of the last number, and no further one.
TEST_F(SignalProcedures, HandlerKnowsAllEntriesOfTheTable) {
  sigForHandlers[0] = procedure_a;
  sigForHandlers[32] = procedure_b;
  portlib_handler(0);
  portlib_handler(32);
  EXPECT_EQ(calls_of_a, 1);
  EXPECT_EQ(calls_of_b, 1);
  EXPECT_EQ(number_of_b, 32);
}

// A signal that arrives as soon as the host has the handler finds the procedure.
TEST_F(SignalProcedures, ProcedureIsThereBeforeTheHandlerIs) {
  arrives_at_once = true;
  EXPECT_EQ(signal_of(SIGUSR1, argument(procedure_b), -1), answers(0));
  arrives_at_once = false;
  EXPECT_EQ(calls_of_b, 1);
}

TEST_F(SignalProcedures, ModuleNameIsTheSameRoutine) {
  expect_same_routine(qxport_signal_, signal_);
}

}  // namespace
