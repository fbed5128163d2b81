// Routines of the qq family above host calls that fail as a test wants, and above a run-time of the test's
// own.
#include "contract/services.h"
#include "injected_host.h"
#include "outcome.h"

#include <csignal>
#include <cstdlib>
#include <ostream>
#include <sys/select.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utime.h>

namespace {

int waits_interrupted, wait_error, answer_of_system;
int32_t answer_of_establish;
std::vector<void *> established;
std::vector<std::pair<int64_t, int64_t>> waited;

// What the keyboard and the end of a child find at one moment.
struct CommandState {
  bool interrupt_ignored, quit_ignored, child_blocked, callers_blocked;
  bool operator==(const CommandState &) const = default;
};
std::vector<CommandState> states_of_calls;
int blocked_by_caller = SIGCHLD;
void note_state() {
  struct sigaction interrupt, quit;
  sigset_t mask;
  sigaction(SIGINT, nullptr, &interrupt);
  sigaction(SIGQUIT, nullptr, &quit);
  sigprocmask(SIG_SETMASK, nullptr, &mask);
  states_of_calls.push_back({interrupt.sa_handler == SIG_IGN, quit.sa_handler == SIG_IGN,
                             sigismember(&mask, SIGCHLD) == 1, sigismember(&mask, blocked_by_caller) == 1});
}

}  // namespace

int chdir(const char *path) noexcept {
  return host_call(std::string("chdir ") + path);
}
int mkdir(const char *path, mode_t mode) noexcept {
  return host_call(std::string("mkdir ") + path + " " + std::to_string(mode));
}
int rmdir(const char *path) noexcept {
  return host_call(std::string("rmdir ") + path);
}
int rename(const char *from, const char *to) noexcept {
  return host_call(std::string("rename ") + from + " " + to);
}
int utime(const char *path, const utimbuf *times) noexcept {
  return host_call(
      std::string("utime ") + path +
      (times == nullptr ? "" : " " + std::to_string(times->actime) + " " + std::to_string(times->modtime)));
}
int system(const char *command) {
  calls.push_back(std::string("system ") + command);
  return answer_of_system;
}
pid_t fork() noexcept {
  note_state();
  return host_call("fork") == 0 ? 4711 : -1;
}
pid_t waitpid(pid_t child, int *status, int options) {
  note_state();
  calls.push_back("waitpid " + std::to_string(child) + " " + std::to_string(options));
  *status = 0;
  if (waits_interrupted > 0 || wait_error != 0) {
    errno = waits_interrupted > 0 ? EINTR : wait_error;
    --waits_interrupted;
    return -1;
  }
  return child;
}
int select(int count, fd_set *readable, fd_set *writable, fd_set *exceptional, timeval *timeout) {
  EXPECT_EQ(count, 0);
  EXPECT_TRUE(readable == nullptr && writable == nullptr && exceptional == nullptr);
  waited.emplace_back(timeout->tv_sec, timeout->tv_usec);
  return host_call("select");
}
int32_t for__intermediate_establish(void *handler, void *context, void *former, void *former_context) {
  established = {handler, context, former, former_context};
  return answer_of_establish;
}

