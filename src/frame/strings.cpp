#include "frame/strings.h"

#include "frame/errors.h"

#include <cerrno>
#include <cstdlib>

using namespace qxport;

namespace {

// What a copy has room for beyond its text.
constexpr size_t SLACK = 23;

}  // namespace

char *allocCstr(const char *text, charlen length) {
  if (text == nullptr) {
    set_and_record_status(EINVAL);
    return nullptr;
  }
  const size_t count = trimmed_length(text, length);
  char *string = static_cast<char *>(malloc(count + SLACK));
  if (string == nullptr) {
    set_and_record_status(ENOMEM);
    return nullptr;
  }
  memcpy(string, text, count);
  string[count] = '\0';
  return string;
}

void deallocCstr(char *string) {
  free(string);
}

size_t CstrToFstr(char *text, const char *source, charlen length, charlen source_limit) {
  if (text == nullptr) {
    set_and_record_status(EINVAL);
    return 0;
  }
  const size_t room = length_of(length);
  const size_t readable = source == nullptr ? 0 : length_of(source_limit);
  const size_t copied = readable == 0 ? 0 : strnlen(source, std::min(room, readable));
  store_padded(text, length, source, copied);
  // The character behind a full variable is looked at even where source_limit ended there too.
  const bool full = copied == room;
  if (full && readable > 0 && source[copied] != '\0')
    set_and_record_status(EINVAL);
  return copied;
}
