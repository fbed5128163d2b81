// The signal handler that IEEE_HANDLER installs, called with signal information and machine contexts of every
// kind.
#include "captured_child.h"
#include "fp_units.h"
#include "ieee_calls.h"

#include <csignal>
#include <cstring>
#include <sys/mman.h>
#include <ucontext.h>

namespace {

constexpr int HANDLED = 9;
constexpr int UNKNOWN = 1;
constexpr int X87_TRAP = 16;
constexpr int SSE_TRAP = 19;

// What the handler is given, in memory that the parent sees too.
struct Shared {
  siginfo_t information;
  ucontext_t context;
#if UINTPTR_MAX > UINT32_MAX
  _libc_fpstate units;
#else
  struct {
    _libc_fpstate x87;
    uint32_t reserved[6];
    uint32_t mxcsr;
  } units;
#endif
};

Shared *shared;

void set_units(uint16_t control, uint16_t status, uint32_t sse) {
#if UINTPTR_MAX > UINT32_MAX
  shared->units.cwd = control;
  shared->units.swd = status;
  shared->units.mxcsr = sse;
  shared->context.uc_mcontext.fpregs = &shared->units;
#else
  shared->units.x87.cw = 0xFFFF0000U | control;
  shared->units.x87.sw = 0xFFFF0000U | status;
  shared->units.mxcsr = sse;
  shared->context.uc_mcontext.fpregs = &shared->units.x87;
#endif
}

uint16_t status_left() {
#if UINTPTR_MAX > UINT32_MAX
  return shared->units.swd;
#else
  return static_cast<uint16_t>(shared->units.x87.sw);
#endif
}

uint32_t sse_left() {
  return shared->units.mxcsr;
}

void set_trap(int number, int code) {
  shared->information.si_code = code;
  shared->context.uc_mcontext.gregs[REG_TRAPNO] = number;
}

void report(int32_t *number, const int32_t *code) {
  printf("%d %d %d\n", *number, *code, shared->information.si_code);
}

void erase_the_cause(int32_t *number, const int32_t *code) {
  report(number, code);
  shared->information.si_code = 0;
}

ChildReport handle(siginfo_t *information, ucontext_t *context,
                   void (*procedure)(int32_t *, const int32_t *)) {
  return run_in_child([=] {
    ieee_handler("set", "all", procedure);
    struct sigaction action;
    sigaction(SIGFPE, nullptr, &action);
    fresh_units();
    action.sa_sigaction(31, information, context);
  });
}

ChildReport handle(void (*procedure)(int32_t *, const int32_t *) = report) {
  return handle(&shared->information, &shared->context, procedure);
}

std::string seen(int32_t exception, int code) {
  return "31 " + std::to_string(exception) + " " + std::to_string(code) + "\n";
}

// By the order in which a cause is looked for: the processor's bit, the code that it is given, the exception.
struct Cause {
  uint16_t bit;
  int code;
  int32_t exception;
};
constexpr Cause CAUSES[] = {
    {0x04, FPE_FLTDIV, 131}, {0x08, FPE_FLTOVF, 132}, {0x10, FPE_FLTUND, 133},
    {0x20, FPE_FLTRES, 134}, {0x01, FPE_FLTINV, 129},
};

const Cause *cause_of(unsigned due) {
  for (const Cause &cause : CAUSES)
    if ((due & cause.bit) != 0)
      return &cause;
  return nullptr;
}

}  // namespace

class GeneralHandler : public FreshUnits {
protected:
  GeneralHandler() {
    void *memory = mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    EXPECT_NE(memory, MAP_FAILED);
    shared = static_cast<Shared *>(memory);
  }
  ~GeneralHandler() override { munmap(shared, sizeof(Shared)); }
};

TEST_F(GeneralHandler, WithoutInformation) {
  const ChildReport end = handle(nullptr, &shared->context, report);
  EXPECT_EQ(end.exit_code(), UNKNOWN);
  EXPECT_EQ(end.out, "");
}

TEST_F(GeneralHandler, CodesOfTheHost) {
  constexpr struct {
    int code;
    int32_t exception;
  } CODES[] = {
      {FPE_FLTDIV, 131}, {FPE_INTDIV, 131}, {FPE_FLTOVF, 132}, {FPE_INTOVF, 132},
      {FPE_FLTUND, 133}, {FPE_FLTRES, 134}, {FPE_FLTINV, 129},
  };
  for (const auto &[code, exception] : CODES) {
    set_trap(0, code);
    const ChildReport end = handle();
    EXPECT_EQ(end.exit_code(), HANDLED) << code;
    EXPECT_EQ(end.out, seen(exception, code));
    EXPECT_EQ(handle(&shared->information, nullptr, report).out, seen(exception, code)) << "no context";
  }
}

