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
  bool nan = false, negative_zero = false, positive_zero = false;
  for (size_t place = 0; place < count; ++place) {
    const Wide image = image_of_quadruple(array[place].value);
    array[place].value = image;
    nan |= is_nan(image);
    negative_zero |= image == Zeros<Wide>::NEGATIVE;
    positive_zero |= image == Zeros<Wide>::POSITIVE;
  }
  if (nan || (negative_zero && positive_zero))
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

// Two elements, without the way to what sorts more of them: a call is most of the time that they take. The
// exchange is no branch, which would be foreseen every other time.
template <typename T, typename Greater>
void sort_pair(void *array, Greater greater) {
  Cell<T> *const pair = cells<T>(array);
  const T first = pair[0].value, second = pair[1].value;
  const T change = static_cast<T>((first ^ second) & -static_cast<T>(greater(first, second)));
  pair[0].value = static_cast<T>(first ^ change);
  pair[1].value = static_cast<T>(second ^ change);
}
template <typename T>
void sort_pair_of_integers(void *array) {
  sort_pair<T>(array, [](T a, T b) { return a > b; });
}
// The greater image is no NaN, nor is the other one, nor are they the two zeros.
template <typename T>
void sort_pair_of_reals(void *array) {
  sort_pair<T>(array, [](T a, T b) {
    const T one = image_of<T>(a), other = image_of<T>(b);
    return (one > other) & (one <= Infinity<T>::IMAGE) & (other >= Infinity<T>::NEGATIVE_IMAGE) &
           ((one != Zeros<T>::POSITIVE) | (other != Zeros<T>::NEGATIVE));
  });
}
void sort_pair_of_quadruples(void *array) {
  Cell<Wide> *const pair = cells<Wide>(array);
  const Wide first = pair[0].value, second = pair[1].value;
  if (!exceeds(image_of_quadruple(first), threshold(image_of_quadruple(second))))
    return;
  pair[0].value = second;
  pair[1].value = first;
}

void sort_pair(Element element, void *array) {
  switch (element) {
  case Element::Integer1:
    return sort_pair_of_integers<int8_t>(array);
  case Element::Integer2:
    return sort_pair_of_integers<int16_t>(array);
  case Element::Integer4:
    return sort_pair_of_integers<int32_t>(array);
  case Element::Integer8:
    return sort_pair_of_integers<int64_t>(array);
  case Element::Real4:
    return sort_pair_of_reals<int32_t>(array);
  case Element::Real8:
    return sort_pair_of_reals<int64_t>(array);
  case Element::Real16:
    return sort_pair_of_quadruples(array);
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
  if (count <= 2)
    return count == 2 ? sort_pair(element, array) : void();
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
