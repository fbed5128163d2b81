// IEEE_HANDLER: its keywords, the masks and the signal action that it sets, and the last word of the
// procedures.
#include "captured_child.h"
#include "fp_arithmetic.h"
#include "fp_units.h"
#include "ieee_calls.h"
#include "outcome.h"

#include <atomic>
#include <csignal>
#include <thread>
#include <vector>

// The thread sanitizer ends children of a process with threads that start threads, unless it is told not to;
// and it reports what writes from a signal's handler, as the last words do.
extern "C" const char *__tsan_default_options() {
  return "die_after_fork=0:report_signal_unsafe=0";
}

namespace {

constexpr struct Word {
  const char *name;
  int32_t code;
  uint32_t sse_masks;
} WORDS[] = {
    {"invalid", 129, 0x80},    {"division", 131, 0x200}, {"overflow", 132, 0x400},
    {"underflow", 133, 0x800}, {"inexact", 134, 0x1000},
};

struct sigaction action_of_sigfpe() {
  struct sigaction action = {};
  EXPECT_EQ(sigaction(SIGFPE, nullptr, &action), 0);
  return action;
}

void first(int32_t *, const int32_t *) {}
void second(int32_t *, const int32_t *) {}

intptr_t address(void (*handler)(int32_t *, const int32_t *)) {
  return reinterpret_cast<intptr_t>(handler);
}

// The five cells, in the order of WORDS.
std::vector<intptr_t> cells() {
  std::vector<intptr_t> found;
  for (const Word &word : WORDS)
    found.push_back(ieee_handler("get", word.name));
  return found;
}

// Looked at before main, when nobody has set or cleared anything.
const sighandler_t ACTION_AT_FIRST = action_of_sigfpe().sa_handler;
const std::vector<intptr_t> CELLS_AT_FIRST = cells();
const sighandler_t ACTION_BEHIND_GET = action_of_sigfpe().sa_handler;

constexpr uint32_t in_x87(uint32_t sse_masks) {
  return sse_masks >> 7;
}

}  // namespace

class IeeeHandler : public FreshUnits {
protected:
  IeeeHandler() { start(); }
  ~IeeeHandler() override { start(); }

  static void start() {
    EXPECT_EQ(ieee_handler("clear", "all"), 0);
    signal(SIGFPE, SIG_DFL);
    fresh_units();
  }
};

TEST_F(IeeeHandler, CodesAreExported) {
  EXPECT_EQ(valFPE_INVALID, 129);
  EXPECT_EQ(valFPE_ZERODIVIDE, 131);
  EXPECT_EQ(valFPE_OVERFLOW, 132);
  EXPECT_EQ(valFPE_UNDERFLOW, 133);
  EXPECT_EQ(valFPE_INEXACT, 134);
}

TEST_F(IeeeHandler, NoProcedureAtFirst) {
  EXPECT_EQ(CELLS_AT_FIRST, std::vector<intptr_t>({0, 0, 0, 0, 0}));
  EXPECT_TRUE(ACTION_BEHIND_GET == ACTION_AT_FIRST) << "get installs nothing";
}

TEST_F(IeeeHandler, ClearInstallsNothing) {
  for (const sighandler_t before : {SIG_DFL, SIG_IGN}) {
    signal(SIGFPE, before);
    for (const char *exception :
         {"invalid", "division", "overflow", "underflow", "inexact", "common", "all"}) {
      EXPECT_EQ(ieee_handler("clear", exception, first), 0);
      EXPECT_TRUE(action_of_sigfpe().sa_handler == before) << exception;
    }
  }
}

