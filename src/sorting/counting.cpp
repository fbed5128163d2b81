// Elements of one and of two bytes have few values, so they are counted, and the array is written anew.
#include "sorting/counting.h"

#include <cstring>

namespace qxport::sorting {

namespace {

constexpr size_t VALUES = 256;

// Fewer elements are sorted faster as integers of four bytes.
constexpr size_t FEW = 256, FEW_OF_TWO_BYTES = 4096;

// The ranks of elements, in their order, are positive numbers; the rank of a rank is the element.
template <size_t MOST, typename T, typename Rank>
void sort_by_ranks(const Tier &tier, Cell<T> *array, size_t count, Rank rank) {
  Cell<int32_t> ranks[MOST];
  for (size_t place = 0; place < count; ++place)
    ranks[place].value = rank(array[place].value);
  tier.sort_4(ranks, count);
  for (size_t place = 0; place < count; ++place)
    array[place].value = rank(static_cast<T>(ranks[place].value));
}

template <typename T, typename Rank>
bool in_order(const Cell<T> *array, size_t count, Rank rank) {
  for (size_t place = 1; place < count; ++place)
    if (rank(array[place - 1].value) > rank(array[place].value))
      return false;
  return true;
}

// How often each byte occurs. Neighbouring elements are counted apart from one another: increments of one
// counter in a row would wait for each other.
class Histogram {
public:
  Histogram(const Cell<uint8_t> *bytes, size_t count) {
    size_t place = 0;
    for (; place + APART <= count; place += APART) {
      const uint64_t eight = reinterpret_cast<const Cell<uint64_t> *>(bytes + place)->value;
      repeat<APART>([&](auto column) SORTING_UNROLLED {
        constexpr int COLUMN = decltype(column)::value;
        ++apart_[COLUMN % TABLES][eight >> (8 * COLUMN) & 0xFF];
      });
    }
    for (; place < count; ++place)
      ++apart_[0][bytes[place].value];
    for (size_t value = 0; value < VALUES; ++value)
      for (int table = 1; table < TABLES; ++table)
        apart_[0][value] += apart_[table][value];
  }

  size_t operator[](size_t value) const { return apart_[0][value]; }

private:
  static constexpr int APART = 8;
  static constexpr int TABLES = 4;
  size_t apart_[TABLES][VALUES] = {};
};

// `first` is the byte of the least value.
void sort_bytes(const Tier &tier, Cell<uint8_t> *array, size_t count, unsigned first) {
  const auto rank = [first](uint8_t byte) { return static_cast<uint8_t>(byte ^ first); };
  if (in_order(array, count, rank))
    return;
  if (count <= FEW)
    return sort_by_ranks<FEW>(tier, array, count, rank);
  const Histogram histogram(array, count);
  char *next = reinterpret_cast<char *>(array);
  for (unsigned step = 0; step < VALUES; ++step) {
    const unsigned value = step ^ first;
    memset(next, static_cast<int>(value), histogram[value]);
    next += histogram[value];
  }
}

// Writes as many equal elements as fit there, and a few before them where nothing is lost by that.
void fill(Cell<uint16_t> *begin, Cell<uint16_t> *end, uint16_t element, bool room_before) {
  constexpr size_t AT_ONCE = 8;
  typedef uint16_t Vector __attribute__((vector_size(2 * AT_ONCE)));
  if (room_before) {
    const Cell<Vector> many = {Vector{} + element};
    while (end > begin) {
      end -= AT_ONCE;
      *reinterpret_cast<Cell<Vector> *>(end) = many;
    }
  }
  for (; begin < end; ++begin)
    begin->value = element;
}

struct Unchanged {
  uint16_t operator()(uint16_t value) const { return value; }
};

// The counters have a byte for each of the values. A value whose counter runs over, after 256 of its
// elements, is noted at the begin of the array, of which at least as much has been read. The array is written
// from its end, where the notes are not yet overwritten: there are 256 elements for each that is left.
template <typename Rank>
[[gnu::noinline]] void count_two_bytes(const Tier &tier, Cell<uint16_t> *array, size_t count, Rank rank) {
  if (in_order(array, count, rank))
    return;
  if (count <= FEW_OF_TWO_BYTES)
    return sort_by_ranks<FEW_OF_TWO_BYTES>(tier, array, count, rank);
  constexpr size_t OVER = 256;
  uint8_t counters[65536] = {};
  size_t notes = 0;
  for (size_t place = 0; place < count; ++place) {
    const uint16_t value = rank(array[place].value);
    if (++counters[value] == 0)
      array[notes++].value = value;
  }
  count_two_bytes(tier, array, notes, Unchanged());
  Cell<uint16_t> *end = array + count;
  for (size_t value = sizeof(counters); value-- > 0;) {
    // Most values of an array that is not large do not occur.
    constexpr size_t BEFORE = sizeof(uint64_t) - 1;
    if ((value & BEFORE) == BEFORE && (notes == 0 || array[notes - 1].value < value - BEFORE) &&
        reinterpret_cast<const Cell<uint64_t> *>(counters + value - BEFORE)->value == 0) {
      value -= BEFORE;
      continue;
    }
    size_t elements = counters[value];
    for (; notes > 0 && array[notes - 1].value == value; --notes)
      elements += OVER;
    if (elements == 0)
      continue;
    Cell<uint16_t> *const begin = end - elements;
    fill(begin, end, rank(static_cast<uint16_t>(value)), begin - array >= static_cast<ptrdiff_t>(OVER));
    end = begin;
  }
}

}  // namespace

void sort_1(const Tier &tier, Cell<uint8_t> *array, size_t count) {
  sort_bytes(tier, array, count, 0x80);
}

void sort_unsigned_1(const Tier &tier, Cell<uint8_t> *array, size_t count) {
  sort_bytes(tier, array, count, 0);
}

void sort_2(const Tier &tier, Cell<uint16_t> *array, size_t count) {
  count_two_bytes(tier, array, count, [](uint16_t bits) { return static_cast<uint16_t>(bits ^ 0x8000); });
}

void sort_strings_of_2(const Tier &tier, Cell<uint16_t> *array, size_t count) {
  count_two_bytes(tier, array, count, [](uint16_t bytes) { return __builtin_bswap16(bytes); });
}

}  // namespace qxport::sorting
