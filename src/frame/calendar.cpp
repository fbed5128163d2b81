#include "frame/calendar.h"

#include "frame/civil_time.h"
#include "frame/offset_cells.h"

using namespace qxport;

bool qxport::local_fields(time_t instant, struct tm *fields) {
  follow_zone();
  ZoneOffset offset;
  if (!offset_of_cell(instant, &offset))
    return host_fields(instant, fields);
  set_clock(fields, instant + offset.seconds);
  fields->tm_isdst = offset.daylight_saving ? 1 : 0;
  fields->tm_gmtoff = offset.seconds;
  return true;
}

time_t qxport::local_instant(const struct tm &fields) {
  follow_zone();
  const int64_t clock = clock_of(fields);
  // Far enough from any change of the offset the fields are those of one instant only.
  ZoneOffset guess;
  if (offset_of_cell(clock, &guess) && offset_around(clock - guess.seconds, guess))
    return clock - guess.seconds;
  struct tm copy = fields;
  copy.tm_isdst = -1;
  return mktime(&copy);
}
