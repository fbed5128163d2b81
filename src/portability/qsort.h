// Sorting by a comparison that a Fortran program supplies.
#ifndef QXPORT_PORTABILITY_QSORT_H
#define QXPORT_PORTABILITY_QSORT_H

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <unistd.h>

namespace qxport {

// Elements side by side, and `compare(a, b)`, which is negative where *a stands before *b.
template <typename Compare>
struct SortedElements {
  char *first;
  size_t size;
  Compare compare;

  char *at(size_t index) const { return first + index * size; }
  bool less(size_t i, size_t j) const { return compare(at(i), at(j)) < 0; }
  void exchange(size_t i, size_t j) const { std::swap_ranges(at(i), at(i) + size, at(j)); }

  // Lets the element at the root of a heap of count elements down to its place.
  void sift_down(size_t root, size_t count) const {
    for (size_t child; (child = 2 * root + 1) < count; root = child) {
      if (child + 1 < count && less(child, child + 1))
        ++child;
      if (!less(root, child))
        return;
      exchange(root, child);
    }
  }

  // In place, and within the array whatever the comparison answers.
  void heap_sort(size_t count) const {
    for (size_t root = count / 2; root-- > 0;)
      sift_down(root, count);
    for (size_t last = count; --last > 0;) {
      exchange(0, last);
      sift_down(0, last);
    }
  }
};

// Whether the host sorts by way of a copy. What does not fit into memory as often again, or is a large part
// of the machine's, some hosts sort in place, and leave the array when the comparison contradicts itself.
inline bool has_room_for_copy(size_t bytes) {
  constexpr size_t ON_STACK = 1024;
  if (bytes < ON_STACK)
    return true;
  const int before = errno;
  const bool is_large =
      bytes / static_cast<size_t>(sysconf(_SC_PAGESIZE)) >= static_cast<size_t>(sysconf(_SC_PHYS_PAGES)) / 4;
  // Volatile, or a compiler may leave out the allocation, which is only given back, and take it for a
  // success.
  void *volatile room = is_large ? nullptr : malloc(bytes);
  const bool is_there = room != nullptr;
  free(room);
  errno = before;
  return is_there;
}

// Sorts by `host_sort(array, count, size)`, the host's, or in place where that is the safe way. Fewer than
// two elements, or elements of no size, are in order as they are; more than fit into memory are a mistake.
template <typename Compare, typename HostSort>
void sort_by(void *array, int64_t len, int64_t isize, Compare compare, HostSort host_sort) {
  intptr_t bytes;
  if (len < 2 || isize < 1 || __builtin_mul_overflow(len, isize, &bytes))
    return;
  const auto count = static_cast<size_t>(len), size = static_cast<size_t>(isize);
  if (has_room_for_copy(static_cast<size_t>(bytes)))
    host_sort(array, count, size);
  else
    SortedElements<Compare>{static_cast<char *>(array), size, compare}.heap_sort(count);
}

}  // namespace qxport

#endif
