// The provider without a Fortran run-time: its units are descriptors.
#include "recorder.h"

#include "contract/services.h"

#include <climits>
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

TEST(PosixProvider, TheStandardUnits) {
  EXPECT_EQ(__msportlib_d_gethandle(0, nullptr, nullptr), STDERR_FILENO);
  EXPECT_EQ(__msportlib_d_gethandle(5, nullptr, nullptr), STDIN_FILENO);
  EXPECT_EQ(__msportlib_d_gethandle(6, nullptr, nullptr), STDOUT_FILENO);
  for (const intptr_t unit : {1, 7, -1, INT_MAX, INT_MIN})
    EXPECT_EQ(__msportlib_d_gethandle(unit, nullptr, nullptr), -1);
}

int32_t descriptor_of(int32_t unit) {
  return __msportlib_d_gethandle(unit, nullptr, nullptr);
}

// A unit's descriptor is a duplicate: what it shares with the given one is the offset.
TEST(PosixProvider, FdopenEntersAndReplacesAUnit) {
  const TemporaryDirectory directory;
  const int first = open(directory.file("first", "1").c_str(), O_RDWR | O_CLOEXEC);
  const int second = open(directory.file("second", "234").c_str(), O_RDONLY | O_CLOEXEC);
  EXPECT_EQ(for_fdopen(first, 40, "r+", 2), 0);
  const int duplicate = descriptor_of(40);
  EXPECT_GE(duplicate, 0);
  EXPECT_NE(duplicate, first);
  EXPECT_EQ(fcntl(duplicate, F_GETFD), FD_CLOEXEC);
  EXPECT_EQ(__msportlib_d_readchar(40), '1');
  lseek(second, 1, SEEK_SET);
  EXPECT_EQ(for_fdopen(second, 40, "READ  ", 6), 0);
  EXPECT_EQ(__msportlib_d_readchar(40), '3');
  EXPECT_EQ(lseek(second, 0, SEEK_CUR), 2);
  close(second);
  EXPECT_EQ(__msportlib_d_readchar(40), '4');
  close(first);
  const int again = open("/dev/null", O_RDONLY | O_CLOEXEC);
  EXPECT_EQ(again, std::min({first, second, duplicate})) << "the former duplicate is not left open";
  close(again);
  close(descriptor_of(40));
}

