// Characters, positions and buffers of the Fortran program's units.
#include "contract/services.h"
#include "core/gnu/units.h"
#include "core/services/descriptor.h"

#include "frame/fortran.h"

#include <algorithm>
#include <cerrno>
#include <unistd.h>

namespace {

bool is_connected(int32_t unit) {
  return qxcore_gnu_descriptor(unit) >= 0;
}

// The run-time answers a failed read as the end of the file, and a failed flush not at all: what went wrong
// is in errno only. What a signal interrupted it begins again, with EINTR left there. Answers the error
// number of the call, or 0 with errno as it was before.
template <typename Call>
int error_of(Call call) {
  const int former = errno;
  errno = 0;
  call();
  if (errno != 0 && errno != EINTR)
    return errno;
  errno = former;
  return 0;
}

bool is_flushed(int32_t unit) {
  int32_t status = 0;
  const int error = error_of([&] { status = qxcore_gnu_flush(unit); });
  return status == 0 && error == 0;
}

}  // namespace

// The run-time's character input goes past what READ has buffered: between the two on one unit a program asks
// for the position or sets it, which brings them together.
int32_t __msportlib_d_readchar(intptr_t unit) {
  const int32_t number = static_cast<int32_t>(unit);
  if (number < 0 && !qxcore_gnu_is_open(number))
    return -EBADF;
  char next;
  int32_t status = 0;
  const int error = error_of([&] { status = qxcore_gnu_read_character(&number, &next); });
  if (status == 0)
    return static_cast<unsigned char>(next);
  if (!is_connected(number))
    return -EBADF;
  // An error number of 2 would read as the end of the file.
  return error == 0 ? READ_END : -std::max(error, 3);
}

int32_t __msportlib_d_writechar(intptr_t unit, int32_t character) {
  const int32_t number = static_cast<int32_t>(unit);
  // The run-time would buffer the character, and lose it with the buffer.
  if (!qxcore_gnu_is_writable(number))
    return -EBADF;
  int32_t status = 0;
  const int error = error_of([&] { status = qxcore_gnu_write_character(number, character); });
  if (error != 0)
    return -error;
  return status == 0 ? 0 : -EIO;
}

int64_t __msportlib_d_curpos_i8(intptr_t unit) {
  const int32_t number = static_cast<int32_t>(unit);
  if (!is_connected(number))
    return -EBADF;
  const int64_t position = qxcore_gnu_position(number);
  return position < 0 ? -ESPIPE : position;
}

int64_t __msportlib_d_curpos(intptr_t unit) {
  return __msportlib_d_curpos_i8(unit);
}

int32_t __msportlib_d_fseek_i8(intptr_t unit, int64_t offset, int32_t origin) {
  const int64_t position = __msportlib_d_curpos_i8(unit);
  if (position < 0)
    return static_cast<int32_t>(position);
  const int32_t number = static_cast<int32_t>(unit);
  const int64_t size = qxcore_gnu_file_size(number);
  const int64_t origins[] = {0, position, size};
  if (origin < SEEK_SET || origin > SEEK_END)
    return -EINVAL;
  int64_t target;
  if (__builtin_add_overflow(origins[origin], offset, &target) || target < 0)
    return -EINVAL;
  // A READ that met the end of the file has put the unit behind an endfile record, where the run-time reads
  // and writes no more until it is rewound. At the end of the file a rewind truncates nothing.
  if (position >= size && qxcore_gnu_rewind(number) != 0)
    return -ESPIPE;
  return qxcore_gnu_seek(number, target) == 0 ? 0 : -EINVAL;
}

int32_t __msportlib_d_fseek(intptr_t unit, int64_t offset, int32_t origin) {
  return __msportlib_d_fseek_i8(unit, offset, origin);
}

// L = FLUSHQQ(UNIT)
int32_t flushqq_(const int32_t *unit) {
  return is_connected(*unit) && is_flushed(*unit) ? 1 : 0;
}

// L = COMMITQQ(UNIT)
int32_t commitqq_(const int32_t *unit) {
  const int fd = qxcore_gnu_descriptor(*unit);
  return fd >= 0 && is_flushed(*unit) && qxcore::commit(fd) ? 1 : 0;
}

QXPORT_ALIAS(flushqq_)
QXPORT_ALIAS(commitqq_)
