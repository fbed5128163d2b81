// The STAT family on real files and units.
#include "contract/services.h"
#include "ordinary_user.h"
#include "outcome.h"
#include "paths.h"
#include "status_array.h"

#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace {

template <typename Integer>
using NamedRoutine = int32_t (*)(const char *, Integer *, qxport_charlen);
template <typename Integer>
using UnitRoutine = int32_t (*)(const int32_t *, Integer *);

template <typename Integer>
Outcome status_of(NamedRoutine<Integer> routine, const std::string &name, StatusArray<Integer> &statb) {
  Character argument(name);
  const Outcome outcome =
      outcome_of([&] { return routine(argument.data(), statb.data(), argument.length()); });
  EXPECT_EQ(argument.text(), name);
  return outcome;
}

template <typename Integer>
Outcome status_of(UnitRoutine<Integer> routine, int32_t unit, StatusArray<Integer> &statb) {
  return outcome_of([&] { return routine(&unit, statb.data()); });
}

// The elements that describe a file, with low-order bits where the array's kind has no room for more.
template <typename Integer>
std::array<Integer, 13> elements_of(const struct stat &status) {
  const auto element = [](auto value) { return static_cast<Integer>(value); };
  return {element(status.st_dev),      element(status.st_ino),   element(status.st_mode),
          element(status.st_nlink),    element(status.st_uid),   element(status.st_gid),
          element(status.st_rdev),     element(status.st_size),  element(status.st_atime),
          element(status.st_mtime),    element(status.st_ctime), element(status.st_blksize),
          StatusArray<Integer>::FORMER};
}

struct stat host_status(const std::string &path, int flags = 0) {
  struct stat status = {};
  EXPECT_EQ(fstatat(AT_FDCWD, path.c_str(), &status, flags), 0) << path;
  return status;
}

template <typename Integer>
void expect_status(NamedRoutine<Integer> routine, const std::string &path, int flags) {
  StatusArray<Integer> statb;
  EXPECT_EQ(status_of(routine, path, statb), succeeded()) << path;
  EXPECT_EQ(statb.elements(), elements_of<Integer>(host_status(path, flags))) << path;
}

// By all four routines.
void expect_status(const std::string &path) {
  expect_status<int32_t>(stat_, path, 0);
  expect_status<int64_t>(stati8_, path, 0);
  expect_status<int32_t>(lstat_, path, AT_SYMLINK_NOFOLLOW);
  expect_status<int64_t>(lstati8_, path, AT_SYMLINK_NOFOLLOW);
}

template <typename Integer>
void expect_failure(NamedRoutine<Integer> routine, const std::string &name, const Outcome &expected) {
  StatusArray<Integer> statb;
  EXPECT_EQ(status_of(routine, name, statb), expected) << name;
  EXPECT_EQ(statb.elements(), StatusArray<Integer>::former()) << name;
}

void expect_failure(const std::string &name, int32_t error) {
  expect_failure<int32_t>(stat_, name, reported(error));
  expect_failure<int64_t>(stati8_, name, reported(error));
  expect_failure<int32_t>(lstat_, name, reported(error));
  expect_failure<int64_t>(lstati8_, name, reported(error));
}

void set_size(const std::string &path, int64_t size) {
  ASSERT_EQ(truncate(path.c_str(), size), 0);
}

TEST(Stat, DescribesAFile) {
  const TemporaryDirectory directory;
  const std::string file = directory.file("file", "ten bytes!", 0640);
  expect_status(file);
  StatusArray<int32_t> statb;
  ASSERT_EQ(status_of<int32_t>(stat_, file, statb), succeeded());
  EXPECT_EQ(statb.elements()[2], 0100640);
  EXPECT_EQ(statb.elements()[3], 1);
  EXPECT_EQ(statb.elements()[6], 0);
  EXPECT_EQ(statb.elements()[7], 10);
}

TEST(Stat, DescribesEveryKindOfFile) {
  const TemporaryDirectory directory;
  ASSERT_EQ(mkfifo((directory / "fifo").c_str(), 0600), 0);
  expect_status(directory / "fifo");
  expect_status(directory.path());
  expect_status("/");
  expect_status(".");
}

