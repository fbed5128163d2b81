// Control and status words by what they do to arithmetic: rounding, flags, traps, precision, threads.
#include "captured_child.h"
#include "fp_arithmetic.h"
#include "fp_units.h"

#include <qxport/qxport.h>

#include <csignal>
#include <thread>
#include <vector>

namespace {

constexpr uint16_t ALL_MASKED = 0x033F;
constexpr uint16_t ROUNDINGS[] = {0x0000, 0x0400, 0x0800, 0x0C00};
constexpr Direction DIRECTIONS[] = {Direction::Nearest, Direction::Down, Direction::Up, Direction::Zero};

void set(unsigned word) {
  const auto control = static_cast<int16_t>(word);
  setcontrolfpqq_(&control);
}

uint16_t shown() {
  int16_t control = 0x5A5A;
  getcontrolfpqq_(&control);
  return static_cast<uint16_t>(control);
}

// The fields of the word without what only the x87 unit shows.
uint16_t fields_shown() {
  return shown() & 0x1F3F;
}

// The six flags.
unsigned flags() {
  int16_t status = 0x5A5A;
  getstatusfpqq_(&status);
  if (IS_64_BIT) {
    EXPECT_EQ(status & ~0x3F, 0);
  }
  return static_cast<unsigned>(status) & 0x3F;
}

struct Exception {
  const char *name;
  unsigned bit;
  unsigned others;  // raised with it
  void (*in_single)();
  void (*in_double)();
  void (*in_extended)();
};

constexpr unsigned INEXACT = 0x20;
constexpr Exception EXCEPTIONS[] = {
    {"invalid", 0x01, 0, raise_invalid<float>, raise_invalid<double>, raise_invalid<long double>},
    {"denormal", 0x02, INEXACT, raise_denormal<float>, raise_denormal<double>, raise_denormal<long double>},
    {"zero divide", 0x04, 0, raise_zero_divide<float>, raise_zero_divide<double>,
     raise_zero_divide<long double>},
    {"overflow", 0x08, INEXACT, raise_overflow<float>, raise_overflow<double>, raise_overflow<long double>},
    {"underflow", 0x10, INEXACT, raise_underflow<float>, raise_underflow<double>,
     raise_underflow<long double>},
    {"inexact", 0x20, 0, raise_inexact<float>, raise_inexact<double>, raise_inexact<long double>},
};

}  // namespace

class FpWords : public FreshUnits {};

TEST_F(FpWords, ProgramStartsMaskedAndToNearest) {
  EXPECT_EQ(fields_shown(), 0x033F);
  EXPECT_EQ(flags(), 0U);
}

TEST_F(FpWords, RoundingHoldsInAllKindsOfReals) {
  for (size_t i = 0; i < 4; ++i) {
    set(ALL_MASKED | ROUNDINGS[i]);
    const Direction in_single = direction_of<float>();
    const Direction in_double = direction_of<double>();
    const Direction in_extended = direction_of<long double>();
    const uint16_t word = fields_shown();
    fresh_units();
    EXPECT_TRUE(in_single == DIRECTIONS[i]) << i;
    EXPECT_TRUE(in_double == DIRECTIONS[i]) << i;
    EXPECT_TRUE(in_extended == DIRECTIONS[i]) << i;
    EXPECT_EQ(word, ALL_MASKED | ROUNDINGS[i]);
  }
}

TEST_F(FpWords, WordReadsBackAsSet) {
  set(0x133F);
  EXPECT_EQ(fields_shown(), 0x133F);
  if (IS_64_BIT) {
    EXPECT_EQ(shown(), 0x133F);
  }
  set(0x033F);
  EXPECT_EQ(fields_shown(), 0x033F);
}

// On a 64-bit target any precision but 24 bits reads back as 64.
TEST_F(FpWords, EveryWordReadsBack) {
  for (unsigned word = 0; word <= 0xFFFF; ++word) {
    set(word);
    const uint16_t read = fields_shown();
    fresh_units();
    unsigned expected = word & 0x1F3F;
    if (IS_64_BIT && (word & 0x300) != 0)
      expected |= 0x300;
    ASSERT_EQ(read, expected) << std::hex << word;
  }
  set(FRESH_X87);
}

