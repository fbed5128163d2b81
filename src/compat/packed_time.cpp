// Packed times: seconds since 1970-01-01 00:00:00 UTC in an INTEGER(4), shown in local time.
#include "frame/calendar.h"
#include "frame/errors.h"
#include "frame/strings.h"

#include <utime.h>

using namespace qxport;

namespace {

constexpr int32_t NO_TIME = -1;

int32_t packed(int32_t year, int32_t month, int32_t day, int32_t hour, int32_t minute, int32_t second) {
  struct tm fields = {};
  if (__builtin_sub_overflow(year, 1900, &fields.tm_year) || __builtin_sub_overflow(month, 1, &fields.tm_mon))
    return NO_TIME;
  fields.tm_mday = day;
  fields.tm_hour = hour;
  fields.tm_min = minute;
  fields.tm_sec = second;
  return static_cast<int32_t>(local_instant(fields));
}

template <typename Field>
void unpack(int32_t time, Field *iyr, Field *imon, Field *iday, Field *ihr, Field *imin, Field *isec) {
  struct tm fields;
  if (!local_fields(time, &fields)) {
    *iyr = *imon = *iday = *ihr = *imin = *isec = -1;
    return;
  }
  *iyr = static_cast<Field>(fields.tm_year + 1900);
  *imon = static_cast<Field>(fields.tm_mon + 1);
  *iday = static_cast<Field>(fields.tm_mday);
  *ihr = static_cast<Field>(fields.tm_hour);
  *imin = static_cast<Field>(fields.tm_min);
  *isec = static_cast<Field>(fields.tm_sec);
}

}  // namespace

// CALL PACKTIMEQQ(TIMEDATE, IYR, IMON, IDAY, IHR, IMIN, ISEC)
void packtimeqq_(int32_t *timedate, const int16_t *iyr, const int16_t *imon, const int16_t *iday,
                 const int16_t *ihr, const int16_t *imin, const int16_t *isec) {
  *timedate = packed(*iyr, *imon, *iday, *ihr, *imin, *isec);
}

// CALL PACKTIMEQQ(TIMEDATE, IYR, IMON, IDAY, IHR, IMIN, ISEC), with INTEGER(4) fields
void packtimeqqi4_(int32_t *timedate, const int32_t *iyr, const int32_t *imon, const int32_t *iday,
                   const int32_t *ihr, const int32_t *imin, const int32_t *isec) {
  *timedate = packed(*iyr, *imon, *iday, *ihr, *imin, *isec);
}

// CALL UNPACKTIMEQQ(TIMEDATE, IYR, IMON, IDAY, IHR, IMIN, ISEC)
void unpacktimeqq_(const int32_t *timedate, int16_t *iyr, int16_t *imon, int16_t *iday, int16_t *ihr,
                   int16_t *imin, int16_t *isec) {
  unpack(*timedate, iyr, imon, iday, ihr, imin, isec);
}

// CALL UNPACKTIMEQQ(TIMEDATE, IYR, IMON, IDAY, IHR, IMIN, ISEC), with INTEGER(4) fields
void unpacktimeqqi4_(const int32_t *timedate, int32_t *iyr, int32_t *imon, int32_t *iday, int32_t *ihr,
                     int32_t *imin, int32_t *isec) {
  unpack(*timedate, iyr, imon, iday, ihr, imin, isec);
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

QXPORT_ALIAS(packtimeqq_)
QXPORT_ALIAS(packtimeqqi4_)
QXPORT_ALIAS(setfiletimeqq_)
QXPORT_ALIAS(unpacktimeqq_)
QXPORT_ALIAS(unpacktimeqqi4_)
