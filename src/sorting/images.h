// Reals as integers in the same order. The bits of a REAL are sign and magnitude; with the magnitude of
// negative ones inverted they compare as signed integers do. Doing so twice gives the first bits back.
//
// So one kernel serves integers and reals, no floating-point exception is raised, and no mode of the
// floating-point unit, such as taking subnormal numbers for zero, can make two elements one.
//
// Three sorts of value need a second look: NaNs lie beyond the infinities on both sides and compare false
// with everything, and of the two zeros, which are equal, the negative one is the integer -1.
#ifndef QXPORT_SORTING_IMAGES_H
#define QXPORT_SORTING_IMAGES_H

#include "sorting/cells.h"

namespace qxport::sorting {

// The image of positive infinity.
template <typename T>
struct Infinity;
template <>
struct Infinity<int32_t> {
  static constexpr int32_t IMAGE = 0x7f80'0000;
};
template <>
struct Infinity<int64_t> {
  static constexpr int64_t IMAGE = 0x7ff0'0000'0000'0000;
};
template <>
struct Infinity<Wide> {
  static constexpr Wide IMAGE = {0x7fff'0000'0000'0000, Limits<int64_t>::SMALLEST};
};

template <typename T>
struct Zeros {
  static constexpr T NEGATIVE = -1;
  static constexpr T POSITIVE = 0;
};
template <>
struct Zeros<Wide> {
  static constexpr Wide NEGATIVE = {-1, Limits<int64_t>::LARGEST};
  static constexpr Wide POSITIVE = {0, Limits<int64_t>::SMALLEST};
};

// Of a real's bits, and back; of a word T or of a vector of such words.
template <typename T, typename Words>
SORTING_INLINE Words image_of(Words bits) {
  return bits ^ ((bits >> (8 * sizeof(T) - 1)) & Limits<T>::LARGEST);
}

// Of the two words of a REAL(16), the less significant one first in memory.
SORTING_INLINE Wide image_of_quadruple(Wide memory) {
  const int64_t negative = memory.low >> 63;
  return {memory.low ^ (negative & Limits<int64_t>::LARGEST),
          memory.high ^ negative ^ Limits<int64_t>::SMALLEST};
}
SORTING_INLINE Wide quadruple_of_image(Wide image) {
  const int64_t negative = image.high >> 63;
  return {image.low ^ Limits<int64_t>::SMALLEST ^ negative,
          image.high ^ (negative & Limits<int64_t>::LARGEST)};
}

template <typename T>
SORTING_INLINE bool is_nan(T image) {
  constexpr T INFINITE = Infinity<T>::IMAGE;
  return image > INFINITE || static_cast<T>(~INFINITE) > image;
}
SORTING_INLINE bool is_nan(Wide image) {
  constexpr Wide INFINITE = Infinity<Wide>::IMAGE;
  return image > INFINITE || Wide{~INFINITE.high, ~INFINITE.low} > image;
}

// What an element must exceed to be greater than the key of this image. Nothing is greater than a NaN, and a
// positive zero is not greater than a negative one.
template <typename T>
SORTING_INLINE T threshold(T key) {
  if (is_nan(key))
    return Limits<T>::LARGEST;
  return key == Zeros<T>::NEGATIVE ? Zeros<T>::POSITIVE : key;
}

// As reals compare; the threshold is that of the other one.
template <typename T>
SORTING_INLINE bool exceeds(T image, T threshold) {
  return image > threshold && !(image > Infinity<T>::IMAGE);
}

}  // namespace qxport::sorting

#endif
