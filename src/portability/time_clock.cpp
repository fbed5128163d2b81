// The clock: seconds since the epoch, since midnight, since the program's start, and since a first call.
#include "contract/services.h"
#include "frame/calendar.h"
#include "frame/errors.h"
#include "frame/fortran.h"

#include <ctime>
#include <sys/time.h>

using namespace qxport;

namespace {

double base_time;
time_t firstTime;
double previous_time_since_midnight;

constexpr double MICROSECONDS = 1e6;

// Differences down to this one are of a caller's REAL(4) arithmetic and count as none; what is further below
// is of the day before.
constexpr double SMALLEST_DIFFERENCE = -0.00196;
constexpr float SECONDS_OF_A_DAY = 86400.0F;

float seconds_since_midnight_minus(float t) {
  timeval now;
  if (gettimeofday(&now, nullptr) != 0)
    return 0;
  tm local = {};
  local_fields(now.tv_sec, &local);
  const double seconds = local.tm_hour * 3600 + local.tm_min * 60 + local.tm_sec +
                         static_cast<double>(static_cast<float>(now.tv_usec) / 1e6F);
  // What was handed out never decreases, also not at midnight: programs subtract two values without looking.
  previous_time_since_midnight = std::max(previous_time_since_midnight, seconds);
  const float current = static_cast<float>(previous_time_since_midnight);
  if (t == 0)
    return current;
  const float difference = current - t;
  return difference > SMALLEST_DIFFERENCE ? std::max(0.0F, difference) : difference + SECONDS_OF_A_DAY;
}

// Programs do not set the clock.
int32_t refuse_to_set() {
  record_status(ENOTSUP);
  return 0;
}

}  // namespace

// N = TIME()
int64_t time_() {
  return time(nullptr);
}

// X = RTC()
double rtc_() {
  return static_cast<double>(time(nullptr));
}

// CALL CLOCKX(CLOCK)
void clockx_(double *clock) {
  timeval now = {};
  gettimeofday(&now, nullptr);
  *clock = static_cast<double>(now.tv_sec) * MICROSECONDS + static_cast<double>(now.tv_usec);
}

// CALL GETTIMEOFDAY(TV, IERR)
void gettimeofday_(int32_t *tv, int32_t *ierr) {
  timeval now = {};
  *ierr = gettimeofday(&now, nullptr);
  if (*ierr == -1)
    now = {};
  tv[0] = static_cast<int32_t>(now.tv_sec);
  tv[1] = static_cast<int32_t>(now.tv_usec);
}

// X = TIMEF()
double timef_() {
  const time_t now = time(nullptr);
  if (firstTime == 0)
    firstTime = now;
  return difftime(now, firstTime);
}

// X = DCLOCK()
double dclock_() {
  if (base_time == 0)
    base_time = for__process_start_time();
  return for_since_epoch_t(&base_time);
}

// X = SECNDS(T)
float secnds_(const float *t) {
  return seconds_since_midnight_minus(*t);
}

// X = F_SECNDS(T)
float f_secnds_(const float *t) {
  return seconds_since_midnight_minus(*t);
}

float fortran_f_secnds(const float *t) {
  return seconds_since_midnight_minus(*t);
}

// L = SETDAT(YEAR, MONTH, DAY)
int32_t setdat_(const int32_t *, const int32_t *, const int32_t *) {
  return refuse_to_set();
}

// L = SETDATI2(YEAR, MONTH, DAY)
int32_t setdati2_(const int16_t *, const int16_t *, const int16_t *) {
  return refuse_to_set();
}

// L = SETTIM(HOUR, MINUTE, SECOND, HUNDREDTHS)
int32_t settim_(const int32_t *, const int32_t *, const int32_t *, const int32_t *) {
  return refuse_to_set();
}

// L = SETTIMI2(HOUR, MINUTE, SECOND, HUNDREDTHS)
int32_t settimi2_(const int16_t *, const int16_t *, const int16_t *, const int16_t *) {
  return refuse_to_set();
}

QXPORT_ALIAS(time_)
QXPORT_ALIAS(rtc_)
QXPORT_ALIAS(clockx_)
QXPORT_ALIAS(gettimeofday_)
QXPORT_ALIAS(timef_)
QXPORT_ALIAS(dclock_)
QXPORT_ALIAS(secnds_)
QXPORT_ALIAS(f_secnds_)
QXPORT_ALIAS(setdat_)
QXPORT_ALIAS(setdati2_)
QXPORT_ALIAS(settim_)
QXPORT_ALIAS(settimi2_)
