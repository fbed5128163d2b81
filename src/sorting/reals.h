// Reals of four and eight bytes: images of them are sorted, and made reals again.
#ifndef QXPORT_SORTING_REALS_H
#define QXPORT_SORTING_REALS_H

#include "sorting/described.h"
#include "sorting/images.h"
#include "sorting/quicksort.h"

namespace qxport::sorting {

// What decides whether the order depends on how the elements are sorted: NaNs, which lie beyond the
// infinities, and zeros of both signs. Kept lane by lane until the end.
template <typename Lanes>
struct Census {
  using T = typename Lanes::T;
  typename Lanes::V least = Lanes::all(0), greatest = Lanes::all(0);
  typename Lanes::V negative_zeros = Lanes::all(0), positive_zeros = Lanes::all(0);

  SORTING_INLINE void include(typename Lanes::V images) {
    typename Lanes::V larger = images;
    Lanes::order(least, larger);
    negative_zeros |= images == Lanes::all(Zeros<T>::NEGATIVE);
    positive_zeros |= images == Lanes::all(Zeros<T>::POSITIVE);
    Lanes::order(images, greatest);
  }

  SORTING_INLINE bool order_is_described() const {
    constexpr T INFINITE = Infinity<T>::IMAGE;
    if (Lanes::any_greater(greatest, Lanes::all(INFINITE)) ||
        Lanes::any_greater(Lanes::all(~INFINITE), least))
      return true;
    return any(negative_zeros) && any(positive_zeros);
  }

private:
  static SORTING_INLINE bool any(typename Lanes::V marks) {
    return Lanes::any_greater(marks, Lanes::all(0)) || Lanes::any_greater(Lanes::all(0), marks);
  }
};

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

template <typename Lanes>
SORTING_INLINE bool replace_by_images(Cell<typename Lanes::T> *array, size_t count) {
  using T = typename Lanes::T;
  Census<Lanes> census;
  const auto imaged = [&](typename Lanes::V bits) SORTING_UNROLLED {
    const typename Lanes::V images = image_of<T>(bits);
    census.include(images);
    return images;
  };
  replace<Lanes>(array, count, imaged, [&](T bits) SORTING_UNROLLED {
    const T image = image_of<T>(bits);
    census.include(Lanes::all(image));
    return image;
  });
  return census.order_is_described();
}

// The images of images are the reals.
template <typename Lanes>
SORTING_INLINE void replace_by_reals(Cell<typename Lanes::T> *array, size_t count) {
  using T = typename Lanes::T;
  const auto real = [](auto images) SORTING_UNROLLED { return image_of<T>(images); };
  replace<Lanes>(array, count, real, real);
}

// Where values need a second look, a handful of elements is one chain, down which each is inserted.
template <typename Lanes>
void sort_handful_of_reals(Cell<typename Lanes::T> *array, size_t count) {
  using T = typename Lanes::T;
  Cell<T> images[HANDFUL];
  bool moves = false, special = false;
  for (size_t place = 0; place < count; ++place) {
    const T image = image_of<T>(array[place].value);
    images[place].value = image;
    moves |= place > 0 && images[place - 1].value > image;
    special |= is_nan(image) | (image == Zeros<T>::NEGATIVE);
  }
  if (special)
    for (size_t place = 1; place < count; ++place)
      insert(images, place, 1);
  else if (moves)
    sort_few<portable::Single<T, Lanes>>(images, count);
  else
    return;
  for (size_t place = 0; place < count; ++place)
    array[place].value = image_of<T>(images[place].value);
}

template <typename Lanes, typename... Chains>
void sort_reals(Cell<typename Lanes::T> *array, size_t count) {
  if (count <= HANDFUL)
    return sort_handful_of_reals<Lanes>(array, count);
  if (replace_by_images<Lanes>(array, count))
    described_sort<Lanes, Chains...>(array, count);
  else
    sort<Lanes>(array, count);
  replace_by_reals<Lanes>(array, count);
}

}  // namespace qxport::sorting

#endif
