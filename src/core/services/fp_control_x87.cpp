// 32-bit: compilers use the x87 unit as a rule, and it has all that the control word speaks of.
#include "contract/fp_units.h"
#include "core/services/fp_control.h"

using namespace qxport;

namespace qxcore {

namespace {

constexpr uint32_t word_of(uint16_t x87) {
  return fields_of_x87(x87) | precision_of_x87(x87);
}

}  // namespace

uint32_t control_word(uint32_t) {
  return word_of(x87_control());
}

void set_precision_and_infinity(uint32_t value, uint32_t mask) {
  const uint16_t control = x87_control();
  const uint32_t word = (word_of(control) & ~mask) | (value & mask);
  const uint16_t precision = (mask & FP_PRECISION) != 0 ? x87_precision(word) : control & X87_PRECISION;
  const uint16_t infinity = x87_fields(word & FP_INFINITY);
  set_x87_control(static_cast<uint16_t>((control & ~(X87_PRECISION | X87_INFINITY)) | precision | infinity));
}

}  // namespace qxcore