namespace {

class Injected : public testing::Test {
protected:
  Injected() {
    calls.clear();
    waited.clear();
    states_of_calls.clear();
    host_error = std::nullopt;
    waits_interrupted = wait_error = answer_of_system = 0;
  }
};

TEST_F(Injected, ErrorsOfChdirAndRenameAreRecorded) {
  for (const int error : ERRORS) {
    host_error = error;
    const Outcome recorded = {0, {error, SENTINEL, {error}}};
    EXPECT_EQ(outcome_of([] { return changedirqq_("name ", 5); }), recorded);
    EXPECT_EQ(outcome_of([] { return renamefileqq_("from ", "to ", 5, 3); }), recorded);
  }
  EXPECT_EQ(calls[0], "chdir name");
  EXPECT_EQ(calls[1], "rename from to");
}

TEST_F(Injected, ErrorsOfMkdirAndRmdirAreNot) {
  for (const int error : ERRORS) {
    host_error = error;
    const Outcome unrecorded = {0, {error, SENTINEL, {}}};
    EXPECT_EQ(outcome_of([] { return makedirqq_("name ", 5); }), unrecorded);
    EXPECT_EQ(outcome_of([] { return deldirqq_("name ", 5); }), unrecorded);
  }
  EXPECT_EQ(calls[0], "mkdir name 493");
  EXPECT_EQ(calls[1], "rmdir name");
}

TEST_F(Injected, FileTimes) {
  for (const int32_t time : {0, 1, -2, INT32_MAX, INT32_MIN, -1})
    EXPECT_EQ(outcome_of([&] { return setfiletimeqq_("name ", &time, 5); }), (Outcome{1, untouched()}));
  EXPECT_EQ(calls, (std::vector<std::string>{"utime name 0 0", "utime name 1 1", "utime name -2 -2",
                                             "utime name 2147483647 2147483647",
                                             "utime name -2147483648 -2147483648", "utime name"}));
  const int32_t now = -1;
  for (const int error : ERRORS) {
    host_error = error;
    EXPECT_EQ(outcome_of([&] { return setfiletimeqq_("name", &now, 4); }),
              (Outcome{0, {error, SENTINEL, {error}}}));
  }
}

TEST_F(Injected, RunHandsTheShellOneLine) {
  for (const auto &[status, answer] :
       {std::pair{0, 0}, {1, -1}, {256, -1}, {-1, -1}, {9, -1}, {INT32_MAX, -1}, {INT32_MIN, -1}}) {
    answer_of_system = status;
    EXPECT_EQ(outcome_of([] { return runqq_("ls ", "-l   ", 3, 5); }), (Outcome{answer, untouched()}))
        << status;
  }
  EXPECT_EQ(calls[0], "system \"ls\" -l");
  runqq_("", "", 0, 0);
  EXPECT_EQ(calls.back(), "system \"\" ");
  runqq_("a\"b", " \tx\t ", 3, 5);
  EXPECT_EQ(calls.back(), "system \"a\"b\"  \tx\t");
}

TEST_F(Injected, SystemWaitsForItsChildUntilItEnds) {
  waits_interrupted = 3;
  EXPECT_EQ(systemqq_("x", 1), 1);
  EXPECT_EQ(calls, (std::vector<std::string>{"fork", "waitpid 4711 0", "waitpid 4711 0", "waitpid 4711 0",
                                             "waitpid 4711 0"}));
}

// Nothing is recorded; errno is the call's.
TEST_F(Injected, SystemWithoutAChildOrItsEndIsFalse) {
  struct sigaction before, behind;
  signal(SIGINT, SIG_DFL);
  sigaction(SIGINT, nullptr, &before);
  wait_error = ECHILD;
  EXPECT_EQ(outcome_of([] { return systemqq_("x", 1); }), (Outcome{0, {ECHILD, SENTINEL, {}}}));
  host_error = EAGAIN;
  calls.clear();
  EXPECT_EQ(outcome_of([] { return systemqq_("x", 1); }), (Outcome{0, {EAGAIN, SENTINEL, {}}}));
  EXPECT_EQ(calls, std::vector<std::string>{"fork"});
  sigaction(SIGINT, nullptr, &behind);
  EXPECT_TRUE(before.sa_handler == behind.sa_handler);
  sigset_t mask;
  sigprocmask(SIG_SETMASK, nullptr, &mask);
  EXPECT_EQ(sigismember(&mask, SIGCHLD), 0);
}

void do_nothing(int) {}

struct Disposition {
  void (*interrupt)(int);
  void (*quit)(int);
  int blocked, open;
};

// Whatever the caller has, and whether there is a child, an interrupted wait or none.
TEST_F(Injected, SystemKeepsTheSignalsOfItsCommandFromTheCaller) {
  struct sigaction former_interrupt, former_quit;
  sigset_t former_mask;
  sigaction(SIGINT, nullptr, &former_interrupt);
  sigaction(SIGQUIT, nullptr, &former_quit);
  sigprocmask(SIG_SETMASK, nullptr, &former_mask);
  for (const Disposition &callers : {Disposition{do_nothing, SIG_DFL, SIGUSR1, SIGUSR2},
                                     Disposition{SIG_DFL, do_nothing, SIGUSR2, SIGUSR1},
                                     Disposition{SIG_IGN, do_nothing, SIGCHLD, SIGUSR1},
                                     Disposition{do_nothing, SIG_IGN, SIGUSR1, SIGCHLD}})
    for (const int error : {0, ECHILD, EAGAIN}) {
      struct sigaction action = {};
      // What is put back is the whole action.
      action.sa_flags = SA_RESTART | SA_NODEFER;
      sigaddset(&action.sa_mask, SIGHUP);
      action.sa_handler = callers.interrupt;
      sigaction(SIGINT, &action, nullptr);
      action.sa_handler = callers.quit;
      sigaction(SIGQUIT, &action, nullptr);
      sigset_t mask;
      sigemptyset(&mask);
      sigaddset(&mask, callers.blocked);
      sigprocmask(SIG_SETMASK, &mask, nullptr);
      blocked_by_caller = callers.blocked;
      states_of_calls.clear();
      waits_interrupted = 1;
      wait_error = error == ECHILD ? ECHILD : 0;
      host_error = error == EAGAIN ? std::optional(EAGAIN) : std::nullopt;

      EXPECT_EQ(systemqq_("x", 1), error == 0 ? 1 : 0);

      const CommandState kept_away = {true, true, true, true};
      EXPECT_EQ(states_of_calls, std::vector<CommandState>(error == EAGAIN ? 1 : 3, kept_away)) << error;
      for (const auto &[signal, handler] : {std::pair{SIGINT, callers.interrupt}, {SIGQUIT, callers.quit}}) {
        struct sigaction behind;
        sigaction(signal, nullptr, &behind);
        EXPECT_TRUE(behind.sa_handler == handler) << signal;
        EXPECT_EQ(behind.sa_flags & (SA_RESTART | SA_NODEFER), SA_RESTART | SA_NODEFER) << signal;
        EXPECT_EQ(sigismember(&behind.sa_mask, SIGHUP), 1) << signal;
      }
      sigprocmask(SIG_SETMASK, nullptr, &mask);
      EXPECT_EQ(sigismember(&mask, callers.blocked), 1);
      EXPECT_EQ(sigismember(&mask, callers.open), 0);
      EXPECT_EQ(sigismember(&mask, SIGCHLD), callers.blocked == SIGCHLD ? 1 : 0);
    }
  sigaction(SIGINT, &former_interrupt, nullptr);
  sigaction(SIGQUIT, &former_quit, nullptr);
  sigprocmask(SIG_SETMASK, &former_mask, nullptr);
}

TEST_F(Injected, SleepWaitsForSecondsAndMicroseconds) {
  for (const auto &[duration, seconds, microseconds] : {std::tuple<int32_t, int64_t, int64_t>{0, 0, 0},
                                                        {1, 0, 1000},
                                                        {999, 0, 999'000},
                                                        {1000, 1, 0},
                                                        {1500, 1, 500'000},
                                                        {INT32_MAX, 2'147'483, 647'000}}) {
    waited.clear();
    EXPECT_EQ(state_after([milliseconds = duration] { sleepqq_(&milliseconds); }), untouched());
    EXPECT_EQ(waited, (std::vector<std::pair<int64_t, int64_t>>{{seconds, microseconds}})) << duration;
  }
}

// Once is all: what is left of the time is not waited for.
TEST_F(Injected, InterruptedSleepIsOver) {
  host_error = EINTR;
  const int32_t duration = 1500;
  sleepqq_(&duration);
  EXPECT_EQ(waited.size(), 1U);
}

TEST_F(Injected, SleepOfANegativeTimeWaitsForNothing) {
  for (const int32_t duration : {-1, -1000, INT32_MIN})
    EXPECT_EQ(state_after([&] { sleepqq_(&duration); }), untouched());
  EXPECT_EQ(calls, std::vector<std::string>{});
}

void a_handler() {}

TEST_F(Injected, EstablishHandsAllOn) {
  int context, former, former_context;
  for (const auto &[theirs, ours] : {std::pair{0, 0}, {1, 1}, {-1, 1}, {256, 1}, {INT32_MIN, 1}}) {
    answer_of_establish = theirs;
    EXPECT_EQ(outcome_of([&] { return establishqq_(a_handler, &context, &former, &former_context); }),
              (Outcome{ours, untouched()}))
        << theirs;
    EXPECT_EQ(established,
              (std::vector<void *>{reinterpret_cast<void *>(a_handler), &context, &former, &former_context}));
  }
}

}  // namespace
