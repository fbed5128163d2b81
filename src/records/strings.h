// The strings that records own.
#ifndef QXPORT_RECORDS_STRINGS_H
#define QXPORT_RECORDS_STRINGS_H

#include <cstddef>
#include <cstdint>

namespace qxport {

// Does a NUL stand behind the characters? Who reads a string of a record knows its length.
enum class Ending : uint8_t { Nul, None };

// Where a record keeps a string and its length.
struct OwnedString {
  char *&start;
  size_t &length;
};

void release(OwnedString string);

// Puts a copy of the text in a string's place; the copy of null is null. False when memory ran out: the
// string stays then.
bool replace(OwnedString string, const char *text, size_t length, Ending ending);

// The same of a text with a NUL.
bool replace(OwnedString string, const char *text, Ending ending);

// A list of copies with NULs; a null list, or a null in it, is copied as nulls. Null when memory ran out.
char **new_strings(char *const *texts, int32_t count);

void release_strings(char **&strings, int32_t count);

}  // namespace qxport

#endif