TEST_F(IeeeHandler, SetAndClearOne) {
  for (size_t i = 0; i < 5; ++i) {
    ASSERT_EQ(ieee_handler("set", WORDS[i].name, first), 0);
    const uint32_t sse = sse_word();
    const uint16_t x87 = x87_control_word();
    ASSERT_EQ(ieee_handler("clear", WORDS[i].name, second), 0);
    EXPECT_EQ(sse, FRESH_SSE & ~WORDS[i].sse_masks);
    EXPECT_EQ(x87, FRESH_X87 & ~in_x87(WORDS[i].sse_masks));
    EXPECT_EQ(sse_word(), FRESH_SSE);
    EXPECT_EQ(x87_control_word(), FRESH_X87);
    EXPECT_EQ(cells(), std::vector<intptr_t>(5, 0));

    ASSERT_EQ(ieee_handler("set", WORDS[i].name, first), 0);
    std::vector<intptr_t> expected(5, 0);
    expected[i] = address(first);
    EXPECT_EQ(cells(), expected);
    ASSERT_EQ(ieee_handler("set", WORDS[i].name, second), 0);
    expected[i] = address(second);
    EXPECT_EQ(cells(), expected);
    ASSERT_EQ(ieee_handler("clear", WORDS[i].name), 0);
  }
}

TEST_F(IeeeHandler, SetAndClearCommon) {
  ASSERT_EQ(ieee_handler("set", "inexact", second), 0);
  ASSERT_EQ(ieee_handler("set", "common", first), 0);
  const intptr_t a = address(first);
  EXPECT_EQ(cells(), std::vector<intptr_t>({a, a, a, a, address(second)}));
  EXPECT_EQ(sse_word(), FRESH_SSE & ~0x1E80U);
  ASSERT_EQ(ieee_handler("clear", "common", first), 0);
  EXPECT_EQ(cells(), std::vector<intptr_t>({0, 0, 0, 0, address(second)}));
  EXPECT_EQ(sse_word(), FRESH_SSE & ~0x1000U);
  EXPECT_EQ(x87_control_word(), FRESH_X87 & ~0x20);
}

// Denormal operands are masked with "all" and not with "common".
TEST_F(IeeeHandler, SetAndClearAll) {
  ASSERT_EQ(ieee_handler("set", "all", first), 0);
  EXPECT_EQ(sse_word(), 0U);
  EXPECT_EQ(x87_control_word(), 0x0340);
  EXPECT_EQ(cells(), std::vector<intptr_t>(5, address(first)));
  ASSERT_EQ(ieee_handler("clear", "common"), 0);
  EXPECT_EQ(sse_word(), 0x0E80U);
  ASSERT_EQ(ieee_handler("clear", "all"), 0);
  EXPECT_EQ(sse_word(), FRESH_SSE);
  EXPECT_EQ(x87_control_word(), FRESH_X87);
  EXPECT_EQ(cells(), std::vector<intptr_t>(5, 0));
}

TEST_F(IeeeHandler, GetOfSeveralIsAnError) {
  ASSERT_EQ(ieee_handler("set", "all", first), 0);
  EXPECT_EQ(ieee_handler("get", "all"), 1);
  EXPECT_EQ(ieee_handler("get", "common"), 1);
}

TEST_F(IeeeHandler, SignalAction) {
  signal(SIGFPE, SIG_IGN);
  ASSERT_EQ(ieee_handler("set", "overflow", first), 0);
  const struct sigaction action = action_of_sigfpe();
  EXPECT_EQ(action.sa_flags & ~0x04000000, SA_SIGINFO | SA_NODEFER) << "but for the C library's own";
  for (int number = 1; number < NSIG; ++number)
    EXPECT_EQ(sigismember(&action.sa_mask, number), 0) << number;
  ASSERT_EQ(ieee_handler("clear", "all"), 0);
  EXPECT_TRUE(action_of_sigfpe().sa_sigaction == action.sa_sigaction) << "stays installed";
  ASSERT_EQ(ieee_handler("set", "overflow", nullptr), 0) << "no procedure";
  EXPECT_EQ(cells(), std::vector<intptr_t>(5, 0));
  EXPECT_EQ(sse_word(), FRESH_SSE & ~0x400U);
}

