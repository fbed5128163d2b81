// When the process started, and how long ago an instant was.
//
// Instants are seconds since 1970-01-01 00:00:00 UTC, on a clock that is compared with the system's once and
// goes on steadily from there: setting the system's clock makes no time pass.
#include "contract/services.h"

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <unistd.h>

namespace {

double seconds_of(clockid_t clock) {
  timespec now = {};
  clock_gettime(clock, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

std::atomic<double> instant_of_boot;

// When the clock of the time since boot began; the same in all calls.
double boot() {
  double known = instant_of_boot.load(std::memory_order_relaxed);
  if (known != 0)
    return known;
  const double found = seconds_of(CLOCK_REALTIME) - seconds_of(CLOCK_BOOTTIME);
  return instant_of_boot.compare_exchange_strong(known, found, std::memory_order_relaxed) ? found : known;
}

double now() {
  return boot() + seconds_of(CLOCK_BOOTTIME);
}

// What the system tells of this process: the number of bytes, 0 where it tells nothing. That is no error of
// the caller's, and errno stays.
size_t read_status(char *text, size_t size) {
  const int saved = errno;
  ssize_t count = 0;
  const int file = open("/proc/self/stat", O_RDONLY | O_CLOEXEC);
  if (file >= 0) {
    count = read(file, text, size);
    close(file);
  }
  errno = saved;
  return count > 0 ? static_cast<size_t>(count) : 0;
}

// The time since boot at which the process started, in seconds; negative where the system does not tell.
double start_since_boot() {
  char text[1024];
  text[read_status(text, sizeof(text) - 1)] = '\0';
  // The fields are counted from behind the program's name, which may hold anything.
  const char *field = strrchr(text, ')');
  constexpr int FIELDS_TO_START = 20;
  for (int i = 0; field != nullptr && i < FIELDS_TO_START; ++i)
    field = strchr(field + 1, ' ');
  return field == nullptr
             ? -1
             : static_cast<double>(strtoull(field, nullptr, 10)) / static_cast<double>(sysconf(_SC_CLK_TCK));
}

}  // namespace

double for__process_start_time() {
  const double start = start_since_boot();
  return start < 0 ? now() : boot() + start;
}

double for_since_epoch_t(const double *instant) {
  return now() - *instant;
}
