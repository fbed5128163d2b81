// Units without a Fortran run-time: a small table of unit numbers and descriptors.
#include "core/posix/units.h"

#include "contract/services.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using qxcore::Action;
using qxcore::Unit;

namespace {

struct Block {
  Unit units[64];
  Block *next;
};

// The preconnected units first.
Block table = {{{Unit::State::Preconnected, 0, STDERR_FILENO, Action::Write, 0, 0},
                {Unit::State::Preconnected, 5, STDIN_FILENO, Action::Read, 0, 0},
                {Unit::State::Preconnected, 6, STDOUT_FILENO, Action::Write, 0, 0}},
               nullptr};

// What became of the descriptor of a unit.
enum class Descriptor { Kept, Closed, GivenAway };

Descriptor descriptor_state(const Unit &unit) {
  if (unit.state == Unit::State::Preconnected)
    return Descriptor::Kept;
  const int former = errno;
  struct stat status;
  const bool open = fstat(unit.descriptor, &status) == 0;
  errno = former;
  if (!open)
    return Descriptor::Closed;
  return status.st_dev == unit.device && status.st_ino == unit.inode ? Descriptor::Kept
                                                                     : Descriptor::GivenAway;
}

bool is_connected(const Unit &unit) {
  return unit.state != Unit::State::Free && descriptor_state(unit) == Descriptor::Kept;
}

template <typename Test>
Unit *first_unit(Test test) {
  for (Block *block = &table; block != nullptr; block = block->next)
    for (Unit &unit : block->units)
      if (test(unit))
        return &unit;
  return nullptr;
}

Unit *unit_of(intptr_t number) {
  return first_unit(
      [&](const Unit &unit) { return unit.state != Unit::State::Free && unit.number == number; });
}

// A place that no connected unit has. The blocks stay: there are no more of them than descriptors allow.
Unit *free_place() {
  if (Unit *free = first_unit([](const Unit &unit) { return unit.state == Unit::State::Free; }))
    return free;
  if (Unit *closed = first_unit([](const Unit &unit) { return !is_connected(unit); }))
    return closed;
  Block *block = static_cast<Block *>(calloc(1, sizeof(Block)));
  if (block == nullptr)
    return nullptr;
  block->next = table.next;
  table.next = block;
  return &block->units[0];
}

}  // namespace

const Unit *qxcore::connected_unit(intptr_t number) {
  const Unit *unit = unit_of(number);
  return unit != nullptr && is_connected(*unit) ? unit : nullptr;
}

int32_t __msportlib_d_gethandle(intptr_t number, char *name, int64_t *name_length) {
  const Unit *unit = unit_of(number);
  if (unit == nullptr || descriptor_state(*unit) == Descriptor::GivenAway)
    return -1;
  if (name != nullptr) {
    char link[32];
    char target[PATH_MAX];
    snprintf(link, sizeof(link), "/proc/self/fd/%d", unit->descriptor);
    const ssize_t length = readlink(link, target, sizeof(target));
    qxcore::store_unit_name(unit->descriptor, target, length, name, name_length);
  }
  return unit->descriptor;
}

int32_t for_fdopen(int32_t fd, int32_t number, const char *access, intptr_t access_length) {
  Action action;
  const int32_t error = qxcore::action_of(fd, access, access_length, &action);
  if (error != 0)
    return error;
  if (number < 0)
    return EINVAL;
  Unit *unit = unit_of(number);
  const bool connected = unit != nullptr && is_connected(*unit);
  if (connected && unit->descriptor == fd)
    return 0;
  struct stat status;
  const int duplicate = fcntl(fd, F_DUPFD_CLOEXEC, 0);
  if (duplicate < 0 || fstat(duplicate, &status) != 0)
    return errno;
  if (connected && unit->state == Unit::State::Owned)
    close(unit->descriptor);
  if (unit == nullptr)
    unit = free_place();
  if (unit == nullptr) {
    close(duplicate);
    return ENOMEM;
  }
  *unit = {Unit::State::Owned, number, duplicate, action, status.st_dev, status.st_ino};
  return 0;
}
