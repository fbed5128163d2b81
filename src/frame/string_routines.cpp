// Small string and comparison routines offered to Fortran programs.
#include "frame/errors.h"
#include "frame/strings.h"

#include <cstdlib>

using namespace qxport;

namespace {

// A zero-filled copy with two bytes to spare, so that a comparison may look one character past the text.
char *new_zero_filled(const char *text, size_t length) {
  char *copy = static_cast<char *>(calloc(length + 2, 1));
  if (copy != nullptr && length > 0)
    memcpy(copy, text, length);
  return copy;
}

}  // namespace

// N = LNBLNK(STRING)
int32_t lnblnk_(const char *string, charlen string_len) {
  return static_cast<int32_t>(trimmed_length(string, string_len));
}

// N = RINDEX(STRING, SUBSTR)
// An empty SUBSTR is found behind the last character, at LEN(STRING)+1.
int32_t rindex_(const char *string, const char *substr, charlen string_len, charlen substr_len) {
  const size_t length = length_of(string_len);
  const size_t sub_length = length_of(substr_len);
  if (sub_length > length)
    return 0;
  const CString text(new_zero_filled(string, length));
  const CString sub(new_zero_filled(substr, sub_length));
  if (!text || !sub) {
    record_status(errno);
    return 0;
  }
  for (size_t start = length - sub_length + 1; start-- > 0;)
    if (text.get()[start] == sub.get()[0] && memcmp(text.get() + start, sub.get(), sub_length) == 0)
      return static_cast<int32_t>(start + 1);
  return 0;
}

// N = IPXFLENTRIM(STRING)
// The binding's routines know lengths of 32 bits.
int32_t ipxflentrim_(const char *string, charlen string_len) {
  return static_cast<int32_t>(trimmed_length(string, static_cast<int32_t>(string_len)));
}

// CALL PXFUCOMPARE(I1, I2, ICMPR, IDIFF)
// The distance wraps around in 32 bits.
void pxfucompare_(const int32_t *i1, const int32_t *i2, int32_t *icmpr, int32_t *idiff) {
  const uint32_t first = static_cast<uint32_t>(*i1);
  const uint32_t second = static_cast<uint32_t>(*i2);
  const uint32_t difference = first - second;
  *icmpr = first < second ? -1 : first > second ? 1 : 0;
  *idiff = static_cast<int32_t>(difference > INT32_MAX ? 0U - difference : difference);
}

// A placeholder that nothing here calls.
int32_t for_getsystemerror_dummy(int32_t number) {
  return static_cast<int32_t>(static_cast<uint32_t>(number) + 1U);
}

QXPORT_ALIAS(lnblnk_)
QXPORT_ALIAS(rindex_)
