// PXFOPEN, PXFCREAT, PXFCLOSE, PXFDUP, PXFDUP2, PXFLSEEK, PXFPIPE, PXFFPATHCONF and PXFUMASK
// against the host's own calls.
#include "posix_calls.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// Descriptors that nobody has.
constexpr int32_t NO_DESCRIPTORS[] = {-1, -2, 1 << 20, INT32_MAX, INT32_MIN};

int closed_descriptor() {
  const int fd = open("/dev/null", O_RDWR);
  close(fd);
  return fd;
}

mode_t mode_of(int fd) {
  struct stat status = {};
  EXPECT_EQ(fstat(fd, &status), 0);
  return status.st_mode;
}

using Descriptors = DataFile;
using Open = DataFile;
using Creat = DataFile;
using Close = DataFile;
using Dup = DataFile;
using Lseek = DataFile;
using Pipe = DataFile;

TEST_F(Open, WithLength0LosesBlanksWithLength4IsExact) {
  directory_.file("data", "short");
  const auto size_of_opened = [](int32_t ilen) {
    Guarded<int32_t> fd(SENTINEL);
    EXPECT_EQ(call_named(pxfopen_, "data.txt   ", ilen, O_RDONLY, 0, &fd), succeeded());
    const off_t size = lseek(fd, 0, SEEK_END);
    close(fd);
    return size;
  };
  EXPECT_EQ(size_of_opened(0), 10);
  EXPECT_EQ(size_of_opened(4), 5);
}

TEST_F(Open, AllBlanksNameTheFileOfOneBlank) {
  int32_t fd = SENTINEL;
  EXPECT_EQ(call_named(pxfopen_, "     ", 0, O_WRONLY | O_CREAT, 0600, &fd), succeeded());
  close(fd);
  EXPECT_EQ(access(" ", F_OK), 0);
}

TEST_F(Open, GivesWhatTheHostGives) {
  const mode_t former = umask(022);
  for (const int32_t flags : {O_RDONLY | O_CREAT, O_WRONLY | O_CREAT | O_TRUNC, O_RDWR | O_CREAT | O_APPEND,
                              O_RDWR | O_CREAT | O_EXCL | O_NONBLOCK, O_WRONLY | O_CREAT | O_CLOEXEC})
    for (const int32_t mode : {0600, 0666, 04777}) {
      Guarded<int32_t> made(SENTINEL);
      EXPECT_EQ(call_named(pxfopen_, "made ", 0, flags, mode, &made), succeeded());
      const int twin = open("twin", flags, mode);
      EXPECT_EQ(fcntl(made, F_GETFL), fcntl(twin, F_GETFL)) << flags;
      EXPECT_EQ(fcntl(made, F_GETFD), fcntl(twin, F_GETFD)) << flags;
      EXPECT_EQ(mode_of(made), mode_of(twin)) << mode;
      close(made);
      close(twin);
      unlink("made");
      unlink("twin");
    }
  umask(former);
}

TEST_F(Open, FailureIsTheHostsAndMinus1) {
  ASSERT_EQ(symlink("loop", "loop"), 0);
  ASSERT_EQ(mkfifo("fifo", 0600), 0);
  const std::pair<std::string, int32_t> opens[] = {{"missing", O_RDONLY},
                                                   {"", O_RDONLY},
                                                   {"data.txt/below", O_RDONLY},
                                                   {".", O_RDWR},
                                                   {"loop", O_RDONLY},
                                                   {"loop", O_RDONLY | O_NOFOLLOW},
                                                   {"data.txt", O_WRONLY | O_CREAT | O_EXCL},
                                                   {"data.txt", O_RDONLY | O_DIRECTORY},
                                                   {"fifo", O_WRONLY | O_NONBLOCK},
                                                   {std::string(300, 'n'), O_RDONLY},
                                                   {std::string(5000, 'p'), O_RDONLY}};
  for (const auto &[name, flags] : opens) {
    Guarded<int32_t> fd(SENTINEL);
    EXPECT_EQ(call_named(pxfopen_, name, 0, flags, 0600, &fd),
              as_the_host([name = name, flags = flags] { return open(name.c_str(), flags, 0600); }))
        << name << ' ' << flags;
    EXPECT_EQ(fd, -1) << name;
  }
}

TEST_F(Creat, EmptiesWhatWasThere) {
  Guarded<int32_t> fd(SENTINEL);
  EXPECT_EQ(call_named(pxfcreat_, "data.txt ", 0, 0600, &fd), succeeded());
  EXPECT_EQ(lseek(fd, 0, SEEK_END), 0);
  EXPECT_EQ(fcntl(fd, F_GETFL) & O_ACCMODE, O_WRONLY);
  close(fd);
}

TEST_F(Creat, GivesTheModeThatTheHostGives) {
  const mode_t former = umask(027);
  for (const int32_t mode : {0600, 0666, 07777, 0}) {
    int32_t made = SENTINEL;
    EXPECT_EQ(call_named(pxfcreat_, "made", 0, mode, &made), succeeded());
    const int twin = creat("twin", static_cast<mode_t>(mode));
    EXPECT_EQ(mode_of(made), mode_of(twin));
    close(made);
    close(twin);
    unlink("made");
    unlink("twin");
  }
  umask(former);
}

