// The command line and the environment.
#include "contract/services.h"
#include "posix/file_name.h"
#include "posix/returned_text.h"

#include <cstdlib>
#include <unistd.h>

using namespace qxport;

namespace {

struct Span {
  const char *start;
  int32_t length;

  void drop_trailing_space() {
    while (length > 0 && is_space(start[length - 1]))
      --length;
  }
  void drop_leading_space() {
    while (length > 0 && is_space(*start)) {
      ++start;
      --length;
    }
  }
};

// A name or value as these routines take it: without trailing white space, down to nothing; with a length of
// 0 the whole variable, without leading white space too.
Span trimmed(const char *text, int32_t length, charlen hidden_length) {
  Span span = {text, length == 0 ? narrow_length(hidden_length) : std::max(length, 0)};
  span.drop_trailing_space();
  if (length == 0)
    span.drop_leading_space();
  return span;
}

char *new_copy(const Span &span) {
  return qxport::new_copy(span.start, span.length);
}

// Takes the first entry out of the environment by hand: for one that unsetenv cannot name, since it has no
// name or no value. Without it the environment would never get empty.
void drop_first_entry() {
  for (char **entry = environ; *entry != nullptr; ++entry)
    entry[0] = entry[1];
}

}  // namespace

// N = IPXFARGC()
int32_t ipxfargc_() {
  return for_nargs() - 1;
}

// CALL PXFGETARG(M, VALUE, ILEN, IERROR)
void pxfgetarg_(const int32_t *m, char *value, int32_t *ilen, int32_t *ierror, charlen value_len) {
  int32_t length;
  for_getarg(m, value, &length, value_len);
  if (length == -1) {
    *ilen = 0;
    return refuse(ierror, EINVAL);
  }
  *ilen = length;
  *ierror = length > narrow_length(value_len) ? ETRUNC : 0;
}

// CALL PXFGETENV(NAME, LENNAME, VALUE, LENVAL, IERROR)
void pxfgetenv_(const char *name, const int32_t *lenname, char *value, int32_t *lenval, int32_t *ierror,
                charlen name_len, charlen value_len) {
  const CString variable(new_copy(trimmed(name, std::min(*lenname, narrow_length(name_len)), name_len)));
  if (!variable) {
    *ierror = errno;
    blank_fill(value, narrow_length(value_len));
    return;
  }
  const char *found = getenv(variable.get());
  if (found == nullptr) {
    blank_fill(value, narrow_length(value_len));
    return refuse(ierror, EINVAL);
  }
  errno = deliver_text(found, value, value_len, lenval, ierror) ? 0 : ETRUNC;
}

// CALL PXFSETENV(NAME, LENNAME, VALUE, LENVAL, IOVERWRITE, IERROR)
void pxfsetenv_(const char *name, const int32_t *lenname, const char *value, const int32_t *lenval,
                const int32_t *ioverwrite, int32_t *ierror, charlen name_len, charlen value_len) {
  if (exceeds(*lenname, name_len) || exceeds(*lenval, value_len))
    return refuse(ierror, EINVAL);
  const CString variable(new_copy(trimmed(name, *lenname, name_len)));
  if (!variable) {
    *ierror = errno;
    return;
  }
  const CString text(new_copy(trimmed(value, *lenval, value_len)));
  if (!text) {
    *ierror = errno;
    return;
  }
  report(setenv(variable.get(), text.get(), *ioverwrite), ierror);
}

// CALL PXFCLEARENV(IERROR)
void pxfclearenv_(int32_t *ierror) {
  size_t capacity = 100;
  char *name = static_cast<char *>(malloc(capacity + 1));
  while (name != nullptr && environ != nullptr && *environ != nullptr) {
    const char *entry = *environ;
    const size_t length = strcspn(entry, "=");
    if (length > capacity) {
      free(name);
      capacity = length;
      name = static_cast<char *>(malloc(capacity + 1));
      if (name == nullptr)
        break;
    }
    memcpy(name, entry, length);
    name[length] = '\0';
    unsetenv(name);
    if (*environ == entry)
      drop_first_entry();
  }
  *ierror = name == nullptr ? errno : 0;
  free(name);
}
