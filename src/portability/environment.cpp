// GETENV and SCANENV.
#include "frame/fortran.h"
#include "frame/short_buffer.h"

#include <cstdlib>
#include <unistd.h>

using namespace qxport;

namespace {

constexpr size_t TEMPLATE_LIMIT = 8192;

// SCANENV's place in the environment: the template searched for, and the index of the entry after the last
// match.
char env_template_name[TEMPLATE_LIMIT + 1];
int32_t startpos;

struct Template {
  const char *text;
  size_t length;

  bool begins(const char *entry) const { return strncmp(entry, text, length) == 0; }

  // A prefix of the variable's name, not of its value.
  bool matches(const char *entry) const { return strcspn(entry, "=") >= length && begins(entry); }
};

// Trailing blanks and NULs do not count, nor do leading blanks.
Template template_of(const char *envname, charlen envname_len) {
  size_t end = length_of(envname_len);
  while (end > 0 && (envname[end - 1] == ' ' || envname[end - 1] == '\0'))
    --end;
  size_t begin = 0;
  while (begin < end && envname[begin] == ' ')
    ++begin;
  return {envname + begin, std::min(end - begin, TEMPLATE_LIMIT)};
}

// A template that is a leading part of the saved one counts as unchanged: the scan goes on.
void begin_if_changed(const Template &wanted) {
  if (memcmp(wanted.text, env_template_name, wanted.length) == 0)
    return;
  memcpy(env_template_name, wanted.text, wanted.length);
  env_template_name[wanted.length] = '\0';
  startpos = 0;
}

// The environment may have changed since the last call: without the last match in its place the scan starts
// again.
void begin_if_environment_changed(const Template &wanted) {
  if (startpos == 0)
    return;
  int32_t entries = 0;
  while (entries < startpos && environ != nullptr && environ[entries] != nullptr)
    ++entries;
  if (entries < startpos || !wanted.begins(environ[startpos - 1]))
    startpos = 0;
}

// The next matching entry, or null.
const char *next_match(const Template &wanted) {
  if (environ == nullptr)
    return nullptr;
  for (int32_t i = startpos; environ[i] != nullptr; ++i) {
    if (wanted.matches(environ[i])) {
      startpos = i + 1;
      return environ[i];
    }
  }
  return nullptr;
}

}  // namespace

// CALL GETENV(NAME, VALUE)
void getenv_(const char *name, char *value, charlen name_len, charlen value_len) {
  const size_t limit = length_of(name_len);
  const ShortBuffer<512> variable(limit + 1);
  const char *found = nullptr;
  // A name that cannot be kept is one that is not found.
  if (char *copy = variable.get(); copy != nullptr) {
    for (const char *end = name + limit; name != end && *name != ' '; ++name)
      *copy++ = *name;
    *copy = '\0';
    found = getenv(variable.get());
  }
  store_padded(value, value_len, found, found == nullptr ? 0 : strlen(found));
}

// CALL SCANENV(ENVNAME, ENVTEXT, ENVVALUE)
void scanenv_(const char *envname, char *envtext, char *envvalue, charlen envname_len, charlen envtext_len,
              charlen envvalue_len) {
  const Template wanted = template_of(envname, envname_len);
  const char *entry = nullptr;
  if (wanted.length > 0) {
    begin_if_changed(wanted);
    begin_if_environment_changed(wanted);
    entry = next_match(wanted);
  }
  if (entry == nullptr) {
    blank_fill(envtext, envtext_len);
    blank_fill(envvalue, envvalue_len);
    return;
  }
  const size_t name_length = strcspn(entry, "=");
  store_padded(envtext, envtext_len, entry, name_length);
  const char *value = entry[name_length] == '=' ? entry + name_length + 1 : "";
  store_padded(envvalue, envvalue_len, value, strlen(value));
}

QXPORT_ALIAS(getenv_)
QXPORT_ALIAS(scanenv_)