TEST_F(Creat, FailureIsTheHostsAndMinus1) {
  for (const std::string name : {"", ".", "missing/file", "data.txt/below"}) {
    Guarded<int32_t> fd(SENTINEL);
    EXPECT_EQ(call_named(pxfcreat_, name, 0, 0600, &fd),
              as_the_host([&] { return creat(name.c_str(), 0600); }))
        << name;
    EXPECT_EQ(fd, -1);
  }
}

TEST_F(Close, ClosesAndThenIs9) {
  const int fd = open("data.txt", O_RDONLY);
  EXPECT_EQ(call(pxfclose_, fd), succeeded());
  EXPECT_EQ(fcntl(fd, F_GETFD), -1);
  EXPECT_EQ(call(pxfclose_, fd), failed_with(EBADF));
}

TEST_F(Dup, SharesTheOffset) {
  const int fd = open("data.txt", O_RDONLY);
  Guarded<int32_t> second(SENTINEL);
  EXPECT_EQ(call(pxfdup_, fd, &second), succeeded());
  EXPECT_NE(second, fd);
  lseek(fd, 7, SEEK_SET);
  EXPECT_EQ(lseek(second, 0, SEEK_CUR), 7);
  close(fd);
  close(second);
}

TEST_F(Dup, ToAChosenNumberReplacesWhatWasThere) {
  const int fd = open("data.txt", O_RDONLY), other = open("/dev/null", O_RDONLY);
  EXPECT_EQ(call(pxfdup2_, fd, other), succeeded());
  EXPECT_EQ(lseek(other, 0, SEEK_END), 10);
  EXPECT_EQ(call(pxfdup2_, fd, fd), succeeded());
  EXPECT_EQ(call(pxfdup2_, -1, other), failed_with(EBADF));
  EXPECT_EQ(lseek(other, 0, SEEK_END), 10);
  EXPECT_EQ(call(pxfdup2_, fd, -1), failed_with(EBADF));
  EXPECT_EQ(call(pxfdup2_, fd, INT32_MAX), failed_with(EBADF));
  close(fd);
  close(other);
}

// Every routine that takes a descriptor, with one that is none.
TEST_F(Descriptors, ThatAreNoneAre9) {
  std::vector<int32_t> descriptors(std::begin(NO_DESCRIPTORS), std::end(NO_DESCRIPTORS));
  descriptors.push_back(closed_descriptor());
  char buffer[4] = "abc";
  for (const int32_t fd : descriptors) {
    int32_t result = SENTINEL;
    EXPECT_EQ(call(pxfclose_, fd), failed_with(EBADF)) << fd;
    EXPECT_EQ(call(pxfdup_, fd, &result), failed_with(EBADF)) << fd;
    EXPECT_EQ(result, -1);
    EXPECT_EQ(call(pxfdup2_, fd, 50), failed_with(EBADF)) << fd;
    for (const int32_t nbyte : {3, 0}) {
      result = SENTINEL;
      EXPECT_EQ(call(pxfread_, fd, static_cast<void *>(buffer), nbyte, &result), failed_with(EBADF)) << fd;
      EXPECT_EQ(result, -1);
      result = SENTINEL;
      EXPECT_EQ(call(pxfwrite_, fd, static_cast<const void *>(buffer), nbyte, &result), failed_with(EBADF))
          << fd;
      EXPECT_EQ(result, -1);
    }
    result = SENTINEL;
    EXPECT_EQ(call(pxflseek_, fd, 0, SEEK_SET, &result), failed_with(EBADF)) << fd;
    EXPECT_EQ(result, -1);
    result = SENTINEL;
    EXPECT_EQ(call(pxffpathconf_, fd, _PC_PIPE_BUF, &result),
              as_the_host([&] { return fpathconf(fd, _PC_PIPE_BUF); }))
        << fd;
    EXPECT_EQ(result, static_cast<int32_t>(fpathconf(fd, _PC_PIPE_BUF)));
    int32_t argument = 0;
    result = SENTINEL;
    EXPECT_EQ(call(pxffcntl_, fd, F_GETFD, &argument, &result), failed_with(EBADF)) << fd;
    EXPECT_EQ(result, -1);
    EXPECT_EQ(argument, 0);
  }
  EXPECT_STREQ(buffer, "abc");
}

TEST_F(Lseek, AgreesWithTheHost) {
  const int fd = open("data.txt", O_RDONLY), twin = open("data.txt", O_RDONLY);
  for (const auto &[offset, whence] : {std::pair(4, SEEK_SET),
                                       {3, SEEK_CUR},
                                       {-5, SEEK_CUR},
                                       {-1, SEEK_END},
                                       {1000, SEEK_END},
                                       {INT32_MAX, SEEK_SET},
                                       {-1, SEEK_SET},
                                       {INT32_MIN, SEEK_CUR},
                                       {0, 99},
                                       {0, SEEK_DATA},
                                       {0, SEEK_HOLE}}) {
    Guarded<int32_t> position(SENTINEL);
    off_t expected = 0;
    const Outcome outcome = call(pxflseek_, fd, offset, whence, &position);
    EXPECT_EQ(outcome, as_the_host([&, offset = offset, whence = whence] {
                return expected = lseek(twin, offset, whence);
              }))
        << offset << ' ' << whence;
    EXPECT_EQ(position, static_cast<int32_t>(expected)) << offset << ' ' << whence;
  }
  close(fd);
  close(twin);
}

