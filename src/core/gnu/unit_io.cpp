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

// Leaves errno as it found it.
class KeptErrno {
public:
  ~KeptErrno() { errno = former_; }

private:
  const int former_ = errno;
};

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

// Asking changes nothing but errno.
template <typename Ask>
QxcoreWay way_of(Ask ask, int32_t unit) {
  const KeptErrno kept;
  return ask(unit);
}

// The run-time's own moves leave its position of a formatted unit of stream access behind.
void mend_position(int32_t unit, int64_t position) {
  const KeptErrno kept;
  qxcore_gnu_mend_position(unit, position);
}

void end_record(int32_t unit) {
  const KeptErrno kept;
  qxcore_gnu_end_record(unit);
}

int32_t move_in(int32_t unit, QxcoreWay way, char *next) {
  if (way == QxcoreWay::Bytes)
    return qxcore_gnu_read_byte(unit, next);
  if (way == QxcoreWay::Records)
    return qxcore_gnu_read_record(unit, next);
  return qxcore_gnu_get_character(unit, next);
}

bool is_flushed(int32_t unit) {
  int32_t status = 0;
  const int error = error_of([&] { status = qxcore_gnu_flush(unit); });
  return status == 0 && error == 0;
}

}  // namespace

int32_t __msportlib_d_readchar(intptr_t unit) {
  const int32_t number = static_cast<int32_t>(unit);
  const QxcoreWay way = way_of(qxcore_gnu_way_of_reading, number);
  if (way == QxcoreWay::Refused)
    return -EBADF;
  char next;
  int32_t status = 0;
  const int error = error_of([&] { status = move_in(number, way, &next); });
  if (way == QxcoreWay::Mended)
    mend_position(number, qxcore_gnu_position(number));
  if (status == 0)
    return static_cast<unsigned char>(next);
  // The run-time would end such a record later, wherever the unit stands then.
  if (way == QxcoreWay::Direct)
    end_record(number);
  // An error number of 2 would read as the end of the file.
  return error == 0 ? READ_END : -std::max(error, 3);
}

int32_t __msportlib_d_writechar(intptr_t unit, int32_t character) {
  const int32_t number = static_cast<int32_t>(unit);
  const char next = static_cast<char>(character);
  const QxcoreWay way = way_of(qxcore_gnu_way_of_writing, number);
  if (way == QxcoreWay::Refused)
    return -EBADF;
  // What READ has in its buffer is not where the unit stands.
  if (way == QxcoreWay::Direct || way == QxcoreWay::Mended)
    qxcore_gnu_position(number);
  int32_t status = 0;
  const int error = error_of([&] {
    status = way == QxcoreWay::Bytes ? qxcore_gnu_write_byte(number, next)
                                     : qxcore_gnu_put_character(number, next);
    // The mending writes the buffer, and would not tell that it could not.
    if (way == QxcoreWay::Mended && status == 0)
      status = qxcore_gnu_flush(number);
  });
  if (way == QxcoreWay::Mended)
    mend_position(number, qxcore_gnu_position(number));
  if (error != 0)
    return -error;
  return status == 0 ? 0 : -EIO;
}

// Asked of the descriptor first: the run-time would drop what it has read of a pipe.
int64_t __msportlib_d_curpos_i8(intptr_t unit) {
  const int32_t number = static_cast<int32_t>(unit);
  const int fd = qxcore_gnu_descriptor(unit);
  if (fd < 0)
    return -EBADF;
  if (!qxcore_gnu_has_positions(fd))
    return -errno;
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
  if (origin < SEEK_SET || origin > SEEK_END)
    return -EINVAL;
  const int32_t number = static_cast<int32_t>(unit);
  const int64_t origins[] = {0, position, qxcore_gnu_file_size(number)};
  int64_t target;
  if (__builtin_add_overflow(origins[origin], offset, &target) || target < 0)
    return -EINVAL;
  if (!is_flushed(number))
    return -EIO;
  const KeptErrno kept;
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
