// Control and status words in the layout of the x87 unit.
#include "compat/fpwords.h"

#include "frame/fortran.h"

using namespace qxport;

// CALL GETCONTROLFPQQ(CONTROL)
void getcontrolfpqq_(int16_t *control) {
  *control = static_cast<int16_t>(control_shown());
}

// CALL SCWRQQ(CONTROL)
void scwrqq_(int16_t *control) {
  *control = static_cast<int16_t>(control_shown());
}

// CALL SETCONTROLFPQQ(CONTROL)
void setcontrolfpqq_(const int16_t *control) {
  set_control(static_cast<uint16_t>(*control));
}

// CALL LCWRQQ(CONTROL)
void lcwrqq_(const int16_t *control) {
  set_control(static_cast<uint16_t>(*control));
}

// CALL GETSTATUSFPQQ(STATUS)
void getstatusfpqq_(int16_t *status) {
  *status = static_cast<int16_t>(status_shown());
}

// CALL SSWRQQ(STATUS)
void sswrqq_(int16_t *status) {
  *status = static_cast<int16_t>(status_shown());
}

// CALL CLEARSTATUSFPQQ()
void clearstatusfpqq_() {
  clear_status();
}
