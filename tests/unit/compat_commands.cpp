// RUNQQ, SYSTEMQQ, SLEEPQQ, BEEPQQ, and the routines that have no meaning here.
#include "captured_child.h"
#include "interruptions.h"
#include "outcome.h"

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <sys/resource.h>

namespace {

Outcome answered(int32_t answer) {
  return {answer, untouched()};
}

std::string contents(const std::string &path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

int32_t call_run(const std::string &name, const std::string &arguments) {
  return runqq_(name.data(), arguments.data(), static_cast<qxport_charlen>(name.size()),
                static_cast<qxport_charlen>(arguments.size()));
}
int32_t call_system(const std::string &command) {
  return systemqq_(command.data(), static_cast<qxport_charlen>(command.size()));
}

class Commands : public testing::Test {
protected:
  // A program that tells its name and its arguments, one a line.
  void make_program(const std::string &name) const {
    directory.file(name, "#!/bin/sh\nprintf '%s\\n' \"$0\" \"$@\" >told\nexit ${1:-0}\n", 0755);
  }
  const TemporaryDirectory directory;
  const WorkingDirectory inside{directory.path()};
};

using RunCommand = Commands;

TEST_F(RunCommand, NameIsQuotedAndArgumentsAreTrimmed) {
  make_program("two words");
  EXPECT_EQ(outcome_of([] { return call_run("./two words  ", "0 'a  b' c    "); }), answered(0));
  EXPECT_EQ(contents("told"), "./two words\n0\na  b\nc\n");
  EXPECT_EQ(outcome_of([] { return call_run("./two words", "     "); }), answered(0));
  EXPECT_EQ(contents("told"), "./two words\n");
  EXPECT_EQ(outcome_of([] { return call_run("./two words", ""); }), answered(0));
  EXPECT_EQ(contents("told"), "./two words\n");
}

// Blanks are all that is trimmed, and the shell reads the arguments.
TEST_F(RunCommand, ArgumentsAreTheShells) {
  make_program("program");
  EXPECT_EQ(call_run("./program", "  $((1-1)) \"$(echo x)\"; : '"), -1);
  EXPECT_EQ(call_run("./program", "  $((1-1)) \"$(echo x)\"; :"), 0);
  EXPECT_EQ(contents("told"), "./program\n0\nx\n");
  EXPECT_EQ(call_run("./program", "0 \t"), 0);
  EXPECT_EQ(call_run("./program", "0\n: second line"), 0);
  EXPECT_EQ(call_run("touch", "made\0 not"), 0);
  EXPECT_TRUE(std::filesystem::exists("made"));
}

TEST_F(RunCommand, EveryFailureIsMinusOne) {
  make_program("program");
  for (const char *status : {"1", "2", "126", "127", "128", "255"})
    EXPECT_EQ(outcome_of([&] { return call_run("./program", status); }), answered(-1)) << status;
  EXPECT_EQ(call_run("sh", "-c 'kill -9 $$'"), -1);
  EXPECT_EQ(call_run("./none", "2>/dev/null"), -1);
  EXPECT_EQ(call_run("", "2>/dev/null"), -1);
}

TEST_F(RunCommand, QuotesInTheNameAreTheShells) {
  make_program("program");
  EXPECT_EQ(call_run("./pro\"\"gram", "0"), 0);
  EXPECT_EQ(call_run("./pro\"gram", "0 2>/dev/null"), -1);
}

TEST_F(RunCommand, LongArguments) {
  make_program("program");
  const std::string argument(100'000, 'a');
  EXPECT_EQ(call_run("./program", "0 " + argument), 0);
  EXPECT_EQ(contents("told"), "./program\n0\n" + argument + "\n");
  EXPECT_EQ(call_run("./program", "0 x" + std::string(100'000, ' ')), 0);
  EXPECT_EQ(contents("told"), "./program\n0\nx\n");
}

TEST_F(RunCommand, NullNameIsNoName) {
  EXPECT_EQ(outcome_of([] { return runqq_(nullptr, "x", 3, 1); }),
            (Outcome{-1, {ENOMEM, SENTINEL, {EINVAL, ENOMEM}}}));
}

using SystemCommand = Commands;

TEST_F(SystemCommand, IsTrueWhateverTheCommandAnswers) {
  for (const char *command : {"exit 0", "exit 1", "exit 127", "kill -9 $$", "true   ", "", "   ",
                              "./none 2>/dev/null", "'unbalanced 2>/dev/null", "exec 2>/dev/null; ("})
    EXPECT_EQ(outcome_of([&] { return call_system(std::string("exec 2>/dev/null\n") + command); }),
              answered(1))
        << command;
}

TEST_F(SystemCommand, CommandIsTheShells) {
  EXPECT_EQ(call_system("printf '%s|' \"$0\" 'a \"b\"' $((2+3)) >told\n: next   "), 1);
  EXPECT_EQ(contents("told"), "sh|a \"b\"|5|");
  const std::string argument(100'000, 'a');
  EXPECT_EQ(call_system("printf %s " + argument + " >told"), 1);
  EXPECT_EQ(contents("told"), argument);
}

// A word longer than the host takes: the shell is not executed, and the child has been there.
TEST_F(SystemCommand, ShellThatCannotBeExecuted) {
  const pid_t self = getpid();
  EXPECT_EQ(call_system("touch made; : " + std::string(3'000'000, 'a')), 1);
  if (getpid() != self) {
    // The caller's program must not go on twice.
    std::ofstream("returned") << "from the child";
    _exit(0);
  }
  EXPECT_FALSE(std::filesystem::exists("made"));
  EXPECT_FALSE(std::filesystem::exists("returned"));
}

TEST_F(SystemCommand, NullCommandIsFalse) {
  EXPECT_EQ(outcome_of([] { return systemqq_(nullptr, 3); }), (Outcome{0, {EINVAL, SENTINEL, {EINVAL}}}));
}

struct sigaction action_of(int number) {
  struct sigaction action = {};
  EXPECT_EQ(sigaction(number, nullptr, &action), 0);
  return action;
}

void do_nothing(int) {}

// The child has the caller's actions and mask; the caller gets its own back.
TEST_F(SystemCommand, SignalsAreAsTheyWere) {
  const auto as_caught_and_ignored = [] {
    signal(SIGINT, do_nothing);
    signal(SIGQUIT, SIG_IGN);
    sigset_t mask;
    sigemptyset(&mask);
    sigaddset(&mask, SIGUSR2);
    sigprocmask(SIG_SETMASK, &mask, nullptr);
    if (call_system("exec grep -E '^Sig(Blk|Ign)' /proc/self/status") != 1)
      _exit(1);
    sigset_t behind;
    sigprocmask(SIG_SETMASK, nullptr, &behind);
    const bool same = sigismember(&behind, SIGUSR2) == 1 && sigismember(&behind, SIGCHLD) == 0 &&
                      action_of(SIGINT).sa_handler == do_nothing && action_of(SIGQUIT).sa_handler == SIG_IGN;
    _exit(same ? 0 : 2);
  };
  const ChildReport report = run_in_child(as_caught_and_ignored);
  EXPECT_EQ(report.exit_code(), 0);
  EXPECT_NE(report.out.find("SigBlk:\t0000000000000800"), std::string::npos) << report.out;
  const size_t ignored = report.out.find("SigIgn:\t");
  ASSERT_NE(ignored, std::string::npos) << report.out;
  const uint64_t mask = strtoull(report.out.c_str() + ignored + 8, nullptr, 16);
  EXPECT_EQ(mask >> (SIGINT - 1) & 1, 0u);
  EXPECT_EQ(mask >> (SIGQUIT - 1) & 1, 1u);
}

// While the command runs, the keyboard's signals do not reach the caller.
TEST_F(SystemCommand, InterruptsAreTheCommandsOwn) {
  const ChildReport report = run_in_child([] {
    signal(SIGINT, SIG_DFL);
    signal(SIGQUIT, SIG_DFL);
    _exit(call_system("kill -INT $PPID; kill -QUIT $PPID; kill -INT $$") == 1 ? 0 : 1);
  });
  EXPECT_EQ(report.exit_code(), 0);
}

TEST_F(SystemCommand, InterruptedWaitGoesOn) {
  const Interruptions often;
  EXPECT_EQ(call_system("sleep 0.2; : >done"), 1);
  EXPECT_TRUE(std::filesystem::exists("done"));
}

// With SIGCHLD ignored the host keeps no status to wait for.
TEST_F(SystemCommand, ChildThatCannotBeWaitedForIsFalse) {
  const ChildReport report = run_in_child([] {
    signal(SIGCHLD, SIG_IGN);
    _exit(call_system(": >done") == 0 && errno == ECHILD ? 0 : 1);
  });
  EXPECT_EQ(report.exit_code(), 0);
  EXPECT_TRUE(std::filesystem::exists("done"));
}

// By the clock that the host sleeps by.
double seconds_of_sleep(int32_t milliseconds) {
  const auto begin = std::chrono::steady_clock::now();
  sleepqq_(&milliseconds);
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

TEST(Sleep, LastsAtLeastAsLongAsItShould) {
  EXPECT_GE(seconds_of_sleep(30), 0.030);
  EXPECT_GE(seconds_of_sleep(1100), 1.100);
  EXPECT_EQ(state_after([] { seconds_of_sleep(0); }), untouched());
}

TEST(Sleep, NegativeDurationReturnsAtOnce) {
  for (const int32_t duration : {-1, -1000, INT32_MIN})
    EXPECT_EQ(state_after([&] { sleepqq_(&duration); }), untouched()) << duration;
}

TEST(Sleep, SignalEndsIt) {
  const Interruptions often;
  const int32_t weeks = INT32_MAX;
  errno = 0;
  sleepqq_(&weeks);
  EXPECT_EQ(errno, EINTR);
}

TEST(Beep, IsThereAtOnce) {
  const ChildReport report = run_in_child([] {
    const int32_t number = 440;
    beepqq_(&number, &number);
    beepqq_(nullptr, nullptr);
  });
  EXPECT_EQ(report.exit_code(), CAME_BACK);
  EXPECT_EQ(report.out, "\a\a");
  EXPECT_EQ(report.err, "");
}

TEST(FileAccess, CannotBeSet) {
  const TemporaryDirectory directory;
  const std::string file = directory.file("file", "", 0644);
  const int32_t read_only = 1;
  const Outcome invalid = {0, {EINVAL, SENTINEL, {EINVAL}}};
  EXPECT_EQ(outcome_of([&] {
              return setfileaccessqq_(file.data(), &read_only, static_cast<qxport_charlen>(file.size()));
            }),
            invalid);
  EXPECT_EQ(outcome_of([] { return setfileaccessqq_(nullptr, nullptr, 0); }), invalid);
}

TEST(ErrorMode, DoesNothing) {
  const int32_t prompt = 1;
  EXPECT_EQ(state_after([&] { seterrormodeqq_(&prompt); }), untouched());
  EXPECT_EQ(state_after([] { seterrormodeqq_(nullptr); }), untouched());
}

// The provider has no condition handlers.
TEST(Establish, IsFalse) {
  int context = 4711, former = 4712, former_context = 4713;
  EXPECT_EQ(outcome_of([&] { return establishqq_(nullptr, &context, &former, &former_context); }),
            succeeded());
  EXPECT_EQ(context, 4711);
  EXPECT_EQ(former, 4712);
  EXPECT_EQ(former_context, 4713);
}

}  // namespace