TEST_F(IeeeHandler, CaseAndTrailingBlanksDoNotCount) {
  for (const char *action : {"SET", "Set  ", "sEt"}) {
    for (const char *exception : {"DIVISION", "Division", "division          "}) {
      ASSERT_EQ(ieee_handler(action, exception, first), 0);
      EXPECT_EQ(ieee_handler("GET ", "DiVision"), address(first));
      ASSERT_EQ(ieee_handler("Clear", exception), 0);
    }
  }
  ASSERT_EQ(ieee_handler(std::string("set\0x", 5), std::string("all\0", 4), first), 0) << "a NUL ends a word";
  EXPECT_EQ(ieee_handler("get", "invalid"), address(first));
}

TEST_F(IeeeHandler, WrongWordsChangeNothing) {
  ASSERT_EQ(ieee_handler("set", "underflow", first), 0);
  const std::vector<intptr_t> before = cells();
  signal(SIGFPE, SIG_IGN);
  const std::string wrong_actions[] = {"",
                                       " ",
                                       "  ",
                                       "et",
                                       "ge",
                                       "g",
                                       "t",
                                       " get",
                                       " set",
                                       "get set",
                                       "set ",
                                       "set clear",
                                       "clear x",
                                       "lear",
                                       "ar",
                                       "clearall",
                                       "setx",
                                       "t s",
                                       std::string(1000, 'x')};
  for (const std::string &action : wrong_actions) {
    if (action == "set ")
      continue;
    for (const char *exception : {"invalid", "all", "common", "nonsense"})
      EXPECT_EQ(ieee_handler(action, exception, second), 1) << action;
  }
  const std::string wrong_exceptions[] = {"",
                                          " ",
                                          "flow",
                                          "over",
                                          "under",
                                          "in",
                                          "inv",
                                          " invalid",
                                          "inexact division",
                                          "all common",
                                          "lid",
                                          "valid all",
                                          "division ,",
                                          "a",
                                          "commo",
                                          "denormal",
                                          "inexacts",
                                          " all",
                                          " inexact",
                                          std::string(5000, 'i')};
  for (const std::string &exception : wrong_exceptions)
    for (const char *action : {"get", "set", "clear", "nonsense"})
      EXPECT_EQ(ieee_handler(action, exception, second), 1) << exception;
  EXPECT_EQ(cells(), before);
  EXPECT_EQ(sse_word(), FRESH_SSE & ~0x800U);
  EXPECT_EQ(x87_control_word(), FRESH_X87 & ~0x10);
  EXPECT_TRUE(action_of_sigfpe().sa_handler == SIG_IGN);
}

TEST_F(IeeeHandler, ErrorStateStays) {
  EXPECT_EQ(state_after([] {
              ieee_handler("set", "invalid", first);
              ieee_handler("get", "invalid");
              ieee_handler("clear", "all");
              ieee_handler("x", "y");
              ieee_set_mxcsr(0);
              ieee_clear_mxcsr(0x1F);
            }),
            untouched());
}

// A text that is not there is the string helper's error.
TEST_F(IeeeHandler, NullText) {
  reset_error_state();
  EXPECT_EQ(ieee_handler_(nullptr, "all", nullptr, 3, 3), 1);
  EXPECT_EQ(error_state(), (ErrorState{EINVAL, SENTINEL, {EINVAL}}));
  reset_error_state();
  EXPECT_EQ(ieee_handler_("set", nullptr, nullptr, 3, 3), 1);
  EXPECT_EQ(error_state(), (ErrorState{EINVAL, SENTINEL, {EINVAL}}));
  EXPECT_EQ(sse_word(), FRESH_SSE);
}

TEST_F(IeeeHandler, ModuleNameIsTheSameRoutine) {
  expect_same_routine(&ieee_handler_, &qxport_ieee_handler_);
}

