// The floating-point environment of the calling thread, the same for both units of the processor.
#include "contract/fp_units.h"
#include "contract/services.h"
#include "core/services/fp_control.h"

using namespace qxport;

namespace {

// The x87 unit traps at its next instruction on a flag raised long ago whose exception is unmasked only now,
// and the SSE unit does not. So such flags move over to the SSE unit. (FCLEX lets a trap that is due come
// first.)
void move_stale_flags(unsigned unmasked) {
  const unsigned flags = x87_status() & UNIT_EXCEPTIONS;
  if ((flags & unmasked) == 0)
    return;
  asm volatile("fclex" : : : "memory");
  _mm_setcsr(_mm_getcsr() | flags);
}

// Returns what the SSE register holds then, but for flags.
uint32_t set_masks_and_rounding(uint16_t x87, uint16_t selected) {
  const uint16_t before = x87_control();
  const auto control = static_cast<uint16_t>((before & ~selected) | (x87 & selected));
  const unsigned unmasked = before & ~control & X87_MASKS;
  if (unmasked != 0)
    move_stale_flags(unmasked);
  const uint32_t sse = set_sse_fields(x87, selected);
  if (control != before)
    set_x87_control(control);
  return sse;
}

}  // namespace

uint32_t controlfp(uint32_t value, uint32_t mask) {
  const bool sets_fields = (mask & (FP_ALL_EXCEPTIONS | FP_ROUNDING)) != 0;
  const uint32_t sse =
      sets_fields ? set_masks_and_rounding(x87_fields(value & ~FP_INFINITY), x87_fields(mask & ~FP_INFINITY))
                  : _mm_getcsr();
  if ((mask & (FP_PRECISION | FP_INFINITY)) != 0)
    qxcore::set_precision_and_infinity(value, mask);
  return qxcore::control_word(sse);
}

uint32_t statusfp() {
  return exceptions_of_unit(raised_flags());
}

uint32_t clearfp() {
  const uint32_t raised = exceptions_of_unit(raised_flags());
  clear_flags();
  return raised;
}
