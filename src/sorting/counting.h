// Elements of one and two bytes.
#ifndef QXPORT_SORTING_COUNTING_H
#define QXPORT_SORTING_COUNTING_H

#include "sorting/tier.h"

namespace qxport::sorting {

void sort_1(const Tier &tier, Cell<int8_t> *array, size_t count);
void sort_2(const Tier &tier, Cell<int16_t> *array, size_t count);

// Strings of one byte, which compare unsigned.
void sort_unsigned_1(const Tier &tier, Cell<int8_t> *array, size_t count);

}  // namespace qxport::sorting

#endif
