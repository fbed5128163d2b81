#include "contract/services.h"
#include "core/gnu/units.h"

// The run-time's own EXIT: it flushes and closes the program's units.
void for_exit(const int32_t *status) {
  qxcore_gnu_exit(status == nullptr ? 0 : *status);
}
