// What the routines of control and status words do, on each target in its own way.
#ifndef QXPORT_COMPAT_FPWORDS_H
#define QXPORT_COMPAT_FPWORDS_H

#include <cstdint>

namespace qxport {

uint16_t control_shown();
void set_control(uint16_t control);
uint16_t status_shown();
void clear_status();

}  // namespace qxport

#endif
