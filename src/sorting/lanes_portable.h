// Vectors of a single lane, for processors without wide instructions: a partition and networks without
// branches.
#ifndef QXPORT_SORTING_LANES_PORTABLE_H
#define QXPORT_SORTING_LANES_PORTABLE_H

#include "sorting/cells.h"

namespace qxport::sorting::portable {

// Every tier sorts a handful of elements by such; OWNER keeps the functions of one tier apart from another's.
template <typename Element, typename Owner = void>
struct Single {
  using T = Element;
  using V = Element;
  // Reals are compared as their images.
  using Bits = Single;
  static constexpr int N = 1;
  static constexpr int ROWS = 16;

  static SORTING_INLINE V load(const Cell<T> *from) { return from->value; }
  static SORTING_INLINE void store(Cell<T> *to, V lane) { to->value = lane; }
  static SORTING_INLINE V load_some(const Cell<T> *from, size_t count) {
    return count > 0 ? from->value : Limits<T>::LARGEST;
  }
  static SORTING_INLINE void store_some(Cell<T> *to, size_t count, V lane) {
    if (count > 0)
      to->value = lane;
  }
  static SORTING_INLINE V all(T value) { return value; }
  static SORTING_INLINE bool any_greater(V a, V b) { return a > b; }
  template <int MASK>
  static SORTING_INLINE V flipped(V lane) {
    return lane;
  }

  static SORTING_INLINE void order(V &a, V &b) {
    const V one = a, other = b;
    if constexpr (sizeof(T) == 16) {
      const int64_t exchanged = -static_cast<int64_t>(one > other);
      const Wide change = {(one.high ^ other.high) & exchanged, (one.low ^ other.low) & exchanged};
      a = {one.high ^ change.high, one.low ^ change.low};
      b = {other.high ^ change.high, other.low ^ change.low};
    } else {
      a = other > one ? one : other;
      b = other > one ? other : one;
    }
  }

  // Stores the lane to both ends; how many are not greater than the pivot.
  static SORTING_INLINE size_t spread(V lane, V pivot, Cell<T> *left, Cell<T> *right) {
    left->value = lane;
    right[-1].value = lane;
    return !(lane > pivot);
  }
};

}  // namespace qxport::sorting::portable

#endif
