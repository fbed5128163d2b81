// Host calls of a test's own, which are noted and fail as it wants.
#ifndef TESTS_SUPPORT_INJECTED_HOST_H
#define TESTS_SUPPORT_INJECTED_HOST_H

#include <cerrno>
#include <optional>
#include <string>
#include <vector>

inline std::vector<std::string> calls;

// The error number of the next host calls, or nothing for calls that succeed.
inline std::optional<int> host_error;

inline int host_call(const std::string &call) {
  calls.push_back(call);
  if (!host_error)
    return 0;
  errno = *host_error;
  return -1;
}

constexpr int ERRORS[] = {0, EPERM, ENOENT, EIO, ENOMEM, EACCES, EFAULT, EBUSY, EXDEV, EROFS, ELOOP, 4095};

#endif
