// Routines of the qq family above host calls that fail as a test wants, and above a run-time of the test's
// own.
#include "contract/services.h"
#include "outcome.h"

#include <cstdlib>
#include <optional>
#include <ostream>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utime.h>

namespace {

std::vector<std::string> calls;
std::optional<int> host_error;
int waits_interrupted, wait_error, answer_of_system;
int32_t answer_of_establish;
std::vector<void *> established;

int host_call(const std::string &call) {
  calls.push_back(call);
  if (!host_error)
    return 0;
  errno = *host_error;
  return -1;
}

constexpr int ERRORS[] = {0, EPERM, ENOENT, EIO, ENOMEM, EACCES, EFAULT, EBUSY, EXDEV, EROFS, ELOOP, 4095};

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
  return host_call("fork") == 0 ? 4711 : -1;
}
pid_t waitpid(pid_t child, int *status, int options) {
  calls.push_back("waitpid " + std::to_string(child) + " " + std::to_string(options));
  *status = 0;
  if (waits_interrupted > 0 || wait_error != 0) {
    errno = waits_interrupted > 0 ? EINTR : wait_error;
    --waits_interrupted;
    return -1;
  }
  return child;
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
