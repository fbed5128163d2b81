// The directory routines of the qq family, renaming, and the drives.
#include "outcome.h"
#include "paths.h"

#include <filesystem>
#include <sys/stat.h>

namespace {

Outcome yes() {
  return {1, untouched()};
}
// What the host's call left in errno, recorded as well.
Outcome no(int32_t number) {
  return {0, {number, SENTINEL, {number}}};
}
Outcome no_unrecorded(int32_t number) {
  return {0, {number, SENTINEL, {}}};
}
// The conversion's own report comes first.
Outcome no_address() {
  return {0, {ENOMEM, SENTINEL, {EINVAL, ENOMEM}}};
}

using OneName = int32_t (*)(const char *, qxport_charlen);

Outcome call(OneName routine, const std::string &name) {
  return outcome_of([&] { return routine(name.data(), static_cast<qxport_charlen>(name.size())); });
}
Outcome rename_file(const std::string &from, const std::string &to) {
  return outcome_of([&] {
    return renamefileqq_(from.data(), to.data(), static_cast<qxport_charlen>(from.size()),
                         static_cast<qxport_charlen>(to.size()));
  });
}

std::string current_directory() {
  return std::filesystem::current_path().string();
}

class CompatDirectories : public testing::Test {
protected:
  const TemporaryDirectory directory;
  const WorkingDirectory inside{directory.path()};
  const std::string here = current_directory();
};

TEST_F(CompatDirectories, ChangeMakeAndRemove) {
  const mode_t former = umask(0);
  EXPECT_EQ(call(makedirqq_, "new  "), yes());
  struct stat status;
  ASSERT_EQ(stat("new", &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0755u);
  umask(027);
  EXPECT_EQ(call(makedirqq_, "new/masked"), yes());
  umask(former);
  ASSERT_EQ(stat("new/masked", &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0750u);
  EXPECT_EQ(call(changedirqq_, "new/masked "), yes());
  EXPECT_EQ(current_directory(), here + "/new/masked");
  EXPECT_EQ(call(changedirqq_, here), yes());
  EXPECT_EQ(call(deldirqq_, "new"), no_unrecorded(ENOTEMPTY));
  EXPECT_EQ(call(deldirqq_, "new/masked  "), yes());
  EXPECT_EQ(call(deldirqq_, "new"), yes());
  EXPECT_FALSE(std::filesystem::exists("new"));
}

TEST_F(CompatDirectories, FailuresOfChanging) {
  directory.file("file");
  EXPECT_EQ(call(changedirqq_, "none"), no(ENOENT));
  EXPECT_EQ(call(changedirqq_, "file"), no(ENOTDIR));
  EXPECT_EQ(call(changedirqq_, ""), no(ENOENT));
  EXPECT_EQ(call(changedirqq_, "   "), no(ENOENT));
  EXPECT_EQ(call(changedirqq_, std::string(300, 'n')), no(ENAMETOOLONG));
  EXPECT_EQ(call(changedirqq_, path_of_length("", 5000)), no(ENAMETOOLONG));
  EXPECT_EQ(outcome_of([] { return changedirqq_(nullptr, 4); }), no_address());
  EXPECT_EQ(current_directory(), here);
}

// Only the conversion itself records.
TEST_F(CompatDirectories, FailuresOfMakingAndRemovingAreNotRecorded) {
  directory.file("file");
  EXPECT_EQ(call(makedirqq_, "file"), no_unrecorded(EEXIST));
  EXPECT_EQ(call(makedirqq_, "none/new"), no_unrecorded(ENOENT));
  EXPECT_EQ(call(makedirqq_, " "), no_unrecorded(ENOENT));
  EXPECT_EQ(call(deldirqq_, "file"), no_unrecorded(ENOTDIR));
  EXPECT_EQ(call(deldirqq_, "none"), no_unrecorded(ENOENT));
  EXPECT_EQ(call(deldirqq_, ""), no_unrecorded(ENOENT));
  EXPECT_EQ(outcome_of([] { return makedirqq_(nullptr, 4); }), no(EINVAL));
  EXPECT_EQ(outcome_of([] { return deldirqq_(nullptr, 4); }), no(EINVAL));
}

TEST_F(CompatDirectories, Renaming) {
  directory.file("old", "contents");
  directory.file("there", "goes");
  EXPECT_EQ(rename_file("old  ", "there   "), yes());
  EXPECT_FALSE(std::filesystem::exists("old"));
  EXPECT_EQ(std::filesystem::file_size("there"), 8u);
  std::filesystem::create_directory("sub");
  EXPECT_EQ(rename_file("there", "sub/name with blanks"), yes());
  EXPECT_TRUE(std::filesystem::exists("sub/name with blanks"));
  EXPECT_EQ(rename_file("none", "new"), no(ENOENT));
  directory.file("plain");
  EXPECT_EQ(rename_file("plain", "sub"), no(EISDIR));
  EXPECT_EQ(rename_file("sub", "sub/sub"), no(EINVAL));
  EXPECT_EQ(rename_file("", "new"), no(ENOENT));
  EXPECT_EQ(outcome_of([] { return renamefileqq_(nullptr, "x", 1, 1); }), no_address());
  EXPECT_EQ(outcome_of([] { return renamefileqq_("sub", nullptr, 3, 1); }), no_address());
  EXPECT_TRUE(std::filesystem::exists("sub"));
}

Outcome drive_directory(Character &variable) {
  return outcome_of([&] { return getdrivedirqq_(variable.data(), variable.length()); });
}

TEST_F(CompatDirectories, CurrentDirectoryOfTheOneDrive) {
  const auto length = static_cast<int32_t>(here.size());
  for (const char mark : {' ', '\0'}) {
    std::string start(here.size() + 10, '#');
    start[0] = mark;
    Character variable(start);
    EXPECT_EQ(drive_directory(variable), (Outcome{length, untouched()}));
    EXPECT_EQ(variable.text(), padded(here, here.size() + 10));
  }
  Character fits(padded("", here.size()));
  EXPECT_EQ(drive_directory(fits), (Outcome{length, untouched()}));
  EXPECT_EQ(fits.text(), here);
  Character large(padded("", 5000));
  EXPECT_EQ(drive_directory(large), (Outcome{length, untouched()}));
  EXPECT_EQ(large.text(), padded(here, 5000));
  char beside = ' ';  // of a variable without characters
  for (const qxport_charlen none : {0, -1})
    EXPECT_EQ(outcome_of([&] { return getdrivedirqq_(&beside, none); }), succeeded());
  EXPECT_EQ(beside, ' ');
}

TEST_F(CompatDirectories, NoOtherDriveIsThere) {
  for (const char *text : {"c:", "C", "x             ", "/", "1 "}) {
    Character variable{std::string(text)};
    EXPECT_EQ(drive_directory(variable), succeeded()) << text;
    EXPECT_EQ(variable.text(), text);
  }
  Character empty("");
  EXPECT_EQ(drive_directory(empty), succeeded());
}

TEST_F(CompatDirectories, CurrentDirectoryThatDoesNotFitIsNotTold) {
  for (const size_t size : {here.size() - 1, size_t{2}}) {
    Character variable(padded("", size));
    EXPECT_EQ(drive_directory(variable), no_unrecorded(ERANGE)) << size;
    EXPECT_EQ(variable.text(), padded("", size));
  }
  Character marked(std::string(1, '\0') + "#");
  EXPECT_EQ(drive_directory(marked), no_unrecorded(ERANGE));
  EXPECT_EQ(marked.text(), std::string(1, '\0') + "#");
}

TEST_F(CompatDirectories, RemovedCurrentDirectoryIsNotTold) {
  std::filesystem::create_directory("gone");
  const WorkingDirectory gone("gone");
  std::filesystem::remove(here + "/gone");
  Character variable(padded(" #", 2000));
  EXPECT_EQ(drive_directory(variable), no_unrecorded(ENOENT));
  EXPECT_EQ(variable.text(), padded(" #", 2000));
}

// Of whatever name, up to 1023 characters.
TEST_F(CompatDirectories, LongestCurrentDirectory) {
  for (const size_t length : {1023, 1024}) {
    const std::string path = path_of_length(here, length);
    std::filesystem::create_directories(path);
    const WorkingDirectory deep(path);
    Character variable(padded("", 3000));
    EXPECT_EQ(drive_directory(variable),
              length == 1023 ? Outcome({1023, untouched()}) : no_unrecorded(ERANGE));
    EXPECT_EQ(variable.text(), padded(length == 1023 ? path : "", 3000));
  }
}

TEST_F(CompatDirectories, ThereAreNoDrives) {
  for (const char *drive : {"c", "", " ", "abcdef"}) {
    const auto length = static_cast<qxport_charlen>(strlen(drive));
    EXPECT_EQ(outcome_of([&] { return changedriveqq_(drive, length); }), succeeded());
    int32_t total = SENTINEL, avail = SENTINEL;
    EXPECT_EQ(outcome_of([&] { return getdrivesizeqq_(drive, &total, &avail, length); }), succeeded());
    EXPECT_EQ(total, SENTINEL);
    EXPECT_EQ(avail, SENTINEL);
    int64_t long_total = SENTINEL, long_avail = SENTINEL;
    EXPECT_EQ(outcome_of([&] { return getdrivesizeqqi8_(drive, &long_total, &long_avail, length); }),
              succeeded());
    EXPECT_EQ(long_total, SENTINEL);
    EXPECT_EQ(long_avail, SENTINEL);
  }
  EXPECT_EQ(outcome_of([] { return changedriveqq_(nullptr, 0); }), succeeded());
  EXPECT_EQ(outcome_of([] { return getdrivesizeqq_(nullptr, nullptr, nullptr, 0); }), succeeded());
  EXPECT_EQ(outcome_of([] { return getdrivesizeqqi8_(nullptr, nullptr, nullptr, 0); }), succeeded());
  EXPECT_EQ(current_directory(), here);
  for (const size_t size : {0, 1, 26, 100}) {
    Character drives(size);
    EXPECT_EQ(state_after([&] { getdrivesqq_(drives.data(), drives.length()); }), untouched());
    EXPECT_EQ(drives.text(), padded("", size));
  }
}

}  // namespace
