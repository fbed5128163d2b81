// What PXFFCNTL hands to the host as the third argument.
#include "posix_calls.h"

#include <cstdarg>
#include <fcntl.h>
#include <optional>

namespace {

struct HostCall {
  int fd, command;
  void *argument;
};
std::optional<HostCall> host_call;
int host_answer;

}  // namespace

// An integer and an address arrive in the same place.
int fcntl(int fd, int command, ...) {
  va_list rest;
  va_start(rest, command);
  host_call = {fd, command, va_arg(rest, void *)};
  va_end(rest);
  errno = host_answer == -1 ? EDEADLK : errno;
  return host_answer;
}

namespace {

constexpr int32_t FD = 1234;

// The call that the host sees.
HostCall handed_over(int32_t command, int32_t *iargin) {
  int32_t iargout = SENTINEL;
  host_call = std::nullopt;
  EXPECT_EQ(call(pxffcntl_, FD, command, iargin, &iargout),
            host_answer == -1 ? failed_with(EDEADLK) : succeeded());
  EXPECT_EQ(iargout, host_answer);
  EXPECT_TRUE(host_call);
  EXPECT_EQ(host_call->fd, FD);
  EXPECT_EQ(host_call->command, command);
  return *host_call;
}

class ThirdArgument : public testing::TestWithParam<int> {
protected:
  void SetUp() override { host_answer = GetParam(); }
};

TEST_P(ThirdArgument, IsTheValueOfThreeCommands) {
  for (const int32_t command : {F_DUPFD, F_SETFD, F_SETFL})
    for (int32_t value : {0, 1, 77, INT32_MAX, -1, INT32_MIN}) {
      const int32_t before = value;
      const HostCall made = handed_over(command, &value);
      EXPECT_EQ(static_cast<int32_t>(reinterpret_cast<intptr_t>(made.argument)), before);
      EXPECT_EQ(value, before);
    }
}

TEST_P(ThirdArgument, IsTheAddressOfIarginOfAllOthers) {
  for (const int32_t command : {F_GETFD, F_GETFL, F_GETOWN, F_SETOWN, F_DUPFD_CLOEXEC, F_GETSIG, 4711, -1}) {
    int32_t value = 77;
    EXPECT_EQ(handed_over(command, &value).argument, &value) << command;
    EXPECT_EQ(value, 77);
  }
}

TEST_P(ThirdArgument, IsAHostsLockOfTheLockCommands) {
  for (const int32_t command : {F_GETLK, F_SETLK, F_SETLKW}) {
    const OwnedRecord record("flock");
    int32_t handle = record;
    const void *argument = handed_over(command, &handle).argument;
    EXPECT_NE(argument, &handle);
    EXPECT_NE(argument, address_of_record(record));
  }
}

INSTANTIATE_TEST_SUITE_P(Answers, ThirdArgument, testing::Values(0, 5, INT32_MAX, -1, -2, INT32_MIN));

}  // namespace
