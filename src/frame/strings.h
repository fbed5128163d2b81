// The crossings between CHARACTER data and NUL-terminated strings.
#ifndef QXPORT_FRAME_STRINGS_H
#define QXPORT_FRAME_STRINGS_H

#include "frame/fortran.h"

extern "C" {

// A NUL-terminated copy without trailing blanks, to be given back through deallocCstr. Null when the address
// is null (EINVAL) or memory ran out (ENOMEM); both are set in errno and recorded in the run-time's status.
char *allocCstr(const char *text, qxport::charlen length);
void deallocCstr(char *string);

// Copies at most source_limit characters of a string into a CHARACTER variable and blank-pads it; the number
// of characters copied. A string that did not fit is cut, with EINVAL set and recorded.
size_t CstrToFstr(char *text, const char *source, qxport::charlen length, qxport::charlen source_limit);

}  // extern "C"

namespace qxport {

// Owns a NUL-terminated string. Without one, errno tells why.
class CString {
public:
  // The copy of a CHARACTER argument.
  CString(const char *text, charlen length) : CString(allocCstr(text, length)) {}
  // Takes over a string from the heap, or null.
  explicit CString(char *string) : string_(string) {}
  ~CString() { deallocCstr(string_); }
  CString(const CString &) = delete;
  CString &operator=(const CString &) = delete;

  explicit operator bool() const { return string_ != nullptr; }
  char *get() const { return string_; }

  // Gives up ownership: the string stays allocated.
  void keep() { string_ = nullptr; }

private:
  char *string_;
};

}  // namespace qxport

#endif
