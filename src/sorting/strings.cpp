// Strings of any width, compared by words of eight bytes: a quicksort over one word of every string, then
// over the next word of those that share it. Where a part is small a key stands for each string: seven bytes
// of the word and, in the eighth, the string's place. The keys are sorted as integers, and say where each
// string goes.
#include "sorting/strings.h"
#include "sorting/cells.h"

#include <cstring>

namespace qxport::sorting {

namespace {

// The most strings whose places are told apart by a byte.
constexpr size_t GROUP = 256;
constexpr size_t BYTES_OF_KEY = 7;
constexpr size_t BYTES_OF_WORD = 8;
constexpr uint64_t SIGN = uint64_t{1} << 63;

// Strings are parted by as many at once as a word has bits.
constexpr size_t BLOCK = 64;

template <typename Word>
Word read(const char *from) {
  Word word;
  memcpy(&word, from, sizeof(Word));
  return word;
}

// Eight bytes of a string from some depth on as a signed number in the order of strings. Zeros stand for the
// bytes behind the last one. Nothing outside of the string is read.
class LongWords {
public:
  LongWords(size_t width, size_t depth)
      : offset_(depth + BYTES_OF_WORD <= width ? depth : width - BYTES_OF_WORD),
        known_bits_(static_cast<unsigned>(8 * (depth - offset_))) {}
  int64_t operator()(const char *string) const {
    const uint64_t bytes = __builtin_bswap64(read<uint64_t>(string + offset_));
    return static_cast<int64_t>(bytes << known_bits_ ^ SIGN);
  }

private:
  size_t offset_;
  unsigned known_bits_;
};

// Of a string that has less than eight bytes, but three at least.
class ShortWords {
public:
  explicit ShortWords(size_t width)
      : width_(width), unused_bits_(static_cast<unsigned>(8 * (BYTES_OF_WORD - width))) {}
  int64_t operator()(const char *string) const {
    uint64_t bytes;
    if (width_ < 4) {
      const uint64_t head = __builtin_bswap16(read<uint16_t>(string));
      bytes = head << 48 | uint64_t{static_cast<unsigned char>(string[width_ - 1])} << 40;
    } else {
      const uint32_t tail = __builtin_bswap32(read<uint32_t>(string + width_ - 4));
      bytes = uint64_t{__builtin_bswap32(read<uint32_t>(string))} << 32;
      bytes |= static_cast<uint32_t>(uint64_t{tail} << unused_bits_);
    }
    return static_cast<int64_t>(bytes ^ SIGN);
  }

private:
  size_t width_;
  unsigned unused_bits_;
};

// A string in pieces that a register holds; they may overlap.
typedef char Sixteen __attribute__((vector_size(16)));

template <typename Piece, int COUNT>
struct Pieces {
  Piece pieces[COUNT];

  static size_t offset(int index, size_t width) {
    return index < COUNT / 2 ? static_cast<size_t>(index) * sizeof(Piece)
                             : width - static_cast<size_t>(COUNT - index) * sizeof(Piece);
  }
  Pieces(const char *from, size_t width) {
    for (int index = 0; index < COUNT; ++index)
      memcpy(&pieces[index], from + offset(index, width), sizeof(Piece));
  }
  void store(char *to, size_t width) const {
    for (int index = 0; index < COUNT; ++index)
      memcpy(to + offset(index, width), &pieces[index], sizeof(Piece));
  }
  static void move(char *to, const char *from, size_t width) { Pieces(from, width).store(to, width); }
  static void exchange(char *a, char *b, size_t width) {
    const Pieces one(a, width), other(b, width);
    one.store(b, width);
    other.store(a, width);
  }
};

// WIDTH is that of the strings where the compiler is to know it, otherwise 0.
template <size_t WIDTH>
class Strings {
public:
  Strings(const Tier &tier, char *array, size_t width, char *scratch, int samplings_per_halving)
      : tier_(tier), array_(array), given_width_(width), scratch_(scratch),
        samplings_per_halving_(samplings_per_halving) {}

  void sort(size_t count) { sort_part(0, count, 0, samplings(count)); }

  // Each string is the same as, or comes before, the one behind it; or each comes behind it.
  bool in_order(size_t count) const {
    for (size_t place = 1; place < count; ++place)
      if (memcmp(at(place - 1), at(place), width()) > 0)
        return false;
    return true;
  }
  bool in_reverse_order(size_t count) const {
    for (size_t place = 1; place < count; ++place)
      if (memcmp(at(place - 1), at(place), width()) < 0)
        return false;
    return true;
  }
  void reverse(size_t count) const {
    for (size_t first = 0, last = count; first + 1 < last; ++first)
      exchange(at(first), at(--last));
  }

private:
  size_t width() const { return WIDTH != 0 ? WIDTH : given_width_; }
  char *at(size_t place) const { return array_ + place * width(); }

