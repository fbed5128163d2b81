// Units without a Fortran run-time: a small table of unit numbers and descriptors.
#include "contract/services.h"
#include "core/services/descriptor.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <unistd.h>

namespace {

struct Unit {
  intptr_t number;
  int32_t descriptor;
};

constexpr int MOST_UNITS = 100;

// The preconnected units first.
Unit units[MOST_UNITS] = {{0, STDERR_FILENO}, {5, STDIN_FILENO}, {6, STDOUT_FILENO}};
int unit_count = 3;

Unit *find_unit(intptr_t number) {
  for (int i = 0; i < unit_count; ++i)
    if (units[i].number == number)
      return &units[i];
  return nullptr;
}

}  // namespace

int32_t __msportlib_d_gethandle(intptr_t number, char *name, int64_t *name_length) {
  const Unit *unit = find_unit(number);
  if (unit == nullptr)
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
  qxcore::Action action;
  const int32_t error = qxcore::action_of(fd, access, access_length, &action);
  if (error != 0)
    return error;
  Unit *unit = find_unit(number);
  if (unit == nullptr) {
    if (unit_count == MOST_UNITS)
      return EMFILE;
    unit = &units[unit_count++];
    unit->number = number;
  }
  unit->descriptor = fd;
  return 0;
}
