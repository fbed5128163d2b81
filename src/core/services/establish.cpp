// Condition handlers, which no run-time served here has.
#include "contract/services.h"

int32_t for__intermediate_establish(void *, void *, void *, void *) {
  return 0;
}
