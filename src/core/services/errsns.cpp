// The error status of the run-time.
#include "contract/services.h"

#include "frame/fortran.h"

#include <atomic>

namespace {

// One set for the process. Threads that record at the same time may leave values of both, but each value is
// one that was recorded.
struct {
  std::atomic<int32_t> io, number, status, unit, condition;
} recorded;

}  // namespace

void for_errsns_load(int32_t io, int32_t number, int32_t status, int32_t unit, int32_t condition) {
  recorded.io.store(io, std::memory_order_relaxed);
  recorded.number.store(number, std::memory_order_relaxed);
  recorded.status.store(status, std::memory_order_relaxed);
  recorded.unit.store(unit, std::memory_order_relaxed);
  recorded.condition.store(condition, std::memory_order_relaxed);
}

// CALL ERRSNS(IO, NUMBER, STATUS, UNIT, CONDITION)
void errsns_(int32_t *io, int32_t *number, int32_t *status, int32_t *unit, int32_t *condition) {
  *io = recorded.io.load(std::memory_order_relaxed);
  *number = recorded.number.load(std::memory_order_relaxed);
  *status = recorded.status.load(std::memory_order_relaxed);
  *unit = recorded.unit.load(std::memory_order_relaxed);
  *condition = recorded.condition.load(std::memory_order_relaxed);
}

QXPORT_ALIAS(errsns_)
