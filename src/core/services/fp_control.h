// What of the floating-point control word the targets keep in different places.
#ifndef QXPORT_CORE_SERVICES_FP_CONTROL_H
#define QXPORT_CORE_SERVICES_FP_CONTROL_H

#include <cstdint>

namespace qxcore {

// The control word of this thread, whose SSE register holds `sse`.
uint32_t control_word(uint32_t sse);

// Replaces the bits of precision and infinity control that mask selects.
void set_precision_and_infinity(uint32_t value, uint32_t mask);

}  // namespace qxcore

#endif
