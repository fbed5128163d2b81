// Files by name: access, modes, owners, links, times, status and limits.
#include "posix/file_name.h"
#include "posix/file_status.h"

#include <cstdio>
#include <sys/stat.h>
#include <unistd.h>
#include <utime.h>

using namespace qxport;

namespace {

mode_t mode_of(int32_t imode) {
  return static_cast<mode_t>(imode);
}

// Two names, each by the rule with its own length.
template <typename Call>
void call_with_names(const char *first, int32_t ilen1, charlen hidden1, const char *second, int32_t ilen2,
                     charlen hidden2, int32_t *ierror, Call call) {
  const CString first_name = file_name(first, ilen1, hidden1);
  if (!first_name) {
    *ierror = errno;
    return;
  }
  call_with_name(second, ilen2, hidden2, ierror,
                 [&](const char *second_name) { return call(first_name.get(), second_name); });
}

int32_t is_type(int32_t mode, mode_t type) {
  return (mode_of(mode) & S_IFMT) == type ? 1 : 0;
}

}  // namespace

// CALL PXFUNLINK(PATH, ILEN, IERROR)
void pxfunlink_(const char *path, const int32_t *ilen, int32_t *ierror, charlen path_len) {
  call_with_name(path, *ilen, path_len, ierror, unlink);
}

// CALL PXFACCESS(PATH, ILEN, IAMODE, IERROR)
void pxfaccess_(const char *path, const int32_t *ilen, const int32_t *iamode, int32_t *ierror,
                charlen path_len) {
  call_with_name(path, *ilen, path_len, ierror, [&](const char *name) { return access(name, *iamode); });
}

// CALL PXFCHMOD(PATH, ILEN, IMODE, IERROR)
void pxfchmod_(const char *path, const int32_t *ilen, const int32_t *imode, int32_t *ierror,
               charlen path_len) {
  call_with_name(path, *ilen, path_len, ierror,
                 [&](const char *name) { return chmod(name, mode_of(*imode)); });
}

// CALL PXFCHOWN(PATH, ILEN, IOWNER, IGROUP, IERROR)
void pxfchown_(const char *path, const int32_t *ilen, const int32_t *iowner, const int32_t *igroup,
               int32_t *ierror, charlen path_len) {
  call_with_name(path, *ilen, path_len, ierror, [&](const char *name) {
    return chown(name, static_cast<uid_t>(*iowner), static_cast<gid_t>(*igroup));
  });
}

// CALL PXFMKFIFO(PATH, ILEN, IMODE, IERROR)
void pxfmkfifo_(const char *path, const int32_t *ilen, const int32_t *imode, int32_t *ierror,
                charlen path_len) {
  call_with_name(path, *ilen, path_len, ierror,
                 [&](const char *name) { return mkfifo(name, mode_of(*imode)); });
}

// CALL PXFLINK(EXISTING, ILEN1, NEW, ILEN2, IERROR)
void pxflink_(const char *existing, const int32_t *ilen1, const char *new_, const int32_t *ilen2,
              int32_t *ierror, charlen existing_len, charlen new_len) {
  call_with_names(existing, *ilen1, existing_len, new_, *ilen2, new_len, ierror, link);
}

// CALL PXFRENAME(OLD, ILEN1, NEW, ILEN2, IERROR)
void pxfrename_(const char *old, const int32_t *ilen1, const char *new_, const int32_t *ilen2,
                int32_t *ierror, charlen old_len, charlen new_len) {
  call_with_names(old, *ilen1, old_len, new_, *ilen2, new_len, ierror, rename);
}

// CALL PXFSTAT(PATH, ILEN, JSTAT, IERROR)
// ILEN says nothing here. Only blanks are dropped from the name, so that one that ends in a tab is found, and
// a blank name is empty.
void pxfstat_(const char *path, const int32_t *, const int32_t *jstat, int32_t *ierror, charlen path_len) {
  StatRecord *record = find_record_as<StatRecord>(*jstat, Kind::Stat, ierror);
  if (record == nullptr)
    return;
  const CString name =
      exact_file_name(path, static_cast<int32_t>(trimmed_length(path, narrow_length(path_len))));
  struct stat status;
  if (!name || stat(name.get(), &status) != 0) {
    *ierror = errno;
    return;
  }
  fill(record, status);
  *ierror = 0;
}

// CALL PXFUTIME(PATH, ILEN, JUTIMBUF, IERROR)
// ILEN says nothing here. The name ends at its first blank.
void pxfutime_(const char *path, const int32_t *, const int32_t *jutimbuf, int32_t *ierror,
               charlen path_len) {
  utimbuf times = {};
  const bool now = *jutimbuf == 0;
  if (!now) {
    const UtimbufRecord *record = find_record_as<UtimbufRecord>(*jutimbuf, Kind::Utimbuf, ierror);
    if (record == nullptr)
      return;
    times.actime = static_cast<time_t>(record->actime);
    times.modtime = static_cast<time_t>(record->modtime);
  }
  const int32_t limit = narrow_length(path_len);
  const char *blank = std::find(path, path + limit, ' ');
  const CString name = exact_file_name(path, static_cast<int32_t>(blank - path));
  if (!name) {
    *ierror = errno;
    return;
  }
  report(utime(name.get(), now ? nullptr : &times), ierror);
}

// CALL PXFPATHCONF(PATH, ILEN, NAME, IVAL, IERROR)
// The one routine here that checks ILEN against the variable, by its whole hidden length; a negative one
// counts as huge.
void pxfpathconf_(const char *path, const int32_t *ilen, const int32_t *name, int32_t *ival, int32_t *ierror,
                  charlen path_len) {
  if (exceeds(*ilen, path_len))
    return refuse(ierror, EINVAL);
  call_with_name(path, *ilen, path_len, ierror,
                 [&](const char *file) { return *ival = static_cast<int32_t>(pathconf(file, *name)); });
}

// L = PXFISDIR(M), and its kin for the other types. True is all bits set, which old compilers' .TRUE. is; the
// module's callers get 1.
int32_t pxfisdir_(const int32_t *m) {
  return -is_type(*m, S_IFDIR);
}
int32_t pxfischr_(const int32_t *m) {
  return -is_type(*m, S_IFCHR);
}
int32_t pxfisblk_(const int32_t *m) {
  return -is_type(*m, S_IFBLK);
}
int32_t pxfisreg_(const int32_t *m) {
  return -is_type(*m, S_IFREG);
}
int32_t pxfisfifo_(const int32_t *m) {
  return -is_type(*m, S_IFIFO);
}

int32_t qxport_pxfisdir_(const int32_t *m) {
  return is_type(*m, S_IFDIR);
}
int32_t qxport_pxfischr_(const int32_t *m) {
  return is_type(*m, S_IFCHR);
}
int32_t qxport_pxfisblk_(const int32_t *m) {
  return is_type(*m, S_IFBLK);
}
int32_t qxport_pxfisreg_(const int32_t *m) {
  return is_type(*m, S_IFREG);
}
int32_t qxport_pxfisfifo_(const int32_t *m) {
  return is_type(*m, S_IFIFO);
}
