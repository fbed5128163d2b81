// The Fortran side of the boundary: hidden lengths and blank-padded text.
#ifndef QXPORT_FRAME_FORTRAN_H
#define QXPORT_FRAME_FORTRAN_H

#include <qxport/qxport.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

// The second name of a routine whose binding is an alias: strong, so that a program's own procedure of the
// traditional name does not take the module's place. It must be declared: a routine with a plain binding has
// none.
#define QXPORT_ALIAS(symbol)                                                                                 \
  extern "C" decltype(qxport_##symbol) qxport_##symbol __attribute__((alias(#symbol)));

namespace qxport {

// The hidden length of a CHARACTER argument: one machine word, signed.
using charlen = intptr_t;

// A negative hidden length is a caller's mistake; it counts as no characters.
inline size_t length_of(charlen length) {
  return length > 0 ? static_cast<size_t>(length) : 0;
}

// The length of the text without its trailing blanks. Only the blank counts: a tab or a NUL stays.
// Variables are much longer than what they hold as a rule, so blanks are taken eight at a time.
inline size_t trimmed_length(const char *text, charlen length) {
  constexpr uint64_t EIGHT_BLANKS = 0x2020202020202020;
  size_t count = length_of(length);
  for (uint64_t last; count >= sizeof(last); count -= sizeof(last)) {
    memcpy(&last, text + count - sizeof(last), sizeof(last));
    if (last != EIGHT_BLANKS)
      break;
  }
  while (count > 0 && text[count - 1] == ' ')
    --count;
  return count;
}

// A number that a procedure of the program's takes by reference, which may have been declared INTEGER(4) or
// INTEGER(8): the low half stands first.
class AnyKind {
public:
  explicit AnyKind(int32_t number) : number_(number) {}
  operator int32_t *() { return reinterpret_cast<int32_t *>(&number_); }

private:
  int64_t number_;
};

// Texts as keywords: their ASCII letters without regard to case, whatever the program's locale is.
inline bool same_keyword(const char *text, size_t length, const char *keyword) {
  const auto folded = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
  size_t i = 0;
  while (i < length && keyword[i] != '\0' && folded(text[i]) == folded(keyword[i]))
    ++i;
  return i == length && keyword[i] == '\0';
}

inline void blank_fill(char *text, charlen length) {
  if (length > 0)
    memset(text, ' ', length_of(length));
}

// Stores count characters into a variable of `length`, cut or blank-padded; the number of characters stored.
inline size_t store_padded(char *text, charlen length, const char *source, size_t count) {
  const size_t room = length_of(length);
  const size_t stored = std::min(count, room);
  if (stored > 0)
    memcpy(text, source, stored);
  if (room > stored)
    memset(text + stored, ' ', room - stored);
  return stored;
}

}  // namespace qxport

#endif
