// The units of the Fortran program, with their descriptors and names.
#include "core/gnu/units.h"

#include "contract/services.h"
#include "core/services/descriptor.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// Closes a descriptor at the end of its scope.
struct Descriptor {
  ~Descriptor() { close(fd); }
  const int fd;
};

bool open_unit(int32_t unit, const char *path, qxcore::Action action) {
  const int32_t length = static_cast<int32_t>(strlen(path));
  return qxcore_gnu_open(unit, path, length, static_cast<int32_t>(action)) == 0;
}

bool open_unit(int32_t unit, int fd, qxcore::Action action) {
  char path[32];
  snprintf(path, sizeof(path), "/proc/self/fd/%d", fd);
  return open_unit(unit, path, action);
}

// Opens the unit on a pipe of our own: for what cannot be opened by name (a socket), what waits in open for
// its other end (a pipe), and what would become the controlling terminal.
bool open_unit_on_pipe(int32_t unit, qxcore::Action action) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0)
    return false;
  const Descriptor reader{ends[0]};
  const Descriptor writer{ends[1]};
  return open_unit(unit, action == qxcore::Action::Write ? writer.fd : reader.fd, action);
}

// The run-time crashes where it cannot close what it opened: where the program closed the unit's descriptor,
// there is one again.
void mend_descriptor(int fd) {
  if (fd < 0 || fcntl(fd, F_GETFD) >= 0)
    return;
  const int null = open("/dev/null", O_RDWR | O_CLOEXEC);
  if (null >= 0 && null != fd) {
    dup3(null, fd, O_CLOEXEC);
    close(null);
  }
}

}  // namespace

bool qxcore_gnu_has_positions(int32_t fd) {
  return lseek(fd, 0, SEEK_CUR) >= 0;
}

int32_t __msportlib_d_gethandle(intptr_t unit, char *name, int64_t *name_length) {
  const int32_t fd = qxcore_gnu_descriptor(unit);
  if (fd < 0)
    return -1;
  if (name != nullptr) {
    char known[PATH_MAX];
    const int32_t length = qxcore_gnu_file_name(static_cast<int32_t>(unit), known, sizeof(known));
    qxcore::store_unit_name(fd, known, length, name, name_length);
  }
  return fd;
}

// The run-time opens files by name only, which would give the unit a file offset of its own. So the unit is
// opened on an object of the same kind, and its descriptor is then replaced by a duplicate of the given one.
int32_t for_fdopen(int32_t fd, int32_t unit, const char *access, intptr_t access_length) {
  qxcore::Action action;
  const int32_t error = qxcore::action_of(fd, access, access_length, &action);
  if (error != 0)
    return error;
  struct stat status;
  if (fstat(fd, &status) != 0)
    return errno;
  if (unit < 0 && !qxcore_gnu_is_open(unit))
    return EINVAL;
  const int former_fd = qxcore_gnu_descriptor(unit);
  if (former_fd == fd)
    return 0;
  mend_descriptor(former_fd);
  const bool by_name = S_ISREG(status.st_mode) || S_ISBLK(status.st_mode);
  errno = 0;
  // A descriptor may be had from times of other rights: neither its file nor a pipe can then be opened by
  // name.
  if (!(by_name ? open_unit(unit, fd, action) : open_unit_on_pipe(unit, action)) &&
      !open_unit(unit, "/dev/null", action))
    return errno != 0 ? errno : EINVAL;
  const int unit_fd = qxcore_gnu_descriptor(unit);
  if (unit_fd < 0)
    return EINVAL;
  // Like the run-time's own descriptors it does not pass to a program that is executed.
  if (dup3(fd, unit_fd, O_CLOEXEC) < 0)
    return errno;
  const off_t offset = lseek(fd, 0, SEEK_CUR);
  if (by_name && offset > 0 && qxcore_gnu_begin_at(unit, offset) != 0)
    return EINVAL;
  return 0;
}
