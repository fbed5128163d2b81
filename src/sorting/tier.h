// What there is once for each kind of processor. A tier is a table of functions, compiled from the same
// headers with the instructions of that kind.
#ifndef QXPORT_SORTING_TIER_H
#define QXPORT_SORTING_TIER_H

#include "sorting/cells.h"

namespace qxport::sorting {

struct Tier {
  const char *name;
  bool has_vectors;

  // Signed integers.
  void (*sort_4)(Cell<int32_t> *array, size_t count);
  void (*sort_8)(Cell<int64_t> *array, size_t count);
  void (*sort_16)(Cell<Wide> *array, size_t count);

  // Reals, as the bits that they are.
  void (*sort_reals_4)(Cell<int32_t> *array, size_t count);
  void (*sort_reals_8)(Cell<int64_t> *array, size_t count);
};

extern const Tier PORTABLE_TIER;
extern const Tier AVX2_TIER;
extern const Tier AVX512_TIER;

// The best one for this processor, found out at the first call.
const Tier &best_tier();

// Can this processor run it?
bool runs_here(const Tier &tier);

}  // namespace qxport::sorting

#endif
