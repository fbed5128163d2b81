// The processor's floating-point units as the tests see them, without the library's own accessors; and a
// fresh environment around each test.
#ifndef TESTS_SUPPORT_FP_UNITS_H
#define TESTS_SUPPORT_FP_UNITS_H

#include <gtest/gtest.h>

#include <cstdint>
#include <xmmintrin.h>

constexpr uint32_t FRESH_SSE = 0x1F80;
constexpr uint16_t FRESH_X87 = 0x037F;

#if UINTPTR_MAX > UINT32_MAX
constexpr bool IS_64_BIT = true;
#else
constexpr bool IS_64_BIT = false;
#endif

inline uint32_t sse_word() {
  return _mm_getcsr();
}

inline void load_sse_word(uint32_t word) {
  _mm_setcsr(word);
}

inline uint16_t x87_control_word() {
  uint16_t word;
  asm volatile("fnstcw %0" : "=m"(word));
  return word;
}

inline void load_x87_control_word(uint16_t word) {
  asm volatile("fldcw %0" : : "m"(word));
}

inline uint16_t x87_status_word() {
  uint16_t word;
  asm volatile("fnstsw %0" : "=m"(word));
  return word;
}

inline void fresh_units() {
  // What the compiler holds on the stack of registers is gone.
  asm volatile("fninit" : : : "st", "st(1)", "st(2)", "st(3)", "st(4)", "st(5)", "st(6)", "st(7)");
  _mm_setcsr(FRESH_SSE);
}

// One operation of each unit, never moved and never computed by the compiler.
inline double sse_divide(double a, double b) {
#if defined __x86_64__
  asm volatile("divsd %1, %0" : "+x"(a) : "x"(b));
#else
  asm volatile("movsd %0, %%xmm0\n\tdivsd %1, %%xmm0\n\tmovsd %%xmm0, %0" : "+m"(a) : "m"(b) : "xmm0");
#endif
  return a;
}

inline long double x87_divide(long double a, long double b) {
  long double quotient;
  asm volatile("fldt %1\n\tfldt %2\n\tfdivrp\n\tfstpt %0" : "=m"(quotient) : "m"(a), "m"(b) : "st", "st(1)");
  return quotient;
}

inline long double x87_multiply(long double a, long double b) {
  long double product;
  asm volatile("fldt %1\n\tfldt %2\n\tfmulp\n\tfstpt %0" : "=m"(product) : "m"(a), "m"(b) : "st", "st(1)");
  return product;
}

class FreshUnits : public testing::Test {
protected:
  FreshUnits() { fresh_units(); }
  ~FreshUnits() override { fresh_units(); }
};

#endif