TEST_F(Lseek, Behind4GiBGivesTheLow32Bits) {
  const int fd = open("large", O_RDWR | O_CREAT, 0600);
  ASSERT_EQ(ftruncate(fd, (off_t{1} << 32) + 7), 0);
  Guarded<int32_t> position(SENTINEL);
  EXPECT_EQ(call(pxflseek_, fd, 0, SEEK_END, &position), succeeded());
  EXPECT_EQ(position, 7);
  EXPECT_EQ(lseek(fd, 0, SEEK_CUR), (off_t{1} << 32) + 7);
  EXPECT_EQ(call(pxflseek_, fd, -8, SEEK_CUR, &position),
            refused(ERRNO_SENTINEL, ERRNO_SENTINEL));  // the low 32 bits are -1
  EXPECT_EQ(position, -1);
  EXPECT_EQ(call(pxflseek_, fd, -1, SEEK_CUR, &position), succeeded());
  EXPECT_EQ(position, -2);
  EXPECT_EQ(call(pxflseek_, fd, INT32_MAX, SEEK_CUR, &position), succeeded());
  EXPECT_EQ(lseek(fd, 0, SEEK_CUR), (off_t{1} << 32) - 2 + INT32_MAX);
  EXPECT_EQ(position, INT32_MAX - 2);
  close(fd);
}

TEST_F(Lseek, OfAPipeIs29) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  int32_t position = SENTINEL;
  EXPECT_EQ(call(pxflseek_, ends[0], 0, SEEK_SET, &position), failed_with(ESPIPE));
  EXPECT_EQ(position, -1);
  close(ends[0]);
  close(ends[1]);
}

TEST_F(Pipe, CarriesBytes) {
  Guarded<int32_t> reader(SENTINEL), writer(SENTINEL);
  EXPECT_EQ(call(pxfpipe_, &reader, &writer), succeeded());
  int32_t count = SENTINEL;
  EXPECT_EQ(call(pxfwrite_, writer.value(), static_cast<const void *>("abc"), 3, &count), succeeded());
  Character buffer(5);
  EXPECT_EQ(call(pxfread_, reader.value(), static_cast<void *>(buffer.data()), 5, &count), succeeded());
  EXPECT_EQ(count, 3);
  EXPECT_EQ(buffer.text(), "abc##");
  EXPECT_EQ(call(pxfclose_, reader.value()), succeeded());
  EXPECT_EQ(call(pxfclose_, writer.value()), succeeded());
}

TEST_F(Pipe, FailureLeavesBothDescriptors) {
  rlimit former;
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &former), 0);
  const rlimit few = {static_cast<rlim_t>(closed_descriptor()) + 1, former.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
  Guarded<int32_t> reader(SENTINEL), writer(SENTINEL), duplicate(SENTINEL);
  const Outcome outcome = call(pxfpipe_, &reader, &writer);
  const int last = open("/dev/null", O_RDONLY);
  const Outcome of_dup = call(pxfdup_, last, &duplicate);
  close(last);
  setrlimit(RLIMIT_NOFILE, &former);
  EXPECT_EQ(outcome, failed_with(EMFILE));
  EXPECT_EQ(reader, SENTINEL);
  EXPECT_EQ(writer, SENTINEL);
  EXPECT_EQ(of_dup, failed_with(EMFILE));
  EXPECT_EQ(duplicate, -1);
}

TEST_F(Descriptors, LimitsAreTheHosts) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const int file = open("data.txt", O_RDONLY);
  for (const int fd : {ends[0], ends[1], file})
    for (int32_t name = -2; name < 40; ++name) {
      errno = ERRNO_SENTINEL;
      const long value = fpathconf(fd, name);
      const int error = errno;
      Guarded<int32_t> ival(SENTINEL);
      EXPECT_EQ(call(pxffpathconf_, fd, name, &ival),
                static_cast<int32_t>(value) == -1 ? failed_with(error) : succeeded())
          << name;
      EXPECT_EQ(ival, static_cast<int32_t>(value)) << name;
    }
  for (const int fd : {ends[0], ends[1], file})
    close(fd);
}

TEST(Umask, GivesTheFormerOne) {
  const mode_t former = umask(0123);
  for (const auto &[mask, previous] : {std::pair(0, 0123), {0777, 0}, {022, 0777}, {-1, 022}, {0, 0777}}) {
    Guarded<int32_t> answer(SENTINEL);
    EXPECT_EQ(call(pxfumask_, mask, &answer), succeeded());
    EXPECT_EQ(answer, previous);
  }
  EXPECT_EQ(umask(former), 0u);
}

}  // namespace
