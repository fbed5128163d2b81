// Time, process times, and what the system is called and allows.
#include "posix/file_name.h"
#include "records/records.h"

#include <ctime>
#include <sys/times.h>
#include <sys/utsname.h>
#include <unistd.h>

using namespace qxport;

namespace {

template <size_t N, size_t M>
void copy_name(char (&field)[N], const char (&name)[M]) {
  static_assert(M <= N);
  memcpy(field, name, M);
}

}  // namespace

// CALL PXFTIME(ITIME, IERROR)
void pxftime_(int32_t *itime, int32_t *ierror) {
  if (itime == nullptr) {
    *ierror = -1;
    return;
  }
  *itime = static_cast<int32_t>(time(nullptr));
  *ierror = 0;
}

// CALL PXFLOCALTIME(ISECNDS, IATIME, IERROR)
void pxflocaltime_(const int32_t *isecnds, int32_t *iatime, int32_t *ierror) {
  const time_t seconds = *isecnds;
  const tm *local = localtime(&seconds);
  if (local == nullptr) {
    *ierror = errno;
    return;
  }
  const int32_t elements[] = {local->tm_sec,  local->tm_min,      local->tm_hour,
                              local->tm_mday, local->tm_mon + 1,  local->tm_year + 1900,
                              local->tm_wday, local->tm_yday + 1, local->tm_isdst};
  std::copy(std::begin(elements), std::end(elements), iatime);
  *ierror = 0;
}

// CALL PXFTIMES(JTMS, ITIME, IERROR)
void pxftimes_(const int32_t *jtms, int32_t *itime, int32_t *ierror) {
  TmsRecord *record = find_record_as<TmsRecord>(*jtms, Kind::Tms, ierror);
  if (record == nullptr)
    return;
  tms used;
  const clock_t elapsed = times(&used);
  if (elapsed == static_cast<clock_t>(-1)) {
    *ierror = errno;
    return;
  }
  record->tms_utime = used.tms_utime;
  record->tms_stime = used.tms_stime;
  record->tms_cutime = used.tms_cutime;
  record->tms_cstime = used.tms_cstime;
  *itime = static_cast<int32_t>(elapsed);
  *ierror = 0;
}

// CALL PXFUNAME(JUNAME, IERROR)
void pxfuname_(const int32_t *juname, int32_t *ierror) {
  UtsnameRecord *record = find_record_as<UtsnameRecord>(*juname, Kind::Utsname, ierror);
  if (record == nullptr)
    return;
  utsname names;
  report(uname(&names), ierror);
  if (*ierror != 0)
    return;
  copy_name(record->sysname, names.sysname);
  copy_name(record->nodename, names.nodename);
  copy_name(record->release, names.release);
  copy_name(record->version, names.version);
  copy_name(record->machine, names.machine);
}

// CALL PXFSYSCONF(NAME, IVAL, IERROR)
void pxfsysconf_(const int32_t *name, int32_t *ival, int32_t *ierror) {
  const long value = sysconf(*name);
  if (value == -1) {
    *ierror = errno;
    return;
  }
  *ival = static_cast<int32_t>(value);
  *ierror = 0;
}
