// File names of the binding: NAME with ILEN beside it.
#ifndef QXPORT_POSIX_FILE_NAME_H
#define QXPORT_POSIX_FILE_NAME_H

#include "frame/strings.h"
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

// The copy of a file name of exactly `length` characters, which a NUL ends.
CString exact_file_name(const char *text, int32_t length);

// The name by the rule, whatever the variable's length. A negative ILEN is EINVAL.
inline CString file_name(const char *text, int32_t ilen, charlen hidden_length) {
  return exact_file_name(text, length_by_rule(text, ilen, hidden_length));
}

// Converts a name by the rule, makes the call with it, and reports.
template <typename Call>
void call_with_name(const char *text, int32_t ilen, charlen hidden_length, int32_t *ierror, Call call) {
  const CString name = file_name(text, ilen, hidden_length);
  if (!name) {
    *ierror = errno;
    return;
  }
  report(call(name.get()), ierror);
}

}  // namespace qxport

#endif
