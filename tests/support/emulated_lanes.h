// Vectors of any number of lanes, and of any element that can be compared, in plain code: the kernel of the
// sort runs over them as it does over a processor's, and they can count and choose what they answer.
// Functions, not code in line: the kernel unrolls all that it does.
#ifndef TESTS_SUPPORT_EMULATED_LANES_H
#define TESTS_SUPPORT_EMULATED_LANES_H

#include "sorting/cells.h"

#include <algorithm>
#include <array>
#include <cstring>

template <typename Element, int LANES>
struct EmulatedLanes {
  using T = Element;
  struct V {
    std::array<T, LANES> lanes;
  };
  using Cell = qxport::sorting::Cell<T>;
  static constexpr int N = LANES;
#ifdef __x86_64__
  static constexpr int ROWS = 16;
#else
  static constexpr int ROWS = LANES == 1 ? 16 : 8;
#endif

  // How many elements were compared with a pivot.
  inline static size_t parted = 0;

  [[gnu::noinline]] static V load(const Cell *from) {
    V vector;
    for (int lane = 0; lane < N; ++lane)
      vector.lanes[lane] = from[lane].value;
    return vector;
  }
  static void store(Cell *to, V vector) {
    store_some(to, N, vector);
  }
  [[gnu::noinline]] static V load_some(const Cell *from, size_t count) {
    V vector = all(qxport::sorting::Limits<T>::LARGEST);
    for (size_t lane = 0; lane < count; ++lane)
      vector.lanes[lane] = from[lane].value;
    return vector;
  }
  [[gnu::noinline]] static void store_some(Cell *to, size_t count, V vector) {
    for (size_t lane = 0; lane < count; ++lane)
      to[lane].value = vector.lanes[lane];
  }
  static V all(T value) {
    V vector;
    vector.lanes.fill(value);
    return vector;
  }
  [[gnu::noinline]] static bool any_greater(V a, V b) {
    for (int lane = 0; lane < N; ++lane)
      if (a.lanes[lane] > b.lanes[lane])
        return true;
    return false;
  }
  template <int MASK>
  [[gnu::noinline]] static V flipped(V vector) {
    V other;
    for (int lane = 0; lane < N; ++lane)
      other.lanes[lane] = vector.lanes[lane ^ MASK];
    return other;
  }
  [[gnu::noinline]] static void order(V &a, V &b) {
    for (int lane = 0; lane < N; ++lane)
      if (a.lanes[lane] > b.lanes[lane])
        std::swap(a.lanes[lane], b.lanes[lane]);
  }
  template <int MASK>
  [[gnu::noinline]] static V order_lanes(V vector) {
    for (int lane = 0; lane < N; ++lane)
      if (lane < (lane ^ MASK) && vector.lanes[lane] > vector.lanes[lane ^ MASK])
        std::swap(vector.lanes[lane], vector.lanes[lane ^ MASK]);
    return vector;
  }
  [[gnu::noinline]] static size_t spread(V vector, V pivot, Cell *left, Cell *right) {
    parted += N;
    const auto is_greater = [&](T element) { return element > pivot.lanes[0]; };
    std::array<T, LANES> upper;
    size_t lower = 0, greater = 0;
    for (const T element : vector.lanes)
      if (is_greater(element))
        upper[greater++] = element;
      else
        left[lower++].value = element;
    for (size_t lane = 0; lane < greater; ++lane)
      (right - greater)[lane].value = upper[lane];
    return lower;
  }
};

#endif
