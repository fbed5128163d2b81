// Signals that a Fortran procedure catches while a routine waits: what ends the wait, and what each one
// leaves.
#include "signal_actions.h"
#include "waited.h"

#include <sys/prctl.h>
#include <sys/wait.h>

namespace {

// A process that waits, with a child that does nothing until its parent ends it.
class Waiting : public Signals {
protected:
  ~Waiting() override {
    end_alarm();
    kill(child_, SIGKILL);
    EXPECT_EQ(waitpid(child_, nullptr, 0), child_);
  }

  static void end_alarm() {
    const itimerval none = {};
    setitimer(ITIMER_REAL, &none, nullptr);
  }

  // The procedure leaves another number in errno, which is none of the waiting routine's.
  void catch_alarms(int32_t flags) const {
    const Action action(a_, 0, flags);
    EXPECT_EQ(call(SIGALRM, action, 0), succeeded());
    reset_seen();
    alarm_soon();
  }

  static pid_t sleeper() {
    const pid_t child = fork();
    if (child == 0) {
      prctl(PR_SET_PDEATHSIG, SIGKILL);  // it outlives no wait that never ends
      for (;;)
        pause();
    }
    EXPECT_NE(child, -1);
    return child;
  }

  const pid_t child_ = sleeper();
};

const Waited INTERRUPTED = {SENTINEL, -1, refused(EINTR, EINTR)};

TEST_F(Waiting, WaitIsEintrAndTheStatusStays) {
  catch_alarms(0);
  EXPECT_EQ(wait_for_any(), INTERRUPTED);
  EXPECT_GE(seen_by_a.calls, 1);
  EXPECT_EQ(seen_by_a.number, SIGALRM);
}

TEST_F(Waiting, WaitpidIsEintrAndTheStatusStays) {
  for (const int32_t ipid : {static_cast<int32_t>(child_), -1, 0, -getpgrp()}) {
    catch_alarms(0);
    EXPECT_EQ(wait_for(ipid), INTERRUPTED) << ipid;
    EXPECT_GE(seen_by_a.calls, 1) << ipid;
  }
  end_alarm();
  const Waited after = wait_for(child_, WNOHANG);
  EXPECT_EQ(after.iretpid, 0) << "the child is there still";
  EXPECT_EQ(after.outcome, succeeded());
}

// A child that sends its parent signals and ends behind the last.
template <typename Wait>
void expect_restarted(int32_t procedure, Wait wait) {
  const Action action(procedure, 0, SA_RESTART);
  EXPECT_EQ(call(SIGUSR1, action, 0), succeeded());
  reset_seen();
  const pid_t child = fork();
  if (child == 0) {
    for (int i = 0; i < 5; ++i) {
      usleep(20000);
      kill(getppid(), SIGUSR1);
    }
    usleep(20000);
    _exit(5);
  }
  EXPECT_EQ(wait(child), (Waited{5 << 8, child, succeeded()}));
  signal(SIGUSR1, SIG_DFL);
  EXPECT_GE(seen_by_a.calls, 1);
  EXPECT_EQ(seen_by_a.number, SIGUSR1);
}

TEST_F(Waiting, RestartedWaitGoesOn) {
  expect_restarted(a_, [](int32_t) { return wait_for_any(); });
}

TEST_F(Waiting, RestartedWaitpidGoesOn) {
  expect_restarted(a_, [](int32_t child) { return wait_for(child); });
}

// These return behind any caught signal: the host starts none of them again.
constexpr int32_t FLAGS[] = {0, SA_RESTART};

TEST_F(Waiting, PauseIsEintr) {
  for (const int32_t flags : FLAGS) {
    catch_alarms(flags);
    EXPECT_EQ(reported_by([](int32_t *ierror) { pxfpause_(ierror); }), refused(EINTR, EINTR));
    EXPECT_GE(seen_by_a.calls, 1);
  }
}

// Its IERROR is 0 then too; errno is the host's.
TEST_F(Waiting, SleepAnswersTheRest) {
  for (const int32_t flags : FLAGS) {
    catch_alarms(flags);
    const int32_t iseconds = 1000;
    Guarded<int32_t> isecleft(SENTINEL);
    EXPECT_EQ(reported_by([&](int32_t *ierror) { pxfsleep_(&iseconds, &isecleft, ierror); }).answer, 0);
    EXPECT_GE(isecleft.value(), 900);
    EXPECT_LE(isecleft.value(), 1000);
    EXPECT_GE(seen_by_a.calls, 1);
  }
}

TEST_F(Waiting, SuspendIsEintrAndTheFormerMaskIsBack) {
  const Set suspended(bit(SIGHUP) | bit(32));
  sigset_t blocked, after;
  sigemptyset(&blocked);
  for (const int number : {SIGALRM, SIGUSR2, SIGRTMIN})
    sigaddset(&blocked, number);
  for (const int32_t flags : FLAGS) {
    sigprocmask(SIG_SETMASK, &blocked, nullptr);
    catch_alarms(flags);
    const int32_t jsigset = suspended;
    EXPECT_EQ(reported_by([&](int32_t *ierror) { pxfsigsuspend_(&jsigset, ierror); }), refused(EINTR, EINTR));
    EXPECT_EQ(seen_by_a.calls, 1) << "blocked before and behind";
    sigprocmask(SIG_SETMASK, nullptr, &after);
    for (int number = 1; number <= SIGRTMAX; ++number)
      EXPECT_EQ(sigismember(&after, number), sigismember(&blocked, number)) << number;
    EXPECT_EQ(suspended.bits(), bit(SIGHUP) | bit(32));
    end_alarm();
    signal(SIGALRM, SIG_IGN);  // drops one that is pending
    restore();
  }
}

}  // namespace
