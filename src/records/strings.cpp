#include "records/strings.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

using namespace qxport;

namespace {

char *new_string(const char *text, size_t length, Ending ending) {
  const size_t size = length + (ending == Ending::Nul ? 1 : 0);
  char *copy = static_cast<char *>(malloc(std::max<size_t>(size, 1)));
  if (copy == nullptr)
    return nullptr;
  memcpy(copy, text, length);
  if (ending == Ending::Nul)
    copy[length] = '\0';
  return copy;
}

}  // namespace

void qxport::release(OwnedString string) {
  free(string.start);
  string.start = nullptr;
  string.length = 0;
}

bool qxport::replace(OwnedString string, const char *text, size_t length, Ending ending) {
  char *copy = nullptr;
  if (text != nullptr) {
    copy = new_string(text, length, ending);
    if (copy == nullptr)
      return false;
  }
  free(string.start);
  string.start = copy;
  string.length = text == nullptr ? 0 : length;
  return true;
}

bool qxport::replace(OwnedString string, const char *text, Ending ending) {
  return replace(string, text, text == nullptr ? 0 : strlen(text), ending);
}

char **qxport::new_strings(char *const *texts, int32_t count) {
  // An empty list is a block too.
  char **copies = static_cast<char **>(calloc(static_cast<size_t>(std::max(count, 1)), sizeof(char *)));
  for (int32_t i = 0; copies != nullptr && texts != nullptr && i < count; ++i) {
    if (texts[i] == nullptr)
      continue;
    copies[i] = new_string(texts[i], strlen(texts[i]), Ending::Nul);
    if (copies[i] == nullptr)
      release_strings(copies, i);
  }
  return copies;
}

void qxport::release_strings(char **&strings, int32_t count) {
  for (int32_t i = 0; strings != nullptr && i < count; ++i)
    free(strings[i]);
  free(strings);
  strings = nullptr;
}
