// The order of reals among which are NaNs, or zeros of both signs.
//
// Such elements compare neither less nor greater, so where they end up depends on how the array is sorted,
// and callers rely on it: Shell's sort over the gaps 1, 4, 13, 40, ..., each element inserted into the chain
// of those that many places before it. The chains of one gap are independent of one another, so neighbouring
// ones are gone down together, a vector of them at a time.
#ifndef QXPORT_SORTING_DESCRIBED_H
#define QXPORT_SORTING_DESCRIBED_H

#include "sorting/images.h"

namespace qxport::sorting {

// Greater elements of the chain move up until one is not, or the chain begins.
template <typename T>
SORTING_INLINE void insert(Cell<T> *array, size_t place, size_t gap) {
  const Cell<T> key = array[place];
  const T limit = threshold(key.value);
  for (; place >= gap && exceeds(array[place - gap].value, limit); place -= gap)
    array[place] = array[place - gap];
  array[place] = key;
}

// The first gap: the second below the first of its sequence that is not below the count.
SORTING_INLINE size_t first_gap(size_t count) {
  size_t gap = 1;
  if (count >= 13) {
    while (gap < count)
      gap = 3 * gap + 1;
    gap = (gap - 1) / 3;
    gap = (gap - 1) / 3;
  }
  return gap;
}

// One pass. Chains offers vectors of several widths, the widest first; with none each chain is gone down
// alone.
template <typename T, typename Chains, typename... Narrower>
SORTING_INLINE size_t insert_vectors(Cell<T> *array, size_t place, size_t row_end, size_t gap) {
  for (; row_end - place >= Chains::N; place += Chains::N)
    Chains::insert(array, place, gap);
  if constexpr (sizeof...(Narrower) > 0)
    return insert_vectors<T, Narrower...>(array, place, row_end, gap);
  return place;
}

template <typename Lanes, typename... Chains>
void described_sort(Cell<typename Lanes::T> *array, size_t count) {
  using T = typename Lanes::T;
  for (size_t gap = first_gap(count);; gap = (gap - 1) / 3) {
    // Rows of as many elements as there are chains.
    for (size_t row = gap; row < count; row += gap) {
      const size_t row_end = count - row < gap ? count : row + gap;
      size_t place = row;
      if constexpr (sizeof...(Chains) > 0)
        place = insert_vectors<T, Chains...>(array, place, row_end, gap);
      for (; place < row_end; ++place)
        insert(array, place, gap);
    }
    if (gap == 1)
      return;
  }
}

}  // namespace qxport::sorting

#endif
