// Arrays to be sorted, of every element type, and the order that they must have then: that of a Shell sort
// written for the tests alone, over the types themselves.
#ifndef TESTS_SUPPORT_SORTED_ARRAYS_H
#define TESTS_SUPPORT_SORTED_ARRAYS_H

#include <qxport/qxport.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

using Bytes = std::vector<char>;

struct ElementKind {
  std::string name;
  int32_t code;
  size_t width;
  bool (*greater)(const void *, const void *, size_t width);
  void (*shell_sort)(char *array, size_t count, size_t width);
  // The bit pattern of positive infinity in the most significant eight bytes, 0 for what is not a real.
  uint64_t infinity = 0;
};

// A number is copied as it is compared, and elements of REAL types are moved as bytes: a move through a
// register may change a signalling NaN.
template <typename T>
bool number_greater(const void *a, const void *b, size_t) {
  T one, other;
  memcpy(&one, a, sizeof(T));
  memcpy(&other, b, sizeof(T));
  return one > other;
}
inline bool string_greater(const void *a, const void *b, size_t width) {
  return memcmp(a, b, width) > 0;
}

// WIDTH is 0 where it is not known to the compiler.
template <bool (*GREATER)(const void *, const void *, size_t), size_t WIDTH>
void shell_sort_elements(char *elements, size_t count, size_t given_width) {
  const size_t width = WIDTH != 0 ? WIDTH : given_width;
  std::vector<size_t> gaps = {1};
  while (gaps.back() < count)
    gaps.push_back(gaps.back() * 3 + 1);
  // The largest gap in use is the second below the first that is not below the count.
  gaps.resize(count < 13 || gaps.size() < 3 ? 1 : gaps.size() - 2);
  Bytes key(width);
  for (; !gaps.empty(); gaps.pop_back()) {
    const size_t step = gaps.back() * width;
    for (size_t i = step; i < count * width; i += width) {
      size_t hole = i;
      memcpy(key.data(), elements + i, width);
      for (; hole >= step && GREATER(elements + hole - step, key.data(), width); hole -= step)
        memcpy(elements + hole, elements + hole - step, width);
      memcpy(elements + hole, key.data(), width);
    }
  }
}

template <typename T>
ElementKind number_kind(const char *name, int32_t code, uint64_t infinity = 0) {
  return {name,    code, sizeof(T), number_greater<T>, shell_sort_elements<number_greater<T>, sizeof(T)>,
          infinity};
}

inline ElementKind string_kind(size_t width) {
  return {"Character" + std::to_string(width), static_cast<int32_t>(width), width, string_greater,
          shell_sort_elements<string_greater, 0>};
}

inline std::vector<ElementKind> number_kinds() {
  return {
      number_kind<int8_t>("Integer1", 0x30000),
      number_kind<int16_t>("Integer2", 0x40000),
      number_kind<int32_t>("Integer4", 0x50000),
      number_kind<int64_t>("Integer8", 0x60000),
      number_kind<float>("Real4", 0x10000, 0x7f800000),
      number_kind<double>("Real8", 0x20000, 0x7ff0000000000000),
      number_kind<__float128>("Real16", 0x80000, 0x7fff000000000000),
  };
}

// Every width that has code of its own, those around it, and a long one.
inline std::vector<ElementKind> all_kinds() {
  std::vector<ElementKind> kinds = number_kinds();
  for (const size_t width : {1, 2, 3, 4, 5, 7, 8, 9, 12, 15, 16, 17, 24, 31, 32, 33, 63, 64, 65, 200})
    kinds.push_back(string_kind(width));
  return kinds;
}

inline void shell_sort(Bytes *array, const ElementKind &kind) {
  kind.shell_sort(array->data(), array->size() / kind.width, kind.width);
}

// Ways to fill an array.
enum class Filling {
  Random,
  FewValues,
  Ascending,
  Descending,
  OrganPipe,
  AllEqual,
  Sawtooth,
  OneOutOfPlace,
  LongPrefixes,
  // Of reals only.
  SomeNans,
  AllNans,
  OneNanLast,
  BothZeros,
  ZerosAlone,
  ONE_BEHIND_LAST
};

