// 32-bit: the words are those of the x87 unit itself, and the SSE unit follows it.
#include "compat/fpwords.h"
#include "contract/fp_units.h"
#include "frame/fortran.h"

namespace qxport {

namespace {

constexpr size_t STATE_BYTES = 108;
using State = char[STATE_BYTES];

// The fields of the control word that _control87 replaces: rounding and precision only where the mask holds
// both of their bits, infinity control never.
constexpr uint16_t fields_selected(uint32_t mask) {
  unsigned selected = unit_exceptions(mask);
  if ((mask & FP_ROUNDING) == FP_ROUNDING)
    selected |= X87_ROUNDING;
  if ((mask & FP_PRECISION) == FP_PRECISION)
    selected |= X87_PRECISION;
  return static_cast<uint16_t>(selected);
}

}  // namespace

uint16_t control_shown() {
  return x87_control();
}

void set_control(uint16_t control) {
  set_sse_fields(control, X87_MASKS | X87_ROUNDING);
  set_x87_control(control);
}

uint16_t status_shown() {
  return static_cast<uint16_t>(x87_status() | raised_flags());
}

void clear_status() {
  clear_flags();
}

}  // namespace qxport

using namespace qxport;

int32_t _control87(int32_t new_, int32_t mask) {
  const auto word = static_cast<uint32_t>(new_);
  const uint16_t selected = fields_selected(static_cast<uint32_t>(mask));
  const auto fields = static_cast<uint16_t>(x87_fields(word) | x87_precision(word));
  const auto control = static_cast<uint16_t>((x87_control() & ~selected) | (fields & selected));
  set_sse_fields(control, selected);
  set_x87_control(control);
  return static_cast<int32_t>(fields_of_x87(control) | precision_of_x87(control));
}

int32_t _status87() {
  return static_cast<int32_t>(exceptions_of_unit(raised_flags()));
}

int32_t _clear87() {
  const uint32_t raised = exceptions_of_unit(raised_flags());
  clear_flags();
  return static_cast<int32_t>(raised);
}

// The unit is as after its initialisation then.
void save_fp_state(void *area) {
  asm volatile("fnsave %0" : "=m"(*static_cast<State *>(area)) : : "memory");
}

void restore_fp_state(const void *area) {
  asm volatile("frstor %0" : : "m"(*static_cast<const State *>(area)) : "memory");
}
