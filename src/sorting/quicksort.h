// An array of any length: it is parted until the parts are few enough for the networks.
#ifndef QXPORT_SORTING_QUICKSORT_H
#define QXPORT_SORTING_QUICKSORT_H

#include "sorting/images.h"
#include "sorting/networks.h"
#include "sorting/partition.h"
#include "sorting/pivots.h"

namespace qxport::sorting {

// Does no element come before one that is less (or greater, for DESCENDING)? Ends at the first that does.
template <typename Lanes, bool DESCENDING>
SORTING_INLINE bool in_order(const Cell<typename Lanes::T> *array, size_t count) {
  if (count <= Lanes::N) {
    for (size_t place = 1; place < count; ++place)
      if (DESCENDING ? array[place].value > array[place - 1].value
                     : array[place - 1].value > array[place].value)
        return false;
    return true;
  }
  const auto broken_at = [&](size_t place) SORTING_UNROLLED {
    const typename Lanes::V here = Lanes::load(array + place), next = Lanes::load(array + place + 1);
    return DESCENDING ? Lanes::any_greater(next, here) : Lanes::any_greater(here, next);
  };
  for (size_t place = 0; place + Lanes::N < count; place += Lanes::N)
    if (broken_at(place))
      return false;
  return !broken_at(count - 1 - Lanes::N);
}

template <typename Lanes>
SORTING_INLINE void reverse(Cell<typename Lanes::T> *array, size_t count) {
  Cell<typename Lanes::T> *left = array, *right = array + count;
  for (; right - left >= 2 * Lanes::N; left += Lanes::N) {
    right -= Lanes::N;
    const typename Lanes::V first = Lanes::load(left), last = Lanes::load(right);
    Lanes::store(left, Lanes::template flipped<Lanes::N - 1>(last));
    Lanes::store(right, Lanes::template flipped<Lanes::N - 1>(first));
  }
  for (; right - left >= 2; ++left) {
    --right;
    const Cell<typename Lanes::T> first = *left;
    *left = *right;
    *right = first;
  }
}

// After `samplings` levels of sampled pivots the parts are halved by value instead: then no more levels
// follow than an element has bits, whatever the elements are.
template <typename Lanes>
void quicksort(Cell<typename Lanes::T> *array, size_t count, int samplings) {
  using T = typename Lanes::T;
  while (count > FEW<Lanes>) {
    T pivot;
    if (--samplings >= 0) {
      pivot = sampled_pivot<Lanes>(array, count);
    } else {
      const Range<T> range = range_of<Lanes>(array, count);
      if (range.least == range.greatest)
        return;
      pivot = middle(range.least, range.greatest);
    }
    size_t lower = partition<Lanes>(array, count, pivot);
    if (lower == count) {
      // Nothing is greater than the pivot: those equal to it are many, as a rule, and come to where they
      // belong.
      if (pivot == Limits<T>::SMALLEST)
        return;
      count = partition<Lanes>(array, count, predecessor(pivot));
      continue;
    }
    // The smaller part first, so that the calls nest no deeper than there are bits in the count.
    if (lower < count - lower) {
      quicksort<Lanes>(array, lower, samplings);
      array += lower;
      count -= lower;
    } else {
      quicksort<Lanes>(array + lower, count - lower, samplings);
      count = lower;
    }
  }
  if (count > 1)
    sort_few<Lanes>(array, count);
}

// More elements than a handful, of which it is not known that they are in order.
template <typename Lanes>
SORTING_INLINE void sort_many(Cell<typename Lanes::T> *array, size_t count) {
  static_assert(FEW<Lanes> >= 2 * Block<Lanes>::ELEMENTS);
  if (count <= FEW<Lanes>)
    return sort_few<Lanes>(array, count);
  if (in_order<Lanes, true>(array, count))
    return reverse<Lanes>(array, count);
  const int levels = static_cast<int>(8 * sizeof(size_t)) - __builtin_clzl(count);
  quicksort<Lanes>(array, count, 2 * levels);
}

template <typename Lanes>
void sort(Cell<typename Lanes::T> *array, size_t count) {
  if (count <= HANDFUL)
    return sort_handful<Lanes>(array, count);
  if (in_order<Lanes, false>(array, count))
    return;
  sort_many<Lanes>(array, count);
}

}  // namespace qxport::sorting

#endif