TEST_F(IeeeHandler, SseMasksAlone) {
  constexpr struct {
    int32_t bit;
    uint32_t mask;
  } BITS[] = {{0x1, 0x1000}, {0x2, 0x800}, {0x4, 0x400}, {0x8, 0x200}, {0x10, 0x80}};
  for (int32_t bits = 0; bits < 0x20; ++bits) {
    uint32_t masks = 0;
    for (const auto &[bit, mask] : BITS)
      masks |= (bits & bit) != 0 ? mask : 0;
    load_sse_word(FRESH_SSE | 0xE07F);
    ieee_set_mxcsr(bits);
    const uint32_t unmasked = sse_word();
    ieee_clear_mxcsr(bits);
    const uint32_t masked = sse_word();
    load_sse_word(0x0100);
    ieee_clear_mxcsr(bits);
    const uint32_t from_none = sse_word();
    fresh_units();
    ASSERT_EQ(unmasked, (FRESH_SSE | 0xE07F) & ~masks);
    ASSERT_EQ(masked, FRESH_SSE | 0xE07F);
    ASSERT_EQ(from_none, 0x0100 | masks);
    ASSERT_EQ(x87_control_word(), FRESH_X87);
  }
  ieee_set_mxcsr(~0x1F);
  EXPECT_EQ(sse_word(), FRESH_SSE) << "other bits are ignored";
}

// From here on in child processes. What the procedures saw goes to standard output, buffered: the end of the
// process writes it.
namespace {

constexpr int HANDLED = 9;
constexpr int UNKNOWN = 1;

void report(int32_t *number, const int32_t *code) {
  printf("%d %d\n", *number, *code);
}

void report_otherwise(int32_t *number, const int32_t *code) {
  printf("other %d %d\n", *number, *code);
  *number = 77;
}

template <typename Body>
ChildReport end_of(Body body) {
  return run_in_child([body] {
    fresh_units();
    body();
  });
}

constexpr struct {
  const char *word, *seen;
  void (*raise_it[3])();
} TRAPS[] = {
    {"invalid", "8 129\n", {raise_invalid<float>, raise_invalid<double>, raise_invalid<long double>}},
    {"division",
     "8 131\n",
     {raise_zero_divide<float>, raise_zero_divide<double>, raise_zero_divide<long double>}},
    {"overflow", "8 132\n", {raise_overflow<float>, raise_overflow<double>, raise_overflow<long double>}},
    {"underflow", "8 133\n", {raise_underflow<float>, raise_underflow<double>, raise_underflow<long double>}},
    {"inexact", "8 134\n", {raise_inexact<float>, raise_inexact<double>, raise_inexact<long double>}},
};

}  // namespace

TEST_F(IeeeHandler, TrapCallsItsProcedure) {
  for (const auto &trap : TRAPS) {
    for (void (*const raise_it)() : trap.raise_it) {
      const ChildReport one = end_of([&] {
        ieee_handler("set", "all", report_otherwise);
        ieee_handler("clear", "all");
        ieee_handler("set", trap.word, report);
        raise_it();
      });
      EXPECT_EQ(one.exit_code(), HANDLED) << trap.word;
      EXPECT_EQ(one.out, trap.seen);
      EXPECT_EQ(one.err, "");
      const ChildReport none = end_of([&] {
        ieee_handler("set", trap.word, nullptr);
        raise_it();
      });
      EXPECT_EQ(none.exit_code(), HANDLED) << "an empty cell calls nothing";
      EXPECT_EQ(none.out, "");
      EXPECT_EQ(end_of([&] {
                  ieee_handler("set", "all", report);
                  ieee_handler("clear", "all");
                  raise_it();
                }).exit_code(),
                CAME_BACK);
    }
  }
}

// The flags of before do not trap, in neither unit.
TEST_F(IeeeHandler, FlagsRaisedBeforeDoNotTrap) {
  EXPECT_EQ(end_of([] {
              for (const auto &trap : TRAPS)
                for (void (*const raise_it)() : trap.raise_it)
                  raise_it();
              ieee_handler("set", "all", report);
              if (x87_divide(6, 2) != 3 || sse_divide(6, 2) != 3)
                _exit(1);
            }).exit_code(),
            CAME_BACK);
}

namespace {

// Runs the body on a thread that waits for its turn.
class WaitingThread {
public:
  explicit WaitingThread(void (*body)())
      : thread_([this, body] {
          while (!may_go_)
            std::this_thread::yield();
          body();
        }) {}
  void run() {
    may_go_ = true;
    thread_.join();
  }

private:
  std::atomic<bool> may_go_ = false;
  std::thread thread_;
};

}  // namespace

