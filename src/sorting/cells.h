// What the kernel's functions are made of: elements at any address, elements of sixteen bytes, and loops that
// the compiler unrolls whole.
//
// The headers of the kernel are compiled once for each kind of processor. Everything in them is inline for
// good or has internal linkage: a function that two such files shared could be the one that the wrong
// processor runs.
#ifndef QXPORT_SORTING_CELLS_H
#define QXPORT_SORTING_CELLS_H

#include <cstddef>
#include <cstdint>

#define SORTING_INLINE __attribute__((always_inline)) inline

namespace qxport::sorting {

// An element in memory. A caller's array may lie at any address and is of a type that the library cannot
// know.
template <typename T>
struct [[gnu::packed, gnu::may_alias]] Cell {
  T value;
};

// Sixteen bytes as two words that compare signed, the more significant one first.
struct Wide {
  int64_t high, low;
};

SORTING_INLINE bool operator>(Wide a, Wide b) {
  return (a.high > b.high) | ((a.high == b.high) & (a.low > b.low));
}
SORTING_INLINE bool operator==(Wide a, Wide b) {
  return (a.high == b.high) & (a.low == b.low);
}

template <typename T>
struct Limits {
  static constexpr T LARGEST = static_cast<T>(~(T{1} << (8 * sizeof(T) - 1)));
  static constexpr T SMALLEST = static_cast<T>(T{1} << (8 * sizeof(T) - 1));
};
template <>
struct Limits<Wide> {
  static constexpr Wide LARGEST = {Limits<int64_t>::LARGEST, Limits<int64_t>::LARGEST};
  static constexpr Wide SMALLEST = {Limits<int64_t>::SMALLEST, Limits<int64_t>::SMALLEST};
};

// The largest value below one that is not the smallest.
template <typename T>
SORTING_INLINE T predecessor(T value) {
  return static_cast<T>(value - 1);
}
SORTING_INLINE Wide predecessor(Wide value) {
  const bool borrow = value.low == Limits<int64_t>::SMALLEST;
  return {value.high - borrow, borrow ? Limits<int64_t>::LARGEST : value.low - 1};
}

// Half-way from `low` to `high`, rounded down: below `high` where the two differ.
template <typename T>
SORTING_INLINE T middle(T low, T high) {
  return static_cast<T>((low & high) + ((low ^ high) >> 1));
}
SORTING_INLINE Wide middle(Wide low, Wide high) {
  if (low.high != high.high)
    return {middle(low.high, high.high), Limits<int64_t>::LARGEST};
  return {low.high, middle(low.low, high.low)};
}

// repeat<3>(f) is f(Index<0>()), f(Index<1>()), f(Index<2>()).
template <int I>
struct Index {
  static constexpr int value = I;
};
template <int... I>
struct Indices {};
template <int COUNT, int... I>
struct IndicesBelow : IndicesBelow<COUNT - 1, COUNT - 1, I...> {};
template <int... I>
struct IndicesBelow<0, I...> {
  using Type = Indices<I...>;
};
template <typename Function, int... I>
SORTING_INLINE void repeat([[maybe_unused]] Function function, Indices<I...>) {
  (function(Index<I>()), ...);
}
template <int COUNT, typename Function>
SORTING_INLINE void repeat(Function function) {
  repeat(function, typename IndicesBelow<COUNT>::Type());
}
// Behind the parameters of a function given to `repeat`.
#define SORTING_UNROLLED __attribute__((always_inline))

}  // namespace qxport::sorting

#endif