TEST_F(FpWords, EachExceptionRaisesItsFlag) {
  for (const Exception &exception : EXCEPTIONS) {
    for (void (*const raise_it)() : {exception.in_single, exception.in_double, exception.in_extended}) {
      clearstatusfpqq_();
      EXPECT_EQ(flags(), 0U);
      raise_it();
      const unsigned raised = flags();
      EXPECT_EQ(raised & ~exception.others, exception.bit) << exception.name;
      EXPECT_EQ(flags(), raised) << "reading clears nothing";
    }
  }
}

TEST_F(FpWords, FlagsOfBothUnitsCount) {
  sse_divide(1, 0);
  x87_divide(0, 0);
  EXPECT_EQ(flags(), 0x05U);
  clearstatusfpqq_();
  EXPECT_EQ(flags(), 0U);
  EXPECT_EQ(x87_status_word() & 0x3F, 0);
  EXPECT_EQ(sse_word(), FRESH_SSE);
}

TEST_F(FpWords, ClearingLeavesTheControlWord) {
  set(0x0F3B);
  clearstatusfpqq_();
  const uint16_t word = fields_shown();
  fresh_units();
  EXPECT_EQ(word, 0x0F3B);
}

// Flushing and denormals-are-zero are no matter of these words.
TEST_F(FpWords, OtherBitsOfTheSseRegisterStay) {
  constexpr uint32_t OTHERS = 0x8040;
  load_sse_word(FRESH_SSE | OTHERS | 0x3F);
  set(ALL_MASKED | 0x0C00);
  EXPECT_EQ(sse_word(), FRESH_SSE | OTHERS | 0x6000 | 0x3F);
  clearstatusfpqq_();
  EXPECT_EQ(sse_word(), FRESH_SSE | OTHERS | 0x6000);
}

TEST_F(FpWords, UnmaskedExceptionTraps) {
  for (const Exception &exception : EXCEPTIONS) {
    for (void (*const raise_it)() : {exception.in_single, exception.in_double, exception.in_extended}) {
      const auto end_with = [&](unsigned word) {
        return run_in_child([&] {
          signal(SIGFPE, SIG_DFL);
          fresh_units();
          set(word);
          raise_it();
        });
      };
      EXPECT_EQ(end_with(ALL_MASKED & ~exception.bit).signal(), SIGFPE) << exception.name;
      // Those that come with it are no matter of its mask.
      EXPECT_EQ(end_with(0x0300 | exception.bit | exception.others).exit_code(), CAME_BACK) << exception.name;
    }
  }
}

TEST_F(FpWords, FlagRaisedBeforeDoesNotTrapOnceCleared) {
  x87_divide(1, 0);
  sse_divide(1, 0);
  clearstatusfpqq_();
  set(ALL_MASKED & ~0x04);
  const long double three = x87_divide(6, 2);
  const double four = sse_divide(8, 2);
  fresh_units();
  EXPECT_EQ(three, 3);
  EXPECT_EQ(four, 4);
}

// It stays raised on a 64-bit target, and only there is it safe to unmask.
TEST_F(FpWords, FlagRaisedBeforeAndNotCleared) {
  const ChildReport report = run_in_child([] {
    signal(SIGFPE, SIG_DFL);
    fresh_units();
    x87_divide(1, 0);
    sse_divide(1, 0);
    set(ALL_MASKED & ~0x04);
    sse_divide(8, 2);
    if (flags() != 0x04)
      _exit(1);
    x87_divide(6, 2);
  });
  EXPECT_EQ(report.signal(), IS_64_BIT ? 0 : SIGFPE);
  EXPECT_EQ(report.exit_code(), IS_64_BIT ? CAME_BACK : -1);
}

#if UINTPTR_MAX > UINT32_MAX

TEST_F(FpWords, PrecisionIsShownAndHasNoEffect) {
  const long double full = quotient<long double>(1, 3);
  set(0x003F);
  EXPECT_EQ(shown(), 0x003F);
  EXPECT_EQ(quotient<long double>(1, 3), full);
  EXPECT_EQ(x87_control_word(), FRESH_X87);
  set(0x023F);
  EXPECT_EQ(shown(), 0x033F) << "53 bits set 64";
  set(0x013F);
  EXPECT_EQ(shown(), 0x033F);
  EXPECT_EQ(quotient<long double>(1, 3), full);
}

#else

