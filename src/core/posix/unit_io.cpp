// Input and output on units without a Fortran run-time: straight to the descriptor, so nothing waits in a
// buffer.
#include "contract/services.h"
#include "core/posix/units.h"

#include "frame/fortran.h"

#include <algorithm>
#include <cerrno>
#include <unistd.h>

namespace {

int descriptor_of(intptr_t number) {
  const qxcore::Unit *unit = qxcore::connected_unit(number);
  return unit == nullptr ? -1 : unit->descriptor;
}

// The descriptor of a unit that allows the action; -1 for none.
int descriptor_for(intptr_t number, qxcore::Action action) {
  const qxcore::Unit *unit = qxcore::connected_unit(number);
  if (unit == nullptr || (unit->action != action && unit->action != qxcore::Action::ReadWrite))
    return -1;
  return unit->descriptor;
}

// A signal's procedure may run meanwhile; the character is moved all the same.
template <typename Move>
ssize_t uninterrupted(Move move) {
  ssize_t count;
  do
    count = move();
  while (count < 0 && errno == EINTR);
  return count;
}

}  // namespace

int32_t __msportlib_d_readchar(intptr_t unit) {
  const int fd = descriptor_for(unit, qxcore::Action::Read);
  if (fd < 0)
    return -EBADF;
  unsigned char character;
  const ssize_t count = uninterrupted([&] { return read(fd, &character, 1); });
  if (count == 1)
    return character;
  // An error number of 2 would read as the end of the file.
  return count == 0 ? READ_END : -std::max(errno, 3);
}

int32_t __msportlib_d_writechar(intptr_t unit, int32_t character) {
  const int fd = descriptor_for(unit, qxcore::Action::Write);
  if (fd < 0)
    return -EBADF;
  const unsigned char byte = static_cast<unsigned char>(character);
  return uninterrupted([&] { return write(fd, &byte, 1); }) == 1 ? 0 : -errno;
}

int32_t __msportlib_d_fseek_i8(intptr_t unit, int64_t offset, int32_t origin) {
  const int fd = descriptor_of(unit);
  if (fd < 0)
    return -EBADF;
  if (origin < SEEK_SET || origin > SEEK_END)
    return -EINVAL;
  return lseek(fd, static_cast<off_t>(offset), origin) < 0 ? -errno : 0;
}

int32_t __msportlib_d_fseek(intptr_t unit, int64_t offset, int32_t origin) {
  return __msportlib_d_fseek_i8(unit, offset, origin);
}

int64_t __msportlib_d_curpos_i8(intptr_t unit) {
  const int fd = descriptor_of(unit);
  if (fd < 0)
    return -EBADF;
  const off_t position = lseek(fd, 0, SEEK_CUR);
  return position < 0 ? -errno : position;
}

int64_t __msportlib_d_curpos(intptr_t unit) {
  return __msportlib_d_curpos_i8(unit);
}

// L = FLUSHQQ(UNIT)
int32_t flushqq_(const int32_t *unit) {
  return descriptor_of(*unit) < 0 ? 0 : 1;
}

// L = COMMITQQ(UNIT)
int32_t commitqq_(const int32_t *unit) {
  const int fd = descriptor_of(*unit);
  return fd >= 0 && qxcore::commit(fd) ? 1 : 0;
}

QXPORT_ALIAS(flushqq_)
QXPORT_ALIAS(commitqq_)
