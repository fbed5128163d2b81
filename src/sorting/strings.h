// Strings of any width from three bytes on, where they lie.
#ifndef QXPORT_SORTING_STRINGS_H
#define QXPORT_SORTING_STRINGS_H

#include "sorting/tier.h"

#include <cstddef>

namespace qxport::sorting {

// In the order of their unsigned bytes. `scratch` has room for one string. For each time that the count can
// be halved, pivots are sampled twice before the words are halved by value; a test may ask for none.
void sort_strings_in_place(const Tier &tier, char *array, size_t count, size_t width, char *scratch,
                           int samplings_per_halving = 2);

}  // namespace qxport::sorting

#endif
