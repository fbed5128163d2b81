// PXFFORK, PXFWAIT, PXFWAITPID, PXFEXIT, PXFFASTEXIT and what a wait status says, with real children.
#include "captured_child.h"
#include "ordinary_user.h"
#include "outcome.h"
#include "record_calls.h"
#include "waited.h"

#include <csignal>
#include <cstdlib>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

Waited answered(int32_t istat, int32_t child) {
  return {istat, child, succeeded()};
}

Waited failed_with(int32_t error) {
  return {SENTINEL, -1, refused(error, error)};
}

// A child of PXFFORK, which runs the body and leaves by _exit.
template <typename Body>
int32_t forked(Body body) {
  Guarded<int32_t> ipid(SENTINEL);
  EXPECT_EQ(reported_by([&](int32_t *ierror) { pxffork_(&ipid, ierror); }), succeeded());
  if (ipid == 0) {
    body();
    _exit(CAME_BACK);
  }
  EXPECT_GT(ipid.value(), 0);
  return ipid;
}

int32_t sleeper() {
  return forked([] {
    for (;;)
      pause();
  });
}

void end(int32_t child) {
  kill(child, SIGKILL);
  EXPECT_EQ(wait_for(child, 0), answered(SIGKILL, child));
}

TEST(Pxffork, AnswersTheChildAndZero) {
  const pid_t parent = getpid();
  const int32_t child = forked([parent] { _exit(getppid() == parent ? 3 : 4); });
  EXPECT_NE(child, parent);
  EXPECT_EQ(wait_for(child, 0), answered(3 << 8, child));
}

TEST(Pxffork, FailureIsMinus1AndTheHostsError) {
  as_ordinary_user([] {
    const rlimit none = {0, 0};
    ASSERT_EQ(setrlimit(RLIMIT_NPROC, &none), 0);
    Guarded<int32_t> ipid(SENTINEL);
    const Outcome outcome = reported_by([&](int32_t *ierror) { pxffork_(&ipid, ierror); });
    if (ipid == 0)
      _exit(0);
    EXPECT_EQ(outcome, refused(EAGAIN, EAGAIN));
    EXPECT_EQ(ipid, -1);
  });
}

TEST(Pxfwait, AnswersTheRawStatus) {
  for (const int32_t status : {0, 1, 127, 255}) {
    const int32_t child = forked([status] { _exit(status); });
    EXPECT_EQ(wait_for_any(), answered(status << 8, child));
  }
  for (const int number : {SIGKILL, SIGTERM, SIGUSR1, SIGRTMIN}) {
    const int32_t child = forked([number] { kill(getpid(), number); });
    EXPECT_EQ(wait_for_any(), answered(number, child));
  }
}

TEST(Pxfwait, AnswersEachChildOnce) {
  std::vector<int32_t> children, ended;
  for (int i = 0; i < 5; ++i)
    children.push_back(forked([] { _exit(0); }));
  for (int i = 0; i < 5; ++i)
    ended.push_back(wait_for_any().iretpid);
  std::sort(children.begin(), children.end());
  std::sort(ended.begin(), ended.end());
  EXPECT_EQ(ended, children);
  EXPECT_EQ(wait_for_any(), failed_with(ECHILD));
}

TEST(Pxfwait, NoChildIsEchildAndTheStatusStays) {
  EXPECT_EQ(wait_for_any(), failed_with(ECHILD));
}

TEST(Pxfwaitpid, NoSuchChildIsEchild) {
  EXPECT_EQ(wait_for(-1, 0), failed_with(ECHILD));
  EXPECT_EQ(wait_for(-1, WNOHANG), failed_with(ECHILD));
  const int32_t child = sleeper();
  EXPECT_EQ(wait_for(getpid(), 0), failed_with(ECHILD));
  EXPECT_EQ(wait_for(INT32_MAX, WNOHANG), failed_with(ECHILD));
  end(child);
}

TEST(Pxfwaitpid, OtherOptionsAre22) {
  const int32_t child = sleeper();
  EXPECT_EQ(wait_for(child, 0x40), failed_with(EINVAL));
  EXPECT_EQ(wait_for(child, -1), failed_with(EINVAL));
  end(child);
}

