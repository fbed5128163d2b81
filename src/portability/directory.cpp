// Names and directories: CHDIR, UNLINK, RENAME, GETCWD.
#include "frame/errors.h"
#include "frame/short_buffer.h"
#include "frame/strings.h"

#include <climits>
#include <cstdio>
#include <unistd.h>

using namespace qxport;

namespace {

int32_t answer_of(int result) {
  return result == 0 ? 0 : record_local(errno);
}

// The call is a template argument so that it is made directly: behind a system call an indirect one is dear.
template <int (*operation)(const char *)>
int32_t call_with_name(const char *name, charlen name_len) {
  const CString path(name, name_len);
  return path ? answer_of(operation(path.get())) : record_local(ENOMEM);
}

}  // namespace

// N = CHDIR(DIRNAME)
int32_t chdir_(const char *dirname, charlen dirname_len) {
  return call_with_name<chdir>(dirname, dirname_len);
}

// N = UNLINK(NAME)
int32_t unlink_(const char *name, charlen name_len) {
  return call_with_name<unlink>(name, name_len);
}

// N = RENAME(FROM, TO)
int32_t rename_(const char *from, const char *to, charlen from_len, charlen to_len) {
  const CString source(from, from_len);
  if (!source)
    return record_local(errno);
  const CString target(to, to_len);
  if (!target)
    return record_local(errno);
  return answer_of(rename(source.get(), target.get()));
}

// N = GETCWD(DIRNAME)
int32_t getcwd_(char *dirname, charlen dirname_len) {
  if (dirname_len < 1)
    return set_local(ENOENT);
  const size_t length = length_of(dirname_len);
  const ShortBuffer<PATH_MAX> buffer(length + 1);
  if (buffer.get() == nullptr)
    return set_and_record_local(ENOMEM);
  const char *found = getcwd(buffer.get(), length + 1);
  if (found == nullptr) {
    blank_fill(dirname, dirname_len);
    return record_local(errno);
  }
  store_padded(dirname, dirname_len, found, strlen(found));
  return 0;
}

QXPORT_ALIAS(chdir_)
QXPORT_ALIAS(unlink_)
QXPORT_ALIAS(rename_)
QXPORT_ALIAS(getcwd_)
