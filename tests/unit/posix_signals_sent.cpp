// PXFKILL, PXFALARM, PXFPAUSE and PXFSLEEP: signals sent and waited for.
#include "ordinary_user.h"
#include "signal_actions.h"

#include <sys/wait.h>

namespace {

Outcome send(int32_t ipid, int32_t isig) {
  return reported_by([&](int32_t *ierror) { pxfkill_(&ipid, &isig, ierror); });
}

TEST_F(Signals, KillSends) {
  const Action action(a_);
  call(SIGUSR2, action, 0);
  EXPECT_EQ(send(getpid(), SIGUSR2), succeeded());
  EXPECT_EQ(seen_by_a.number, SIGUSR2);
  EXPECT_EQ(send(getpid(), 0), succeeded()) << "0 only tests";
  EXPECT_EQ(seen_by_a.calls, 1);
  const pid_t child = fork();
  if (child == 0)
    for (;;)
      pause();
  EXPECT_EQ(send(child, SIGTERM), succeeded());
  int status = 0;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, SIGTERM);
  EXPECT_EQ(send(child, 0), refused(ESRCH, ESRCH));
}

TEST_F(Signals, KillFailsWithTheHostsError) {
  for (const int32_t isig : {-1, 65, INT32_MIN, INT32_MAX})
    EXPECT_EQ(send(getpid(), isig), refused(EINVAL, EINVAL)) << isig;
  EXPECT_EQ(send(INT32_MAX, 0), refused(ESRCH, ESRCH));
}

TEST_F(Signals, KillSendsWhatTheBindingCannotCatch) {
  install_natively(SIGRTMAX, native_handler);
  EXPECT_EQ(send(getpid(), 64), succeeded());
  EXPECT_EQ(seen_natively.number, 64);
  signal(SIGRTMAX, SIG_DFL);
  // The C library keeps these for itself, and the system sends them.
  for (const int32_t isig : {32, 33}) {
    const pid_t child = fork();
    if (child == 0)
      for (;;)
        pause();
    EXPECT_EQ(send(child, isig), succeeded()) << isig;
    kill(child, SIGKILL);
    EXPECT_EQ(waitpid(child, nullptr, 0), child);
  }
}

TEST_F(Signals, KillOfAnothersProcessIsEperm) {
  as_ordinary_user([] {
    errno = 0;
    const int32_t expected = kill(1, 0) == 0 ? 0 : errno;
    EXPECT_EQ(send(1, 0).answer, expected);
  });
}

struct Remainder {
  int32_t left;
  Outcome outcome;
};

Remainder set_alarm(int32_t iseconds) {
  Guarded<int32_t> isecleft(SENTINEL);
  const Outcome outcome = reported_by([&](int32_t *ierror) { pxfalarm_(&iseconds, &isecleft, ierror); });
  return {isecleft, outcome};
}

Remainder sleep_for(int32_t iseconds) {
  Guarded<int32_t> isecleft(SENTINEL);
  const Outcome outcome = reported_by([&](int32_t *ierror) { pxfsleep_(&iseconds, &isecleft, ierror); });
  return {isecleft, outcome};
}

TEST_F(Signals, AlarmAnswersWhatIsLeftOfTheOneBefore) {
  const Remainder first = set_alarm(1000);
  EXPECT_EQ(first.left, 0);
  EXPECT_EQ(first.outcome, succeeded());
  const Remainder second = set_alarm(2000);
  EXPECT_GE(second.left, 900);
  EXPECT_LE(second.left, 1000);
  EXPECT_EQ(second.outcome, succeeded());
  EXPECT_GT(set_alarm(0).left, 1900) << "0 ends it";
  EXPECT_EQ(set_alarm(0).left, 0);
}

// The host takes seconds without a sign: what is left of such an alarm is what it answers itself.
TEST_F(Signals, NegativeSecondsOfAnAlarmAreManySeconds) {
  for (const int32_t iseconds : {-1, -1000, INT32_MIN}) {
    alarm(static_cast<unsigned>(iseconds));
    const unsigned expected = alarm(0);
    EXPECT_GT(expected, static_cast<unsigned>(INT32_MAX) - 100);
    EXPECT_EQ(set_alarm(iseconds).outcome, succeeded());
    const Remainder ended = set_alarm(0);
    EXPECT_LE(expected - static_cast<unsigned>(ended.left) + 100, 200u) << ended.left;
    EXPECT_EQ(ended.outcome.answer, 0);
  }
}

// Sets the next alarm, so that one that comes before the wait begins is not the last.
void next_alarm(int32_t *number) {
  const int32_t one = 1;
  int32_t left, ierror;
  procedure_a(number);
  pxfalarm_(&one, &left, &ierror);
}

TEST_F(Signals, AlarmComesAndEndsAPause) {
  const Action action(handle_of(next_alarm));
  call(SIGALRM, action, 0);
  EXPECT_EQ(set_alarm(1).outcome, succeeded());
  EXPECT_EQ(reported_by([](int32_t *ierror) { pxfpause_(ierror); }), refused(EINTR, EINTR));
  set_alarm(0);
  EXPECT_GE(seen_by_a.calls, 1);
  EXPECT_EQ(seen_by_a.number, SIGALRM);
}

TEST_F(Signals, SleepThatEndsHasNothingLeft) {
  for (const int32_t seconds : {0, 1}) {
    const Remainder slept = sleep_for(seconds);
    EXPECT_EQ(slept.left, 0);
    EXPECT_EQ(slept.outcome.answer, 0);
  }
}

TEST_F(Signals, NegativeSecondsOfASleepAreManySeconds) {
  const Action action(a_);
  call(SIGALRM, action, 0);
  alarm_soon();
  for (const int32_t iseconds : {-1, -1000, INT32_MIN}) {
    const unsigned expected = sleep(static_cast<unsigned>(iseconds));
    EXPECT_GT(expected, static_cast<unsigned>(INT32_MAX) - 100);
    const Remainder slept = sleep_for(iseconds);
    EXPECT_LE(expected - static_cast<unsigned>(slept.left) + 100, 200u) << slept.left;
    EXPECT_EQ(slept.outcome.answer, 0);
  }
}

}  // namespace
