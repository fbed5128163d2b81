// Differences, absolute values, remainders and conversions, against wider integers and other ways to the same
// numbers.
#include "in_child.h"
#include "outcome.h"

#include <cfenv>
#include <climits>
#include <cmath>
#include <csignal>
#include <limits>

namespace {

constexpr int32_t INTEGERS[] = {
    0,     1,     -1,      2,           -2,      5,           7,       32767,         -32768,
    65535, 65537, INT_MAX, INT_MAX - 1, INT_MIN, INT_MIN + 1, 1 << 24, (1 << 24) + 1, 123456789};
constexpr int16_t SHORT_INTEGERS[] = {
    0, 1, -1, 2, -2, 3, -3, 5, 7, -7, 100, INT16_MAX, INT16_MAX - 1, INT16_MIN, INT16_MIN + 1};

// A number as so many bits hold it, with their sign.
int64_t wrapped(int64_t number, int bits) {
  const int64_t period = int64_t{1} << bits;
  int64_t remainder = number % period;
  if (remainder < 0)
    remainder += period;
  return remainder >= period / 2 ? remainder - period : remainder;
}

// Equal as bits are: zeros have signs, and a NaN equals a NaN.
template <typename Real>
bool same(Real got, Real expected) {
  return std::isnan(expected) ? std::isnan(got)
                              : got == expected && std::signbit(got) == std::signbit(expected);
}

template <typename Real>
void expect_positive_differences(Real (*routine)(const Real *, const Real *)) {
  using Limits = std::numeric_limits<Real>;
  const Real values[] = {0,
                         -Real{0},
                         1,
                         -1,
                         Real{2.5},
                         Limits::max(),
                         Limits::lowest(),
                         Limits::min(),
                         Limits::denorm_min(),
                         Limits::infinity(),
                         -Limits::infinity(),
                         Limits::quiet_NaN()};
  for (const Real x : values) {
    for (const Real y : values) {
      const volatile Real difference = x - y;
      EXPECT_TRUE(same<Real>(routine(&x, &y), std::isgreater(y, x) ? Real{0} : difference)) << x << ' ' << y;
    }
  }
}

TEST(PositiveDifferences, OfReals) {
  expect_positive_differences<float>(dim_);
  expect_positive_differences<double>(ddim_);
}

TEST(PositiveDifferences, OfIntegers) {
  for (const int16_t i : SHORT_INTEGERS)
    for (const int16_t j : SHORT_INTEGERS)
      EXPECT_EQ(iidim_(&i, &j), i < j ? 0 : wrapped(int64_t{i} - j, 16)) << i << ' ' << j;
  for (const int32_t i : INTEGERS)
    for (const int32_t j : INTEGERS)
      EXPECT_EQ(jdim_(&i, &j), std::max<int64_t>(wrapped(int64_t{i} - j, 32), 0)) << i << ' ' << j;
}

TEST(PositiveDifferences, SignOfTheWrappedDifferenceDecides) {
  const int32_t five = 5, seven = 7, most = INT_MAX, less_one = -1, least = INT_MIN;
  EXPECT_EQ(jdim_(&five, &seven), 0);
  EXPECT_EQ(jdim_(&seven, &five), 2);
  EXPECT_EQ(jdim_(&most, &less_one), 0);
  EXPECT_EQ(jdim_(&least, &most), 1);
  const int16_t short_most = INT16_MAX, short_less_one = -1;
  EXPECT_EQ(iidim_(&short_most, &short_less_one), INT16_MIN) << "here it is which is less that decides";
}

TEST(Jabs, IsTheAbsoluteValueInThirtyTwoBits) {
  for (const int32_t i : INTEGERS)
    EXPECT_EQ(jabs_(&i), wrapped(std::abs(int64_t{i}), 32)) << i;
  const int32_t least = INT_MIN;
  EXPECT_EQ(jabs_(&least), INT_MIN);
}

// By taking away.
int16_t remainder_of(int16_t i, int16_t j) {
  int32_t left = std::abs(i);
  while (left >= std::abs(j))
    left -= std::abs(j);
  return static_cast<int16_t>(i < 0 ? -left : left);
}

TEST(Jmod, IsTheRemainderWithTheSignOfTheFirst) {
  for (const int16_t i : SHORT_INTEGERS) {
    for (const int16_t j : SHORT_INTEGERS) {
      if (j != 0) {
        EXPECT_EQ(jmod_(&i, &j), remainder_of(i, j)) << i << ' ' << j;
      }
    }
  }
}

volatile int16_t kept;

TEST(Jmod, OfZeroIsAFaultOfTheProcessor) {
  in_child([] {
    struct sigaction action = {};
    action.sa_flags = SA_SIGINFO;
    action.sa_sigaction = [](int, siginfo_t *info, void *) { _exit(info->si_code == FPE_INTDIV ? 0 : 3); };
    sigaction(SIGFPE, &action, nullptr);
    const int16_t i = 7, zero = 0;
    kept = jmod_(&i, &zero);
    ADD_FAILURE() << "an answer: " << kept;
  });
}

TEST(Inmax, IsTheLargestInteger) {
  EXPECT_EQ(inmax_(), 2147483647);
}

TEST(Conversions, ToReals) {
  for (const int16_t i : SHORT_INTEGERS) {
    EXPECT_EQ(ifloati_(&i), static_cast<float>(i));
    EXPECT_EQ(dfloati_(&i), static_cast<double>(i));
  }
  for (const int32_t i : INTEGERS) {
    EXPECT_EQ(ifloatj_(&i), static_cast<float>(i)) << i;
    EXPECT_EQ(dfloatj_(&i), static_cast<double>(i)) << i;
    EXPECT_EQ(idfloat_(&i), static_cast<double>(i)) << i;
  }
  const int32_t odd = (1 << 24) + 1;
  EXPECT_EQ(ifloatj_(&odd), 16777216.0F);
  const int64_t longs[] = {
      0, 1, -1, INT64_MAX, INT64_MIN, 1LL << 53, (1LL << 53) + 1, (1LL << 53) + 3, -(1LL << 53) - 1};
  const double expected[] = {0, 1, -1, 0x1p63, -0x1p63, 0x1p53, 0x1p53, 0x1p53 + 4, -0x1p53};
  for (size_t i = 0; i < std::size(longs); ++i)
    EXPECT_EQ(dfloatk_(&longs[i]), expected[i]) << longs[i];
  const float singles[] = {
      0, -0.0F, 0.1F, -3.5F, 0x1p-149F, __builtin_inff(), -__builtin_inff(), __builtin_nanf("")};
  for (const float x : singles)
    EXPECT_TRUE(same<double>(cdfloat_(&x), x)) << x;
}

// As the page of the routine says.
TEST(Conversions, RoundInTheDirectionThatIsSet) {
  const int32_t odd = (1 << 24) + 1;
  const int64_t long_odd = (1LL << 53) + 1;
  fesetround(FE_UPWARD);
  const float single = ifloatj_(&odd);
  const double real = dfloatk_(&long_odd);
  fesetround(FE_TONEAREST);
  EXPECT_EQ(single, 16777218.0F);
  EXPECT_EQ(real, 0x1p53 + 2);
}

TEST(Conversions, BetweenIntegers) {
  for (const int16_t i : SHORT_INTEGERS)
    EXPECT_EQ(long_(&i), int32_t{i});
  for (const int32_t i : INTEGERS) {
    EXPECT_EQ(short_(&i), wrapped(i, 16)) << i;
    EXPECT_EQ(intc_(&i), wrapped(i, 16)) << i;
  }
}

TEST(Numeric, TouchesNoErrorState) {
  const int16_t i = -7, j = 3;
  const int32_t least = INT_MIN, most = INT_MAX;
  const int64_t long_least = INT64_MIN;
  const float x = __builtin_inff();
  const double y = __builtin_inf();
  EXPECT_EQ(state_after([&] {
              dim_(&x, &x), ddim_(&y, &y), iidim_(&i, &j), jdim_(&least, &most), jabs_(&least), jmod_(&i, &j),
                  inmax_();
              ifloati_(&i), ifloatj_(&most), dfloati_(&i), dfloatj_(&most), idfloat_(&most),
                  dfloatk_(&long_least);
              cdfloat_(&x), long_(&i), short_(&most), intc_(&most);
            }),
            untouched());
}

}  // namespace
