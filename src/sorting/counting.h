// Elements of one and two bytes.
#ifndef QXPORT_SORTING_COUNTING_H
#define QXPORT_SORTING_COUNTING_H

#include "sorting/tier.h"

namespace qxport::sorting {

// Signed, as their bits.
void sort_1(const Tier &tier, Cell<uint8_t> *array, size_t count);
void sort_2(const Tier &tier, Cell<uint16_t> *array, size_t count);

// Strings, whose bytes compare unsigned, the first one first.
void sort_unsigned_1(const Tier &tier, Cell<uint8_t> *array, size_t count);
void sort_strings_of_2(const Tier &tier, Cell<uint16_t> *array, size_t count);

}  // namespace qxport::sorting

#endif
