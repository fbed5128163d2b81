// SIGNALQQ and RAISEQQ above host calls that fail.
#include "outcome.h"

#include <csignal>
#include <unistd.h>

namespace {

int host_error;
std::vector<std::pair<pid_t, int>> sent;

}  // namespace

int sigaction(int, const struct sigaction *, struct sigaction *) noexcept {
  errno = host_error;
  return host_error == 0 ? 0 : -1;
}
int kill(pid_t process, int signal) noexcept {
  sent.emplace_back(process, signal);
  errno = host_error;
  return host_error == 0 ? 0 : -1;
}

namespace {

int32_t handler(int32_t) {
  return 0;
}
void former() {}

TEST(DesktopSignalsOfAHostThatFails, HandlerIsNotInstalled) {
  const int32_t signum = 16;
  sigQQForHandlers[5] = reinterpret_cast<void *>(former);
  host_error = EINVAL;
  EXPECT_EQ(signalqq_(&signum, reinterpret_cast<void (*)()>(handler)), -1);
  EXPECT_EQ(sigQQForHandlers[5], reinterpret_cast<void *>(former));
  host_error = 0;
  EXPECT_EQ(signalqq_(&signum, reinterpret_cast<void (*)()>(handler)), 0);
  EXPECT_EQ(sigQQForHandlers[5], reinterpret_cast<void *>(handler));
}

TEST(DesktopSignalsOfAHostThatFails, AnswerOfKillIsHandedOn) {
  host_error = EPERM;
  for (const int32_t signum : {16, 20, 0})
    EXPECT_EQ(outcome_of([&] { return raiseqq_(&signum); }), (Outcome{-1, {EPERM, SENTINEL, {}}}));
  const pid_t self = getpid();
  EXPECT_EQ(sent, (std::vector<std::pair<pid_t, int>>{{self, SIGUSR1}, {self, SIGUSR1}, {self, 0}}));
}

}  // namespace
