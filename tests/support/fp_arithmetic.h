// Arithmetic in the three kinds of real numbers, compiled as any program's: operands that the compiler does
// not know.
#ifndef TESTS_SUPPORT_FP_ARITHMETIC_H
#define TESTS_SUPPORT_FP_ARITHMETIC_H

#include <cstdint>
#include <limits>

template <typename Real>
[[gnu::noinline]] Real quotient(Real a, Real b) {
  volatile Real dividend = a;
  volatile Real divisor = b;
  volatile Real answer = dividend / divisor;
  return answer;
}

template <typename Real>
[[gnu::noinline]] Real product(Real a, Real b) {
  volatile Real one = a;
  volatile Real other = b;
  volatile Real answer = one * other;
  return answer;
}

template <typename Real>
[[gnu::noinline]] Real sum(Real a, Real b) {
  volatile Real one = a;
  volatile Real other = b;
  volatile Real answer = one + other;
  return answer;
}

enum class Direction { Nearest, Down, Up, Zero, Unknown };

// The direction, by its effect on a sum that no Real holds: 1 and a quarter of the distance to the next
// number.
template <typename Real>
Direction direction_of() {
  constexpr Real EPSILON = std::numeric_limits<Real>::epsilon();
  const Real above = sum<Real>(1, EPSILON / 4);
  const Real below = sum<Real>(-1, -EPSILON / 4);
  if (above == 1 && below == -1)
    // To nearest and toward zero differ where three quarters are added.
    return sum<Real>(1, EPSILON * 3 / 4) == 1 ? Direction::Zero : Direction::Nearest;
  if (above == 1 + EPSILON && below == -1)
    return Direction::Up;
  if (above == 1 && below == -1 - EPSILON)
    return Direction::Down;
  return Direction::Unknown;
}

// An operation that raises one exception, and an inexact result where that cannot be helped.
template <typename Real>
void raise_invalid() {
  quotient<Real>(0, 0);
}
template <typename Real>
void raise_zero_divide() {
  quotient<Real>(1, 0);
}
template <typename Real>
void raise_overflow() {
  product<Real>(std::numeric_limits<Real>::max(), 2);
}
template <typename Real>
void raise_underflow() {
  product<Real>(std::numeric_limits<Real>::min(), std::numeric_limits<Real>::min());
}
template <typename Real>
void raise_inexact() {
  quotient<Real>(1, 3);
}
template <typename Real>
void raise_denormal() {
  sum<Real>(std::numeric_limits<Real>::denorm_min(), 1);
}

#endif
