// SYSTEM, SLEEP, KILL, the process's identity and the names of host and login, on the real host.
#include "outcome.h"

#include <chrono>
#include <csignal>
#include <fstream>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

int32_t system_of(const std::string &command) {
  Character argument(command);
  reset_error_state();
  const int32_t answer = system_(argument.data(), argument.length());
  EXPECT_EQ(error_state().local, SENTINEL) << command;
  EXPECT_EQ(error_state().recorded, std::vector<int32_t>()) << command;
  EXPECT_EQ(argument.text(), command);
  return answer;
}

TEST(System, AnswerIsTheRawWaitStatus) {
  EXPECT_EQ(system_of("true"), 0);
  EXPECT_EQ(system_of("exit 1"), 256);
  EXPECT_EQ(system_of("exit 3"), 768);
  EXPECT_EQ(system_of("exit 255"), 65280);
  EXPECT_EQ(system_of("kill -KILL $$"), SIGKILL);
  EXPECT_EQ(system_of("kill -TERM $$"), SIGTERM);
}

TEST(System, UnknownCommandIs127) {
  EXPECT_EQ(system_of("/nowhere/at/all 2>/dev/null"), 127 * 256);
}

TEST(System, BlankCommandIsAnEmptyOne) {
  EXPECT_EQ(system_of(""), 0);
  EXPECT_EQ(system_of("      "), 0);
  EXPECT_EQ(outcome_of([] { return system_("exit 3", -6); }).answer, 0);
}

TEST(System, RunsInTheWorkingDirectory) {
  const TemporaryDirectory directory;
  const WorkingDirectory working(directory.path());
  EXPECT_EQ(system_of("printf '%s' 'a  b' > output" + std::string(500, ' ')), 0);
  std::string text;
  std::getline(std::ifstream("output"), text);
  EXPECT_EQ(text, "a  b");
}

TEST(System, CommandEndsAtANul) {
  EXPECT_EQ(system_of(std::string("exit 2\0exit 3", 13)), 512);
}

TEST(System, CommandNeedNotBeUtf8) {
  EXPECT_EQ(system_of("test '\xff\xfe' = \"$(printf '\\377\\376')\""), 0);
}

TEST(System, CommandMayBeLong) {
  EXPECT_EQ(system_of(": " + std::string(100000, 'a') + "; exit 5"), 1280);
}

TEST(System, NullCommandIsMinus1) {
  EXPECT_EQ(outcome_of([] { return system_(nullptr, 4); }), (Outcome{-1, {EINVAL, SENTINEL, {EINVAL}}}));
}

// How long the call takes, and that it records nothing.
double seconds_of_sleep(const int32_t *seconds) {
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(state_after([&] { sleep_(seconds); }).recorded, std::vector<int32_t>());
  EXPECT_EQ(portlib_local_errno, SENTINEL);
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

TEST(Sleep, SleepsWholeSeconds) {
  const int32_t one = 1;
  const double slept = seconds_of_sleep(&one);
  EXPECT_GE(slept, 0.99);
  EXPECT_LT(slept, 20);
}

TEST(Sleep, Minus5ReturnsAtOnce) {
  for (const int32_t seconds : {-5, -1, INT32_MIN, 0})
    EXPECT_LT(seconds_of_sleep(&seconds), 4) << seconds;
}

TEST(Sleep, AbsentArgumentReturnsAtOnce) {
  EXPECT_LT(seconds_of_sleep(nullptr), 4);
}

TEST(Sleep, HandledSignalEndsIt) {
  signal(SIGALRM, [](int) {});
  const itimerval soon = {{0, 0}, {0, 100000}};
  ASSERT_EQ(setitimer(ITIMER_REAL, &soon, nullptr), 0);
  const int32_t long_time = 50;
  EXPECT_LT(seconds_of_sleep(&long_time), 40);
  signal(SIGALRM, SIG_DFL);
}

TEST(Identity, IsTheProcesss) {
  EXPECT_EQ(outcome_of(getpid_), (Outcome{getpid(), untouched()}));
  EXPECT_EQ(outcome_of(getuid_), (Outcome{static_cast<int32_t>(getuid()), untouched()}));
  EXPECT_EQ(outcome_of(getgid_), (Outcome{static_cast<int32_t>(getgid()), untouched()}));
}

TEST(Identity, OfAChildIsItsOwn) {
  const int32_t parent = getpid_();
  const pid_t child = fork();
  if (child == 0)
    _exit(getpid_() == getpid() && getpid_() != parent ? 0 : 1);
  int status;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
}

Outcome kill_of(int32_t pid, int32_t signal_number) {
  return outcome_of([&] { return kill_(&pid, &signal_number); });
}

// The host's reason stays in errno only.
Outcome not_sent(int host_error) {
  return {-1, {host_error, SENTINEL, {}}};
}

TEST(Kill, Signal0OnlyTests) {
  EXPECT_EQ(kill_of(getpid(), 0), succeeded());
}

TEST(Kill, SignalNumberIsTheHosts) {
  static volatile sig_atomic_t received;
  for (const int number : {SIGUSR1, SIGUSR2, SIGURG, SIGRTMIN}) {
    signal(number, [](int sent) { received = sent; });
    received = 0;
    EXPECT_EQ(kill_of(getpid(), number), succeeded());
    EXPECT_EQ(received, number);
    signal(number, SIG_DFL);
  }
}

TEST(Kill, EndsAChild) {
  const pid_t child = fork();
  if (child == 0) {
    pause();
    _exit(0);
  }
  EXPECT_EQ(kill_of(child, SIGKILL), succeeded());
  int status;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(WTERMSIG(status), SIGKILL);
  EXPECT_EQ(kill_of(child, 0), not_sent(ESRCH));
}

TEST(Kill, FailureIsMinus1AndNotRecorded) {
  EXPECT_EQ(kill_of(getpid(), 999), not_sent(EINVAL));
  EXPECT_EQ(kill_of(getpid(), -1), not_sent(EINVAL));
  EXPECT_EQ(kill_of(INT32_MAX, 0), not_sent(ESRCH));
  EXPECT_EQ(kill_of(INT32_MIN, 0), not_sent(ESRCH));
}

class Hostnm : public testing::TestWithParam<std::string> {
protected:
  Hostnm() {
    char text[256] = {};
    EXPECT_EQ(gethostname(text, 255), 0);
    host_ = text;
  }

  void expect(size_t length, const Outcome &outcome, const std::string &text) const {
    Character name(length);
    EXPECT_EQ(outcome_of([&] { return call(name); }), outcome) << length;
    EXPECT_EQ(name.text(), text);
  }

  int32_t call(Character &name) const {
    return (GetParam() == "hostnm" ? hostnm_ : hostnam_)(name.data(), name.length());
  }

  std::string host_;
};

INSTANTIATE_TEST_SUITE_P(BothNames, Hostnm, testing::Values("hostnm", "hostnam"));

TEST_P(Hostnm, NameIsBlankPadded) {
  expect(300, succeeded(), padded(host_, 300));
  expect(host_.size() + 1, succeeded(), host_ + " ");
}

TEST_P(Hostnm, ExactLengthIsEnough) {
  expect(host_.size(), succeeded(), host_);
}

}  // namespace