TEST(Stat, DeviceHasItsNumber) {
  expect_status("/dev/null");
  StatusArray<int32_t> statb;
  ASSERT_EQ(status_of<int32_t>(stat_, "/dev/null", statb), succeeded());
  EXPECT_EQ(statb.elements()[2] & S_IFMT, S_IFCHR);
  EXPECT_EQ(statb.elements()[6], static_cast<int32_t>(makedev(1, 3)));
}

TEST(Stat, LinksAreCounted) {
  const TemporaryDirectory directory;
  const std::string file = directory.file("file");
  ASSERT_EQ(link(file.c_str(), (directory / "second").c_str()), 0);
  expect_status(file);
  StatusArray<int64_t> statb;
  ASSERT_EQ(status_of<int64_t>(stati8_, file, statb), succeeded());
  EXPECT_EQ(statb.elements()[3], 2);
}

TEST(Stat, TimesAreWholeSeconds) {
  const TemporaryDirectory directory;
  const std::string file = directory.file("file");
  const timespec times[] = {{1000000000, 999999999}, {-86400, 500000000}};
  ASSERT_EQ(utimensat(AT_FDCWD, file.c_str(), times, 0), 0);
  expect_status(file);
  StatusArray<int32_t> statb;
  ASSERT_EQ(status_of<int32_t>(stat_, file, statb), succeeded());
  EXPECT_EQ(statb.elements()[8], 1000000000);
  EXPECT_EQ(statb.elements()[9], -86400);
  EXPECT_NEAR(statb.elements()[10], static_cast<int32_t>(time(nullptr)), 60);
}

TEST(Stat, OwnersMayHaveLargeNumbers) {
  const TemporaryDirectory directory;
  const std::string file = directory.file("file");
  if (geteuid() == 0) {
    ASSERT_EQ(chown(file.c_str(), 4294967294u, 4294967293u), 0);
  }
  expect_status(file);
}

TEST(Stat, LinkIsFollowedAndByLstatDescribed) {
  const TemporaryDirectory directory;
  directory.file("target", "1234567");
  ASSERT_EQ(symlink("target", (directory / "link").c_str()), 0);
  expect_status(directory / "link");
  StatusArray<int32_t> target, link;
  ASSERT_EQ(status_of<int32_t>(stat_, directory / "link", target), succeeded());
  ASSERT_EQ(status_of<int32_t>(lstat_, directory / "link", link), succeeded());
  EXPECT_EQ(target.elements()[2] & S_IFMT, S_IFREG);
  EXPECT_EQ(target.elements()[7], 7);
  EXPECT_EQ(link.elements()[2] & S_IFMT, S_IFLNK);
  EXPECT_EQ(link.elements()[7], 6);
}

TEST(Stat, DanglingLinkIsMissingButForLstat) {
  const TemporaryDirectory directory;
  const std::string link = directory / "link";
  ASSERT_EQ(symlink("nowhere", link.c_str()), 0);
  expect_failure<int32_t>(stat_, link, reported(ENOENT));
  expect_failure<int64_t>(stati8_, link, reported(ENOENT));
  expect_status<int32_t>(lstat_, link, AT_SYMLINK_NOFOLLOW);
  expect_status<int64_t>(lstati8_, link, AT_SYMLINK_NOFOLLOW);
}

TEST(Stat, LargestSizeOf31BitsIsNoError) {
  const TemporaryDirectory directory;
  const std::string file = directory.file("sparse");
  set_size(file, INT32_MAX);
  expect_status(file);
  StatusArray<int32_t> statb;
  EXPECT_EQ(status_of<int32_t>(stat_, file, statb), succeeded());
  EXPECT_EQ(statb.elements()[7], INT32_MAX);
}

