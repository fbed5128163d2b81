// The names of host and login, SLEEP, SYSTEM, KILL and the identities above host calls that answer what a
// test wants.
#include "outcome.h"

#include <csignal>
#include <cstdlib>
#include <optional>
#include <unistd.h>
#include <utility>

namespace {

std::string host_name;
std::optional<int> host_name_error;
size_t host_name_limit;

const char *login;

std::vector<unsigned> sleeps;

int kill_answer;
std::pair<pid_t, int> killed;

int command_answer;
std::string command;

}  // namespace

// Of a name that fills the buffer no terminator is stored, as the host does.
int gethostname(char *name, size_t limit) noexcept {
  host_name_limit = limit;
  memset(name, '!', limit);
  if (host_name_error) {
    errno = *host_name_error;
    return -1;
  }
  memcpy(name, host_name.c_str(), std::min(host_name.size() + 1, limit));
  return 0;
}

char *getlogin() {
  return const_cast<char *>(login);
}

unsigned sleep(unsigned seconds) {
  sleeps.push_back(seconds);
  return 5;
}

int system(const char *text) {
  command = text;
  return command_answer;
}

int kill(pid_t pid, int number) noexcept {
  killed = {pid, number};
  errno = kill_answer == 0 ? errno : EPERM;
  return kill_answer;
}

uid_t getuid() noexcept {
  return 4294967294;
}

gid_t getgid() noexcept {
  return 4294967293;
}

namespace {

class Hostnm : public testing::TestWithParam<std::string> {
protected:
  void expect(size_t length, const Outcome &outcome, const std::string &text) const {
    Character name(length);
    EXPECT_EQ(outcome_of([&] { return call(name.data(), name.length()); }), outcome) << length;
    EXPECT_EQ(name.text(), text) << length;
  }

  void SetUp() override {
    host_name = "hostname";
    host_name_error = std::nullopt;
  }

  int32_t call(char *name, qxport_charlen length) const {
    return (GetParam() == "hostnm" ? hostnm_ : hostnam_)(name, length);
  }