  void move(char *to, const char *from) const {
    if (width() > 64)
      memcpy(to, from, width());
    else if (width() > 32)
      Pieces<Sixteen, 4>::move(to, from, width());
    else if (width() >= 16)
      Pieces<Sixteen, 2>::move(to, from, width());
    else if (width() >= 8)
      Pieces<uint64_t, 2>::move(to, from, width());
    else if (width() >= 4)
      Pieces<uint32_t, 2>::move(to, from, width());
    else
      Pieces<uint16_t, 2>::move(to, from, width());
  }

  void exchange(char *a, char *b) const {
    if (width() > 64) {
      size_t begin = 0;
      for (; begin + 64 <= width(); begin += 64)
        Pieces<Sixteen, 4>::exchange(a + begin, b + begin, 64);
      for (; begin < width(); ++begin) {
        const char byte = a[begin];
        a[begin] = b[begin];
        b[begin] = byte;
      }
    } else if (width() > 32) {
      Pieces<Sixteen, 4>::exchange(a, b, width());
    } else if (width() >= 16) {
      Pieces<Sixteen, 2>::exchange(a, b, width());
    } else if (width() >= 8) {
      Pieces<uint64_t, 2>::exchange(a, b, width());
    } else if (width() >= 4) {
      Pieces<uint32_t, 2>::exchange(a, b, width());
    } else {
      Pieces<uint16_t, 2>::exchange(a, b, width());
    }
  }

  // Calls function(words of the strings at a depth).
  template <typename Function>
  auto with_words(size_t depth, Function function) const {
    return width() < BYTES_OF_WORD ? function(ShortWords(width())) : function(LongWords(width(), depth));
  }

  // How many bytes, `depth` at least, all the strings have in common that have `depth` of them.
  size_t common_depth(size_t first, size_t count, size_t depth) const {
    const char *const one = at(first);
    size_t common = width();
    for (size_t place = first + 1; place < first + count && common > depth; ++place) {
      const char *const other = at(place);
      size_t same = depth;
      while (same + BYTES_OF_WORD <= common && read<uint64_t>(one + same) == read<uint64_t>(other + same))
        same += BYTES_OF_WORD;
      while (same < common && one[same] == other[same])
        ++same;
      common = same;
    }
    return common;
  }

  template <typename Words>
  int64_t sampled_pivot(const Words &word, size_t first, size_t count) const {
    constexpr size_t MOST = 63;
    const size_t size = count < 16 * GROUP ? 15 : MOST;
    Cell<int64_t> sample[MOST];
    uint32_t random = static_cast<uint32_t>(count);
    const size_t stretch = count / size;
    for (size_t index = 0; index < size; ++index) {
      random = random * 1664525 + 1013904223;
      sample[index].value = word(at(first + index * stretch + (random >> 8) % stretch));
    }
    tier_.sort_8(sample, size);
    return sample[size / 2].value;
  }

  // Half-way between the least and the greatest.
  template <typename Words>
  int64_t middle_of_range(const Words &word, size_t first, size_t count) const {
    int64_t least = word(at(first)), greatest = least;
    for (size_t place = first + 1; place < first + count; ++place) {
      const int64_t next = word(at(place));
      least = next < least ? next : least;
      greatest = next > greatest ? next : greatest;
    }
    return middle(least, greatest);
  }

  template <typename Words>
  uint64_t greater_ones(const Words &word, size_t first, int64_t pivot) const {
    const char *string = at(first);
    uint64_t greater = 0;
    for (size_t index = 0; index < BLOCK; ++index, string += width())
      greater |= uint64_t{word(string) > pivot} << index;
    return greater;
  }

  // Brings the strings with greater words than the pivot behind the others, and answers how many others there
  // are. A bit for each string of a block at either end says which are on the wrong side, so no branch
  // depends on one word alone.
  template <typename Words>
  size_t part(const Words &word, size_t first, size_t count, int64_t pivot) const {
    size_t left = first, right = first + count;
    uint64_t misplaced_left = 0, misplaced_right = 0;
    while (right - left >= 2 * BLOCK) {
      if (misplaced_left == 0)
        misplaced_left = greater_ones(word, left, pivot);
      if (misplaced_right == 0)
        misplaced_right = ~greater_ones(word, right - BLOCK, pivot);
      while (misplaced_left != 0 && misplaced_right != 0) {
        exchange(at(left + static_cast<size_t>(__builtin_ctzll(misplaced_left))),
                 at(right - BLOCK + static_cast<size_t>(__builtin_ctzll(misplaced_right))));
        misplaced_left &= misplaced_left - 1;
        misplaced_right &= misplaced_right - 1;
      }
      left += misplaced_left == 0 ? BLOCK : 0;
      right -= misplaced_right == 0 ? BLOCK : 0;
    }
    for (size_t place = left; place < right; ++place) {
      exchange(at(left), at(place));
      left += word(at(left)) > pivot ? 0 : 1;
    }
    return left - first;
  }

  // How many levels of sampled pivots there are before the words are halved by value, which ends after as
  // many levels as a word has bits.
  int samplings(size_t count) const {
    int levels = 0;
    for (; count > GROUP; count /= 2)
      levels += samplings_per_halving_;
    return levels;
  }