TEST(Stat, LargerSizeIs34WithAllElseFilled) {
  const TemporaryDirectory directory;
  const std::string file = directory.file("sparse");
  for (const int64_t size :
       {int64_t{INT32_MAX} + 1, int64_t{3} << 30, int64_t{1} << 32, (int64_t{1} << 32) + 5}) {
    set_size(file, size);
    for (const NamedRoutine<int32_t> routine : {stat_, lstat_}) {
      StatusArray<int32_t> statb;
      EXPECT_EQ(status_of(routine, file, statb), reported(ERANGE)) << size;
      std::array<int32_t, 13> expected = elements_of<int32_t>(host_status(file));
      expected[7] = -1;
      EXPECT_EQ(statb.elements(), expected) << size;
    }
    for (const NamedRoutine<int64_t> routine : {stati8_, lstati8_}) {
      StatusArray<int64_t> statb;
      EXPECT_EQ(status_of(routine, file, statb), succeeded()) << size;
      EXPECT_EQ(statb.elements(), elements_of<int64_t>(host_status(file))) << size;
      EXPECT_EQ(statb.elements()[7], size);
    }
  }
}

TEST(Stat, FailureLeavesTheArray) {
  const TemporaryDirectory directory;
  const std::string file = directory.file("file");
  expect_failure(directory / "missing", ENOENT);
  expect_failure(file + "/below", ENOTDIR);
  expect_failure(directory / std::string(256, 'n'), ENAMETOOLONG);
  expect_failure(std::string(100000, 'n'), ENAMETOOLONG);
  expect_failure("", ENOENT);
  expect_failure("     ", ENOENT);
}

TEST(Stat, LoopOfLinksIsEloopBelow) {
  const TemporaryDirectory directory;
  ASSERT_EQ(symlink("second", (directory / "first").c_str()), 0);
  ASSERT_EQ(symlink("first", (directory / "second").c_str()), 0);
  expect_failure(directory / "first/file", ELOOP);
}

TEST(Stat, DeniedSearchIsEacces) {
  const TemporaryDirectory directory;
  ASSERT_EQ(chmod(directory.path().c_str(), 0755), 0);
  ASSERT_EQ(mkdir((directory / "locked").c_str(), 0), 0);
  as_ordinary_user([&] { expect_failure(directory / "locked/file", EACCES); });
  ASSERT_EQ(chmod((directory / "locked").c_str(), 0755), 0);
}

template <typename Integer>
void expect_null_name_refused(NamedRoutine<Integer> routine) {
  StatusArray<Integer> statb;
  EXPECT_EQ(outcome_of([&] { return routine(nullptr, statb.data(), 4); }),
            (Outcome{ENOMEM, {ENOMEM, ENOMEM, {EINVAL, ENOMEM}}}));
  EXPECT_EQ(statb.elements(), StatusArray<Integer>::former());
}

TEST(Stat, NullNameIs12InErrnoToo) {
  expect_null_name_refused<int32_t>(stat_);
  expect_null_name_refused<int32_t>(lstat_);
  expect_null_name_refused<int64_t>(stati8_);
  expect_null_name_refused<int64_t>(lstati8_);
}

TEST(Stat, NegativeLengthIsABlankName) {
  StatusArray<int32_t> statb;
  EXPECT_EQ(outcome_of([&] { return stat_("/", statb.data(), -1); }), reported(ENOENT));
  EXPECT_EQ(statb.elements(), StatusArray<int32_t>::former());
}

TEST(Stat, NameIsTakenAsItIsButForTrailingBlanks) {
  const TemporaryDirectory directory;
  const WorkingDirectory working(directory.path());
  directory.file(" a \xff\xfe", "text");
  directory.file(std::string(255, 'n'), "text");
  for (const std::string &name :
       {padded(" a \xff\xfe", 600), std::string(" a \xff\xfe\0below", 12), std::string(255, 'n')}) {
    StatusArray<int32_t> statb;
    EXPECT_EQ(status_of<int32_t>(stat_, name, statb), succeeded());
    EXPECT_EQ(statb.elements()[7], 4);
  }
  expect_failure("a \xff\xfe", ENOENT);
}

TEST(Stat, PathMayBeLong) {
  const TemporaryDirectory directory;
  const std::string path = path_of_length(directory.path(), 1023);
  std::filesystem::create_directories(path);
  expect_status(path);
}

