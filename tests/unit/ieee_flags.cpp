// IEEE_FLAGS by what it does to arithmetic.
#include "captured_child.h"
#include "fp_arithmetic.h"
#include "fp_units.h"
#include "ieee_calls.h"

#include <csignal>

namespace {

constexpr struct {
  const char *name;
  int32_t number;
  Direction direction;
} DIRECTIONS[] = {{"nearest", 0, Direction::Nearest},
                  {"negative", 1, Direction::Down},
                  {"positive", 2, Direction::Up},
                  {"tozero", 3, Direction::Zero}};

constexpr struct {
  const char *name;
  int32_t bit, with;
  void (*in_single)();
  void (*in_double)();
  void (*in_extended)();
} EXCEPTIONS[] = {
    {"invalid", 1, 0, raise_invalid<float>, raise_invalid<double>, raise_invalid<long double>},
    {"division", 4, 0, raise_zero_divide<float>, raise_zero_divide<double>, raise_zero_divide<long double>},
    {"overflow", 8, 32, raise_overflow<float>, raise_overflow<double>, raise_overflow<long double>},
    {"underflow", 16, 32, raise_underflow<float>, raise_underflow<double>, raise_underflow<long double>},
    {"inexact", 32, 0, raise_inexact<float>, raise_inexact<double>, raise_inexact<long double>},
};

}  // namespace

class IeeeFlagsOfArithmetic : public FreshUnits {
protected:
  ~IeeeFlagsOfArithmetic() override { ieee_flags("clearall"); }
};

TEST_F(IeeeFlagsOfArithmetic, DirectionHolds) {
  for (const auto &[name, number, direction] : DIRECTIONS) {
    const Flags set = ieee_flags("set", "direction", name);
    const Direction in_single = direction_of<float>();
    const Direction in_double = direction_of<double>();
    const Direction in_extended = direction_of<long double>();
    const Flags got = ieee_flags("get", "direction");
    fresh_units();
    EXPECT_EQ(set, answered(0));
    EXPECT_EQ(got, answered(number, name));
    EXPECT_TRUE(in_single == direction) << name;
    EXPECT_TRUE(in_double == direction) << name;
    EXPECT_TRUE(in_extended == direction) << name;
  }
  ieee_flags("set", "direction", "tozero");
  EXPECT_EQ(ieee_flags("clear", "direction"), answered(0));
  EXPECT_TRUE(direction_of<double>() == Direction::Nearest);
}

TEST_F(IeeeFlagsOfArithmetic, PrecisionReadsBack) {
  const long double full = quotient<long double>(1, 3);
  EXPECT_EQ(ieee_flags("get", "precision"), answered(3, "extended"));
  EXPECT_EQ(ieee_flags("set", "precision", "single"), answered(0));
  EXPECT_EQ(ieee_flags("get", "precision"), answered(0, "single"));
  const long double in_single = quotient<long double>(1, 3);
  EXPECT_EQ(ieee_flags("set", "precision", "double"), answered(0));
  EXPECT_EQ(ieee_flags("get", "precision"), answered(2, "double"));
  const long double in_double = quotient<long double>(1, 3);
  EXPECT_EQ(ieee_flags("clear", "precision"), answered(0));
  EXPECT_EQ(ieee_flags("get", "precision"), answered(3, "extended"));
  EXPECT_EQ(quotient<long double>(1, 3), full);
  // Where the unit that computes has precision control.
  EXPECT_EQ(in_single, IS_64_BIT ? full : static_cast<float>(full));
  EXPECT_EQ(in_double, IS_64_BIT ? full : static_cast<double>(full));
}

TEST_F(IeeeFlagsOfArithmetic, PrecisionOfNoName) {
  controlfp(0x30000, 0x30000);
  EXPECT_EQ(ieee_flags("get", "precision"), IS_64_BIT ? answered(1) : answered(0, "single"));
}

TEST_F(IeeeFlagsOfArithmetic, ExceptionsAreFound) {
  for (const auto &exception : EXCEPTIONS) {
    for (void (*const raise_it)() : {exception.in_single, exception.in_double, exception.in_extended}) {
      EXPECT_EQ(ieee_flags("clearall"), answered(0));
      EXPECT_EQ(ieee_flags("get", "exception", exception.name), answered(0));
      raise_it();
      EXPECT_EQ(ieee_flags("get", "exception", exception.name),
                answered(exception.bit | exception.with, exception.name));
    }
  }
}

TEST_F(IeeeFlagsOfArithmetic, ExceptionsOfBothUnitsCount) {
  raise_underflow<long double>();
  raise_overflow<double>();
  ieee_flags("clear", "exception", "all");
  EXPECT_EQ(ieee_flags("get", "exception", "underflow"), answered(56, "underflow"))
      << "clear leaves the flags";
}

TEST_F(IeeeFlagsOfArithmetic, SetMakesExceptionsTrap) {
  const auto end_after = [](const char *set, const char *clear, void (*raise_it)()) {
    return run_in_child([=] {
      signal(SIGFPE, SIG_DFL);
      fresh_units();
      raise_it();  // masked, and its flag does not trap when it is unmasked
      ieee_flags("set", "exception", set);
      ieee_flags("clear", "exception", clear);
      raise_it();
    });
  };
  for (const auto &exception : EXCEPTIONS) {
    for (void (*const raise_it)() : {exception.in_single, exception.in_double, exception.in_extended}) {
      EXPECT_EQ(end_after(exception.name, "", raise_it).signal(), SIGFPE) << exception.name;
      EXPECT_EQ(end_after("all", "", raise_it).signal(), SIGFPE) << exception.name;
      EXPECT_EQ(end_after("all", exception.name, raise_it).signal(), exception.with != 0 ? SIGFPE : 0)
          << exception.name;
      EXPECT_EQ(end_after("common", "", raise_it).signal(), exception.bit == 32 ? 0 : SIGFPE)
          << exception.name;
      EXPECT_EQ(end_after("all", "all", raise_it).exit_code(), CAME_BACK) << exception.name;
    }
  }
  EXPECT_EQ(end_after("all", "", raise_denormal<double>).signal(), SIGFPE);
  EXPECT_EQ(end_after("common", "", raise_denormal<double>).exit_code(), CAME_BACK);
}

TEST_F(IeeeFlagsOfArithmetic, ClearAllIsAFreshStart) {
  ieee_flags("set", "direction", "tozero");
  ieee_flags("set", "precision", "single");
  raise_invalid<double>();
  raise_zero_divide<long double>();
  ieee_flags("set", "exception", "underflow");
  EXPECT_EQ(ieee_flags("clearall"), answered(0));
  EXPECT_EQ(sse_word(), FRESH_SSE);
  EXPECT_EQ(x87_control_word(), FRESH_X87);
  EXPECT_EQ(x87_status_word() & 0xFF, 0);
  EXPECT_EQ(ieee_flags("get", "precision"), answered(3, "extended"));
}
