// Parting an array in two around a pivot, in place: the elements not greater than the pivot, then the greater
// ones.
//
// A block from either end is set aside, which makes room at both ends. From then on blocks are taken from
// that end whose room is the smaller, and each vector's elements are stored to both ends at once: there is
// always room for a block at each. What was set aside fills the gap that is left at last. No branch depends
// on the elements.
#ifndef QXPORT_SORTING_PARTITION_H
#define QXPORT_SORTING_PARTITION_H

#include "sorting/cells.h"

namespace qxport::sorting {

template <typename Lanes>
constexpr size_t BLOCK = Lanes::UNROLL *Lanes::N;

// Answers how many are not greater. The array has at least two blocks.
template <typename Lanes>
[[gnu::noinline]] size_t partition(Cell<typename Lanes::T> *array, size_t count, typename Lanes::T pivot) {
  constexpr size_t BLOCK = sorting::BLOCK<Lanes>;
  using Element = Cell<typename Lanes::T>;
  const typename Lanes::V pivots = Lanes::all(pivot);
  Element *left = array;
  Element *right = array + count;

  // The right one also takes what does not make a block, so that whole blocks are left.
  Element aside[3 * BLOCK];
  const size_t from_right = BLOCK + count % BLOCK;
  const size_t set_aside = BLOCK + from_right;
  __builtin_memcpy(aside, left, BLOCK * sizeof(Element));
  __builtin_memcpy(aside + BLOCK, right - from_right, from_right * sizeof(Element));

  const Element *unread = left + BLOCK;
  const Element *unread_end = right - from_right;
  while (unread != unread_end) {
    const bool room_on_left_is_less = unread - left <= right - unread_end;
    const Element *block = room_on_left_is_less ? unread : unread_end - BLOCK;
    unread += room_on_left_is_less ? BLOCK : 0;
    unread_end -= room_on_left_is_less ? 0 : BLOCK;
    typename Lanes::V vectors[Lanes::UNROLL];
    repeat<Lanes::UNROLL>([&](auto index) SORTING_UNROLLED {
      vectors[decltype(index)::value] = Lanes::load(block + decltype(index)::value * Lanes::N);
    });
    repeat<Lanes::UNROLL>([&](auto index) SORTING_UNROLLED {
      const size_t greater = Lanes::spread(vectors[decltype(index)::value], pivots, left, right);
      left += Lanes::N - greater;
      right -= greater;
    });
  }

  size_t next = 0;
  for (; next + Lanes::SPREAD_ROOM <= set_aside; next += Lanes::N) {
    const size_t greater = Lanes::spread(Lanes::load(aside + next), pivots, left, right);
    left += Lanes::N - greater;
    right -= greater;
  }
  for (; next < set_aside; ++next) {
    const Element element = aside[next];
    const bool greater = element.value > pivot;
    *left = element;
    right[-1] = element;
    left += !greater;
    right -= greater;
  }
  return static_cast<size_t>(left - array);
}

}  // namespace qxport::sorting

#endif
