// Reals of four and eight bytes. Most arrays of them have one order, and are sorted by the vector
// instructions for reals; images (images.h) serve where bits count.
#ifndef QXPORT_SORTING_REALS_H
#define QXPORT_SORTING_REALS_H

#include "sorting/described.h"
#include "sorting/images.h"
#include "sorting/quicksort.h"

#include <type_traits>

namespace qxport::sorting {

// The modes that every thread starts with, for as long as this lives: a mode may take subnormal numbers for
// zeros, or raise a signal where a flag is set. The flags stay as they were. The register is written where
// that changes something: it takes as long as sorting a few elements.
class PlainArithmetic {
public:
  SORTING_INLINE PlainArithmetic() : former_(current()) {
    constexpr unsigned PLAIN = 0x1F80, FLAGS = 0x3F;
    if ((former_ & ~FLAGS) != PLAIN)
      set(PLAIN);
  }
  SORTING_INLINE ~PlainArithmetic() {
    if (current() != former_)
      set(former_);
  }
  PlainArithmetic(const PlainArithmetic &) = delete;
  PlainArithmetic &operator=(const PlainArithmetic &) = delete;

private:
  // No element may be compared on the other side of these.
  static SORTING_INLINE unsigned current() {
    unsigned word;
    __asm__ volatile("stmxcsr %0" : "=m"(word) : : "memory");
    return word;
  }
  static SORTING_INLINE void set(unsigned word) { __asm__ volatile("ldmxcsr %0" : : "m"(word) : "memory"); }

