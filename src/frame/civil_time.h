// The calendar's arithmetic, without any zone.
#ifndef QXPORT_FRAME_CIVIL_TIME_H
#define QXPORT_FRAME_CIVIL_TIME_H

#include <cstdint>
#include <ctime>

namespace qxport {

// Seconds since 1970-01-01 00:00:00 on the clock that shows year, month, day, hour, minute and second, of
// whatever range.
int64_t clock_of(const struct tm &fields);

// The fields of such a clock, with the days of the week and of the year; none of a zone. Years must fit.
void set_clock(struct tm *fields, int64_t clock);

}  // namespace qxport

#endif
