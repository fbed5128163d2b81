// The error status of the run-time.
#include "contract/services.h"

#include "frame/fortran.h"

namespace {

struct {
  int32_t io, number, status, unit, condition;
} recorded;

}  // namespace

void for_errsns_load(int32_t io, int32_t number, int32_t status, int32_t unit, int32_t condition) {
  recorded = {io, number, status, unit, condition};
}

// CALL ERRSNS(IO, NUMBER, STATUS, UNIT, CONDITION)
void errsns_(int32_t *io, int32_t *number, int32_t *status, int32_t *unit, int32_t *condition) {
  *io = recorded.io;
  *number = recorded.number;
  *status = recorded.status;
  *unit = recorded.unit;
  *condition = recorded.condition;
}

QXPORT_ALIAS(errsns_)
