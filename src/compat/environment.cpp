// GETENVQQ and SETENVQQ.
#include "frame/errors.h"
#include "frame/strings.h"

#include <cstdlib>
#include <unistd.h>

using namespace qxport;

namespace {

// An entry of the environment whose name has a "=" in it, which the host's setenv refuses. Entries stay
// allocated, as the host's own do: the program may hold pointers to them.
struct Entry {
  const Entry *former;
  char text[];
};
const Entry *entries;

// The list that was made for such entries. The host makes another when it needs more room itself.
char **own_list;

char *new_entry(const char *name, const char *value) {
  const size_t name_length = strlen(name), value_size = strlen(value) + 1;
  auto *entry = static_cast<Entry *>(malloc(sizeof(Entry) + name_length + 1 + value_size));
  if (entry == nullptr)
    return nullptr;
  char *end = static_cast<char *>(mempcpy(entry->text, name, name_length));
  *end++ = '=';
  memcpy(end, value, value_size);
  entry->former = entries;
  entries = entry;
  return entry->text;
}

// Where the entry of a name is, or the end of the list.
size_t place_of(const char *name) {
  const size_t length = strlen(name);
  size_t place = 0;
  if (environ != nullptr)
    while (environ[place] != nullptr &&
           (strncmp(environ[place], name, length) != 0 || environ[place][length] != '='))
      ++place;
  return place;
}

// Room for one more entry behind `count` of them.
bool grow_list(size_t count) {
  auto **list = static_cast<char **>(realloc(own_list, (count + 2) * sizeof(char *)));
  if (list == nullptr)
    return false;
  if (environ != own_list && environ != nullptr)
    memcpy(list, environ, count * sizeof(char *));
  list[count] = list[count + 1] = nullptr;
  environ = own_list = list;
  return true;
}

// The host's setenv, for a name with a "=" in it: what getenv finds under that name from now on.
bool set_by_hand(const char *name, const char *value) {
  const size_t place = place_of(name);
  const bool is_new = environ == nullptr || environ[place] == nullptr;
  if (!is_new && strcmp(environ[place] + strlen(name) + 1, value) == 0)
    return true;
  if (is_new && !grow_list(place))
    return false;
  char *entry = new_entry(name, value);
  if (entry != nullptr)
    environ[place] = entry;
  return entry != nullptr;
}

}  // namespace

// N = GETENVQQ(VARNAME, VALUE)
int32_t getenvqq_(const char *varname, char *value, charlen varname_len, charlen value_len) {
  const CString name(varname, varname_len);
  if (!name)
    return 0;
  const char *found = getenv(name.get());
  const size_t length = found == nullptr ? 0 : strlen(found);
  return static_cast<int32_t>(CstrToFstr(value, found, value_len, static_cast<charlen>(length)));
}

// L = SETENVQQ(VARNAME_EQ_VALUE)
// The last "=" ends the name, so that "A=B=C" sets a variable that is named "A=B".
int32_t setenvqq_(const char *varname_eq_value, charlen varname_eq_value_len) {
  const CString text(varname_eq_value, varname_eq_value_len);
  if (!text)
    return 0;
  char *equals = strrchr(text.get(), '=');
  if (equals == nullptr) {
    set_and_record_status(EINVAL);
    return 0;
  }
  *equals = '\0';
  const char *name = text.get(), *value = equals + 1;
  if (strchr(name, '=') != nullptr)
    return set_by_hand(name, value) ? 1 : 0;
  return setenv(name, value, 1) == 0 ? 1 : 0;
}

QXPORT_ALIAS(setenvqq_)
