// CHDIR, UNLINK, RENAME and GETCWD above host calls that fail as a test wants.
#include "injected_host.h"
#include "outcome.h"

#include <cstdio>
#include <unistd.h>

namespace {

size_t getcwd_size;

}  // namespace

int chdir(const char *path) noexcept {
  return host_call(std::string("chdir ") + path);
}

int unlink(const char *path) noexcept {
  return host_call(std::string("unlink ") + path);
}

int rename(const char *from, const char *to) noexcept {
  return host_call(std::string("rename ") + from + " " + to);
}

char *getcwd(char *path, size_t size) noexcept {
  getcwd_size = size;
  // What a host leaves in the buffer of a failed call is nothing to go by.
  memset(path, '!', size);
  if (host_call("getcwd") != 0)
    return nullptr;
  snprintf(path, size, "%s", "/somewhere");
  return path;
}

namespace {

class Directory : public testing::Test {
protected:
  void SetUp() override {
    host_error = std::nullopt;
    calls.clear();
  }
};

using HostError = Directory;
using HostCall = Directory;

// The number is answered and recorded as it is, also one that the host did not set.
TEST_F(HostError, OfChdirIsReported) {
  for (const int error : ERRORS) {
    host_error = error;
    EXPECT_EQ(outcome_of([] { return chdir_("name ", 5); }), reported(error));
  }
  EXPECT_EQ(calls, std::vector<std::string>(std::size(ERRORS), "chdir name"));
}

TEST_F(HostError, OfUnlinkIsReported) {
  for (const int error : ERRORS) {
    host_error = error;
    EXPECT_EQ(outcome_of([] { return unlink_(" name ", 6); }), reported(error));
  }
  EXPECT_EQ(calls, std::vector<std::string>(std::size(ERRORS), "unlink  name"));
}

TEST_F(HostError, OfRenameIsReported) {
  for (const int error : ERRORS) {
    host_error = error;
    EXPECT_EQ(outcome_of([] { return rename_("from  ", "to  ", 6, 4); }), reported(error));
  }
  EXPECT_EQ(calls, std::vector<std::string>(std::size(ERRORS), "rename from to"));
}

TEST_F(HostError, OfGetcwdIsReportedAndTheVariableBlank) {
  for (const int error : ERRORS) {
    host_error = error;
    Character name(20);
    EXPECT_EQ(outcome_of([&] { return getcwd_(name.data(), name.length()); }), reported(error));
    EXPECT_EQ(name.text(), padded("", 20));
  }
}

TEST_F(HostCall, GetcwdHasRoomForTheTerminator) {
  Character name(10);
  EXPECT_EQ(outcome_of([&] { return getcwd_(name.data(), name.length()); }), succeeded());
  EXPECT_EQ(name.text(), "/somewhere");
  EXPECT_EQ(getcwd_size, 11u);
}

TEST_F(HostCall, OfNullNamesIsNotMade) {
  chdir_(nullptr, 1);
  unlink_(nullptr, 1);
  rename_(nullptr, "to", 1, 2);
  rename_("from", nullptr, 4, 1);
  getcwd_(nullptr, 0);
  EXPECT_EQ(calls, std::vector<std::string>());
}

}  // namespace
