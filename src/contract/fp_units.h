// The processor's two floating-point units: the register of the SSE unit, the words of the x87 unit.
#ifndef QXPORT_CONTRACT_FP_UNITS_H
#define QXPORT_CONTRACT_FP_UNITS_H

#include "contract/floating_point.h"

#include <xmmintrin.h>

namespace qxport {

// Fields of the x87 control word. Fortran callers see this layout on every target.
constexpr uint16_t X87_MASKS = UNIT_EXCEPTIONS;
constexpr uint16_t X87_PRECISION = 0x0300;
constexpr uint16_t X87_24_BITS = 0x0000;
constexpr uint16_t X87_53_BITS = 0x0200;
constexpr uint16_t X87_64_BITS = 0x0300;
constexpr uint16_t X87_ROUNDING = 0x0C00;
constexpr uint16_t X87_INFINITY = 0x1000;

// The SSE register holds flags, masks and rounding in one word.
constexpr uint32_t SSE_FLAGS = UNIT_EXCEPTIONS;
constexpr unsigned SSE_MASKS_SHIFT = 7;

inline uint16_t x87_control() {
  uint16_t word;
  asm volatile("fnstcw %0" : "=m"(word));
  return word;
}

inline void set_x87_control(uint16_t word) {
  asm volatile("fldcw %0" : : "m"(word) : "memory");
}

inline uint16_t x87_status() {
  uint16_t word;
  asm volatile("fnstsw %0" : "=m"(word));
  return word;
}

inline void clear_x87_flags() {
  asm volatile("fnclex" : : : "memory");
}

// Masks, rounding and infinity control of the services' word in the layout of the x87 unit, and back.
// Precision is a matter of its own: see below.
constexpr uint16_t x87_fields(uint32_t word) {
  return static_cast<uint16_t>(unit_exceptions(word) | (word & FP_ROUNDING) << 2 | (word & FP_INFINITY) >> 6);
}

constexpr uint32_t fields_of_x87(uint16_t x87) {
  return exceptions_of_unit(x87) | static_cast<uint32_t>(x87 & X87_ROUNDING) >> 2 |
         static_cast<uint32_t>(x87 & X87_INFINITY) << 6;
}

// Precision control in either layout. A word that asks for both lesser precisions gets the least, and the
// value that the unit reserves reads as its full precision.
constexpr uint16_t x87_precision(uint32_t word) {
  switch (word & FP_PRECISION) {
  case FP_64_BITS:
    return X87_64_BITS;
  case FP_53_BITS:
    return X87_53_BITS;
  default:
    return X87_24_BITS;
  }
}

constexpr uint32_t precision_of_x87(uint16_t x87) {
  switch (x87 & X87_PRECISION) {
  case X87_24_BITS:
    return FP_24_BITS;
  case X87_53_BITS:
    return FP_53_BITS;
  default:
    return FP_64_BITS;
  }
}

// Masks and rounding of an x87 word in the layout of the SSE register, which has no more of it.
constexpr uint32_t sse_fields(uint16_t x87) {
  return static_cast<uint32_t>(x87 & X87_MASKS) << SSE_MASKS_SHIFT | static_cast<uint32_t>(x87 & X87_ROUNDING)
                                                                         << 3;
}

// Replaces the selected fields of the SSE register, both words given in the layout of the x87 unit. Loading a
// register of control is dear: what it holds already is not loaded. The register's new word is returned: to
// read it again would wait for the load.
inline uint32_t set_sse_fields(uint16_t x87, uint16_t selected) {
  const uint32_t fields = sse_fields(selected);
  const uint32_t before = _mm_getcsr();
  const uint32_t word = (before & ~fields) | (sse_fields(x87) & fields);
  if (word != before)
    _mm_setcsr(word);
  return word;
}

// The flags that either unit has raised.
inline unsigned raised_flags() {
  return (_mm_getcsr() | x87_status()) & UNIT_EXCEPTIONS;
}

inline void clear_flags() {
  clear_x87_flags();
  _mm_setcsr(_mm_getcsr() & ~SSE_FLAGS);
}

}  // namespace qxport

#endif
