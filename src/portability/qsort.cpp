// QSORT: the host's sort with a Fortran function as comparison.
#include "frame/fortran.h"

#include <cerrno>
#include <cstdlib>
#include <unistd.h>

using namespace qxport;

namespace {

using Comparison = int (*)(const void *, const void *);

struct Elements {
  char *first;
  size_t size;
  Comparison compare;

  char *at(size_t index) const { return first + index * size; }
  bool less(size_t i, size_t j) const { return compare(at(i), at(j)) < 0; }
  void exchange(size_t i, size_t j) const { std::swap_ranges(at(i), at(i) + size, at(j)); }
};

// Lets the element at the root of a heap of count elements down to its place.
void sift_down(const Elements &elements, size_t root, size_t count) {
  for (size_t child; (child = 2 * root + 1) < count; root = child) {
    if (child + 1 < count && elements.less(child, child + 1))
      ++child;
    if (!elements.less(root, child))
      return;
    elements.exchange(root, child);
  }
}

// In place, and within the array whatever the comparison answers.
void heap_sort(const Elements &elements, size_t count) {
  for (size_t root = count / 2; root-- > 0;)
    sift_down(elements, root, count);
  for (size_t last = count; --last > 0;) {
    elements.exchange(0, last);
    sift_down(elements, 0, last);
  }
}

// Whether the host sorts by way of a copy. What does not fit into memory as often again, or is a large part
// of the machine's, some hosts sort in place, and leave the array when the comparison contradicts itself.
bool has_room_for_copy(size_t bytes) {
  constexpr size_t ON_STACK = 1024;
  if (bytes < ON_STACK)
    return true;
  const int before = errno;
  const bool is_large =
      bytes / static_cast<size_t>(sysconf(_SC_PAGESIZE)) >= static_cast<size_t>(sysconf(_SC_PHYS_PAGES)) / 4;
  void *room = is_large ? nullptr : malloc(bytes);
  free(room);
  errno = before;
  return room != nullptr;
}

// Fewer than two elements, or elements of no size, are in order as they are; more than fit into memory are a
// mistake.
void sort(void *array, int64_t len, int64_t isize, void (*compar)()) {
  intptr_t bytes;
  if (len < 2 || isize < 1 || __builtin_mul_overflow(len, isize, &bytes))
    return;
  const auto count = static_cast<size_t>(len), size = static_cast<size_t>(isize);
  const auto compare = reinterpret_cast<Comparison>(reinterpret_cast<void *>(compar));
  if (has_room_for_copy(static_cast<size_t>(bytes)))
    qsort(array, count, size, compare);
  else
    heap_sort({static_cast<char *>(array), size, compare}, count);
}

}  // namespace

// CALL QSORT(ARRAY, LEN, ISIZE, COMPAR)
void qsort_(void *array, const int64_t *len, const int64_t *isize, void (*compar)()) {
  sort(array, *len, *isize, compar);
}

// The same with LEN and ISIZE of other kinds.
void qsort_ii_(void *array, const int32_t *len, const int32_t *isize, void (*compar)()) {
  sort(array, *len, *isize, compar);
}

void qsort_il_(void *array, const int32_t *len, const int64_t *isize, void (*compar)()) {
  sort(array, *len, *isize, compar);
}

QXPORT_ALIAS(qsort_)
QXPORT_ALIAS(qsort_ii_)
QXPORT_ALIAS(qsort_il_)
