// Bessel functions, beside tables of their values and the host's math library.
#include "outcome.h"

#include <climits>
#include <cmath>

namespace {

constexpr double INFINITE = __builtin_inf();

struct Tabulated {
  double x, j0, j1, j2, y0, y1, y2;
};
constexpr Tabulated TABLE[] = {{0.5, 0.938469807240813, 0.242268457674874, 0.0306040234586826,
                                -0.444518733506707, -1.47147239267024, -5.44137083717427},
                               {1.0, 0.765197686557967, 0.440050585744934, 0.114903484931900,
                                0.0882569642156769, -0.781212821300289, -1.65068260681625},
                               {5.0, -0.177596771314338, -0.327579137591465, 0.0465651162777522,
                                -0.308517625249034, 0.147863143391227, 0.367662882605525},
                               {10.0, -0.245935764451348, 0.0434727461688614, 0.254630313685121,
                                0.0556711672835994, 0.249015424206954, -0.00586808244220861}};

TEST(Bessel, AgreesWithTheTables) {
  const int32_t zero = 0, one = 1, two = 2, minus_one = -1;
  for (const Tabulated &row : TABLE) {
    const double x = row.x;
    EXPECT_NEAR(dbesj0_(&x), row.j0, 2e-15);
    EXPECT_NEAR(dbesj1_(&x), row.j1, 2e-15);
    EXPECT_NEAR(dbesjn_(&two, &x), row.j2, 2e-15);
    EXPECT_NEAR(dbesjn_(&zero, &x), row.j0, 2e-15);
    EXPECT_NEAR(dbesjn_(&minus_one, &x), -row.j1, 2e-15);
    EXPECT_NEAR(dbesy0_(&x), row.y0, 2e-14);
    EXPECT_NEAR(dbesy1_(&x), row.y1, 2e-14);
    EXPECT_NEAR(dbesyn_(&two, &x), row.y2, 2e-14);
    EXPECT_NEAR(dbesyn_(&one, &x), row.y1, 2e-14);
    EXPECT_NEAR(dbesyn_(&minus_one, &x), -row.y1, 2e-14);
  }
}

template <typename Real>
bool same(Real got, Real expected) {
  return std::isnan(expected) ? std::isnan(got)
                              : got == expected && std::signbit(got) == std::signbit(expected);
}

constexpr double ARGUMENTS[] = {
    0.0,  -0.0, 1.0,  -1.0,   0.1,  2.404825557695773, 3.8317059702075125, 7.5, -7.5,
    1e-3, 1e8,  1e30, 3.4e38, -1e5, 0x1p-149,          __builtin_nan("")};
constexpr int32_t ORDERS[] = {0, 1, 2, 3, -1, -2, 10, -11, 50};

TEST(Bessel, DoublesAreTheHosts) {
  for (const double x : ARGUMENTS) {
    EXPECT_TRUE(same(dbesj0_(&x), j0(x))) << x;
    EXPECT_TRUE(same(dbesj1_(&x), j1(x))) << x;
    EXPECT_TRUE(same(dbesy0_(&x), y0(x))) << x;
    EXPECT_TRUE(same(dbesy1_(&x), y1(x))) << x;
    for (const int32_t n : ORDERS) {
      EXPECT_TRUE(same(dbesjn_(&n, &x), jn(n, x))) << n << ' ' << x;
      EXPECT_TRUE(same(dbesyn_(&n, &x), yn(n, x))) << n << ' ' << x;
    }
  }
}

// Rounded once, and not what the host's functions of single precision answer.
TEST(Bessel, SinglesAreTheHostsDoublesRounded) {
  const auto rounded = [](double value) {
    const volatile auto single = static_cast<float>(value);
    return static_cast<float>(single);
  };
  for (const double argument : ARGUMENTS) {
    const auto x = static_cast<float>(argument);
    EXPECT_TRUE(same(besj0_(&x), rounded(j0(x)))) << x;
    EXPECT_TRUE(same(besj1_(&x), rounded(j1(x)))) << x;
    EXPECT_TRUE(same(besy0_(&x), rounded(y0(x)))) << x;
    EXPECT_TRUE(same(besy1_(&x), rounded(y1(x)))) << x;
    for (const int32_t n : ORDERS) {
      EXPECT_TRUE(same(besjn_(&n, &x), rounded(jn(n, x)))) << n << ' ' << x;
      EXPECT_TRUE(same(besyn_(&n, &x), rounded(yn(n, x)))) << n << ' ' << x;
    }
  }
}

TEST(Bessel, InfinitiesOfTheSecondKindAreZero) {
  for (const double x : {INFINITE, -INFINITE}) {
    const auto single = static_cast<float>(x);
    EXPECT_TRUE(same(besy0_(&single), 0.0F));
    EXPECT_TRUE(same(besy1_(&single), 0.0F));
    EXPECT_TRUE(same(dbesy0_(&x), 0.0));
    EXPECT_TRUE(same(dbesy1_(&x), 0.0));
    for (const int32_t n : {0, 1, -1, 2, INT_MAX, INT_MIN}) {
      EXPECT_TRUE(same(besyn_(&n, &single), 0.0F)) << n;
      EXPECT_TRUE(same(dbesyn_(&n, &x), 0.0)) << n;
    }
  }
}

TEST(Bessel, OfZeroIsWhatTheHostSays) {
  const float zero = 0;
  EXPECT_EQ(besy0_(&zero), -INFINITE);
  const double real_zero = 0;
  EXPECT_EQ(dbesy0_(&real_zero), -INFINITE);
}

}  // namespace
