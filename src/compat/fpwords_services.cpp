// 64-bit: the words are translations of those of the core services.
#include "compat/fpwords.h"
#include "contract/fp_units.h"
#include "contract/services.h"

namespace qxport {

namespace {

uint16_t precision_shown(uint32_t word) {
  if ((word & FP_53_BITS) != 0)
    return X87_53_BITS;
  return (word & FP_24_BITS) != 0 ? X87_24_BITS : X87_64_BITS;
}

// Whatever is not 24 bits sets 64, 53 bits too, though 53 bits are shown where something else has set them:
// callers count on either.
uint32_t precision_set(uint16_t control) {
  return (control & X87_PRECISION) == X87_24_BITS ? FP_24_BITS : FP_64_BITS;
}

}  // namespace

uint16_t control_shown() {
  const uint32_t word = controlfp(0, 0);
  return x87_fields(word) | precision_shown(word);
}

void set_control(uint16_t control) {
  controlfp(fields_of_x87(control) | precision_set(control), FP_CONTROL);
}

uint16_t status_shown() {
  return static_cast<uint16_t>(unit_exceptions(statusfp()));
}

void clear_status() {
  clearfp();
}

}  // namespace qxport
