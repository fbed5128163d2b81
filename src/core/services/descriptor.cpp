#include "core/services/descriptor.h"

#include "frame/fortran.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <fcntl.h>
#include <iterator>
#include <sys/stat.h>
#include <unistd.h>

namespace qxcore {

namespace {

struct AccessText {
  const char *text;
  Action action;
};

constexpr AccessText ACCESS_TEXTS[] = {
    {"r", Action::Read},
    {"read", Action::Read},
    {"w", Action::Write},
    {"write", Action::Write},
    {"a", Action::Write},
    {"append", Action::Write},
    {"r+", Action::ReadWrite},
    {"w+", Action::ReadWrite},
    {"a+", Action::ReadWrite},
    {"rw", Action::ReadWrite},
    {"readwrite", Action::ReadWrite},
};

Action allowed_action(int flags) {
  switch (flags & O_ACCMODE) {
  case O_RDONLY:
    return Action::Read;
  case O_WRONLY:
    return Action::Write;
  default:
    return Action::ReadWrite;
  }
}

}  // namespace

int32_t action_of(int32_t fd, const char *access, intptr_t access_length, Action *action) {
  const int flags = fcntl(fd, F_GETFL);
  struct stat status;
  if (flags < 0 || fstat(fd, &status) != 0)
    return errno;
  if (S_ISDIR(status.st_mode))
    return EISDIR;
  const Action allowed = allowed_action(flags);
  size_t length = access == nullptr || access_length < 0 ? 0 : static_cast<size_t>(access_length);
  while (length > 0 && access[length - 1] == ' ')
    --length;
  if (length == 0) {
    *action = allowed;
    return 0;
  }
  const auto *found =
      std::find_if(std::begin(ACCESS_TEXTS), std::end(ACCESS_TEXTS),
                   [&](const AccessText &known) { return qxport::same_keyword(access, length, known.text); });
  if (found == std::end(ACCESS_TEXTS) || (allowed != Action::ReadWrite && found->action != allowed))
    return EINVAL;
  *action = found->action;
  return 0;
}

void store_unit_name(int32_t fd, const char *known, int64_t known_length, char *name, int64_t *name_length) {
  char device[256];
  if (ttyname_r(fd, device, sizeof(device)) == 0) {
    known = device;
    known_length = static_cast<int64_t>(strlen(device));
  }
  const int64_t stored = std::clamp<int64_t>(known_length, 0, std::max<int64_t>(*name_length, 0));
  if (stored > 0)
    memcpy(name, known, static_cast<size_t>(stored));
  *name_length = stored;
}

bool commit(int32_t fd) {
  return fsync(fd) == 0 || errno == EINVAL || errno == EROFS;
}

}  // namespace qxcore
