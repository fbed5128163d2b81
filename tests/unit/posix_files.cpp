// PXFACCESS, PXFCHMOD, PXFCHOWN, PXFLINK, PXFMKFIFO, PXFRENAME, PXFUNLINK, PXFUTIME and PXFPATHCONF
// against the host's own calls.
#include "ordinary_user.h"
#include "posix_calls.h"

#include <ctime>
#include <fcntl.h>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>
#include <utime.h>

namespace {

using qxport::UtimbufRecord;

struct stat status_of(const std::string &name) {
  struct stat status = {};
  EXPECT_EQ(lstat(name.c_str(), &status), 0) << name;
  return status;
}

bool exists(const std::string &name) {
  struct stat status;
  return lstat(name.c_str(), &status) == 0;
}

class Files : public testing::Test {
protected:
  Files() {
    chmod(directory_.path().c_str(), 0777);
    EXPECT_EQ(symlink("loop", "loop"), 0);
    EXPECT_EQ(symlink("nowhere", "dangling"), 0);
    EXPECT_EQ(mkdir("below", 0755), 0);
    EXPECT_EQ(mkdir("closed", 0700), 0);
    std::ofstream("closed/file") << "x";
  }

  const TemporaryDirectory directory_;
  const std::string file_ = directory_.file("file", "text", 0640);
  const WorkingDirectory working_{directory_.path()};
};

using Access = Files;
using Chmod = Files;
using Chown = Files;
using Link = Files;
using Mkfifo = Files;
using Rename = Files;
using Unlink = Files;
using Utime = Files;
using Pathconf = Files;

// Names on which every call fails, for a reason each.
const std::string NO_FILES[] = {"missing",    "missing/below",  "file/below",          "loop",
                                "loop/below", "dangling/below", std::string(300, 'n'), std::string(5000, 'p'),
                                " ",          "file\t!"};

TEST_F(Access, AgreesWithTheHostOnEveryMode) {
  const auto check = [] {
    for (const std::string name : {"file", "below", "closed", "closed/file", "dangling", "/dev/null"})
      for (int32_t mode = -1; mode <= 8; ++mode)
        EXPECT_EQ(call_named(pxfaccess_, name, 0, mode),
                  as_the_host([&] { return access(name.c_str(), mode); }))
            << name << ' ' << mode;
  };
  check();
  as_ordinary_user(check);
}

TEST_F(Access, FailuresAreTheHosts) {
  for (const std::string &name : NO_FILES)
    EXPECT_EQ(call_named(pxfaccess_, name, 0, F_OK), as_the_host([&] { return access(name.c_str(), F_OK); }))
        << name;
  EXPECT_EQ(call_named(pxfaccess_, "missing", 0, F_OK), failed_with(ENOENT));
  EXPECT_EQ(call_named(pxfaccess_, "", 0, F_OK), failed_with(ENOENT));
}

TEST_F(Chmod, GivesTheModeThatTheHostGives) {
  directory_.file("twin");
  for (const int32_t mode : {0, 0400, 0644, 0777, 04755, 07777, 0100644, 0177777, -1}) {
    EXPECT_EQ(call_named(pxfchmod_, "file  ", 0, mode), succeeded());
    ASSERT_EQ(chmod("twin", static_cast<mode_t>(mode)), 0);
    EXPECT_EQ(status_of("file").st_mode, status_of("twin").st_mode) << mode;
  }
}

TEST_F(Chmod, FailuresAreTheHosts) {
  const auto check = [](const std::string &name) {
    EXPECT_EQ(call_named(pxfchmod_, name, 0, 0600), as_the_host([&] { return chmod(name.c_str(), 0600); }))
        << name;
  };
  for (const std::string &name : NO_FILES)
    check(name);
  if (geteuid() == 0)
    as_ordinary_user([&] {
      EXPECT_EQ(call_named(pxfchmod_, "file", 0, 0600), failed_with(EPERM));
      EXPECT_EQ(call_named(pxfchmod_, "closed/file", 0, 0600), failed_with(EACCES));
    });
  check("/proc/self/status");
}

TEST_F(Chown, GivesTheOwnerThatTheHostGives) {
  directory_.file("twin");
  const auto owners = [](const std::string &name) {
    return std::pair(status_of(name).st_uid, status_of(name).st_gid);
  };
  for (const auto &[owner, group] : {std::pair(-1, -1), {1, 2}, {-1, 7}, {9, -1}, {-2, -2}, {0, 0}}) {
    EXPECT_EQ(call_named(pxfchown_, "file ", 0, owner, group), as_the_host([owner = owner, group = group] {
                return chown("twin", static_cast<uid_t>(owner), static_cast<gid_t>(group));
              }));
    EXPECT_EQ(owners("file"), owners("twin")) << owner << ' ' << group;
  }
}

TEST_F(Chown, FailuresAreTheHosts) {
  for (const std::string &name : NO_FILES)
    EXPECT_EQ(call_named(pxfchown_, name, 0, -1, -1), as_the_host([&] {
                return chown(name.c_str(), static_cast<uid_t>(-1), static_cast<gid_t>(-1));
              }))
        << name;
  as_ordinary_user(
      [] { EXPECT_EQ(call_named(pxfchown_, "file", 0, 0, 0).answer, geteuid() == 0 ? 0 : EPERM); });
}

TEST_F(Mkfifo, MakesWhatTheHostMakes) {
  const mode_t former = umask(027);
  for (const int32_t mode : {0666, 0600, 0, 0777, 010666}) {
    EXPECT_EQ(call_named(pxfmkfifo_, "fifo ", 0, mode), succeeded());
    ASSERT_EQ(mkfifo("twin", static_cast<mode_t>(mode)), 0);
    EXPECT_TRUE(S_ISFIFO(status_of("fifo").st_mode));
    EXPECT_EQ(status_of("fifo").st_mode, status_of("twin").st_mode);
    unlink("fifo");
    unlink("twin");
  }
  umask(former);
}

TEST_F(Mkfifo, NameEndsWhereItsLengthSays) {
  EXPECT_EQ(call_named(pxfmkfifo_, "fifo-and-more", 4, 0600), succeeded());
  EXPECT_TRUE(exists("fifo"));
  EXPECT_FALSE(exists("fifo-and-more"));
}

TEST_F(Mkfifo, FailuresAreTheHosts) {
  for (const std::string name : {"file", "below", "loop", "missing/fifo", "file/fifo", ""})
    EXPECT_EQ(call_named(pxfmkfifo_, name, 0, 0600), as_the_host([&] { return mkfifo(name.c_str(), 0600); }))
        << name;
  EXPECT_EQ(call_named(pxfmkfifo_, "file", 0, 0600), failed_with(EEXIST));
}

TEST_F(Link, GivesTheFileASecondName) {
  EXPECT_EQ(call_named_twice(pxflink_, "file  ", 0, "second   ", 0), succeeded());
  EXPECT_EQ(status_of("second").st_ino, status_of("file").st_ino);
  EXPECT_EQ(status_of("file").st_nlink, 2u);
}

TEST_F(Link, EachNameHasALengthOfItsOwn) {
  EXPECT_EQ(call_named_twice(pxflink_, "fileXYZ", 4, "secondXYZ", 6), succeeded());
  EXPECT_EQ(status_of("second").st_ino, status_of("file").st_ino);
  EXPECT_EQ(call_named_twice(pxflink_, "file\t", 0, "thirdXYZ", 5), succeeded());
  EXPECT_TRUE(exists("third"));
}

TEST_F(Link, FailuresAreTheHosts) {
  const std::pair<std::string, std::string> pairs[] = {
      {"missing", "new"}, {"file", "below"}, {"file", "file"}, {"below", "new"},     {"file", "file/new"},
      {"loop/x", "new"},  {"file", ""},      {"", "new"},      {"file", "/proc/new"}};
  for (const auto &[first, second] : pairs)
    EXPECT_EQ(call_named_twice(pxflink_, first, 0, second, 0),
              as_the_host([first = first, second = second] { return link(first.c_str(), second.c_str()); }))
        << first << ' ' << second;
  EXPECT_EQ(call_named_twice(pxflink_, "file", 0, "below", 0), failed_with(EEXIST));
}

TEST_F(Link, NegativeLengthOfEitherIs22) {
  EXPECT_EQ(call_named_twice(pxflink_, "file", -1, "new", 0), failed_with(EINVAL));
  EXPECT_EQ(call_named_twice(pxflink_, "file", 0, "new", -1), failed_with(EINVAL));
  EXPECT_FALSE(exists("new"));
}

TEST_F(Rename, MovesAndReplaces) {
  const ino_t file = status_of("file").st_ino;
  EXPECT_EQ(call_named_twice(pxfrename_, "file ", 0, "moved ", 0), succeeded());
  EXPECT_FALSE(exists("file"));
  EXPECT_EQ(status_of("moved").st_ino, file);
  directory_.file("other");
  EXPECT_EQ(call_named_twice(pxfrename_, "movedXYZ", 5, "otherXYZ", 5), succeeded());
  EXPECT_EQ(status_of("other").st_ino, file);
}

TEST_F(Rename, FailuresAreTheHosts) {
  const std::pair<std::string, std::string> pairs[] = {
      {"missing", "new"}, {"file", "below"}, {"below", "file"}, {"below", "below/x"}, {"file", "file/x"},
      {"", "new"},        {"file", ""},      {"loop/x", "new"}, {"file", "/proc/new"}};
  for (const auto &[first, second] : pairs)
    EXPECT_EQ(call_named_twice(pxfrename_, first, 0, second, 0),
              as_the_host([first = first, second = second] { return rename(first.c_str(), second.c_str()); }))
        << first << ' ' << second;
  EXPECT_EQ(call_named_twice(pxfrename_, "file", 0, "below", 0), failed_with(EISDIR));
  EXPECT_TRUE(exists("file"));
}

TEST_F(Rename, NegativeLengthOfEitherIs22) {
  EXPECT_EQ(call_named_twice(pxfrename_, "file", -1, "new", 0), failed_with(EINVAL));
  EXPECT_EQ(call_named_twice(pxfrename_, "file", 0, "new", INT32_MIN), failed_with(EINVAL));
  EXPECT_TRUE(exists("file"));
}

TEST_F(Unlink, RemovesALinkAndNotWhatItPointsTo) {
  EXPECT_EQ(call_named(pxfunlink_, "dangling  ", 0), succeeded());
  EXPECT_FALSE(exists("dangling"));
  EXPECT_EQ(call_named(pxfunlink_, "fileXYZ", 4), succeeded());
  EXPECT_FALSE(exists("file"));
}

TEST_F(Unlink, FailuresAreTheHosts) {
  for (const std::string &name : NO_FILES) {
    if (name == "loop")
      continue;
    EXPECT_EQ(call_named(pxfunlink_, name, 0), as_the_host([&] { return unlink(name.c_str()); })) << name;
  }
  EXPECT_EQ(call_named(pxfunlink_, "below", 0), as_the_host([] { return unlink("below"); }));
}

// The rule of names on the real file system.
TEST_F(Unlink, AllBlanksNameTheFileOfOneBlank) {
  directory_.file(" ");
  directory_.file("  ");
  EXPECT_EQ(call_named(pxfunlink_, "      ", 0), succeeded());
  EXPECT_FALSE(exists(" "));
  EXPECT_TRUE(exists("  "));
}

TEST_F(Unlink, ExactLengthKeepsBlanks) {
  directory_.file("file ");
  EXPECT_EQ(call_named(pxfunlink_, "file      ", 5), succeeded());
  EXPECT_FALSE(exists("file "));
  EXPECT_TRUE(exists("file"));
}

TEST_F(Utime, SetsBothTimes) {
  const OwnedRecord times("utimbuf");
  for (const int64_t second :
       {int64_t{0}, int64_t{1}, int64_t{1000000000}, int64_t{-1}, int64_t{5000000000}}) {
    record_as<UtimbufRecord>(times).actime = second;
    record_as<UtimbufRecord>(times).modtime = second + 77;
    EXPECT_EQ(call_named(pxfutime_, "file", 0, times), succeeded());
    EXPECT_EQ(status_of("file").st_atime, second);
    EXPECT_EQ(status_of("file").st_mtime, second + 77);
  }
  EXPECT_EQ(record_as<UtimbufRecord>(times).actime, 5000000000);
}

TEST_F(Utime, OfHandle0IsNow) {
  const utimbuf past = {1, 2};
  ASSERT_EQ(utime("file", &past), 0);
  const time_t before = time(nullptr);
  EXPECT_EQ(call_named(pxfutime_, "file", 0, 0), succeeded());
  EXPECT_GE(status_of("file").st_atime, before - 1);
  EXPECT_GE(status_of("file").st_mtime, before - 1);
  EXPECT_LE(status_of("file").st_mtime, time(nullptr) + 1);
}

// A null record is more than one that holds the current time: whoever may write may give that one.
TEST_F(Utime, OfHandle0IsAllowedToWhoMayWrite) {
  directory_.file("shared", "", 0666);
  const OwnedRecord times("utimbuf");
  as_ordinary_user([&] {
    EXPECT_EQ(call_named(pxfutime_, "shared", 0, 0), succeeded());
    EXPECT_EQ(call_named(pxfutime_, "shared", 0, times),
              status_of("shared").st_uid == geteuid() ? succeeded() : failed_with(EPERM));
  });
}

TEST_F(Utime, OfMyFileTouchesMy) {
  for (const std::string name : {"my", "my file", "file"}) {
    directory_.file(name);
    const utimbuf past = {1, 2};
    ASSERT_EQ(utime(name.c_str(), &past), 0);
  }
  EXPECT_EQ(call_named(pxfutime_, "my file", 0, 0), succeeded());
  EXPECT_GT(status_of("my").st_mtime, 2);
  EXPECT_EQ(status_of("my file").st_mtime, 2);
  EXPECT_EQ(status_of("file").st_mtime, 2);
}

TEST_F(Utime, IgnoresTheLength) {
  for (const int32_t ilen : {0, 1, 4, -1, 100, INT32_MAX, INT32_MIN})
    EXPECT_EQ(call_named(pxfutime_, "file", ilen, 0), succeeded()) << ilen;
}

TEST_F(Utime, LeadingBlankIsNoName) {
  EXPECT_EQ(call_named(pxfutime_, " file", 0, 0), failed_with(ENOENT));
  EXPECT_EQ(call_named(pxfutime_, "", 0, 0), failed_with(ENOENT));
  EXPECT_EQ(call_named(pxfutime_, "    ", 2, 0), failed_with(ENOENT));
}

TEST_F(Utime, OtherWhiteSpaceIsPartOfTheName) {
  directory_.file("file\t");
  const utimbuf past = {1, 2};
  ASSERT_EQ(utime("file", &past), 0);
  EXPECT_EQ(call_named(pxfutime_, "file\t ", 0, 0), succeeded());
  EXPECT_EQ(status_of("file").st_mtime, 2);
}

TEST_F(Utime, FailuresAreTheHosts) {
  const OwnedRecord times("utimbuf");
  fill_record(times);
  const Contents before = contents_of(times);
  for (const std::string &name : NO_FILES) {
    if (name == " ")
      continue;
    EXPECT_EQ(call_named(pxfutime_, name, 0, times),
              as_the_host([&] { return utime(name.c_str(), nullptr); }))
        << name;
  }
  EXPECT_EQ(contents_of(times), before);
}

TEST_F(Utime, ChecksTheHandleBeforeTheName) {
  for (const std::string name : {"file", "missing", ""}) {
    const auto call_with = [&](int32_t handle) { return call_named(pxfutime_, name, 0, handle); };
    expect_unknown_handles_refused(call_with, false);
    expect_other_kinds_refused("utimbuf", call_with);
  }
}

TEST_F(Pathconf, AgreesWithTheHostOnEveryName) {
  for (const std::string file : {"file", "below", "/", "/dev/null", "missing", "loop"})
    for (int32_t name = -2; name < 40; ++name) {
      errno = ERRNO_SENTINEL;
      const long value = pathconf(file.c_str(), name);
      const int error = errno;
      Guarded<int32_t> ival(SENTINEL);
      // "No limit" is a -1 too, with errno as it was before; and a success may leave a number there.
      EXPECT_EQ(call_named(pxfpathconf_, file, 0, name, &ival),
                (Outcome{static_cast<int32_t>(value) == -1 ? error : 0, {error, SENTINEL, {}}}))
          << file << ' ' << name;
      EXPECT_EQ(ival, static_cast<int32_t>(value)) << file << ' ' << name;
    }
}

TEST_F(Pathconf, WithoutALimitReportsWhatErrnoHeld) {
  int32_t ival = SENTINEL, ierror = SENTINEL;
  const int32_t ilen = 0, name = _PC_SYMLINK_MAX;
  errno = 0;
  ASSERT_EQ(pathconf("file", name), -1);
  ASSERT_EQ(errno, 0);
  pxfpathconf_("file", &ilen, &name, &ival, &ierror, 4);
  EXPECT_EQ(ival, -1);
  EXPECT_EQ(ierror, 0);
  errno = EXDEV;
  pxfpathconf_("file", &ilen, &name, &ival, &ierror, 4);
  EXPECT_EQ(ierror, EXDEV);
}

TEST_F(Pathconf, LengthOutsideTheVariableIs22) {
  for (const int32_t ilen : {-1, INT32_MIN, 5, INT32_MAX})
    for (const std::string name : {"file", "miss"}) {
      Guarded<int32_t> ival(SENTINEL);
      EXPECT_EQ(call_named(pxfpathconf_, name, ilen, _PC_LINK_MAX, &ival), failed_with(EINVAL)) << ilen;
      EXPECT_EQ(ival, SENTINEL);
    }
}

TEST_F(Pathconf, LengthWithinTheVariableIsExact) {
  Guarded<int32_t> ival(SENTINEL);
  EXPECT_EQ(call_named(pxfpathconf_, "file", 4, _PC_NAME_MAX, &ival), succeeded());
  EXPECT_EQ(call_named(pxfpathconf_, "file  ", 4, _PC_NAME_MAX, &ival), succeeded());
  EXPECT_EQ(call_named(pxfpathconf_, "file \t", 0, _PC_NAME_MAX, &ival), succeeded());
  EXPECT_EQ(ival, pathconf("file", _PC_NAME_MAX));
}

}  // namespace