// The masks are the thread's that sets them and those of threads that it starts from then on; the procedures
// serve all.
TEST_F(IeeeHandler, ThreadsStartedLaterTrap) {
  for (void (*const raise_it)() : {raise_zero_divide<double>, raise_zero_divide<long double>}) {
    const ChildReport later = end_of([&] {
      ieee_handler("set", "division", report);
      std::thread(raise_it).join();
      printf("no trap\n");
      fflush(stdout);
    });
    EXPECT_EQ(later.exit_code(), HANDLED);
    EXPECT_EQ(later.out, "8 131\n");
  }
}

TEST_F(IeeeHandler, ThreadsStartedBeforeDoNotTrap) {
  for (void (*const raise_it)() : {raise_zero_divide<double>, raise_zero_divide<long double>}) {
    const ChildReport earlier = end_of([&] {
      WaitingThread thread(raise_it);
      ieee_handler("set", "division", report);
      thread.run();
      printf("no trap\n");
      fflush(stdout);
      raise_it();
    });
    EXPECT_EQ(earlier.exit_code(), HANDLED) << "the thread that set it";
    EXPECT_EQ(earlier.out, "no trap\n8 131\n");
    // Such a thread unmasks its exceptions itself, and has the same procedure.
    const ChildReport unmasked = end_of([&] {
      WaitingThread thread(+[] {
        ieee_flags("set", "exception", "division");
        raise_zero_divide<double>();
        raise_zero_divide<long double>();
      });
      ieee_handler("set", "division", report);
      thread.run();
    });
    EXPECT_EQ(unmasked.exit_code(), HANDLED);
    EXPECT_EQ(unmasked.out, "8 131\n");
  }
}

TEST_F(IeeeHandler, DenormalOperandIsAnUnderflow) {
  const ChildReport report_of_all = end_of([] {
    ieee_handler("set", "all", report);
    raise_denormal<double>();
  });
  EXPECT_EQ(report_of_all.exit_code(), HANDLED);
  EXPECT_EQ(report_of_all.out, "8 133\n");
}

TEST_F(IeeeHandler, DivisionOfIntegersIsADivision) {
  const ChildReport divided = end_of([] {
    ieee_handler("set", "inexact", report_otherwise);
    ieee_handler("set", "division", report);
    int quotient = 7, remainder = 0;
    asm volatile("idivl %2" : "+a"(quotient), "+d"(remainder) : "r"(0));
  });
  EXPECT_EQ(divided.exit_code(), HANDLED);
  EXPECT_EQ(divided.out, "8 131\n");
}

TEST_F(IeeeHandler, SentSignalsEndTheProcess) {
  void (*const senders[])() = {
      [] { kill(getpid(), SIGFPE); },
      [] { raise(SIGFPE); },
      [] { sigqueue(getpid(), SIGFPE, {}); },
  };
  for (void (*const send)() : senders) {
    const ChildReport sent = end_of([send] {
      ieee_handler("set", "all", report);
      printf("kept\n");
      send();
    });
    EXPECT_EQ(sent.exit_code(), UNKNOWN);
    EXPECT_EQ(sent.out, "kept\n") << "no procedure, and nothing lost";
  }
}

// Nothing that the procedure does changes the end: it has a copy of the number.
TEST_F(IeeeHandler, ProcedureMayWriteItsNumber) {
  const ChildReport report_of_it = end_of([] {
    ieee_handler("set", "division", report_otherwise);
    raise_zero_divide<double>();
  });
  EXPECT_EQ(report_of_it.exit_code(), HANDLED);
  EXPECT_EQ(report_of_it.out, "other 8 131\n");
}

TEST_F(IeeeHandler, ProcedureComputesUnmolested) {
  const ChildReport computed = end_of([] {
    ieee_handler("set", "all", [](int32_t *, const int32_t *) {
      raise_inexact<double>();
      raise_zero_divide<long double>();
      printf("%.3f\n", quotient<double>(2, 3));
    });
    raise_zero_divide<double>();
  });
  EXPECT_EQ(computed.exit_code(), HANDLED);
  EXPECT_EQ(computed.out, "0.667\n");
}
