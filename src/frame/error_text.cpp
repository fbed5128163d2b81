// What an error number says to people.
#include "frame/error_numbers.h"
#include "frame/fortran.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>

using namespace qxport;

namespace {

constexpr int32_t FIRST_MESSAGE = 1001;
constexpr int32_t LAST_MESSAGE = 1008;

const char *own_text(int32_t number) {
  switch (number) {
  case EEND:
    return "End of file";
  case EARRAYLEN:
    return "Array length or index out of range";
  case ENONAME:
    return "Unknown structure, component or constant name";
  case ENOHANDLE:
    return "Invalid structure handle";
  case ETRUNC:
    return "Text was cut to the length of the variable";
  default:
    return number >= FIRST_MESSAGE && number <= LAST_MESSAGE ? err_array[number - FIRST_MESSAGE + 1]
                                                             : nullptr;
  }
}

// The host's strerror_r is one of two: it answers the text, or a number and the text in the buffer.
const char *host_text(const char *answer, const char *) {
  return answer;
}
[[maybe_unused]] const char *host_text(int, const char *buffer) {
  return buffer;
}

void store_text(char *text, charlen length, int32_t number) {
  const int error = errno;
  char buffer[256] = "";
  const char *found = own_text(number);
  if (found == nullptr) {
    // Units answer failures negated; the one number that is its own negative means nothing either way.
    const int32_t positive = number < 0 && number != INT32_MIN ? -number : number;
    found = host_text(strerror_r(positive, buffer, sizeof(buffer)), buffer);
  }
  store_padded(text, length, found, strlen(found));
  errno = error;
}

}  // namespace

// TEXT = ERROR_TEXT(NUMBER)
void error_text_(char *answer, charlen answer_len, const int32_t *number) {
  store_text(answer, answer_len, *number);
}

// CALL GET_ERROR_TEXT(NUMBER, TEXT)
void get_error_text_(const int32_t *number, char *text, charlen text_len) {
  store_text(text, text_len, *number);
}

QXPORT_ALIAS(error_text_)
QXPORT_ALIAS(get_error_text_)
