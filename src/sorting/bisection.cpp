// The search. Which of several equal elements it finds depends on the probes, so they are those of plain
// bisection.
#include "sorting/images.h"
#include "sorting/sorting.h"

#include <cstring>

namespace qxport::sorting {

namespace {

// compare(element) is the sign of the key less the element.
template <typename Compare>
size_t bisect(size_t count, Compare compare) {
  size_t low = 0, high = count;
  while (low < high) {
    const size_t middle = low + (high - 1 - low) / 2;
    const int sign = compare(middle);
    if (sign < 0)
      high = middle;
    else if (sign > 0)
      low = middle + 1;
    else
      return middle + 1;
  }
  return 0;
}

template <typename T>
T read(const void *array, size_t place) {
  return static_cast<const Cell<T> *>(array)[place].value;
}

template <typename T>
size_t search_integers(const void *key, const void *array, size_t count) {
  const T wanted = read<T>(key, 0);
  return bisect(count, [&](size_t place) {
    const T element = read<T>(array, place);
    return (wanted > element) - (element > wanted);
  });
}

template <typename T, typename Image>
size_t search_reals(const void *key, const void *array, size_t count, Image image_of_element) {
  const T wanted = image_of_element(read<T>(key, 0));
  return bisect(count, [&](size_t place) {
    const T element = image_of_element(read<T>(array, place));
    return exceeds(wanted, threshold(element)) - exceeds(element, threshold(wanted));
  });
}

}  // namespace

size_t search_numbers(Element element, const void *key, const void *array, size_t count) {
  switch (element) {
  case Element::Integer1:
    return search_integers<int8_t>(key, array, count);
  case Element::Integer2:
    return search_integers<int16_t>(key, array, count);
  case Element::Integer4:
    return search_integers<int32_t>(key, array, count);
  case Element::Integer8:
    return search_integers<int64_t>(key, array, count);
  case Element::Real4:
    return search_reals<int32_t>(key, array, count, image_of<int32_t, int32_t>);
  case Element::Real8:
    return search_reals<int64_t>(key, array, count, image_of<int64_t, int64_t>);
  case Element::Real16:
    return search_reals<Wide>(key, array, count, image_of_quadruple);
  }
  __builtin_unreachable();
}

size_t search_strings(const void *key, const void *array, size_t count, size_t width) {
  return bisect(count, [&](size_t place) {
    return memcmp(key, static_cast<const char *>(array) + place * width, width);
  });
}

}  // namespace qxport::sorting