TEST_F(GeneralHandler, OtherCodes) {
  set_units(0x0340, 0x3F, 0x3F);
  for (const int code :
       std::initializer_list<int>{FPE_FLTSUB, 9, 14, 15, 100, SI_TKILL, SI_QUEUE, SI_KERNEL}) {
    set_trap(SSE_TRAP, code);
    const ChildReport end = handle();
    EXPECT_EQ(end.exit_code(), UNKNOWN) << code;
    EXPECT_EQ(end.out, "");
  }
}

TEST_F(GeneralHandler, CodeOfZeroIsDerivedFromTheContext) {
  for (unsigned raised = 0; raised < 64; raised += raised < 6 ? 1 : 9) {
    for (const unsigned masks : {0x00U, 0x3FU, 0x04U, 0x1CU, 0x3EU, 0x2AU}) {
      const Cause *cause = cause_of(raised & ~masks);
      for (const int trap : {X87_TRAP, SSE_TRAP}) {
        // The other unit has everything due, and does not count.
        const bool x87 = trap == X87_TRAP;
        set_units(static_cast<uint16_t>(x87 ? 0x0340 | masks : 0x0340),
                  static_cast<uint16_t>(x87 ? 0xB800 | raised : 0x3F), x87 ? 0x3F : masks << 7 | raised);
        set_trap(trap, 0);
        const ChildReport end = handle();
        ASSERT_EQ(end.exit_code(), cause != nullptr ? HANDLED : UNKNOWN)
            << trap << ' ' << raised << ' ' << masks;
        ASSERT_EQ(end.out, cause != nullptr ? seen(cause->exception, cause->code) : "");
        ASSERT_EQ(shared->information.si_code, cause != nullptr ? cause->code : 0) << "written back";
      }
    }
  }
}

TEST_F(GeneralHandler, NothingToDeriveFrom) {
  set_units(0x0340, 0x3F, 0x3F);
  for (const int trap : {0, 13, 17, 18, -1}) {
    set_trap(trap, 0);
    EXPECT_EQ(handle().exit_code(), UNKNOWN) << trap;
  }
  set_trap(SSE_TRAP, 0);
  EXPECT_EQ(handle(&shared->information, nullptr, report).exit_code(), UNKNOWN);
  shared->context.uc_mcontext.fpregs = nullptr;
  EXPECT_EQ(handle().exit_code(), UNKNOWN);
}

// A procedure that erases the code has the first flag that was due cleared, in another order than above.
TEST_F(GeneralHandler, ErasedCodeClearsAFlag) {
  constexpr uint16_t IN_ORDER[] = {0x01, 0x04, 0x08, 0x10, 0x20};
  for (unsigned raised = 1; raised < 64; raised += 6) {
    for (const unsigned masks : {0x00U, 0x01U, 0x05U, 0x3FU, 0x3DU}) {
      uint16_t cleared = 0;
      for (const uint16_t bit : IN_ORDER)
        if (cleared == 0 && (raised & ~masks & bit) != 0)
          cleared = bit;
      for (const int trap : {X87_TRAP, SSE_TRAP}) {
        set_units(static_cast<uint16_t>(0x0340 | masks), static_cast<uint16_t>(0xB800 | raised),
                  masks << 7 | raised);
        set_trap(trap, FPE_FLTRES);
        const ChildReport end = handle(erase_the_cause);
        ASSERT_EQ(end.exit_code(), HANDLED);
        ASSERT_EQ(end.out, seen(134, FPE_FLTRES));
        ASSERT_EQ(status_left(), 0xB800 | (raised & ~(trap == X87_TRAP ? cleared : 0U)))
            << raised << ' ' << masks;
        ASSERT_EQ(sse_left(), masks << 7 | (raised & ~(trap == SSE_TRAP ? cleared : 0U)))
            << raised << ' ' << masks;
      }
    }
  }
}

TEST_F(GeneralHandler, ErasedCodeOfAContextWithoutUnits) {
  shared->context.uc_mcontext.fpregs = nullptr;
  for (const int trap : {X87_TRAP, SSE_TRAP}) {
    set_trap(trap, FPE_FLTRES);
    EXPECT_EQ(handle(erase_the_cause).exit_code(), HANDLED) << trap;
  }
}

TEST_F(GeneralHandler, CodeLeftAloneClearsNothing) {
  set_units(0x0340, 0x3F, 0x3F);
  set_trap(SSE_TRAP, FPE_FLTDIV);
  EXPECT_EQ(handle().exit_code(), HANDLED);
  EXPECT_EQ(status_left(), 0x3F);
  EXPECT_EQ(sse_left(), 0x3FU);
}
