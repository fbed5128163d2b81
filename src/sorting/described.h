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

// Replaces reals by their images. Does their order depend on how they are sorted? It does with NaNs, and with
// zeros of both signs.
template <typename T, typename Image>
SORTING_INLINE bool replace_by_images_is_described(Cell<T> *array, size_t count, Image image_of_one) {
  bool nan = false, negative_zero = false, positive_zero = false;
  for (size_t place = 0; place < count; ++place) {
    const T image = image_of_one(array[place].value);
    array[place].value = image;
    nan |= is_nan(image);
    negative_zero |= image == Zeros<T>::NEGATIVE;
    positive_zero |= image == Zeros<T>::POSITIVE;
  }
  return nan | (negative_zero & positive_zero);
}

// As `threshold` and `exceeds` have it, of the lanes of a mask.
template <typename Lanes>
SORTING_INLINE typename Lanes::V thresholds(typename Lanes::V keys, typename Lanes::Mask lanes) {
  using T = typename Lanes::T;
  const typename Lanes::V nothing_greater = Lanes::all(Limits<T>::LARGEST);
  const typename Lanes::V positive_zero = Lanes::all(Zeros<T>::POSITIVE);
  const auto below_positive = Lanes::greater(positive_zero, keys, lanes);
  const auto negative_zeros =
      Lanes::greater(keys, Lanes::all(predecessor(Zeros<T>::NEGATIVE)), below_positive);
  typename Lanes::V limits = Lanes::choose(keys, positive_zero, negative_zeros);
  limits =
      Lanes::choose(limits, nothing_greater, Lanes::greater(keys, Lanes::all(Infinity<T>::IMAGE), lanes));
  return Lanes::choose(limits, nothing_greater,
                       Lanes::greater(Lanes::all(Infinity<T>::NEGATIVE_IMAGE), keys, lanes));
}
template <typename Lanes>
SORTING_INLINE typename Lanes::Mask exceeding(typename Lanes::V images, typename Lanes::V limits,
                                              typename Lanes::Mask lanes) {
  using T = typename Lanes::T;
  return Lanes::greater(Lanes::all(Infinity<T>::FIRST_NAN), images, Lanes::greater(images, limits, lanes));
}

// Vectors that are gone down at once. More chains take more steps than each would need, but fewer turns whose
// number the processor cannot foresee.
template <typename Lanes>
constexpr int ABREAST = Lanes::N < 8 ? 2 : 1;
template <typename Lanes>
constexpr size_t CHAINS = ABREAST<Lanes> *Lanes::N;

// The elements of the first `chains` of CHAINS neighbouring chains. Each lane goes down its own chain until
// its element is in place. Lanes behind those chains are loaded, but never stored.
template <typename Lanes>
SORTING_INLINE void insert_neighbours(Cell<typename Lanes::T> *array, size_t place, size_t gap,
                                      size_t chains) {
  constexpr int VECTORS = ABREAST<Lanes>;
  typename Lanes::Mask moving[VECTORS];
  typename Lanes::V keys[VECTORS], limits[VECTORS];
  const auto each = [](auto function) SORTING_UNROLLED {
    repeat<VECTORS>([&](auto index) SORTING_UNROLLED {
      function(decltype(index)::value, static_cast<size_t>(decltype(index)::value) * Lanes::N);
    });
  };
  each([&](int vector, size_t begin) SORTING_UNROLLED {
    const size_t rest = chains > begin ? chains - begin : 0;
    moving[vector] = Lanes::first_lanes(rest < Lanes::N ? rest : size_t{Lanes::N});
    keys[vector] = Lanes::load(array + place + begin);
    limits[vector] = thresholds<Lanes>(keys[vector], moving[vector]);
  });
  for (; place >= gap; place -= gap) {
    typename Lanes::V before[VECTORS];
    typename Lanes::Mask greater[VECTORS], any = {};
    each([&](int vector, size_t begin) SORTING_UNROLLED {
      before[vector] = Lanes::load(array + place - gap + begin);
      greater[vector] = exceeding<Lanes>(before[vector], limits[vector], moving[vector]);
      any |= greater[vector];
    });
    if (Lanes::none(any))
      break;
    each([&](int vector, size_t begin) SORTING_UNROLLED {
      Lanes::store_chosen(array + place + begin, moving[vector],
                          Lanes::choose(keys[vector], before[vector], greater[vector]));
      moving[vector] = greater[vector];
    });
  }
  each([&](int vector, size_t begin)
           SORTING_UNROLLED { Lanes::store_chosen(array + place + begin, moving[vector], keys[vector]); });
}

// Chain by chain. Apart from the vectors, which would leave it too few registers.
template <typename Lanes>
[[gnu::noinline]] void insert_singly(Cell<typename Lanes::T> *array, size_t place, size_t count, size_t gap) {
  for (; place < count; ++place)
    insert(array, place, gap);
}

// The pass of one gap. A row has an element of every chain, each with as many before it as the others.
template <typename Lanes>
SORTING_INLINE void insert_all(Cell<typename Lanes::T> *array, size_t count, size_t gap) {
  size_t place = gap;
  if constexpr (Lanes::N > 1)
    if (gap > 1) {
      constexpr size_t MOST = CHAINS<Lanes>;
      for (size_t row_end = 2 * gap; place + MOST <= count; row_end += gap)
        for (; place < row_end && place + MOST <= count;) {
          const size_t chains = row_end - place < MOST ? row_end - place : MOST;
          insert_neighbours<Lanes>(array, place, gap, chains);
          place += chains;
        }
    }
  insert_singly<Lanes>(array, place, count, gap);
}

template <typename Lanes>
void described_sort(Cell<typename Lanes::T> *array, size_t count) {
  for (size_t gap = first_gap(count);; gap = (gap - 1) / 3) {
    insert_all<Lanes>(array, count, gap);
    if (gap == 1)
      return;
  }
}

}  // namespace qxport::sorting

#endif
