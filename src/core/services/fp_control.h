// What of the floating-point control word the targets keep in different places.
#ifndef QXPORT_CORE_SERVICES_FP_CONTROL_H
#define QXPORT_CORE_SERVICES_FP_CONTROL_H

#include <cstdint>

namespace qxcore {

// The control word of this thread.
uint32_t control_word();

// Replaces the bits of precision and infinity control that mask selects.
void set_precision_and_infinity(uint32_t value, uint32_t mask);

}  // namespace qxcore

#endif
