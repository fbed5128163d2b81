// A clock of the test's own in the host's place: for the one test program that includes this, the clock shows
// what the test sets, and the host's time otherwise.
#ifndef TESTS_SUPPORT_OWN_CLOCK_H
#define TESTS_SUPPORT_OWN_CLOCK_H

#include <cerrno>
#include <cstdint>
#include <ctime>
#include <optional>
#include <sys/time.h>

struct OwnClock {
  std::optional<timeval> shows;
  bool fails = false;
} inline own_clock;

// Microseconds since the epoch.
inline void set_clock(int64_t seconds, int microseconds = 0) {
  own_clock.shows = {static_cast<time_t>(seconds), microseconds};
}

int gettimeofday(timeval *now, void *) noexcept {
  if (own_clock.fails) {
    *now = {1, 1};
    errno = EFAULT;
    return -1;
  }
  timespec hosts = {};
  clock_gettime(CLOCK_REALTIME, &hosts);
  *now = own_clock.shows.value_or(timeval{hosts.tv_sec, static_cast<suseconds_t>(hosts.tv_nsec / 1000)});
  return 0;
}

time_t time(time_t *result) noexcept {
  timeval now;
  const OwnClock before = own_clock;
  own_clock.fails = false;
  gettimeofday(&now, nullptr);
  own_clock = before;
  if (result != nullptr)
    *result = now.tv_sec;
  return now.tv_sec;
}

#endif