TEST(Pxfwaitpid, WnohangAnswers0WhileTheChildRuns) {
  const int32_t child = sleeper();
  const Waited waited = wait_for(child, WNOHANG);
  EXPECT_EQ(waited.iretpid, 0);
  EXPECT_EQ(waited.outcome, succeeded());
  end(child);
}

TEST(Pxfwaitpid, WaitsForTheChildThatIsAskedFor) {
  const int32_t first = forked([] { _exit(1); });
  const int32_t second = forked([] { _exit(2); });
  EXPECT_EQ(wait_for(second, 0), answered(2 << 8, second));
  EXPECT_EQ(wait_for(-1, 0), answered(1 << 8, first));
  const int32_t grouped = forked([] {
    setpgid(0, 0);
    _exit(3);
  });
  setpgid(grouped, grouped);
  EXPECT_EQ(wait_for(-grouped, 0), answered(3 << 8, grouped));
  const int32_t own_group = forked([] { _exit(4); });
  EXPECT_EQ(wait_for(0, 0), answered(4 << 8, own_group));
}

// The life of a child as its parent sees it, with what the functions say of each status.
struct Decoded {
  int32_t exited, exit_status, signaled, terminating, stopped, stopping;
  bool operator==(const Decoded &) const = default;
};

std::ostream &operator<<(std::ostream &out, const Decoded &decoded) {
  return out << decoded.exited << ' ' << decoded.exit_status << ' ' << decoded.signaled << ' '
             << decoded.terminating << ' ' << decoded.stopped << ' ' << decoded.stopping;
}

Decoded decode(int32_t istat) {
  return {pxfwifexited_(&istat), ipxfwexitstatus_(&istat), pxfwifsignaled_(&istat),
          ipxfwtermsig_(&istat), pxfwifstopped_(&istat),   ipxfwstopsig_(&istat)};
}

Decoded decode_through_module(int32_t istat) {
  return {qxport_pxfwifexited_(&istat), ipxfwexitstatus_(&istat),      qxport_pxfwifsignaled_(&istat),
          ipxfwtermsig_(&istat),        qxport_pxfwifstopped_(&istat), ipxfwstopsig_(&istat)};
}

Decoded by_the_host(int32_t istat) {
  return {WIFEXITED(istat), WEXITSTATUS(istat),        WIFSIGNALED(istat),
          WTERMSIG(istat),  WIFSTOPPED(istat) ? 1 : 0, istat >> 8};
}

TEST(Pxfwaitpid, StopContinueAndEnd) {
  const int32_t child = sleeper();
  kill(child, SIGSTOP);
  EXPECT_EQ(wait_for(child, WUNTRACED), answered(SIGSTOP << 8 | 0x7f, child));
  EXPECT_EQ(wait_for(child, WNOHANG | WUNTRACED).iretpid, 0) << "a stop is answered once";
  kill(child, SIGCONT);
  const Waited continued = wait_for(child, WCONTINUED);
  EXPECT_EQ(continued, answered(0xffff, child));
  EXPECT_EQ(decode(continued.istat).exited, 0);
  EXPECT_EQ(decode(continued.istat).signaled, 0);
  EXPECT_EQ(decode(continued.istat).stopped, 0);
  end(child);
}

TEST(Pxfwaitpid, StopIsNotAnsweredUnasked) {
  const int32_t child = sleeper();
  kill(child, SIGSTOP);
  siginfo_t info;
  ASSERT_EQ(waitid(P_PID, static_cast<id_t>(child), &info, WSTOPPED | WNOWAIT), 0);
  EXPECT_EQ(wait_for(child, WNOHANG).iretpid, 0);
  end(child);
}

TEST(WaitStatus, EveryStatusIsTheHosts) {
  for (int32_t istat = 0; istat < 65536; ++istat) {
    ASSERT_EQ(decode(istat), by_the_host(istat)) << istat;
    ASSERT_EQ(decode_through_module(istat), by_the_host(istat)) << istat;
  }
}