class Filler {
public:
  explicit Filler(uint32_t seed) : random_(seed) {}

  Bytes fill(const ElementKind &kind, size_t count, Filling filling) {
    Bytes array(count * kind.width);
    for (size_t i = 0; i < count; ++i)
      put(&array, kind, i, value(filling, i, count));
    for (size_t i = 0; kind.infinity != 0 && i < count; ++i)
      make_real(&array, kind, filling, i, count);
    if (filling == Filling::Ascending || filling == Filling::Descending || filling == Filling::OneOutOfPlace)
      arrange(&array, kind, filling);
    return array;
  }

  uint64_t random() { return random_(); }

private:
  uint64_t value(Filling filling, size_t i, size_t count) {
    switch (filling) {
    case Filling::FewValues:
      return random() % 4 * 0x0101010101010101;
    case Filling::OrganPipe:
      return spread(i < count / 2 ? i : count - i);
    case Filling::AllEqual:
      return 0x3132333435363738;
    case Filling::Sawtooth:
      return spread(i % 37);
    case Filling::LongPrefixes:
      return 0x4141414141414141;
    default:
      return random();
    }
  }

  // Ascending for integers of any width and, from the first byte on, for strings of one byte.
  static uint64_t spread(size_t rank) { return rank * 0x0001000100010001; }

  void put(Bytes *array, const ElementKind &kind, size_t i, uint64_t value) {
    for (size_t at = 0; at < kind.width; ++at)
      (*array)[i * kind.width + at] = static_cast<char>(value >> (8 * (at % 8)));
    if (value == 0x4141414141414141)
      (*array)[(i + 1) * kind.width - 1] = static_cast<char>(random());
  }

  // Finite unless the filling says otherwise, and not zero.
  void make_real(Bytes *array, const ElementKind &kind, Filling filling, size_t i, size_t count) {
    const size_t size = kind.width == 4 ? 4 : 8;
    char *bits = array->data() + (i + 1) * kind.width - size;
    uint64_t real = 0;
    memcpy(&real, bits, size);
    if ((real & kind.infinity) == kind.infinity && random() % 8 != 0)
      real ^= kind.infinity & -kind.infinity;
    if ((real & kind.infinity) == kind.infinity) {
      real &= ~(kind.infinity - 1) | kind.infinity;
      memset(array->data() + i * kind.width, 0, kind.width - size);
    }
    if ((real & (kind.infinity | (kind.infinity - 1))) == 0)
      real |= 1;
    const uint64_t sign = random() % 2 << (8 * size - 1);
    const bool nan = filling == Filling::AllNans || (filling == Filling::SomeNans && random() % 8 == 0) ||
                     (filling == Filling::OneNanLast && i + 1 == count);
    const bool zero = filling == Filling::ZerosAlone || (filling == Filling::BothZeros && random() % 4 == 0);
    if (nan)
      real = kind.infinity | sign | (1 + random() % 0x7fff);
    if (zero) {
      real = sign;
      memset(array->data() + i * kind.width, 0, kind.width - size);
    }
    memcpy(bits, &real, size);
  }

  void arrange(Bytes *array, const ElementKind &kind, Filling filling) {
    shell_sort(array, kind);
    const size_t count = array->size() / kind.width;
    const auto exchange = [&](size_t a, size_t b) {
      std::swap_ranges(array->begin() + static_cast<ptrdiff_t>(a * kind.width),
                       array->begin() + static_cast<ptrdiff_t>((a + 1) * kind.width),
                       array->begin() + static_cast<ptrdiff_t>(b * kind.width));
    };
    if (filling == Filling::Descending)
      for (size_t i = 0; i < count / 2; ++i)
        exchange(i, count - 1 - i);
    else if (filling == Filling::OneOutOfPlace && count > 1)
      exchange(random() % count, count - 1);
  }

  std::mt19937_64 random_;
};

#endif
