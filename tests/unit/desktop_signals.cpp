// SIGNALQQ, SIGNALFPEQQ and RAISEQQ.
#include "compat/desktop_signals.h"
#include "captured_child.h"
#include "outcome.h"

#include <csignal>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

using Procedure = void (*)();

volatile int calls;
volatile int32_t number, code;

int32_t of_number(int32_t signum) {
  calls = calls + 1;
  number = signum;
  errno = 1234;
  return 77;
}

int32_t of_number_and_code(int32_t signum, int32_t exception) {
  of_number(signum);
  code = exception;
  return 78;
}

int32_t another(int32_t) {
  calls = calls + 100;
  return 79;
}

template <typename Handler>
intptr_t install(int32_t signum, Handler *handler) {
  return signalqq_(&signum, reinterpret_cast<Procedure>(handler));
}

int32_t send(int32_t signum) {
  return raiseqq_(&signum);
}

struct Signal {
  int32_t desktop;
  int host;
  size_t entry;
};
constexpr Signal SIGNALS[] = {{2, SIGINT, 0},   {4, SIGILL, 1},   {8, SIGFPE, 2},
                              {11, SIGSEGV, 3}, {15, SIGTERM, 4}, {16, SIGUSR1, 5},
                              {17, SIGUSR2, 6}, {20, SIGUSR1, 7}, {22, SIGABRT, 8}};

bool is_known(int32_t signum) {
  for (const Signal &known : SIGNALS)
    if (known.desktop == signum)
      return true;
  return false;
}

struct sigaction action_of(int host) {
  struct sigaction action = {};
  EXPECT_EQ(sigaction(host, nullptr, &action), 0) << host;
  return action;
}

class DesktopSignals : public testing::Test {
protected:
  DesktopSignals() {
    for (const Signal &known : SIGNALS)
      sigaction(known.host, nullptr, &former_[known.entry]);
    reset();
  }
  ~DesktopSignals() override {
    for (const Signal &known : SIGNALS)
      sigaction(known.host, &former_[known.entry], nullptr);
    for (void *&handler : sigQQForHandlers)
      handler = nullptr;
  }
  static void reset() {
    calls = 0;
    number = SENTINEL;
    code = SENTINEL;
  }

private:
  struct sigaction former_[9];
};

TEST_F(DesktopSignals, TableIsAsItWasAlways) {
  size_t entry = 0;
  for (const Signal &known : SIGNALS) {
    EXPECT_EQ(sigXlatTable[entry][0], known.desktop);
    EXPECT_EQ(sigXlatTable[entry][1], known.host);
    ++entry;
  }
  for (; entry < 12; ++entry) {
    EXPECT_EQ(sigXlatTable[entry][0], 0);
    EXPECT_EQ(sigXlatTable[entry][1], 0);
  }
  EXPECT_EQ(sizeof(sigXlatTable), 12 * 2 * sizeof(int32_t));
  EXPECT_EQ(sizeof(sigQQForHandlers), 9 * sizeof(void *));
  for (const void *handler : sigQQForHandlers)
    EXPECT_EQ(handler, nullptr);
}

TEST_F(DesktopSignals, NumberArrivesByValue) {
  for (const Signal &known : SIGNALS) {
    if (known.desktop == 20)
      continue;
    reset();
    EXPECT_EQ(state_after([&] { EXPECT_EQ(install(known.desktop, of_number), 0); }), untouched());
    EXPECT_EQ(sigQQForHandlers[known.entry], reinterpret_cast<void *>(of_number));
    EXPECT_EQ(state_after([&] { EXPECT_EQ(send(known.desktop), 0); }), untouched());
    EXPECT_EQ(calls, 1) << known.desktop;
    EXPECT_EQ(number, known.desktop);
  }
}

