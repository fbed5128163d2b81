// Calendar fields in local time, as the host's localtime and mktime tell them, without their look at the
// zone's file at every call.
#ifndef QXPORT_FRAME_CALENDAR_H
#define QXPORT_FRAME_CALENDAR_H

#include <ctime>

namespace qxport {

// The fields of an instant, by the zone of TZ as it is at the call; tm_zone stays as it is, and
// tm_gmtoff counts leap seconds where the zone does. False where the year does not fit into them.
bool local_fields(time_t instant, struct tm *fields);

// The instant of the fields' year, month, day, hour, minute and second in local time, of whatever range: the
// host decides whether daylight saving is in force. -1 where the host has no such instant. The fields are
// read only.
time_t local_instant(const struct tm &fields);

}  // namespace qxport

#endif