  static Outcome cut() { return {-1, untouched()}; }
};

INSTANTIATE_TEST_SUITE_P(BothNames, Hostnm, testing::Values("hostnm", "hostnam"));

TEST_P(Hostnm, Character3HoldsTheFirstThreeWithMinus1) {
  expect(3, cut(), "hos");
}

TEST_P(Hostnm, LongerNameIsCutWithMinus1) {
  expect(7, cut(), "hostnam");
  expect(1, cut(), "h");
  expect(0, cut(), "");
}

TEST_P(Hostnm, ShorterNameIsBlankPadded) {
  expect(8, succeeded(), "hostname");
  expect(9, succeeded(), "hostname ");
  expect(1000, succeeded(), padded("hostname", 1000));
}

TEST_P(Hostnm, EmptyNameIsBlank) {
  host_name = "";
  expect(4, succeeded(), "    ");
  expect(0, succeeded(), "");
}

TEST_P(Hostnm, NegativeLengthStoresNothing) {
  Character name(4);
  EXPECT_EQ(outcome_of([&] { return call(name.data(), -1); }), cut());
  EXPECT_EQ(name.text(), "####");
  host_name_error = EPERM;
  EXPECT_EQ(outcome_of([&] { return call(name.data(), INTPTR_MIN); }),
            (Outcome{EPERM, {EPERM, SENTINEL, {EPERM}}}));
  EXPECT_EQ(name.text(), "####");
}

TEST_P(Hostnm, AtMost255CharactersAreAskedFor) {
  host_name = std::string(300, 'n');
  expect(255, succeeded(), std::string(255, 'n'));
  EXPECT_EQ(host_name_limit, 255u);
  expect(400, succeeded(), padded(std::string(255, 'n'), 400));
  expect(254, cut(), std::string(254, 'n'));
}

TEST_P(Hostnm, NameMayHoldAnyBytes) {
  host_name = " \xff\xfe ";
  expect(6, succeeded(), " \xff\xfe   ");
}

TEST_P(Hostnm, FailureIsRecordedButNotInTheLibrarysCell) {
  for (const int error : {EFAULT, ENAMETOOLONG, EPERM, EINVAL, 0}) {
    host_name_error = error;
    expect(12, {error, {error, SENTINEL, {error}}}, padded("", 12));
    expect(0, {error, {error, SENTINEL, {error}}}, "");
  }
}

void expect_getlog(size_t length, const std::string &text) {
  Character name(length);
  EXPECT_EQ(state_after([&] { getlog_(name.data(), name.length()); }), untouched()) << length;
  EXPECT_EQ(name.text(), text) << length;
}

TEST(Getlog, NoLoginNameIsBlank) {
  login = nullptr;
  expect_getlog(8, "        ");
  expect_getlog(0, "");
}

TEST(Getlog, ShorterNameIsBlankPadded) {
  login = "user";
  expect_getlog(5, "user ");
  expect_getlog(300, padded("user", 300));
  login = "";
  expect_getlog(3, "   ");
}

TEST(Getlog, ExactLengthIsEnough) {
  login = "user";
  expect_getlog(4, "user");
}

TEST(Getlog, LongerNameIsCut) {
  login = "user";
  expect_getlog(3, "use");
  expect_getlog(1, "u");
  expect_getlog(0, "");
}

TEST(Getlog, NameMayBeLong) {
  const std::string name(100000, 'u');
  login = name.c_str();
  expect_getlog(100001, name + " ");
  expect_getlog(10, "uuuuuuuuuu");
}

TEST(Getlog, NegativeLengthStoresNothing) {
  login = "user";
  Character name(4);
  EXPECT_EQ(state_after([&] { getlog_(name.data(), -4); }), untouched());
  EXPECT_EQ(name.text(), "####");
}

TEST(Sleep, PassesPositiveSecondsOnceAndIgnoresWhatIsLeft) {
  for (const int32_t seconds : {1, 2, 86400, INT32_MAX}) {
    sleeps.clear();
    EXPECT_EQ(state_after([&] { sleep_(&seconds); }), untouched());
    EXPECT_EQ(sleeps, std::vector<unsigned>{static_cast<unsigned>(seconds)});
  }
}

TEST(Sleep, NegativeOrAbsentSecondsReachNoHost) {
  sleeps.clear();
  for (const int32_t seconds : {-1, -5, INT32_MIN})
    EXPECT_EQ(state_after([&] { sleep_(&seconds); }), untouched());
  EXPECT_EQ(state_after([] { sleep_(nullptr); }), untouched());
  EXPECT_EQ(sleeps, std::vector<unsigned>());
}

TEST(System, AnswerIsPassedOnUnchanged) {
  for (const int answer : {0, 256, 9, 32512, -1, INT32_MIN}) {
    command_answer = answer;
    EXPECT_EQ(outcome_of([] { return system_(" ls  -l   ", 10); }), (Outcome{answer, untouched()}));
    EXPECT_EQ(command, " ls  -l");
  }
}

TEST(Kill, PassesBothNumbersAndTheAnswerUnchanged) {
  const std::pair<int32_t, int32_t> calls[] = {
      {1, 15}, {0, 0}, {-1, 9}, {INT32_MIN, INT32_MAX}, {INT32_MAX, INT32_MIN}};
  for (const auto &call : calls) {
    kill_answer = 0;
    EXPECT_EQ(outcome_of([&] { return kill_(&call.first, &call.second); }), succeeded());
    EXPECT_EQ(killed, call);
    kill_answer = -1;
    EXPECT_EQ(outcome_of([&] { return kill_(&call.first, &call.second); }),
              (Outcome{-1, {EPERM, SENTINEL, {}}}));
  }
}

TEST(Identity, LargeNumbersReadAsNegativeOnes) {
  EXPECT_EQ(outcome_of(getuid_), (Outcome{-2, untouched()}));
  EXPECT_EQ(outcome_of(getgid_), (Outcome{-3, untouched()}));
}

}  // namespace
