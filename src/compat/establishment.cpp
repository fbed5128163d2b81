// What has no meaning on this system, or is the run-time's to decide: condition handlers, error boxes and
// file attributes.
#include "contract/services.h"
#include "frame/errors.h"
#include "frame/fortran.h"

using namespace qxport;

// L = ESTABLISHQQ(HANDLER, CONTEXT, FORMER, FORMER_CONTEXT)
int32_t establishqq_(void (*handler)(), void *context, void *former, void *former_context) {
  void *const address = reinterpret_cast<void *>(handler);
  return for__intermediate_establish(address, context, former, former_context) != 0 ? 1 : 0;
}

// CALL SETERRORMODEQQ(PROMPT)
void seterrormodeqq_(const int32_t *) {}

// L = SETFILEACCESSQQ(FILENAME, ACCESS)
int32_t setfileaccessqq_(const char *, const int32_t *, charlen) {
  set_and_record_status(EINVAL);
  return 0;
}

QXPORT_ALIAS(establishqq_)
QXPORT_ALIAS(setfileaccessqq_)
