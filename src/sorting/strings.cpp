// Quicksort over strings of a width that is known only when it runs. Where the pivots mislead, a heap sorts
// the rest, so that no input takes longer than n log n.
#include "sorting/strings.h"

#include <cstring>

namespace qxport::sorting {

namespace {

constexpr size_t FEW = 12;

class Strings {
public:
  Strings(char *array, size_t width, char *scratch) : array_(array), width_(width), scratch_(scratch) {}

  void sort(size_t first, size_t count, int levels) {
    while (count > FEW) {
      if (--levels < 0)
        return sort_by_heap(first, count);
      const size_t lower = part(first, count);
      // The pivot stands between the two parts. The smaller part first, so that the calls do not nest deeply.
      const size_t upper = count - lower - 1;
      if (lower < upper) {
        sort(first, lower, levels);
        first += lower + 1;
        count = upper;
      } else {
        sort(first + lower + 1, upper, levels);
        count = lower;
      }
    }
    insert(first, count);
  }

  // Each string is the same as, or comes before, the one behind it; or each comes behind it.
  bool in_order(size_t count) const {
    for (size_t place = 1; place < count; ++place)
      if (compare(at(place - 1), at(place)) > 0)
        return false;
    return true;
  }
  bool in_reverse_order(size_t count) const {
    for (size_t place = 1; place < count; ++place)
      if (compare(at(place - 1), at(place)) < 0)
        return false;
    return true;
  }
  void reverse(size_t count) {
    for (size_t first = 0, last = count; first + 1 < last; ++first)
      exchange(first, --last);
  }

private:
  char *at(size_t place) const { return array_ + place * width_; }
  int compare(const char *a, const char *b) const { return memcmp(a, b, width_); }

  void exchange(size_t one, size_t other) {
    char *a = at(one), *b = at(other);
    char piece[64];
    for (size_t rest = width_; rest > 0;) {
      const size_t length = rest < sizeof(piece) ? rest : sizeof(piece);
      memcpy(piece, a, length);
      memmove(a, b, length);
      memcpy(b, piece, length);
      a += length;
      b += length;
      rest -= length;
    }
  }

  void insert(size_t first, size_t count) {
    for (size_t place = 1; place < count; ++place) {
      size_t hole = first + place;
      if (compare(at(hole - 1), at(hole)) <= 0)
        continue;
      memcpy(scratch_, at(hole), width_);
      do {
        memcpy(at(hole), at(hole - 1), width_);
        --hole;
      } while (hole > first && compare(at(hole - 1), scratch_) > 0);
      memcpy(at(hole), scratch_, width_);
    }
  }

  size_t median(size_t a, size_t b, size_t c) const {
    if (compare(at(a), at(b)) > 0) {
      const size_t former = a;
      a = b;
      b = former;
    }
    if (compare(at(b), at(c)) <= 0)
      return b;
    return compare(at(a), at(c)) > 0 ? a : c;
  }

  size_t sampled_pivot(size_t first, size_t count) const {
    const size_t middle = first + count / 2, last = first + count - 1, step = count / 8;
    if (count < 128)
      return median(first, middle, last);
    return median(median(first, first + step, first + 2 * step), median(middle - step, middle, middle + step),
                  median(last - 2 * step, last - step, last));
  }

  // Answers how many strings come before the pivot's place. Both scans stop at strings equal to the pivot, so
  // that few different strings make two equal parts.
  size_t part(size_t first, size_t count) {
    exchange(first, sampled_pivot(first, count));
    memcpy(scratch_, at(first), width_);
    size_t left = first, right = first + count;
    for (;;) {
      do
        ++left;
      while (left < first + count && compare(at(left), scratch_) < 0);
      do
        --right;
      while (compare(at(right), scratch_) > 0);
      if (left >= right)
        break;
      exchange(left, right);
    }
    exchange(first, right);
    return right - first;
  }

  void sink(size_t first, size_t root, size_t count) {
    for (;;) {
      size_t child = 2 * root + 1;
      if (child >= count)
        return;
      if (child + 1 < count && compare(at(first + child + 1), at(first + child)) > 0)
        ++child;
      if (compare(at(first + child), at(first + root)) <= 0)
        return;
      exchange(first + root, first + child);
      root = child;
    }
  }

  void sort_by_heap(size_t first, size_t count) {
    for (size_t root = count / 2; root-- > 0;)
      sink(first, root, count);
    for (size_t rest = count; rest-- > 1;) {
      exchange(first, first + rest);
      sink(first, 0, rest);
    }
  }

  char *array_;
  size_t width_;
  char *scratch_;
};

}  // namespace

void sort_strings_in_place(char *array, size_t count, size_t width, char *scratch) {
  Strings strings(array, width, scratch);
  if (strings.in_order(count))
    return;
  if (strings.in_reverse_order(count))
    return strings.reverse(count);
  int levels = 0;
  for (size_t rest = count; rest > 1; rest /= 2)
    levels += 2;
  strings.sort(0, count, levels);
}

}  // namespace qxport::sorting
