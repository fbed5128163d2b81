#include "frame/civil_time.h"

using namespace qxport;

namespace {

constexpr int64_t DAY = 86400;
constexpr int MONTHS = 12;
// Of the calendar's cycle of 400 years, counted from the first of March of a year that 400 divides.
constexpr int32_t CYCLE_YEARS = 400;
constexpr int32_t CYCLE_DAYS = 146097;
constexpr int32_t EPOCH_FROM_MARCH_OF_YEAR_0 = 719468;

int64_t floor_of(int64_t dividend, int64_t divisor) {
  return dividend / divisor - (dividend % divisor < 0 ? 1 : 0);
}

bool is_leap(int32_t year) {
  return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

// The day's number since 1970-01-01; the month counts from 0 and has been brought into range.
int64_t day_number(int64_t year, int month, int64_t day) {
  // Years that begin in March have their leap day at the end.
  const int from_march = (month + 10) % MONTHS;
  const int64_t shifted = year - (month < 2 ? 1 : 0);
  const int64_t cycle = floor_of(shifted, CYCLE_YEARS);
  const auto in_cycle = static_cast<int32_t>(shifted - cycle * CYCLE_YEARS);
  const int32_t day_of_year = (153 * from_march + 2) / 5;
  const int32_t day_of_cycle = in_cycle * 365 + in_cycle / 4 - in_cycle / 100 + day_of_year;
  return cycle * CYCLE_DAYS + day_of_cycle + day - 1 - EPOCH_FROM_MARCH_OF_YEAR_0;
}

}  // namespace

// No sum of six int fields overflows.
int64_t qxport::clock_of(const struct tm &fields) {
  const int64_t carried = floor_of(fields.tm_mon, MONTHS);
  const int month = static_cast<int>(fields.tm_mon - carried * MONTHS);
  const int64_t days = day_number(fields.tm_year + carried + 1900, month, fields.tm_mday);
  return days * DAY + fields.tm_hour * int64_t{3600} + fields.tm_min * int64_t{60} + fields.tm_sec;
}

void qxport::set_clock(struct tm *fields, int64_t clock) {
  const int64_t day = floor_of(clock, DAY);
  const auto second = static_cast<int32_t>(clock - day * DAY);
  fields->tm_hour = second / 3600;
  fields->tm_min = second % 3600 / 60;
  fields->tm_sec = second % 60;

  const auto number = static_cast<int32_t>(day) + EPOCH_FROM_MARCH_OF_YEAR_0;
  const auto cycle = static_cast<int32_t>(floor_of(number, CYCLE_DAYS));
  const int32_t of_cycle = number - cycle * CYCLE_DAYS;
  const int32_t year = (of_cycle - of_cycle / 1460 + of_cycle / 36524 - of_cycle / (CYCLE_DAYS - 1)) / 365;
  const int32_t of_year = of_cycle - (365 * year + year / 4 - year / 100);
  const int32_t from_march = (5 * of_year + 2) / 153;
  const bool next_year = from_march >= 10;
  const int32_t full_year = cycle * CYCLE_YEARS + year + (next_year ? 1 : 0);
  fields->tm_mday = of_year - (153 * from_march + 2) / 5 + 1;
  fields->tm_mon = from_march + (next_year ? -10 : 2);
  fields->tm_year = full_year - 1900;
  // January and February end a year that begins in March: 306 days are before them.
  fields->tm_yday = next_year ? of_year - 306 : of_year + 59 + (is_leap(full_year) ? 1 : 0);
  // 1970-01-01 was a Thursday.
  fields->tm_wday = static_cast<int32_t>(day - floor_of(day + 4, 7) * 7 + 4);
}