TEST(WaitStatus, OfRealChildren) {
  const int32_t exited = forked([] { _exit(77); });
  EXPECT_EQ(decode(wait_for(exited, 0).istat), (Decoded{1, 77, 0, 0, 0, 77}));
  const int32_t killed = sleeper();
  kill(killed, SIGTERM);
  EXPECT_EQ(decode(wait_for(killed, 0).istat), (Decoded{0, 0, 1, SIGTERM, 0, 0}));
  const int32_t stopped = sleeper();
  kill(stopped, SIGSTOP);
  EXPECT_EQ(decode(wait_for(stopped, WUNTRACED).istat), (Decoded{0, 19, 0, 127, 1, 19}));
  end(stopped);
}

TEST(WaitStatus, CoreDumpIsNoPartOfTheSignal) {
  EXPECT_EQ(decode(SIGSEGV | 0x80), (Decoded{0, 0, 1, SIGSEGV, 0, 0}));
}

TEST(IpxfwStopsig, ChildStoppedBySigstopReports19) {
  const int32_t child = sleeper();
  kill(child, SIGSTOP);
  const int32_t istat = wait_for(child, WUNTRACED).istat;
  EXPECT_EQ(ipxfwstopsig_(&istat), 19);
  end(child);
}

TEST(IpxfwStopsig, AllBitsAboveTheLowEightWithSign) {
  const std::pair<int32_t, int32_t> cases[] = {{0x0003057f, 0x305},
                                               {-1, -1},
                                               {-256, -1},
                                               {INT32_MIN, -8388608},
                                               {INT32_MAX, 8388607},
                                               {0x7f, 0},
                                               {static_cast<int32_t>(0x8000137f), -8388589}};
  for (const auto &[istat, expected] : cases)
    EXPECT_EQ(ipxfwstopsig_(&istat), expected) << istat;
}

TEST(WaitStatus, HighBitsDoNotMatterToTheOthers) {
  for (const int32_t high : {0x00010000, INT32_MIN, -65536})
    for (int32_t low = 0; low < 65536; low += 7) {
      const Decoded decoded = decode(high | low);
      ASSERT_EQ(decoded, by_the_host(high | low));
      ASSERT_EQ(decoded.exit_status, low >> 8);
    }
}

TEST(WaitStatus, ErrorStateStays) {
  EXPECT_EQ(state_after([] { decode(SIGSTOP << 8 | 0x7f); }), untouched());
}

void leave_something_buffered() {
  atexit([] { printf("procedure of atexit\n"); });
  printf("buffered\n");
}

// The thread sanitizer's _exit flushes, to lose none of its own reports.
#ifdef __SANITIZE_THREAD__
constexpr const char *LEFT_BY_FAST_EXIT = "buffered\n";
#else
constexpr const char *LEFT_BY_FAST_EXIT = "";
#endif

TEST(Pxfexit, IsAnOrdinaryEnd) {
  for (const int32_t istatus : {0, 3, 255, 256, -1}) {
    const ChildReport child = run_in_child([&] {
      leave_something_buffered();
      pxfexit_(&istatus);
    });
    EXPECT_EQ(child.exit_code(), istatus & 0xff);
    EXPECT_EQ(child.out, "buffered\nprocedure of atexit\n");
    EXPECT_EQ(child.err, "");
  }
}

// The run-time gets the address, whatever it is.
TEST(Pxfexit, AbsentStatusIs0) {
  EXPECT_EQ(run_in_child([] { pxfexit_(nullptr); }).exit_code(), 0);
}

TEST(Pxffastexit, LeavesEverythingAsItIs) {
  for (const int32_t istatus : {0, 3, 255, 256, -1}) {
    const ChildReport child = run_in_child([&] {
      leave_something_buffered();
      pxffastexit_(&istatus);
    });
    EXPECT_EQ(child.exit_code(), istatus & 0xff);
    EXPECT_EQ(child.out + child.err, LEFT_BY_FAST_EXIT);
  }
}

}  // namespace
