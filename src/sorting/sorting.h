// Sorting and searching arrays in memory, near the limit of the hardware. Nothing here knows of Fortran.
//
// How an array gets sorted, in the order of reading:
//
// - sort.cpp looks at the type of the elements, once. What compares like signed integers is made such:
//   strings of 4, 8 and 16 bytes become integers whose first byte is the most significant one.
// - quicksort.h is the kernel, for elements of 4, 8 and 16 bytes. An array that is in order, or in reverse
//   order, is found out by one reading. Any other is parted around a pivot until the parts are small.
// - pivots.h: the pivot is the median of a sample. Where an adversary makes samples mislead, the parts are
//   halved by value: the number of levels is bounded by the bits of an element.
// - partition.h parts in place, without a branch that depends on an element.
// - networks.h sorts the small parts: sorting networks over rows of vectors, again without a branch.
// - reals.h knows which arrays of reals have no single order, because they hold NaNs or zeros of both signs.
// - described.h does what is done with those: Shell's sort, whose order callers know, over images (images.h):
//   integers in the order of the reals.
// - counting.cpp: elements of 1 and 2 bytes are counted rather than compared.
// - strings.cpp: strings of all other widths, where they lie, by a word of each at a time.
// - bisection.cpp: the search.
//
// The kernel is written once, over vectors of a number of lanes (lanes_*.h): sixteen lanes of four bytes with
// AVX-512, eight with AVX2, and a single one, which is an ordinary variable, where neither is there. Each
// kind of processor has its table of functions (tier.h, tier_*.cpp); tiers.cpp chooses one, once for the life
// of the process.
//
// Nothing is allocated. The stack holds a few kilobytes, and 64 where long arrays of two bytes are counted.
#ifndef QXPORT_SORTING_SORTING_H
#define QXPORT_SORTING_SORTING_H

#include "sorting/tier.h"

#include <cstddef>

namespace qxport::sorting {

enum class Element { Integer1, Integer2, Integer4, Integer8, Real4, Real8, Real16 };

// Bytes of an element.
size_t width_of(Element element);

// Sorts `count` elements from `array` on, at whatever address, ascending.
void sort_numbers(const Tier &tier, Element element, void *array, size_t count);

// Strings of `width` bytes in the order of their unsigned bytes. `scratch` has room for one.
void sort_strings(const Tier &tier, void *array, size_t count, size_t width, void *scratch);

// The place, from 1, of the first element equal to the key that bisection meets; 0 where it meets none. Reals
// that compare neither less nor greater count as equal.
size_t search_numbers(Element element, const void *key, const void *array, size_t count);
size_t search_strings(const void *key, const void *array, size_t count, size_t width);

}  // namespace qxport::sorting

#endif
