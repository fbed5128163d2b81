// File names of the binding: NAME with ILEN beside it.
#ifndef QXPORT_POSIX_FILE_NAME_H
#define QXPORT_POSIX_FILE_NAME_H

#include "records/outcome.h"
#include "records/text_length.h"

namespace qxport {

// White space as the POSIX locale classifies it.
inline bool is_space(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

// The length of a text without its trailing white space, never less than one character of a text that has
// one.
int32_t length_without_space(const char *text, int32_t length);

// The rule of a text with a length beside it: exactly that many characters, or with a length of 0 all without
// trailing white space, but at least one.
inline int32_t length_by_rule(const char *text, int32_t length, charlen hidden_length) {
  return length != 0 ? length : length_without_space(text, narrow_length(hidden_length));
}

// A new NUL-terminated copy of that many characters, which a NUL ends. Null when memory ran out, or with
// EINVAL for a negative length.
char *new_copy(const char *text, int32_t length);

// Owns the NUL-terminated copy of a file name. Without one, errno tells why.
class FileName {
public:
  // The name by the rule, whatever the variable's length. A negative ILEN is EINVAL.
  FileName(const char *text, int32_t ilen, charlen hidden_length)
      : FileName(text, length_by_rule(text, ilen, hidden_length)) {}

  // Exactly `length` characters, which a NUL ends.
  static FileName exactly(const char *text, int32_t length) { return FileName(text, length); }

  ~FileName();
  FileName(const FileName &) = delete;
  FileName &operator=(const FileName &) = delete;

  explicit operator bool() const { return name_ != nullptr; }
  const char *c_str() const { return name_; }

private:
  FileName(const char *text, int32_t length);

  char *name_;
};

// Converts a name by the rule, makes the call with it, and reports.
template <typename Call>
void call_with_name(const char *text, int32_t ilen, charlen hidden_length, int32_t *ierror, Call call) {
  const FileName name(text, ilen, hidden_length);
  if (!name) {
    *ierror = errno;
    return;
  }
  report(call(name.c_str()), ierror);
}

}  // namespace qxport

#endif
