// The STAT family: a file's status as an array of 13 integers.
#include "contract/services.h"
#include "frame/errors.h"
#include "frame/strings.h"

#include <sys/stat.h>
#include <type_traits>

using namespace qxport;

namespace {

// Nothing is stored in element 13, which belongs to the caller.
template <typename Integer>
void fill(Integer *statb, const struct stat &status) {
  statb[0] = static_cast<Integer>(status.st_dev);
  statb[1] = static_cast<Integer>(status.st_ino);
  statb[2] = static_cast<Integer>(status.st_mode);
  statb[3] = static_cast<Integer>(status.st_nlink);
  statb[4] = static_cast<Integer>(status.st_uid);
  statb[5] = static_cast<Integer>(status.st_gid);
  statb[6] = static_cast<Integer>(status.st_rdev);
  statb[7] = static_cast<Integer>(status.st_size);
  statb[8] = static_cast<Integer>(status.st_atime);
  statb[9] = static_cast<Integer>(status.st_mtime);
  statb[10] = static_cast<Integer>(status.st_ctime);
  statb[11] = static_cast<Integer>(status.st_blksize);
}

// The answer for a status that the host call delivered. A size that INTEGER(4) cannot hold is stored as -1
// and reported, with all other elements filled, so that a caller who needs the size only sometimes can go on.
template <typename Integer>
int32_t deliver(Integer *statb, const struct stat &status) {
  fill(statb, status);
  if (std::is_same_v<Integer, int32_t> && status.st_size > INT32_MAX) {
    statb[7] = -1;
    return set_and_record_local(ERANGE);
  }
  return 0;
}

// The call is a template argument so that it is made directly: behind a system call an indirect one is dear.
template <int (*operation)(const char *, struct stat *), typename Integer>
int32_t named_status(const char *name, Integer *statb, charlen name_len) {
  const CString path(name, name_len);
  if (!path)
    return set_and_record_local(ENOMEM);
  struct stat status;
  if (operation(path.get(), &status) != 0)
    return record_local(errno);
  return deliver(statb, status);
}

template <typename Integer>
int32_t unit_status(const int32_t *unit, Integer *statb) {
  const int descriptor = __msportlib_d_gethandle(*unit, nullptr, nullptr);
  if (descriptor < 0)
    return set_and_record_local(EINVAL);
  struct stat status;
  if (fstat(descriptor, &status) != 0)
    return record_local(errno);
  return deliver(statb, status);
}

}  // namespace

// N = STAT(NAME, STATB)
int32_t stat_(const char *name, int32_t *statb, charlen name_len) {
  return named_status<stat>(name, statb, name_len);
}

// N = LSTAT(NAME, STATB)
int32_t lstat_(const char *name, int32_t *statb, charlen name_len) {
  return named_status<lstat>(name, statb, name_len);
}

// N = FSTAT(UNIT, STATB)
int32_t fstat_(const int32_t *unit, int32_t *statb) {
  return unit_status(unit, statb);
}

// N = STATI8(NAME, STATB)
int32_t stati8_(const char *name, int64_t *statb, charlen name_len) {
  return named_status<stat>(name, statb, name_len);
}

// N = LSTATI8(NAME, STATB)
int32_t lstati8_(const char *name, int64_t *statb, charlen name_len) {
  return named_status<lstat>(name, statb, name_len);
}

// N = FSTATI8(UNIT, STATB)
int32_t fstati8_(const int32_t *unit, int64_t *statb) {
  return unit_status(unit, statb);
}

QXPORT_ALIAS(stat_)
QXPORT_ALIAS(lstat_)
QXPORT_ALIAS(fstat_)
QXPORT_ALIAS(stati8_)
QXPORT_ALIAS(lstati8_)
QXPORT_ALIAS(fstati8_)
