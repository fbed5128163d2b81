// Names of a given length.
#ifndef TESTS_SUPPORT_PATHS_H
#define TESTS_SUPPORT_PATHS_H

#include <algorithm>
#include <cstddef>
#include <string>

// A path below `base` of exactly this length, at least two characters longer than the base, in components
// that every file system takes.
inline std::string path_of_length(std::string base, size_t length) {
  constexpr size_t LONGEST_COMPONENT = 200;
  while (base.size() < length) {
    const size_t left = length - base.size() - 1;
    size_t component = std::min(left, LONGEST_COMPONENT);
    if (left - component == 1)
      --component;  // a slash needs a name behind it
    base += '/' + std::string(component, 'p');
  }
  return base;
}

#endif
