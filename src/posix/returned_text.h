// Texts that the host hands out, stored into a caller's variable with their length beside it.
#ifndef QXPORT_POSIX_RETURNED_TEXT_H
#define QXPORT_POSIX_RETURNED_TEXT_H

#include "records/records.h"
#include "records/text_length.h"

namespace qxport {

// The full length, as many characters as fit, blanks behind them; IERROR 0, or ETRUNC and the answer false
// for a text that is cut.
inline bool deliver_text(const char *text, char *value, charlen value_len, int32_t *ilen, int32_t *ierror) {
  const size_t length = strlen(text);
  *ilen = static_cast<int32_t>(length);
  const bool fits = store_padded(value, narrow_length(value_len), text, length) == length;
  *ierror = fits ? 0 : ETRUNC;
  return fits;
}

}  // namespace qxport

#endif
