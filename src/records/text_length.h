// How the binding reads the lengths of texts.
#ifndef QXPORT_RECORDS_TEXT_LENGTH_H
#define QXPORT_RECORDS_TEXT_LENGTH_H

#include "frame/fortran.h"

namespace qxport {

// The binding reads the low 32 bits of a hidden length, signed.
inline int32_t narrow_length(charlen length) {
  return std::max(static_cast<int32_t>(length), 0);
}

// The same without a sign. A negative length is a caller's mistake, and none here too.
inline charlen unsigned_low_half(charlen length) {
  return static_cast<charlen>(static_cast<uint32_t>(std::max<charlen>(length, 0)));
}

// Is a length that comes beside a text longer than the text? A negative one counts as huge.
inline bool exceeds(int32_t length, charlen hidden_length) {
  return length < 0 || static_cast<size_t>(length) > length_of(hidden_length);
}

}  // namespace qxport

#endif
