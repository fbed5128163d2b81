// A host's file status as a binding's record.
#ifndef QXPORT_POSIX_FILE_STATUS_H
#define QXPORT_POSIX_FILE_STATUS_H

#include "records/records.h"

#include <sys/stat.h>

namespace qxport {

inline void fill(StatRecord *record, const struct stat &status) {
  record->st_mode = static_cast<int32_t>(status.st_mode);
  record->st_ino = static_cast<int64_t>(status.st_ino);
  record->st_dev = static_cast<int64_t>(status.st_dev);
  record->st_nlink = static_cast<int64_t>(status.st_nlink);
  record->st_uid = static_cast<int32_t>(status.st_uid);
  record->st_gid = static_cast<int32_t>(status.st_gid);
  record->st_size = status.st_size;
  record->st_atime_ = status.st_atim.tv_sec;
  record->st_mtime_ = status.st_mtim.tv_sec;
  record->st_ctime_ = status.st_ctim.tv_sec;
}

}  // namespace qxport

#endif
