#include "compat/pattern.h"

#include <cstring>

using namespace qxport;

namespace {

bool is_wildcard(char c) {
  return c == '*' || c == '?';
}

}  // namespace

// Only the last star met needs another try: whatever an earlier one could take more, the last one can take
// too. So the work is bounded by the product of the two lengths, whatever the pattern.
int patternMatch(const char *name, const char *pattern) {
  const char *star_pattern = nullptr;
  const char *star_name = nullptr;
  for (;;) {
    if (*pattern == '*') {
      // A repeated star asks for one more character, unlike elsewhere: "a**" does not match "a".
      for (++pattern; is_wildcard(*pattern); ++pattern, ++name)
        if (*name == '\0')
          return 1;
      if (*pattern == '\0')
        return 0;
      star_pattern = pattern;
      star_name = name;
    } else if (*name != '\0' && (*pattern == '?' || *pattern == *name)) {
      ++pattern;
      ++name;
    } else if (*name == '\0' && *pattern == '\0') {
      return 0;
    } else if (star_name != nullptr && *star_name != '\0') {
      pattern = star_pattern;
      name = ++star_name;
    } else {
      return 1;
    }
  }
}

FileSpecification::FileSpecification(char *text) {
  char *slash = strrchr(text, '/');
  has_slash = slash != nullptr;
  directory = has_slash ? text : ".";
  name = has_slash ? slash + 1 : text;
  if (has_slash)
    *slash = '\0';
}

EntryPath::EntryPath(const char *directory, const char *name) {
  const size_t directory_length = strnlen(directory, DIRECTORY_LIMIT);
  const size_t name_length = strnlen(name, NAME_LIMIT);
  memcpy(text_, directory, directory_length);
  text_[directory_length] = '/';
  memcpy(text_ + directory_length + 1, name, name_length);
  text_[directory_length + 1 + name_length] = '\0';
}
