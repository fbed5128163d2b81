// Packed times: seconds since 1970-01-01 00:00:00 UTC in an INTEGER(4), shown in local time.
#include "frame/calendar.h"
#include "frame/errors.h"
#include "frame/strings.h"

#include <utime.h>

using namespace qxport;

// CALL PACKTIMEQQ(TIMEDATE, IYR, IMON, IDAY, IHR, IMIN, ISEC)
void packtimeqq_(int32_t *timedate, const int16_t *iyr, const int16_t *imon, const int16_t *iday,
                 const int16_t *ihr, const int16_t *imin, const int16_t *isec) {
  struct tm fields = {};
  fields.tm_year = *iyr - 1900;
  fields.tm_mon = *imon - 1;
  fields.tm_mday = *iday;
  fields.tm_hour = *ihr;
  fields.tm_min = *imin;
  fields.tm_sec = *isec;
  *timedate = static_cast<int32_t>(local_instant(fields));
}

// CALL UNPACKTIMEQQ(TIMEDATE, IYR, IMON, IDAY, IHR, IMIN, ISEC)
void unpacktimeqq_(const int32_t *timedate, int16_t *iyr, int16_t *imon, int16_t *iday, int16_t *ihr,
                   int16_t *imin, int16_t *isec) {
  struct tm fields;
  if (!local_fields(*timedate, &fields)) {
    *iyr = *imon = *iday = *ihr = *imin = *isec = -1;
    return;
  }
  *iyr = static_cast<int16_t>(fields.tm_year + 1900);
  *imon = static_cast<int16_t>(fields.tm_mon + 1);
  *iday = static_cast<int16_t>(fields.tm_mday);
  *ihr = static_cast<int16_t>(fields.tm_hour);
  *imin = static_cast<int16_t>(fields.tm_min);
  *isec = static_cast<int16_t>(fields.tm_sec);
}

// L = SETFILETIMEQQ(FILENAME, TIMEDATE)
int32_t setfiletimeqq_(const char *filename, const int32_t *timedate, charlen filename_len) {
  const CString name(filename, filename_len);
  if (!name)
    return 0;
  const utimbuf times = {*timedate, *timedate};
  const bool to_now = *timedate == QXPORT_FILE_TIME_NOW;
  if (utime(name.get(), to_now ? nullptr : &times) == 0)
    return 1;
  record_status(errno);
  return 0;
}

QXPORT_ALIAS(setfiletimeqq_)
