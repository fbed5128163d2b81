// Descriptors: opened, read, written, positioned, duplicated, controlled.
#include "posix/file_name.h"
#include "posix/file_status.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace qxport;

namespace {

// The host's sizes have no sign: it would take a negative one for more memory than there is, and on a target
// of 32 bits go on behind the caller's variable.
template <typename Call>
void transfer(int32_t nbyte, int32_t *moved, int32_t *ierror, Call call) {
  if (nbyte < 0) {
    *moved = -1;
    return refuse(ierror, EINVAL);
  }
  deliver(call(static_cast<size_t>(nbyte)), moved, ierror);
}

struct flock host_lock(const FlockRecord &record) {
  struct flock lock = {};
  lock.l_type = static_cast<short>(record.l_type);
  lock.l_whence = static_cast<short>(record.l_whence);
  lock.l_start = static_cast<off_t>(record.l_start);
  lock.l_len = static_cast<off_t>(record.l_len);
  lock.l_pid = record.l_pid;
  return lock;
}

void fill(FlockRecord *record, const struct flock &lock) {
  record->l_type = lock.l_type;
  record->l_whence = lock.l_whence;
  record->l_start = lock.l_start;
  record->l_len = lock.l_len;
  record->l_pid = lock.l_pid;
}

// The record is written back whether the command failed or not.
void control_lock(int32_t fd, int32_t command, int32_t jflock, int32_t *iargout, int32_t *ierror) {
  FlockRecord *record = find_record_as<FlockRecord>(jflock, Kind::Flock, ierror);
  if (record == nullptr)
    return;
  struct flock lock = host_lock(*record);
  deliver(fcntl(fd, command, &lock), iargout, ierror);
  fill(record, lock);
}

}  // namespace

// CALL PXFOPEN(PATH, ILEN, IOPENFLAG, IMODE, IFILDES, IERROR)
void pxfopen_(const char *path, const int32_t *ilen, const int32_t *iopenflag, const int32_t *imode,
              int32_t *ifildes, int32_t *ierror, charlen path_len) {
  call_with_name(path, *ilen, path_len, ierror, [&](const char *name) {
    return *ifildes = open(name, *iopenflag, static_cast<mode_t>(*imode));
  });
}

// CALL PXFCREAT(PATH, ILEN, IMODE, IFILDES, IERROR)
void pxfcreat_(const char *path, const int32_t *ilen, const int32_t *imode, int32_t *ifildes, int32_t *ierror,
               charlen path_len) {
  call_with_name(path, *ilen, path_len, ierror,
                 [&](const char *name) { return *ifildes = creat(name, static_cast<mode_t>(*imode)); });
}

// CALL PXFCLOSE(IFILDES, IERROR)
void pxfclose_(const int32_t *ifildes, int32_t *ierror) {
  report(close(*ifildes), ierror);
}

// CALL PXFDUP(IFILDES, IFID, IERROR)
void pxfdup_(const int32_t *ifildes, int32_t *ifid, int32_t *ierror) {
  deliver(dup(*ifildes), ifid, ierror);
}

// CALL PXFDUP2(IFILDES, IFILDES2, IERROR)
void pxfdup2_(const int32_t *ifildes, const int32_t *ifildes2, int32_t *ierror) {
  report(dup2(*ifildes, *ifildes2), ierror);
}

// CALL PXFREAD(IFILDES, BUF, NBYTE, NREAD, IERROR)
// An absent argument is answered with -1, which is no host error.
void pxfread_(const int32_t *ifildes, void *buf, const int32_t *nbyte, int32_t *nread, int32_t *ierror) {
  if (ifildes == nullptr || buf == nullptr || nbyte == nullptr || nread == nullptr) {
    *ierror = -1;
    return;
  }
  transfer(*nbyte, nread, ierror, [&](size_t count) { return read(*ifildes, buf, count); });
}

// CALL PXFWRITE(IFILDES, BUF, NBYTE, NWRITTEN, IERROR)
void pxfwrite_(const int32_t *ifildes, const void *buf, const int32_t *nbyte, int32_t *nwritten,
               int32_t *ierror) {
  transfer(*nbyte, nwritten, ierror, [&](size_t count) { return write(*ifildes, buf, count); });
}

// CALL PXFLSEEK(IFILDES, IOFFSET, IWHENCE, IPOSITION, IERROR)
void pxflseek_(const int32_t *ifildes, const int32_t *ioffset, const int32_t *iwhence, int32_t *iposition,
               int32_t *ierror) {
  deliver(lseek(*ifildes, *ioffset, *iwhence), iposition, ierror);
}

// CALL PXFPIPE(IREADFD, IWRITEFD, IERROR)
void pxfpipe_(int32_t *ireadfd, int32_t *iwritefd, int32_t *ierror) {
  int ends[2];
  report(pipe(ends), ierror);
  if (*ierror == 0) {
    *ireadfd = ends[0];
    *iwritefd = ends[1];
  }
}

// CALL PXFFCNTL(IFILDES, ICMD, IARGIN, IARGOUT, IERROR)
void pxffcntl_(const int32_t *ifildes, const int32_t *icmd, int32_t *iargin, int32_t *iargout,
               int32_t *ierror) {
  switch (*icmd) {
  case F_DUPFD:
  case F_SETFD:
  case F_SETFL:
    return deliver(fcntl(*ifildes, *icmd, *iargin), iargout, ierror);
  case F_GETLK:
  case F_SETLK:
  case F_SETLKW:
    return control_lock(*ifildes, *icmd, *iargin, iargout, ierror);
  default:
    // IARGIN's address, also for F_SETOWN, which takes a process id: commands of the host that read or write
    // through a pointer are reached this way.
    return deliver(fcntl(*ifildes, *icmd, iargin), iargout, ierror);
  }
}

// CALL PXFFSTAT(IFILDES, JSTAT, IERROR)
void pxffstat_(const int32_t *ifildes, const int32_t *jstat, int32_t *ierror) {
  StatRecord *record = find_record_as<StatRecord>(*jstat, Kind::Stat, ierror);
  if (record == nullptr)
    return;
  struct stat status;
  report(fstat(*ifildes, &status), ierror);
  if (*ierror == 0)
    fill(record, status);
}

// CALL PXFFPATHCONF(IFILDES, NAME, IVAL, IERROR)
void pxffpathconf_(const int32_t *ifildes, const int32_t *name, int32_t *ival, int32_t *ierror) {
  deliver(fpathconf(*ifildes, *name), ival, ierror);
}

// CALL PXFUMASK(ICMASK, IPREVCMASK, IERROR)
void pxfumask_(const int32_t *icmask, int32_t *iprevcmask, int32_t *ierror) {
  *iprevcmask = static_cast<int32_t>(umask(static_cast<mode_t>(*icmask)));
  *ierror = 0;
}
