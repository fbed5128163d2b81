// Strings of any width, where they lie.
#ifndef QXPORT_SORTING_STRINGS_H
#define QXPORT_SORTING_STRINGS_H

#include <cstddef>

namespace qxport::sorting {

// In the order of their unsigned bytes. `scratch` has room for one string.
void sort_strings_in_place(char *array, size_t count, size_t width, char *scratch);

}  // namespace qxport::sorting

#endif
