// ACCESS and CHMOD above host calls that answer what a test wants.
#include "kept_on_purpose.h"
#include "outcome.h"

#include <map>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// The error number of a failing call, or nothing for a call that succeeds.
std::optional<int> access_error;
std::optional<int> chmod_error;
std::optional<int> stat_error;
mode_t stat_mode;

struct Call {
  std::string function, path;
  unsigned mode;
  bool operator==(const Call &) const = default;
};
std::vector<Call> calls;

std::ostream &operator<<(std::ostream &out, const Call &call) {
  return out << call.function << "(" << call.path << ", " << std::oct << call.mode << std::dec << ")";
}

int fail_or_succeed(std::optional<int> error) {
  if (!error)
    return 0;
  errno = *error;
  return -1;
}

}  // namespace

int access(const char *path, int mode) noexcept {
  calls.push_back({"access", path, static_cast<unsigned>(mode)});
  return fail_or_succeed(access_error);
}

int chmod(const char *path, mode_t mode) noexcept {
  calls.push_back({"chmod", path, mode});
  return fail_or_succeed(chmod_error);
}

int stat(const char *path, struct stat *status) noexcept {
  calls.push_back({"stat", path, 0});
  if (!stat_error)
    status->st_mode = stat_mode;
  return fail_or_succeed(stat_error);
}

namespace {

class Injected : public testing::Test {
protected:
  void SetUp() override {
    access_error = chmod_error = stat_error = std::nullopt;
    stat_mode = 0;
    calls.clear();
  }
};

using AccessInjected = Injected;
using ChmodInjected = Injected;

Outcome access_of(const std::string &mode) {
  return outcome_of(
      [&] { return access_("name", mode.c_str(), 4, static_cast<qxport_charlen>(mode.size())); });
}

TEST_F(AccessInjected, EveryErrnoIs22Or13OrMinus1) {
  const std::map<int, int32_t> listed = {
      {ENOENT, EINVAL}, {ENOTDIR, EINVAL}, {EINVAL, EINVAL}, {ELOOP, EINVAL},  {ENAMETOOLONG, EINVAL},
      {EIO, EACCES},    {ENOMEM, EACCES},  {EACCES, EACCES}, {EFAULT, EACCES}, {EROFS, EACCES}};
  for (int error = 1; error < 4096; ++error) {
    access_error = error;
    const auto found = listed.find(error);
    const int32_t answer = found == listed.end() ? -1 : found->second;
    EXPECT_EQ(access_of("r"), (Outcome{answer, {error, answer, {answer}}})) << strerror(error);
  }
}

TEST_F(AccessInjected, FailureWithoutErrnoIsMinus1) {
  access_error = 0;
  EXPECT_EQ(access_of("r"), (Outcome{-1, {0, -1, {-1}}}));
}

TEST_F(AccessInjected, ModeBecomesTheSumOfItsLetters) {
  const std::map<std::string, unsigned> modes = {
      {"r", 4},  {"w", 2},  {"x", 1},       {" ", 0},      {"rwx", 7}, {"xwr", 7},   {"RWX", 7},
      {"Rx", 5}, {"rr", 4}, {"wwwwwww", 2}, {"xrxrxr", 5}, {"r w", 6}, {"   x ", 1}, {"     ", 0}};
  for (const auto &[text, mode] : modes) {
    calls.clear();
    EXPECT_EQ(access_of(text), succeeded());
    EXPECT_EQ(calls, (std::vector<Call>{{"access", "name", mode}})) << text;
  }
}

TEST_F(AccessInjected, WrongArgumentsReachNoHost) {
  access_of("q");
  access_of("");
  access_("name", "r", 0, 1);
  EXPECT_EQ(calls, std::vector<Call>());
}

// The file's mode before the call is stat_mode.
Outcome chmod_of(const std::string &mode) {
  calls.clear();
  // A symbolic call keeps the copies of its two arguments.
  const KeptOnPurpose kept;
  return outcome_of(
      [&] { return chmod_("name", mode.c_str(), 4, static_cast<qxport_charlen>(mode.size())); });
}

TEST_F(ChmodInjected, OctalModeIsPassedAsItIs) {
  EXPECT_EQ(chmod_of("644"), succeeded());
  EXPECT_EQ(calls, (std::vector<Call>{{"chmod", "name", 0644}}));
  EXPECT_EQ(chmod_of("07777"), succeeded());
  EXPECT_EQ(calls, (std::vector<Call>{{"chmod", "name", 07777}}));
}

TEST_F(ChmodInjected, AddingReadsTheModeAndSetsPermissionBitsOnly) {
  stat_mode = S_IFREG | 01640;
  EXPECT_EQ(chmod_of("u+x"), succeeded());
  EXPECT_EQ(calls, (std::vector<Call>{{"stat", "name", 0}, {"chmod", "name", 01740}}));
}

TEST_F(ChmodInjected, RemovingReadsTheModeAndSetsPermissionBitsOnly) {
  stat_mode = S_IFDIR | 07777;
  EXPECT_EQ(chmod_of("go-w"), succeeded());
  EXPECT_EQ(calls, (std::vector<Call>{{"stat", "name", 0}, {"chmod", "name", 07755}}));
}

TEST_F(ChmodInjected, SettingDoesNotAskForTheMode) {
  stat_mode = S_IFREG | 07777;
  EXPECT_EQ(chmod_of("u=rw"), succeeded());
  EXPECT_EQ(calls, (std::vector<Call>{{"chmod", "name", 0600}}));
}

TEST_F(ChmodInjected, EmptyListStillSetsTheMode) {
  stat_mode = S_IFREG | 0640;
  EXPECT_EQ(chmod_of("go-"), succeeded());
  EXPECT_EQ(calls, (std::vector<Call>{{"stat", "name", 0}, {"chmod", "name", 0640}}));
}

TEST_F(ChmodInjected, UnknownModeCountsAsNone) {
  stat_mode = S_IFREG | 0777;
  stat_error = EACCES;
  EXPECT_EQ(chmod_of("u+x").answer, 0);
  EXPECT_EQ(calls, (std::vector<Call>{{"stat", "name", 0}, {"chmod", "name", 0100}}));
  EXPECT_EQ(chmod_of("u-x"), (Outcome{0, {EACCES, SENTINEL, {}}}));
  EXPECT_EQ(calls, (std::vector<Call>{{"stat", "name", 0}, {"chmod", "name", 0}}));
}

TEST_F(ChmodInjected, FailuresAreReported) {
  for (const char *mode : {"644", "u+x", "u-x", "u=x"})
    for (const int error : {EPERM, EROFS, ENOENT, EIO, ENOMEM, ELOOP}) {
      chmod_error = error;
      EXPECT_EQ(chmod_of(mode), reported(error)) << mode;
    }
}

TEST_F(ChmodInjected, WrongModesReachNoHost) {
  for (const char *mode : {"0", "7a", "u", "u+v", "u+r,g+w", ""}) {
    EXPECT_EQ(chmod_of(mode), reported(EINVAL)) << mode;
    EXPECT_EQ(calls, std::vector<Call>()) << mode;
  }
}

}  // namespace
