// By the type of the elements to what sorts them.
#include "sorting/counting.h"
#include "sorting/described.h"
#include "sorting/images.h"
#include "sorting/lanes_portable.h"
#include "sorting/sorting.h"
#include "sorting/strings.h"

namespace qxport::sorting {

namespace {

// Wide's two words are a REAL(16)'s, in the order of memory, before they are an image.
void sort_quadruples(const Tier &tier, Cell<Wide> *array, size_t count) {
  if (replace_by_images_is_described(array, count, image_of_quadruple))
    described_sort<portable::Single<Wide>>(array, count);
  else
    tier.sort_16(array, count);
  for (size_t place = 0; place < count; ++place)
    array[place].value = quadruple_of_image(array[place].value);
}

template <typename T>
Cell<T> *cells(void *array) {
  return static_cast<Cell<T> *>(array);
}

// A string's bytes as a signed integer in the same order, and back.
uint32_t image_of_string(uint32_t bytes) {
  return __builtin_bswap32(bytes) ^ 0x8000'0000;
}
uint32_t string_of_image(uint32_t image) {
  return __builtin_bswap32(image ^ 0x8000'0000);
}
uint64_t image_of_string(uint64_t bytes) {
  return __builtin_bswap64(bytes) ^ 0x8000'0000'0000'0000;
}
uint64_t string_of_image(uint64_t image) {
  return __builtin_bswap64(image ^ 0x8000'0000'0000'0000);
}

// Two or three elements, without the way to what sorts more of them: a call is most of the time that they
// take. The exchange is no branch, which would be foreseen every other time. A third element goes down the
// chain of the others; where it stops at once nothing is left to exchange.
template <typename T, typename Greater>
void order(T *one, T *other, Greater greater) {
  const T change = static_cast<T>((*one ^ *other) & -static_cast<T>(greater(*one, *other)));
  *one = static_cast<T>(*one ^ change);
  *other = static_cast<T>(*other ^ change);
}
template <typename Greater>
void order(Wide *one, Wide *other, Greater greater) {
  if (!greater(*one, *other))
    return;
  const Wide former = *one;
  *one = *other;
  *other = former;
}
template <typename T, typename Greater>
void sort_two_or_three(void *array, size_t count, Greater greater) {
  Cell<T> *const elements = cells<T>(array);
  T first = elements[0].value, second = elements[1].value;
  order(&first, &second, greater);
  if (count == 3) {
    T third = elements[2].value;
    order(&second, &third, greater);
    order(&first, &second, greater);
    elements[2].value = third;
  }
  elements[0].value = first;
  elements[1].value = second;
}
template <typename T>
void sort_two_or_three_integers(void *array, size_t count) {
  sort_two_or_three<T>(array, count, [](T a, T b) { return a > b; });
}
template <typename T>
void sort_two_or_three_reals(void *array, size_t count) {
  // The greater image is no NaN, nor is the other one, nor are they the two zeros.
  const auto greater = [](T a, T b) {
    const T one = image_of<T>(a), other = image_of<T>(b);
    return (one > other) & (one <= Infinity<T>::IMAGE) & (other >= Infinity<T>::NEGATIVE_IMAGE) &
           ((one != Zeros<T>::POSITIVE) | (other != Zeros<T>::NEGATIVE));
  };
  // Images are sorted as integers, which is less work, where that is right.
  Cell<T> *const elements = cells<T>(array);
  T first = image_of<T>(elements[0].value), second = image_of<T>(elements[1].value);
  const auto is_special = [](T image) { return is_nan(image) | (image == Zeros<T>::NEGATIVE); };
  const auto exceeds_image = [](T a, T b) { return a > b; };
  bool special = is_special(first) | is_special(second);
  if (count == 3) {
    T third = image_of<T>(elements[2].value);
    if ((first <= second) & (second <= third))
      return;
    special |= is_special(third);
    if (special)
      return sort_two_or_three<T>(array, 3, greater);
    order(&first, &second, exceeds_image);
    order(&second, &third, exceeds_image);
    elements[2].value = image_of<T>(third);
  } else if (special) {
    return sort_two_or_three<T>(array, 2, greater);
  }
  order(&first, &second, exceeds_image);
  elements[0].value = image_of<T>(first);
  elements[1].value = image_of<T>(second);
}
void sort_two_or_three_quadruples(void *array, size_t count) {
  sort_two_or_three<Wide>(array, count, [](Wide a, Wide b) {
    return exceeds(image_of_quadruple(a), threshold(image_of_quadruple(b)));
  });
}

void sort_two_or_three(Element element, void *array, size_t count) {
  switch (element) {
  case Element::Integer1:
    return sort_two_or_three_integers<int8_t>(array, count);
  case Element::Integer2:
    return sort_two_or_three_integers<int16_t>(array, count);
  case Element::Integer4:
    return sort_two_or_three_integers<int32_t>(array, count);
  case Element::Integer8:
    return sort_two_or_three_integers<int64_t>(array, count);
  case Element::Real4:
    return sort_two_or_three_reals<int32_t>(array, count);
  case Element::Real8:
    return sort_two_or_three_reals<int64_t>(array, count);
  case Element::Real16:
    return sort_two_or_three_quadruples(array, count);
  }
}

template <typename Word>
void replace_by_images(void *array, size_t words) {
  for (size_t place = 0; place < words; ++place)
    cells<Word>(array)[place].value = image_of_string(cells<Word>(array)[place].value);
}
template <typename Word>
void replace_by_strings(void *array, size_t words) {
  for (size_t place = 0; place < words; ++place)
    cells<Word>(array)[place].value = string_of_image(cells<Word>(array)[place].value);
}

}  // namespace

size_t width_of(Element element) {
  switch (element) {
  case Element::Integer1:
    return 1;
  case Element::Integer2:
    return 2;
  case Element::Integer4:
  case Element::Real4:
    return 4;
  case Element::Integer8:
  case Element::Real8:
    return 8;
  case Element::Real16:
    return 16;
  }
  __builtin_unreachable();
}

void sort_numbers(const Tier &tier, Element element, void *array, size_t count) {
  if (count <= 3)
    return count >= 2 ? sort_two_or_three(element, array, count) : void();
  switch (element) {
  case Element::Integer1:
    return sort_1(tier, cells<uint8_t>(array), count);
  case Element::Integer2:
    return sort_2(tier, cells<uint16_t>(array), count);
  case Element::Integer4:
    return tier.sort_4(cells<int32_t>(array), count);
  case Element::Integer8:
    return tier.sort_8(cells<int64_t>(array), count);
  case Element::Real4:
    return tier.sort_reals_4(cells<int32_t>(array), count);
  case Element::Real8:
    return tier.sort_reals_8(cells<int64_t>(array), count);
  case Element::Real16:
    return sort_quadruples(tier, cells<Wide>(array), count);
  }
}

void sort_strings(const Tier &tier, void *array, size_t count, size_t width, void *scratch) {
  switch (width) {
  case 1:
    return sort_unsigned_1(tier, cells<uint8_t>(array), count);
  case 2:
    return sort_strings_of_2(tier, cells<uint16_t>(array), count);
  case 4:
    replace_by_images<uint32_t>(array, count);
    tier.sort_4(cells<int32_t>(array), count);
    return replace_by_strings<uint32_t>(array, count);
  case 8:
    replace_by_images<uint64_t>(array, count);
    tier.sort_8(cells<int64_t>(array), count);
    return replace_by_strings<uint64_t>(array, count);
  case 16:
    // One word decides as a rule, which pays where no vector compares both.
    if (!tier.has_vectors)
      break;
    replace_by_images<uint64_t>(array, 2 * count);
    tier.sort_16(cells<Wide>(array), count);
    return replace_by_strings<uint64_t>(array, 2 * count);
  default:
    break;
  }
  sort_strings_in_place(tier, static_cast<char *>(array), count, width, static_cast<char *>(scratch));
}

}  // namespace qxport::sorting