TEST(Stat, RemovedWorkingDirectoryIsStillDescribed) {
  const TemporaryDirectory directory;
  ASSERT_EQ(mkdir((directory / "gone").c_str(), 0755), 0);
  const WorkingDirectory working(directory / "gone");
  ASSERT_EQ(rmdir((directory / "gone").c_str()), 0);
  expect_status(".");
  expect_failure("file", ENOENT);
}

// A file connected to a unit of its own.
class Unit {
public:
  Unit(int32_t number, const std::string &path) : number_(number) {
    const int fd = open(path.c_str(), O_RDONLY);
    EXPECT_GE(fd, 0) << path;
    EXPECT_EQ(for_fdopen(fd, number, "r", 1), 0);
    close(fd);
  }
  ~Unit() { close(__msportlib_d_gethandle(number_, nullptr, nullptr)); }
  Unit(const Unit &) = delete;
  Unit &operator=(const Unit &) = delete;

  int32_t number() const { return number_; }

private:
  int32_t number_;
};

template <typename Integer>
void expect_unit_status(UnitRoutine<Integer> routine, int32_t unit, const struct stat &status) {
  StatusArray<Integer> statb;
  EXPECT_EQ(status_of(routine, unit, statb), succeeded()) << unit;
  EXPECT_EQ(statb.elements(), elements_of<Integer>(status)) << unit;
}

void expect_unit_failure(int32_t unit, int32_t error) {
  StatusArray<int32_t> statb;
  EXPECT_EQ(status_of<int32_t>(fstat_, unit, statb), reported(error)) << unit;
  EXPECT_EQ(statb.elements(), StatusArray<int32_t>::former());
  StatusArray<int64_t> statb8;
  EXPECT_EQ(status_of<int64_t>(fstati8_, unit, statb8), reported(error)) << unit;
  EXPECT_EQ(statb8.elements(), StatusArray<int64_t>::former());
}

TEST(Fstat, DescribesTheFileOfAUnit) {
  const TemporaryDirectory directory;
  const std::string file = directory.file("file", "ten bytes!", 0640);
  for (const int32_t number : {1, 77, INT32_MAX}) {
    const Unit unit(number, file);
    expect_unit_status<int32_t>(fstat_, number, host_status(file));
    expect_unit_status<int64_t>(fstati8_, number, host_status(file));
  }
}

TEST(Fstat, DescribesADevice) {
  const Unit unit(20, "/dev/null");
  expect_unit_status<int32_t>(fstat_, 20, host_status("/dev/null"));
}

TEST(Fstat, Units5And6And0AreTheStandardStreams) {
  const int descriptors[][2] = {{5, STDIN_FILENO}, {6, STDOUT_FILENO}, {0, STDERR_FILENO}};
  for (const auto &[number, descriptor] : descriptors) {
    struct stat status;
    ASSERT_EQ(fstat(descriptor, &status), 0);
    expect_unit_status<int32_t>(fstat_, number, status);
    expect_unit_status<int64_t>(fstati8_, number, status);
  }
}

TEST(Fstat, LargeFileIs34WithAllElseFilled) {
  const TemporaryDirectory directory;
  const std::string file = directory.file("sparse");
  set_size(file, int64_t{3} << 30);
  const Unit unit(30, file);
  StatusArray<int32_t> statb;
  EXPECT_EQ(status_of<int32_t>(fstat_, 30, statb), reported(ERANGE));
  std::array<int32_t, 13> expected = elements_of<int32_t>(host_status(file));
  expected[7] = -1;
  EXPECT_EQ(statb.elements(), expected);
  expect_unit_status<int64_t>(fstati8_, 30, host_status(file));
}

TEST(Fstat, UnconnectedUnitIs22) {
  for (const int32_t number : {99, -1, 1000000, INT32_MIN + 1})
    expect_unit_failure(number, EINVAL);
}

TEST(Fstat, ClosedDescriptorIsEbadf) {
  { const Unit unit(40, "/dev/null"); }
  expect_unit_failure(40, EBADF);
}

}  // namespace