TEST_F(FpWords, PrecisionHoldsInTheX87Unit) {
  const long double full = quotient<long double>(1, 3);
  set(0x003F);
  EXPECT_EQ(quotient<long double>(1, 3), static_cast<long double>(static_cast<float>(full)));
  set(0x023F);
  EXPECT_EQ(quotient<long double>(1, 3), static_cast<long double>(static_cast<double>(full)));
  EXPECT_EQ(fields_shown(), 0x023F);
  set(0x033F);
  EXPECT_EQ(quotient<long double>(1, 3), full);
}

// Condition codes, stack fault, the pending trap and the busy bit.
TEST_F(FpWords, WholeStatusWordIsShown) {
  asm volatile("fninit\n\tfldz\n\tftst\n\tfstp %st(0)");  // equal: C3
  int16_t status;
  getstatusfpqq_(&status);
  EXPECT_EQ(static_cast<uint16_t>(status), x87_status_word());
  EXPECT_EQ(status & 0x4000, 0x4000);
  fresh_units();
  asm volatile("fstp %st(0)");  // nothing to store: stack fault, invalid
  sswrqq_(&status);
  EXPECT_EQ(status & 0x41, 0x41);
  load_x87_control_word(FRESH_X87 & ~0x01);
  getstatusfpqq_(&status);
  const uint16_t word = x87_status_word();
  fresh_units();
  EXPECT_EQ(static_cast<uint16_t>(status), word);
  EXPECT_EQ(word & 0x8080, 0x8080);
}

#endif

namespace {

struct Setting {
  uint16_t control;
  unsigned flags;
  Direction in_double, in_extended;
};

Setting setting() {
  const uint16_t control = fields_shown();
  const unsigned raised = flags();
  return {control, raised, direction_of<double>(), direction_of<long double>()};
}

}  // namespace

TEST_F(FpWords, SettingIsTheThreads) {
  // A thread that waits for its turn by reading from a pipe.
  int ready[2], turn[2];
  ASSERT_EQ(pipe(ready), 0);
  ASSERT_EQ(pipe(turn), 0);
  Setting before = {}, after = {};
  char byte = 0;
  std::thread earlier([&] {
    EXPECT_EQ(write(ready[1], "", 1), 1);
    char go = 0;
    EXPECT_EQ(read(turn[0], &go, 1), 1);
    before = setting();
  });
  ASSERT_EQ(read(ready[0], &byte, 1), 1);
  set(0x1838 | 0x0007);  // 24 bits, up, affine
  x87_divide(1, 0);
  ASSERT_EQ(write(turn[1], "", 1), 1);
  earlier.join();
  std::thread later([&] {
    after = setting();
    set(0x0F3F);
  });
  later.join();
  const Setting own = setting();
  for (const int descriptor : {ready[0], ready[1], turn[0], turn[1]})
    close(descriptor);
  fresh_units();
  set(FRESH_X87);

  EXPECT_EQ(before.control, 0x033F);
  EXPECT_EQ(before.flags, 0U);
  EXPECT_TRUE(before.in_double == Direction::Nearest);
  EXPECT_TRUE(before.in_extended == Direction::Nearest);
  // A later thread starts with its maker's masks, rounding and flags.
  EXPECT_EQ(after.control, IS_64_BIT ? 0x0B3F : 0x183F);
  EXPECT_EQ(after.flags & 0x04, 0x04U);
  EXPECT_TRUE(after.in_double == Direction::Up);
  if (IS_64_BIT) {
    EXPECT_TRUE(after.in_extended == Direction::Up);
  }
  EXPECT_EQ(own.control, 0x183F) << "what the later thread set";
  EXPECT_TRUE(own.in_double == Direction::Up);
}

// A handler starts with a fresh setting, and what was set holds again behind it.
namespace {
volatile uint16_t seen_in_handler;
void look(int) {
  seen_in_handler = fields_shown();
  set(0x0C3F);
}
}  // namespace

TEST_F(FpWords, SignalHandlerHasAFreshSetting) {
  void (*const former)(int) = signal(SIGUSR1, look);
  set(0x0B3F);
  raise(SIGUSR1);
  const uint16_t behind = fields_shown();
  signal(SIGUSR1, former);
  fresh_units();
  EXPECT_EQ(seen_in_handler, 0x033F);
  EXPECT_EQ(behind & 0x0FFF, IS_64_BIT ? 0x083F : 0x0B3F);
}