TEST(PosixProvider, FdopenOfAUnitsOwnDescriptorChangesNothing) {
  const TemporaryDirectory directory;
  const int fd = open(directory.file("file", "ab").c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_EQ(for_fdopen(fd, 40, "r", 1), 0);
  const int own = descriptor_of(40);
  EXPECT_EQ(for_fdopen(own, 40, "r", 1), 0);
  EXPECT_EQ(descriptor_of(40), own);
  EXPECT_EQ(__msportlib_d_readchar(40), 'a');
  close(fd);
  close(own);
}

TEST(PosixProvider, AUnitMovesCharactersOneWayWhereItsAccessSaysSo) {
  const TemporaryDirectory directory;
  const int fd = open(directory.file("file", "ab").c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_EQ(for_fdopen(fd, 45, "r", 1), 0);
  EXPECT_EQ(__msportlib_d_writechar(45, 'x'), -EBADF);
  EXPECT_EQ(__msportlib_d_readchar(45), 'a');
  for (const std::string access : {"w", "a", "append"}) {
    ASSERT_EQ(for_fdopen(fd, 45, access.data(), static_cast<intptr_t>(access.size())), 0);
    EXPECT_EQ(__msportlib_d_readchar(45), -EBADF);
    EXPECT_EQ(__msportlib_d_writechar(45, 'x'), 0);
  }
  for (const std::string access : {"a+", "w+", "r+"}) {
    ASSERT_EQ(for_fdopen(fd, 45, access.data(), static_cast<intptr_t>(access.size())), 0);
    EXPECT_EQ(__msportlib_d_writechar(45, 'x'), 0);
    EXPECT_EQ(__msportlib_d_readchar(45), READ_END);
  }
  EXPECT_EQ(__msportlib_d_writechar(5, 'x'), -EBADF);
  EXPECT_EQ(__msportlib_d_readchar(6), -EBADF);
  EXPECT_EQ(__msportlib_d_readchar(0), -EBADF);
  close(descriptor_of(45));
  close(fd);
}

// Whoever gets the number of a unit's descriptor is not written to.
TEST(PosixProvider, AUnitWhoseDescriptorWasClosedIsNotConnected) {
  const TemporaryDirectory directory;
  const int fd = open(directory.file("file", "ab").c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_EQ(for_fdopen(fd, 46, "r+", 2), 0);
  const int own = descriptor_of(46);
  close(own);
  const int32_t unit = 46;
  for (const bool given_away : {false, true}) {
    if (given_away) {
      ASSERT_EQ(dup2(open(directory.file("other", "cd").c_str(), O_RDWR), own), own);
      EXPECT_EQ(descriptor_of(46), -1);
    }
    EXPECT_EQ(__msportlib_d_writechar(46, 'x'), -EBADF);
    EXPECT_EQ(__msportlib_d_readchar(46), -EBADF);
    EXPECT_EQ(__msportlib_d_fseek(46, 1, SEEK_SET), -EBADF);
    EXPECT_EQ(__msportlib_d_curpos(46), -EBADF);
    EXPECT_EQ(flushqq_(&unit), 0);
    EXPECT_EQ(commitqq_(&unit), 0);
  }
  EXPECT_EQ(lseek(own, 0, SEEK_CUR), 0);
  ASSERT_EQ(for_fdopen(fd, 46, "r+", 2), 0);
  EXPECT_EQ(lseek(own, 0, SEEK_CUR), 0) << "the other's descriptor is still open";
  EXPECT_EQ(__msportlib_d_readchar(46), 'a');
  close(own);
  close(descriptor_of(46));
  close(fd);
}

TEST(PosixProvider, FdopenChecksTheDescriptorAndTheAccess) {
  const int null = open("/dev/null", O_RDONLY | O_CLOEXEC);
  EXPECT_EQ(for_fdopen(-1, 41, "r", 1), EBADF);
  EXPECT_EQ(for_fdopen(99999, 41, "r", 1), EBADF);
  EXPECT_EQ(for_fdopen(null, 41, "w", 1), EINVAL);
  EXPECT_EQ(for_fdopen(null, 41, "rw", 2), EINVAL);
  EXPECT_EQ(for_fdopen(null, 41, "x", 1), EINVAL);
  EXPECT_EQ(for_fdopen(null, -1, "r", 1), EINVAL);
  EXPECT_EQ(for_fdopen(null, INT_MIN, "r", 1), EINVAL);
  const int writing = open("/dev/null", O_WRONLY | O_CLOEXEC);
  for (const std::string access : {"r", "READ", "r+", "w+", "a+", "rw", "readwrite"})
    EXPECT_EQ(for_fdopen(writing, 41, access.data(), static_cast<intptr_t>(access.size())), EINVAL);
  const int directory = open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  EXPECT_EQ(for_fdopen(directory, 41, "r", 1), EISDIR);
  close(writing);
  close(directory);
  EXPECT_EQ(__msportlib_d_gethandle(41, nullptr, nullptr), -1);
  EXPECT_EQ(for_fdopen(null, 41, nullptr, 0), 0);
  EXPECT_EQ(for_fdopen(null, 41, "   ", 3), 0);
  close(null);
}

TEST(PosixProvider, TheNameIsTheFilesAndIsCutAtTheCapacity) {
  const TemporaryDirectory directory;
  const std::string path = directory.file("named");
  const int fd = open(path.c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_EQ(for_fdopen(fd, 42, "r+", 2), 0);
  Character name(300);
  int64_t length = 300;
  EXPECT_EQ(__msportlib_d_gethandle(42, name.data(), &length), descriptor_of(42));
  EXPECT_EQ(name.text().substr(0, static_cast<size_t>(length)), path);
  Character few(4);
  length = 4;
  __msportlib_d_gethandle(42, few.data(), &length);
  EXPECT_EQ(length, 4);
  EXPECT_EQ(few.text(), path.substr(0, 4));
  length = 0;
  __msportlib_d_gethandle(42, few.data(), &length);
  EXPECT_EQ(length, 0);
  close(fd);
}

TEST(PosixProvider, CharactersAndPositions) {
  const TemporaryDirectory directory;
  const int fd = open(directory.file("text", "ab").c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_EQ(for_fdopen(fd, 43, "r+", 2), 0);
  EXPECT_EQ(__msportlib_d_readchar(43), 'a');
  EXPECT_EQ(__msportlib_d_curpos(43), 1);
  EXPECT_EQ(__msportlib_d_readchar(43), 'b');
  EXPECT_EQ(__msportlib_d_readchar(43), READ_END);
  EXPECT_EQ(__msportlib_d_writechar(43, 0xe9), 0);
  EXPECT_EQ(__msportlib_d_fseek(43, -1, SEEK_END), 0);
  EXPECT_EQ(__msportlib_d_readchar(43), 0xe9);
  EXPECT_EQ(__msportlib_d_fseek_i8(43, 0x100000000, SEEK_SET), 0);
  EXPECT_EQ(__msportlib_d_curpos_i8(43), 0x100000000);
  EXPECT_EQ(__msportlib_d_fseek(43, -1, SEEK_SET), -EINVAL);
  for (const int32_t origin : {-1, SEEK_END + 1, SEEK_END + 2, INT_MAX})
    EXPECT_EQ(__msportlib_d_fseek(43, 0, origin), -EINVAL) << origin;
  EXPECT_EQ(__msportlib_d_curpos_i8(43), 0x100000000);
  const int32_t unit = 43;
  EXPECT_EQ(flushqq_(&unit), 1);
  EXPECT_EQ(commitqq_(&unit), 1);
  EXPECT_EQ(__msportlib_d_fseek_i8(43, 3221225472, SEEK_SET), 0);
  int32_t offset = 0, ierror = SENTINEL;
  pxfftell_(&unit, &offset, &ierror);
  EXPECT_EQ(offset, -1073741824);
  EXPECT_EQ(ierror, 0);
  close(descriptor_of(43));
  close(fd);
}

TEST(PosixProvider, UnconnectedUnits) {
  const int32_t unit = 77;
  EXPECT_EQ(__msportlib_d_readchar(unit), -EBADF);
  EXPECT_EQ(__msportlib_d_writechar(unit, 'x'), -EBADF);
  EXPECT_EQ(__msportlib_d_fseek(unit, 0, SEEK_SET), -EBADF);
  EXPECT_EQ(__msportlib_d_curpos(unit), -EBADF);
  EXPECT_EQ(flushqq_(&unit), 0);
  EXPECT_EQ(commitqq_(&unit), 0);
}

TEST(PosixProvider, APipeHasNoPositionAndIsCommittedAsItIs) {
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
  const int32_t unit = 44;
  ASSERT_EQ(for_fdopen(ends[1], unit, "w", 1), 0);
  EXPECT_EQ(__msportlib_d_curpos(unit), -ESPIPE);
  EXPECT_EQ(__msportlib_d_fseek(unit, 0, SEEK_SET), -ESPIPE);
  EXPECT_EQ(commitqq_(&unit), 1);
  close(ends[0]);
  close(ends[1]);
}

TEST(PosixProvider, TheFlagIsStoredAndTheFormerAnswered) {
  const int32_t on = 3, off = 0;
  EXPECT_EQ(__msportlib_set_posix_io_flag(&on), 0);
  EXPECT_EQ(__msportlib_set_posix_io_flag(&off), 3);
  EXPECT_EQ(__msportlib_set_posix_io_flag(&off), 0);
}

TEST(PosixProvider, TheCommandLineOfAProgramWhoseMainIsNotFortran) {
  ASSERT_GE(for_nargs(), 1);
  Character value(400, '#');
  int32_t number = 0, length = SENTINEL;
  for_getarg(&number, value.data(), &length, value.length());
  const std::string name = value.text().substr(0, static_cast<size_t>(length));
  EXPECT_NE(name.find("posix_provider"), std::string::npos);
  EXPECT_EQ(value.text(), padded(name, 400));
  Character few(3);
  for_getarg(&number, few.data(), &length, few.length());
  EXPECT_EQ(few.text(), name.substr(0, 3));
  EXPECT_EQ(static_cast<size_t>(length), name.size());
  for (number = -1; number < for_nargs() + 2; number += for_nargs() + 1) {
    for_getarg(&number, few.data(), &length, few.length());
    EXPECT_EQ(length, -1);
    EXPECT_EQ(few.text(), "   ");
  }
}

// As many units as descriptors, and each closed one makes room for another.
TEST(PosixProvider, NoUnitIsRefusedForGood) {
  const int null = open("/dev/null", O_RDONLY | O_CLOEXEC);
  rlimit former;
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &former), 0);
  const rlimit few = {400, former.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
  int32_t entered = 0;
  while (for_fdopen(null, 1000 + entered, "r", 1) == 0 && entered < 1000)
    ++entered;
  EXPECT_GT(entered, 300);
  EXPECT_LT(entered, 400);
  EXPECT_EQ(for_fdopen(null, 1000 + entered, "r", 1), EMFILE);
  EXPECT_EQ(descriptor_of(1000 + entered), -1);
  close(descriptor_of(1005));
  EXPECT_EQ(for_fdopen(null, 5000, "r", 1), 0);
  EXPECT_EQ(__msportlib_d_readchar(5000), READ_END);
  for (int32_t unit = 1000; unit < 1000 + entered; ++unit)
    if (unit != 1005)
      close(descriptor_of(unit));
  close(descriptor_of(5000));
  EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &former), 0);
  close(null);
}

}  // namespace
