// The one place that chooses a tier.
#include "sorting/tier.h"

namespace qxport::sorting {

const Tier &best_tier() {
  return PORTABLE_TIER;
}

bool runs_here(const Tier &tier) {
  return &tier == &PORTABLE_TIER;
}

}  // namespace qxport::sorting