  // Strings that have `depth` bytes in common. The smaller part first, so that the calls do not nest deeply.
  void sort_part(size_t first, size_t count, size_t depth, int levels) {
    while (count > GROUP) {
      const int64_t pivot = with_words(depth, [&](const auto &word) {
        return --levels >= 0 ? sampled_pivot(word, first, count) : middle_of_range(word, first, count);
      });
      const size_t lower =
          with_words(depth, [&](const auto &word) { return part(word, first, count, pivot); });
      if (lower < count) {
        sort_parts(first, lower, count, depth, levels, &first, &count);
        continue;
      }
      // Nothing is greater than the pivot. Those with the pivot's word are sorted by their next one.
      const size_t less = pivot == INT64_MIN ? 0 : with_words(depth, [&](const auto &word) {
        return part(word, first, count, pivot - 1);
      });
      if (less < count - less) {
        sort_part(first, less, depth, levels);
        first += less;
        count -= less;
        depth = depth_behind(first, count, depth + BYTES_OF_WORD);
        if (depth == width())
          return;
        levels = samplings(count);
      } else {
        sort_behind(first + less, count - less, depth + BYTES_OF_WORD);
        count = less;
      }
    }
    if (count > 1)
      sort_group(first, count, depth);
  }

  void sort_parts(size_t first, size_t lower, size_t count, size_t depth, int levels, size_t *larger_first,
                  size_t *larger_count) {
    const size_t upper = count - lower;
    if (lower < upper) {
      sort_part(first, lower, depth, levels);
      *larger_first = first + lower;
      *larger_count = upper;
    } else {
      sort_part(first + lower, upper, depth, levels);
      *larger_count = lower;
    }
  }

  // Of strings that are the same up to a depth, which may lie behind their ends.
  size_t depth_behind(size_t first, size_t count, size_t depth) const {
    return depth >= width() || count < 2 ? width() : common_depth(first, count, depth);
  }
  void sort_behind(size_t first, size_t count, size_t depth) {
    depth = depth_behind(first, count, depth);
    if (depth < width())
      sort_part(first, count, depth, samplings(count));
  }

  // Strings that share their keys are sorted by what is behind those.
  void sort_group(size_t first, size_t count, size_t depth) {
    if (!sort_by_keys(first, count, depth) || depth + BYTES_OF_KEY >= width())
      return;
    const LongWords word(width(), depth);
    const auto key = [&](size_t place) { return word(at(place)) >> 8; };
    for (size_t begin = first; begin < first + count;) {
      size_t end = begin + 1;
      while (end < first + count && key(end) == key(begin))
        ++end;
      if (end - begin > 1)
        sort_behind(begin, end - begin, depth + BYTES_OF_KEY);
      begin = end;
    }
  }

  // Whether two strings have the same key. Apart from sort_group, whose calls nest, for its room.
  [[gnu::noinline]] bool sort_by_keys(size_t first, size_t count, size_t depth) const {
    Cell<int64_t> keys[GROUP];
    with_words(depth, [&](const auto &word) {
      for (size_t place = 0; place < count; ++place)
        keys[place].value = (word(at(first + place)) & ~int64_t{0xFF}) | static_cast<int64_t>(place);
    });
    tier_.sort_8(keys, count);
    bool shared = false;
    for (size_t place = 1; place < count; ++place)
      shared |= (keys[place].value ^ keys[place - 1].value) >> 8 == 0;
    unsigned char sources[GROUP];
    for (size_t place = 0; place < count; ++place)
      sources[place] = static_cast<unsigned char>(keys[place].value);
    bring(first, count, sources);
    return shared;
  }

  // To each place the string of its source: cycle by cycle.
  void bring(size_t first, size_t count, unsigned char *sources) const {
    for (size_t begin = 0; begin < count; ++begin) {
      if (sources[begin] == begin)
        continue;
      move(scratch_, at(first + begin));
      size_t hole = begin;
      for (;;) {
        const size_t source = sources[hole];
        sources[hole] = static_cast<unsigned char>(hole);
        if (source == begin)
          break;
        move(at(first + hole), at(first + source));
        hole = source;
      }
      move(at(first + hole), scratch_);
    }
  }

  const Tier &tier_;
  char *array_;
  size_t given_width_;
  char *scratch_;
  int samplings_per_halving_;
};

template <size_t WIDTH>
void sort_strings_of(const Tier &tier, char *array, size_t count, size_t width, char *scratch,
                     int samplings_per_halving) {
  Strings<WIDTH> strings(tier, array, width, scratch, samplings_per_halving);
  if (strings.in_order(count))
    return;
  if (strings.in_reverse_order(count))
    return strings.reverse(count);
  strings.sort(count);
}

}  // namespace

void sort_strings_in_place(const Tier &tier, char *array, size_t count, size_t width, char *scratch,
                           int samplings_per_halving) {
  const auto sort = width == 16 ? sort_strings_of<16> : sort_strings_of<0>;
  sort(tier, array, count, width, scratch, samplings_per_halving);
}

}  // namespace qxport::sorting
