// What the local clock is ahead of the count of seconds, remembered by stretches of time in which it does not
// change.
#ifndef QXPORT_FRAME_OFFSET_CELLS_H
#define QXPORT_FRAME_OFFSET_CELLS_H

#include <cstdint>
#include <ctime>

namespace qxport {

struct ZoneOffset {
  int32_t seconds;
  bool daylight_saving;
  bool operator==(const ZoneOffset &) const = default;
};

// Takes note of TZ, as the host's localtime does at each call. The system's own zone, where TZ is not set, is
// the one of the first call.
void follow_zone();

// What the host says of one instant, by TZ as it is; false where the year does not fit.
bool host_fields(time_t instant, struct tm *fields);

// The offset throughout the cell of an instant, a stretch of some hours; false where it changes in the cell
// or is not to be remembered, so that the host must be asked for the instant itself.
bool offset_of_cell(int64_t instant, ZoneOffset *offset);

// Is the offset this one in the cell of the instant and in those beside it?
bool offset_around(int64_t instant, const ZoneOffset &offset);

}  // namespace qxport

#endif