  unsigned former_;
};

// Calls include(bits) for vectors that hold every element of an array, some of them twice.
template <typename Bits, typename Include>
SORTING_INLINE void for_all(const Cell<typename Bits::T> *array, size_t count, Include include) {
  if (count < Bits::N) {
    Cell<typename Bits::T> filled[Bits::N];
    for (size_t place = 0; place < Bits::N; ++place)
      filled[place] = array[place < count ? place : 0];
    return include(Bits::load(filled));
  }
  for (size_t place = 0; place + Bits::N <= count; place += Bits::N)
    include(Bits::load(array + place));
  include(Bits::load(array + count - Bits::N));
}

// Does the order depend on how the elements are sorted? The magnitude of NaNs is beyond that of the
// infinities.
template <typename Bits>
SORTING_INLINE bool order_is_described(const Cell<typename Bits::T> *array, size_t count) {
  using T = typename Bits::T;
  using V = typename Bits::V;
  const V zero = Bits::all(0), negative_zero = Bits::all(Limits<T>::SMALLEST);
  V greatest = zero, negative_zeros = zero, positive_zeros = zero;
  for_all<Bits>(array, count, [&](V bits) SORTING_UNROLLED {
    V magnitudes = bits & ~negative_zero;
    negative_zeros |= bits == negative_zero;
    positive_zeros |= bits == zero;
    Bits::order(magnitudes, greatest);
  });
  const auto any = [&](V marks) SORTING_UNROLLED {
    return Bits::any_greater(marks, zero) || Bits::any_greater(zero, marks);
  };
  return Bits::any_greater(greatest, Bits::all(Infinity<T>::IMAGE)) ||
         (any(negative_zeros) && any(positive_zeros));
}

// Do the images ascend, or descend? Where they ascend nothing moves, whatever the elements are.
template <typename Bits, bool DESCENDING>
SORTING_INLINE bool images_in_order(const Cell<typename Bits::T> *array, size_t count) {
  using T = typename Bits::T;
  if (Bits::N == 1 || count <= Bits::N) {
    T before = image_of<T>(array[0].value);
    for (size_t place = 1; place < count; ++place) {
      const T image = image_of<T>(array[place].value);
      if (DESCENDING ? image > before : before > image)
        return false;
      before = image;
    }
    return true;
  }
  const auto broken_at = [&](size_t place) SORTING_UNROLLED {
    const auto here = image_of<T>(Bits::load(array + place)),
               next = image_of<T>(Bits::load(array + place + 1));
    return DESCENDING ? Bits::any_greater(next, here) : Bits::any_greater(here, next);
  };
  for (size_t place = 0; place + Bits::N < count; place += Bits::N)
    if (broken_at(place))
      return false;
  return !broken_at(count - 1 - Bits::N);
}

// As order_is_described, where the images descend: then NaNs are the first elements or the last ones, and
// zeros are neighbours.
template <typename Bits>
SORTING_INLINE bool descending_order_is_described(const Cell<typename Bits::T> *array, size_t count) {
  using T = typename Bits::T;
  const auto image = [&](size_t place) SORTING_UNROLLED { return image_of<T>(array[place].value); };
  size_t first_negative = 0;
  for (size_t end = count; first_negative < end;) {
    const size_t probe = first_negative + (end - first_negative) / 2;
    if (image(probe) > Zeros<T>::NEGATIVE)
      first_negative = probe + 1;
    else
      end = probe;
  }
  return is_nan(image(0)) || is_nan(image(count - 1)) ||
         (first_negative > 0 && first_negative < count && image(first_negative - 1) == Zeros<T>::POSITIVE &&
          image(first_negative) == Zeros<T>::NEGATIVE);
}

// Replaces each vector by what `change` makes of it. The last one overlaps the one before it, and is read
// before that is changed; fewer elements than a vector has are handed over one by one.
template <typename Lanes, typename Change, typename ChangeOne>
SORTING_INLINE void replace(Cell<typename Lanes::T> *array, size_t count, Change change,
                            ChangeOne change_one) {
  if (count < Lanes::N) {
    for (size_t place = 0; place < count; ++place)
      array[place].value = change_one(array[place].value);
    return;
  }
  const typename Lanes::V last = Lanes::load(array + count - Lanes::N);
  for (size_t place = 0; place + Lanes::N <= count; place += Lanes::N)
    Lanes::store(array + place, change(Lanes::load(array + place)));
  Lanes::store(array + count - Lanes::N, change(last));
}

// The images of images are the reals.
template <typename Bits>
SORTING_INLINE void replace_by_images(Cell<typename Bits::T> *array, size_t count) {
  using T = typename Bits::T;
  const auto image = [](auto bits) SORTING_UNROLLED { return image_of<T>(bits); };
  replace<Bits>(array, count, image, image);
}

// Where values need a second look, a handful of elements is one chain, down which each is inserted.
template <typename Lanes>
void sort_handful_of_reals(Cell<typename Lanes::T> *array, size_t count) {
  using T = typename Lanes::T;
  if (images_in_order<portable::Single<T, Lanes>, false>(array, count))
    return;
  Cell<T> images[HANDFUL];
  bool special = false;
  for (size_t place = 0; place < count; ++place) {
    const T image = image_of<T>(array[place].value);
    images[place].value = image;
    special |= is_nan(image) | (image == Zeros<T>::NEGATIVE);
  }
  if (special)
    for (size_t place = 1; place < count; ++place)
      insert(images, place, 1);
  else
    sort_few<portable::Single<T, Lanes>>(images, count);
  for (size_t place = 0; place < count; ++place)
    array[place].value = image_of<T>(images[place].value);
}

// The array is one of Lanes::T, as the bits that they are. Where Lanes are those of the bits themselves,
// images are sorted.
template <typename Lanes>
void sort_reals(Cell<typename Lanes::Bits::T> *array, size_t count) {
  using Bits = typename Lanes::Bits;
  using T = typename Bits::T;
  if (count <= HANDFUL)
    return sort_handful_of_reals<Bits>(array, count);
  if (images_in_order<Bits, false>(array, count))
    return;
  if (count > FEW<Lanes> && images_in_order<Bits, true>(array, count) &&
      !descending_order_is_described<Bits>(array, count))
    return reverse<Bits>(array, count);
  if constexpr (std::is_same_v<Lanes, Bits>) {
    const auto image = [](T bits) SORTING_UNROLLED { return image_of<T>(bits); };
    if (replace_by_images_is_described(array, count, image))
      described_sort<Bits>(array, count);
    else
      sort_many<Bits>(array, count);
    replace_by_images<Bits>(array, count);
  } else if (order_is_described<Bits>(array, count)) {
    replace_by_images<Bits>(array, count);
    described_sort<Bits>(array, count);
    replace_by_images<Bits>(array, count);
  } else {
    const PlainArithmetic modes;
    sort_many<Lanes>(reinterpret_cast<Cell<typename Lanes::T> *>(array), count);
  }
}

}  // namespace qxport::sorting

#endif