TEST_F(DesktopSignals, ActionIsTheHandlerWithItsFlags) {
  for (const Signal &known : SIGNALS) {
    signal(known.host, SIG_DFL);
    install(known.desktop, of_number);
    const struct sigaction action = action_of(known.host);
    EXPECT_EQ(reinterpret_cast<void *>(action.sa_sigaction),
              reinterpret_cast<void *>(portlib_signalQQhandler));
    EXPECT_EQ(action.sa_flags & (SA_SIGINFO | SA_NODEFER | SA_RESTART | SA_RESETHAND | SA_ONSTACK),
              SA_SIGINFO | SA_NODEFER | SA_RESTART);
    for (int other = 1; other < 32; ++other)
      EXPECT_EQ(sigismember(&action.sa_mask, other), 0) << other;
  }
}

TEST_F(DesktopSignals, HandlerIsReplaced) {
  install(16, of_number);
  install(16, another);
  EXPECT_EQ(send(16), 0);
  EXPECT_EQ(calls, 100);
}

// Every number there is, and some more.
TEST_F(DesktopSignals, NumbersOfNoSignal) {
  for (int32_t signum = -1; signum <= 40; ++signum) {
    if (is_known(signum))
      continue;
    EXPECT_EQ(state_after([&] { EXPECT_EQ(install(signum, of_number), -1) << signum; }), untouched());
    EXPECT_EQ(state_after([&] { EXPECT_EQ(send(signum), signum == 0 ? 0 : -1) << signum; }), untouched());
  }
  for (const int32_t signum : {INT32_MIN, INT32_MAX, 30, 31, -16}) {
    EXPECT_EQ(install(signum, of_number), -1);
    EXPECT_EQ(send(signum), -1);
  }
  for (const void *handler : sigQQForHandlers)
    EXPECT_EQ(handler, nullptr);
  for (int host = 1; host < 32; ++host)
    EXPECT_NE(reinterpret_cast<void *>(action_of(host).sa_sigaction),
              reinterpret_cast<void *>(portlib_signalQQhandler));
  EXPECT_EQ(calls, 0);
}

// Two numbers share SIGUSR1, and the handler of the first is the one that hears it.
TEST_F(DesktopSignals, SecondNumberOfASignalIsNeverHeard) {
  EXPECT_EQ(install(20, another), 0);
  EXPECT_EQ(sigQQForHandlers[7], reinterpret_cast<void *>(another));
  EXPECT_EQ(state_after([] { send(20); }), untouched()) << "an empty place is passed over";
  EXPECT_EQ(calls, 0);
  EXPECT_EQ(install(16, of_number), 0);
  EXPECT_EQ(sigQQForHandlers[7], reinterpret_cast<void *>(another));
  EXPECT_EQ(send(20), 0);
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(number, 16);
  EXPECT_EQ(send(16), 0);
  EXPECT_EQ(calls, 2);
}

TEST_F(DesktopSignals, NullHandlerIsNotCalled) {
  EXPECT_EQ(install<void()>(17, nullptr), 0);
  EXPECT_EQ(send(17), 0);
  EXPECT_EQ(sigQQForHandlers[6], nullptr);
}

TEST_F(DesktopSignals, ExceptionsHaveACodeToo) {
  struct Row {
    int host;
    int32_t desktop;
  };
  const int32_t signum = 8;
  EXPECT_EQ(signalqq_(&signum, reinterpret_cast<Procedure>(of_number_and_code)), 0);
  for (const Row &row :
       {Row{FPE_FLTDIV, 131}, Row{FPE_FLTOVF, 132}, Row{FPE_FLTUND, 133}, Row{FPE_FLTRES, 134},
        Row{FPE_FLTINV, 129}, Row{FPE_INTDIV, -1}, Row{FPE_INTOVF, -1}, Row{SI_USER, -1}, Row{99, -1}}) {
    reset();
    siginfo_t information = {};
    information.si_code = row.host;
    EXPECT_EQ(portlib_signalQQhandler(SIGFPE, &information, nullptr), 78);
    EXPECT_EQ(number, 8);
    EXPECT_EQ(code, row.desktop) << row.host;
  }
  reset();
  EXPECT_EQ(send(8), 0);
  EXPECT_EQ(number, 8);
  EXPECT_EQ(code, -1) << "one that was sent";
}

TEST_F(DesktopSignals, ExceptionsWithoutInformationHaveTheNumberAlone) {
  install(8, of_number);
  EXPECT_EQ(portlib_signalQQhandler(SIGFPE, nullptr, nullptr), 77);
  EXPECT_EQ(number, 8);
}

