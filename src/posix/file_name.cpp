#include "posix/file_name.h"

#include <climits>
#include <cstdlib>

using namespace qxport;

int32_t qxport::length_without_space(const char *text, int32_t length) {
  // Blanks are what there is as a rule, and quick to drop; a text of blanks keeps one.
  if (length > 1)
    length = std::max(static_cast<int32_t>(trimmed_length(text, length)), 1);
  while (length > 1 && is_space(text[length - 1]))
    --length;
  return length;
}

char *qxport::new_copy(const char *text, int32_t length) {
  if (length < 0) {
    errno = EINVAL;
    return nullptr;
  }
  char *copy = static_cast<char *>(malloc(static_cast<size_t>(length) + 1));
  if (copy == nullptr)
    return nullptr;
  const size_t used = strnlen(text, static_cast<size_t>(length));
  memcpy(copy, text, used);
  copy[used] = '\0';
  return copy;
}

// No host call takes a name of PATH_MAX characters, so a longer one is cut there: it fails the same way, and
// an ILEN far beyond the caller's variable is not followed.
CString qxport::exact_file_name(const char *text, int32_t length) {
  return CString(new_copy(text, std::min(length, PATH_MAX)));
}
