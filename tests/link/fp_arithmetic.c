/* Rounding and flags as a C program's own arithmetic has them; tells what fails. */
#include <float.h>
#include <qxport/qxport.h>
#include <stdio.h>

static int failures;

static void check(int passed, const char *what) {
  if (!passed) {
    printf("FAILED: %s\n", what);
    ++failures;
  }
}

/* What is made of 1 and a quarter, and three quarters, of the distance to the next number; and of both below -1. */
#define SUMS(type, epsilon)                                                                                  \
  do {                                                                                                       \
    volatile type one = 1, part = (epsilon) / 4, sum;                                                        \
    sum = one + part;                                                                                        \
    const int quarter = sum > 1;                                                                             \
    sum = -one - part;                                                                                       \
    const int below = sum < -1;                                                                              \
    part = 3 * (epsilon) / 4;                                                                                \
    sum = one + part;                                                                                        \
    setcontrolfpqq_(&saved);                                                                                 \
    check(quarter == (direction == 2) && below == (direction == 1) && (sum > 1) == (direction % 2 == 0),     \
          #type);                                                                                            \
    setcontrolfpqq_(&word);                                                                                  \
  } while (0)

int main(void) {
  int16_t saved, status;
  getcontrolfpqq_(&saved);
  for (int direction = 0; direction < 4; ++direction) {
    const int16_t word = (int16_t)((saved & ~0x0C00) | direction << 10);
    setcontrolfpqq_(&word);
    SUMS(float, FLT_EPSILON);
    SUMS(double, DBL_EPSILON);
    SUMS(long double, LDBL_EPSILON);
    setcontrolfpqq_(&saved);
  }
  clearstatusfpqq_();
  volatile double x = 0, y = 1;
  y = y / x;
  getstatusfpqq_(&status);
  check((status & 0x3F) == 0x04, "division");
  clearstatusfpqq_();
  volatile long double z = 0;
  z = z / z;
  getstatusfpqq_(&status);
  check((status & 0x3F) == 0x01, "invalid");
  return failures != 0;
}