TEST_F(DesktopSignals, HandlersAnswerIsHandedOn) {
  install(15, of_number);
  errno = 4321;
  EXPECT_EQ(portlib_signalQQhandler(SIGTERM, nullptr, nullptr), 77);
  EXPECT_EQ(errno, 4321) << "the interrupted code's own";
  EXPECT_EQ(number, 15);
  siginfo_t information = {};
  information.si_code = FPE_FLTDIV;
  EXPECT_EQ(portlib_signalQQhandler(SIGTERM, &information, nullptr), 77) << "the code is for exceptions only";
}

TEST_F(DesktopSignals, SignalsOfNoEntryArePassedOver) {
  for (int host = 0; host < 65; ++host)
    EXPECT_EQ(state_after([&] { EXPECT_EQ(portlib_signalQQhandler(host, nullptr, nullptr), 0); }),
              untouched());
  EXPECT_EQ(portlib_signalQQhandler(-1, nullptr, nullptr), 0);
}

TEST_F(DesktopSignals, HandlerOfExceptionsByItsOwnRoutine) {
  EXPECT_EQ(signalfpeqq_(reinterpret_cast<Procedure>(of_number_and_code)), 0);
  EXPECT_EQ(sigQQForHandlers[2], reinterpret_cast<void *>(of_number_and_code));
  EXPECT_EQ(send(8), 0);
  EXPECT_EQ(number, 8);
  EXPECT_EQ(code, -1);
}

int32_t leave_with_code(int32_t signum, int32_t exception) {
  _exit(signum == 8 && exception == 131 ? 31 : 32);
}

// A trap of the processor: a division by zero with the exception unmasked.
void divide_with_a_trap() {
  uint32_t control;
  __asm__ volatile("stmxcsr %0" : "=m"(control));
  control &= ~0x200U;
  __asm__ volatile("ldmxcsr %0" : : "m"(control));
  volatile double zero = 0, quotient = 1;
  __asm__ volatile("movsd %0, %%xmm0; divsd %1, %%xmm0; movsd %%xmm0, %0"
                   : "+m"(quotient)
                   : "m"(zero)
                   : "xmm0");
}

TEST_F(DesktopSignals, DivisionThatTraps) {
  const ChildReport by_number = run_in_child([] {
    install(8, leave_with_code);
    divide_with_a_trap();
  });
  EXPECT_EQ(by_number.exit_code(), 31);
  const ChildReport by_name = run_in_child([] {
    signalfpeqq_(reinterpret_cast<Procedure>(leave_with_code));
    divide_with_a_trap();
  });
  EXPECT_EQ(by_name.exit_code(), 31);
}

int32_t recurse(int32_t signum) {
  calls = calls + 1;
  if (calls < 3)
    send(signum);
  return 0;
}

TEST_F(DesktopSignals, HandlerMayBeInterruptedByItsOwnSignal) {
  install(17, recurse);
  send(17);
  EXPECT_EQ(calls, 3);
}

TEST_F(DesktopSignals, InterruptedReadGoesOn) {
  install(16, of_number);
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const pid_t reader = getpid();
  const pid_t child = fork();
  if (child == 0) {
    // Until the parent waits in its read, signals; then what it waits for.
    for (int i = 0; i < 20; ++i) {
      kill(reader, SIGUSR1);
      usleep(5000);
    }
    _exit(write(ends[1], "x", 1) == 1 ? 0 : 1);
  }
  char byte;
  EXPECT_EQ(read(ends[0], &byte, 1), 1);
  int status;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  EXPECT_EQ(status, 0);
  EXPECT_GE(calls, 1);
  close(ends[0]);
  close(ends[1]);
}

TEST_F(DesktopSignals, WithoutAHandlerTheDefaultEndsTheProcess) {
  for (const Signal &known : SIGNALS) {
    const ChildReport report = run_in_child([&] {
      signal(known.host, SIG_DFL);
      send(known.desktop);
    });
    EXPECT_EQ(report.signal(), known.host);
  }
}

}  // namespace
