// Wildcards and file specifications of the qq routines.
#ifndef QXPORT_COMPAT_PATTERN_H
#define QXPORT_COMPAT_PATTERN_H

#include <cstddef>

// 0 when the name matches the pattern, 1 otherwise. '?' is any one character, '*' any number of them; behind
// a '*' each further wildcard, a star too, takes one character.
extern "C" int patternMatch(const char *name, const char *pattern);

namespace qxport {

// A file specification, split in place at its last slash.
struct FileSpecification {
  explicit FileSpecification(char *text);

  // "." where there was no slash. A specification in the root directory has an empty one, which cannot be
  // opened: "/x*" is refused, not searched.
  const char *directory;
  const char *name;
  bool has_slash;
};

// The longest directory and name that a built path takes, as the records and buffers of callers hold them.
constexpr size_t DIRECTORY_LIMIT = 1024;
constexpr size_t NAME_LIMIT = 255;

// directory/name, each cut at its limit.
class EntryPath {
public:
  EntryPath(const char *directory, const char *name);
  const char *get() const { return text_; }

private:
  char text_[DIRECTORY_LIMIT + 1 + NAME_LIMIT + 1];
};

}  // namespace qxport

#endif
