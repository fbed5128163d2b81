// Reals as integers in the same order. The bits of a REAL are sign and magnitude; with the magnitude of
// negative ones inverted they compare as signed integers do. Doing so twice gives the first bits back.
//
// Where the order is the described one, images are compared, so that no mode of the floating-point unit has a
// part in it. Three sorts of value need a second look: NaNs lie beyond the infinities on both sides and
// compare false with everything, and of the two zeros, which are equal, the negative one is the integer -1.
#ifndef QXPORT_SORTING_IMAGES_H
#define QXPORT_SORTING_IMAGES_H

#include "sorting/cells.h"

namespace qxport::sorting {

// The images of the infinities, between which all numbers are.
template <typename T>
struct Infinity;
template <>
struct Infinity<int32_t> {
  static constexpr int32_t IMAGE = 0x7f80'0000, FIRST_NAN = IMAGE + 1, NEGATIVE_IMAGE = ~IMAGE;
};
template <>
struct Infinity<int64_t> {
  static constexpr int64_t IMAGE = 0x7ff0'0000'0000'0000, FIRST_NAN = IMAGE + 1, NEGATIVE_IMAGE = ~IMAGE;
};
template <>
struct Infinity<Wide> {
  static constexpr Wide IMAGE = {0x7fff'0000'0000'0000, Limits<int64_t>::SMALLEST};
  static constexpr Wide FIRST_NAN = {IMAGE.high, IMAGE.low + 1};
  static constexpr Wide NEGATIVE_IMAGE = {~IMAGE.high, ~IMAGE.low};
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

// The limits of reals, and the steps between them, as those of their images.
template <>
struct Limits<float> {
  static constexpr float LARGEST = __builtin_inff(), SMALLEST = -LARGEST;
};
template <>
struct Limits<double> {
  static constexpr double LARGEST = __builtin_inf(), SMALLEST = -LARGEST;
};

template <typename T, typename Real>
SORTING_INLINE T image_of_real(Real value) {
  return image_of<T>(__builtin_bit_cast(T, value));
}
template <typename Real, typename T>
SORTING_INLINE Real real_of_image(T image) {
  return __builtin_bit_cast(Real, image_of<T>(image));
}

// The zeros are one value.
template <typename T, typename Real>
SORTING_INLINE Real predecessor_of_real(Real value) {
  const T image = image_of_real<T>(value);
  return real_of_image<Real>(predecessor(image == Zeros<T>::POSITIVE ? Zeros<T>::NEGATIVE : image));
}
SORTING_INLINE float predecessor(float value) {
  return predecessor_of_real<int32_t>(value);
}
SORTING_INLINE double predecessor(double value) {
  return predecessor_of_real<int64_t>(value);
}
SORTING_INLINE float middle(float low, float high) {
  return real_of_image<float>(middle(image_of_real<int32_t>(low), image_of_real<int32_t>(high)));
}
SORTING_INLINE double middle(double low, double high) {
  return real_of_image<double>(middle(image_of_real<int64_t>(low), image_of_real<int64_t>(high)));
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
  const bool above = image > Infinity<T>::IMAGE, below = Infinity<T>::NEGATIVE_IMAGE > image;
  return above | below;
}

// What an element must exceed to be greater than the key of this image. Nothing is greater than a NaN, and a
// positive zero is not greater than a negative one.
template <typename T>
SORTING_INLINE T threshold(T key) {
  const T number = key == Zeros<T>::NEGATIVE ? Zeros<T>::POSITIVE : key;
  return is_nan(key) ? Limits<T>::LARGEST : number;
}

// As reals compare; the threshold is that of the other one.
template <typename T>
SORTING_INLINE bool exceeds(T image, T threshold) {
  return image > threshold && !(image > Infinity<T>::IMAGE);
}

}  // namespace qxport::sorting

#endif
