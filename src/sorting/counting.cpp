// There are few values of one byte, so they are counted, and the array is written anew. Elements of two bytes
// are brought into the order of their upper bytes first, where they lie; then the lower bytes of each group
// are counted.
#include "sorting/counting.h"

#include <cstring>

namespace qxport::sorting {

namespace {

constexpr size_t VALUES = 256;

// Fewer elements are sorted faster as integers of four bytes.
constexpr size_t FEW = 256;

template <typename T>
void sort_as_words(const Tier &tier, Cell<T> *array, size_t count, int32_t bias) {
  Cell<int32_t> words[FEW];
  for (size_t place = 0; place < count; ++place)
    words[place].value = array[place].value ^ bias;
  tier.sort_4(words, count);
  for (size_t place = 0; place < count; ++place)
    array[place].value = static_cast<T>(words[place].value ^ bias);
}

// How often each value of a byte occurs. Neighbouring elements are counted apart from one another: increments
// of one counter in a row would wait for each other.
class Histogram {
public:
  // The byte of element i stands at i * STRIDE.
  template <size_t STRIDE>
  void count(const unsigned char *bytes, size_t elements) {
    memset(apart_, 0, sizeof(apart_));
    size_t place = 0;
    for (; place + APART <= elements; place += APART)
      for (size_t column = 0; column < APART; ++column)
        ++apart_[column][bytes[(place + column) * STRIDE]];
    for (; place < elements; ++place)
      ++apart_[0][bytes[place * STRIDE]];
    for (size_t value = 0; value < VALUES; ++value)
      for (size_t column = 1; column < APART; ++column)
        apart_[0][value] += apart_[column][value];
  }

  size_t operator[](size_t value) const { return apart_[0][value]; }

private:
  static constexpr size_t APART = 4;
  size_t apart_[APART][VALUES];
};

// `first` is the byte of the least value.
void sort_bytes(const Tier &tier, Cell<int8_t> *array, size_t count, unsigned first) {
  if (count <= FEW)
    return sort_as_words(tier, array, count, first == 0 ? -0x80 : 0);
  Histogram histogram;
  histogram.count<1>(reinterpret_cast<const unsigned char *>(array), count);
  char *next = reinterpret_cast<char *>(array);
  for (unsigned step = 0; step < VALUES; ++step) {
    const unsigned value = (first + step) % VALUES;
    memset(next, static_cast<int>(value), histogram[value]);
    next += histogram[value];
  }
}

// The group of an element by its upper byte, in ascending order.
size_t group_of(int16_t element) {
  return static_cast<uint16_t>(element) >> 8 ^ 0x80;
}

struct Groups {
  size_t next[VALUES], end[VALUES];
};

// Each element is exchanged with the first that is not in its place in the group it belongs to. One at least
// of the two is then where it belongs.
void bring_to_groups(Cell<int16_t> *array, Groups *groups) {
  for (size_t group = 0; group < VALUES; ++group)
    while (groups->next[group] < groups->end[group]) {
      const size_t end = groups->end[group];
      for (size_t place = groups->next[group]; place < end; ++place) {
        const Cell<int16_t> element = array[place];
        const size_t target = groups->next[group_of(element.value)]++;
        array[place] = array[target];
        array[target] = element;
      }
    }
}

// Elements that share their upper byte.
void sort_group(const Tier &tier, Cell<int16_t> *array, size_t count) {
  if (count <= FEW)
    return sort_as_words(tier, array, count, 0);
  const int upper = array[0].value & ~0xFF;
  Histogram histogram;
  histogram.count<2>(reinterpret_cast<const unsigned char *>(array), count);
  for (size_t lower = 0; lower < VALUES; ++lower) {
    const Cell<int16_t> element = {static_cast<int16_t>(upper | static_cast<int>(lower))};
    for (const Cell<int16_t> *end = array + histogram[lower]; array != end; ++array)
      *array = element;
  }
}

}  // namespace

void sort_1(const Tier &tier, Cell<int8_t> *array, size_t count) {
  sort_bytes(tier, array, count, 0x80);
}

void sort_unsigned_1(const Tier &tier, Cell<int8_t> *array, size_t count) {
  sort_bytes(tier, array, count, 0);
}

void sort_2(const Tier &tier, Cell<int16_t> *array, size_t count) {
  if (count <= FEW)
    return sort_as_words(tier, array, count, 0);
  Histogram histogram;
  histogram.count<2>(reinterpret_cast<const unsigned char *>(array) + 1, count);
  Groups groups;
  size_t begin = 0;
  for (size_t group = 0; group < VALUES; ++group) {
    groups.next[group] = begin;
    begin += histogram[group ^ 0x80];
    groups.end[group] = begin;
  }
  bring_to_groups(array, &groups);
  begin = 0;
  for (size_t group = 0; group < VALUES; ++group) {
    sort_group(tier, array + begin, groups.end[group] - begin);
    begin = groups.end[group];
  }
}

}  // namespace qxport::sorting
