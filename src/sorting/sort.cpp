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
  switch (element) {
  case Element::Integer1:
    return sort_1(tier, cells<int8_t>(array), count);
  case Element::Integer2:
    return sort_2(tier, cells<int16_t>(array), count);
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
    return sort_unsigned_1(tier, cells<int8_t>(array), count);
  case 4:
    replace_by_images<uint32_t>(array, count);
    tier.sort_4(cells<int32_t>(array), count);
    return replace_by_strings<uint32_t>(array, count);
  case 8:
    replace_by_images<uint64_t>(array, count);
    tier.sort_8(cells<int64_t>(array), count);
    return replace_by_strings<uint64_t>(array, count);
  case 16:
    replace_by_images<uint64_t>(array, 2 * count);
    tier.sort_16(cells<Wide>(array), count);
    return replace_by_strings<uint64_t>(array, 2 * count);
  default:
    return sort_strings_in_place(static_cast<char *>(array), count, width, static_cast<char *>(scratch));
  }
}

}  // namespace qxport::sorting
