// Choosing the value around which an array is parted.
#ifndef QXPORT_SORTING_PIVOTS_H
#define QXPORT_SORTING_PIVOTS_H

#include "sorting/networks.h"

namespace qxport::sorting {

// The median of one vector from each of ROWS equal stretches of the array, at a place in it that an adversary
// or a pattern does not meet by chance. Equal arrays have equal medians.
template <typename Lanes, int ROWS>
[[gnu::noinline]] typename Lanes::T median_of_sample(const Cell<typename Lanes::T> *array, size_t count) {
  const size_t stretch = count / ROWS;
  const size_t places = stretch - Lanes::N + 1;
  typename Lanes::V rows[ROWS];
  uint32_t random = static_cast<uint32_t>(count);
  repeat<ROWS>([&](auto index) SORTING_UNROLLED {
    random = random * 1664525 + 1013904223;
    const size_t offset =
        places <= UINT32_MAX ? static_cast<size_t>(uint64_t{random} * places >> 32) : random;
    rows[decltype(index)::value] = Lanes::load(array + decltype(index)::value * stretch + offset);
  });
  sort_rows<Lanes, ROWS>(rows);
  // The element in the middle of the sequence ends the lower half of the rows.
  Cell<typename Lanes::T> lower[Lanes::N];
  Lanes::store(lower, rows[(ROWS - 1) / 2]);
  return lower[Lanes::N - 1].value;
}

template <typename Lanes>
SORTING_INLINE typename Lanes::T sampled_pivot(const Cell<typename Lanes::T> *array, size_t count) {
  if (count < 64 * Lanes::N)
    return median_of_sample<Lanes, 4>(array, count);
  if (count < 1024 * Lanes::N)
    return median_of_sample<Lanes, 8>(array, count);
  return median_of_sample<Lanes, Lanes::ROWS>(array, count);
}

template <typename T>
struct Range {
  T least, greatest;
};

template <typename Lanes>
[[gnu::noinline]] Range<typename Lanes::T> range_of(const Cell<typename Lanes::T> *array, size_t count) {
  using T = typename Lanes::T;
  typename Lanes::V least = Lanes::load(array), greatest = least;
  const auto include = [&](typename Lanes::V vector) SORTING_UNROLLED {
    typename Lanes::V larger = vector;
    Lanes::order(least, larger);
    Lanes::order(vector, greatest);
  };
  for (size_t next = 0; next + Lanes::N <= count; next += Lanes::N)
    include(Lanes::load(array + next));
  include(Lanes::load(array + count - Lanes::N));
  Cell<T> least_lanes[Lanes::N], greatest_lanes[Lanes::N];
  Lanes::store(least_lanes, least);
  Lanes::store(greatest_lanes, greatest);
  Range<T> range = {least_lanes[0].value, greatest_lanes[0].value};
  for (int lane = 1; lane < Lanes::N; ++lane) {
    if (range.least > least_lanes[lane].value)
      range.least = least_lanes[lane].value;
    if (greatest_lanes[lane].value > range.greatest)
      range.greatest = greatest_lanes[lane].value;
  }
  return range;
}

}  // namespace qxport::sorting

#endif
