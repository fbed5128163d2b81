// Signal sets: the binding's masks of 32 bits and the host's sets.
#ifndef QXPORT_POSIX_SIGNAL_SETS_H
#define QXPORT_POSIX_SIGNAL_SETS_H

#include <cerrno>
#include <csignal>
#include <cstdint>

namespace qxport {

constexpr int LAST_SIGNAL = 32;

// The bit of a signal. Numbers above 32 have none; 0 and negative ones wrap into the high bits, as shifts by
// the machine do.
inline uint32_t signal_bit(int32_t signal) {
  return signal > LAST_SIGNAL ? 0 : 1U << ((static_cast<uint32_t>(signal) - 1) % 32);
}

inline sigset_t host_set(uint32_t mask) {
  // The host keeps signal 32 to itself and refuses it: that is no failure of the caller's.
  const int before = errno;
  sigset_t set;
  sigemptyset(&set);
  for (int signal = 1; signal <= LAST_SIGNAL; ++signal)
    if ((mask & signal_bit(signal)) != 0)
      sigaddset(&set, signal);
  errno = before;
  return set;
}

inline uint32_t mask_of(const sigset_t &set) {
  uint32_t mask = 0;
  for (int signal = 1; signal <= LAST_SIGNAL; ++signal)
    if (sigismember(&set, signal) == 1)
      mask |= signal_bit(signal);
  return mask;
}

}  // namespace qxport

#endif
