// PXFREAD and PXFWRITE against the host's own calls.
#include "interruptions.h"
#include "posix_calls.h"

#include <csignal>
#include <cstdint>
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

using Read = DataFile;
using Write = DataFile;

TEST_F(Read, StopsAtTheEnd) {
  const int fd = open("data.txt", O_RDONLY);
  Character buffer(8);
  Guarded<int32_t> nread(SENTINEL);
  EXPECT_EQ(call(pxfread_, fd, static_cast<void *>(buffer.data()), 6, &nread), succeeded());
  EXPECT_EQ(nread, 6);
  EXPECT_EQ(buffer.text(), "012345##");
  EXPECT_EQ(call(pxfread_, fd, static_cast<void *>(buffer.data()), 8, &nread), succeeded());
  EXPECT_EQ(nread, 4);
  EXPECT_EQ(buffer.text(), "678945##");
  EXPECT_EQ(call(pxfread_, fd, static_cast<void *>(buffer.data()), 8, &nread), succeeded());
  EXPECT_EQ(nread, 0);
  EXPECT_EQ(buffer.text(), "678945##");
  close(fd);
}

TEST_F(Read, OfNoBytesIs0) {
  const int fd = open("data.txt", O_RDONLY);
  Character buffer(4);
  Guarded<int32_t> nread(SENTINEL);
  EXPECT_EQ(call(pxfread_, fd, static_cast<void *>(buffer.data()), 0, &nread), succeeded());
  EXPECT_EQ(nread, 0);
  EXPECT_EQ(buffer.text(), "####");
  EXPECT_EQ(lseek(fd, 0, SEEK_CUR), 0);
  close(fd);
}

TEST_F(Read, WithoutAnArgumentIsMinus1AndNoCall) {
  const int32_t fd = open("data.txt", O_RDONLY), nbyte = 4;
  const int32_t *const no_number = nullptr;
  Character buffer(4);
  Guarded<int32_t> nread(SENTINEL);
  const auto read_with = [](const int32_t *ifildes, void *buf, const int32_t *count, int32_t *result) {
    return reported_by([&](int32_t *ierror) { pxfread_(ifildes, buf, count, result, ierror); });
  };
  EXPECT_EQ(read_with(no_number, buffer.data(), &nbyte, &nread), refused_silently(-1));
  EXPECT_EQ(read_with(&fd, nullptr, &nbyte, &nread), refused_silently(-1));
  EXPECT_EQ(read_with(&fd, buffer.data(), no_number, &nread), refused_silently(-1));
  EXPECT_EQ(read_with(&fd, buffer.data(), &nbyte, nullptr), refused_silently(-1));
  EXPECT_EQ(nread, SENTINEL);
  EXPECT_EQ(buffer.text(), "####");
  EXPECT_EQ(lseek(fd, 0, SEEK_CUR), 0);
  EXPECT_EQ(read_with(&fd, buffer.data(), &nbyte, &nread), succeeded());
  EXPECT_EQ(buffer.text(), "0123");
  close(fd);
}

TEST_F(Read, FailuresAreTheHosts) {
  const int directory = open(".", O_RDONLY), written = open("data.txt", O_WRONLY);
  Character buffer(4);
  Guarded<int32_t> nread(SENTINEL);
  EXPECT_EQ(call(pxfread_, directory, static_cast<void *>(buffer.data()), 4, &nread), failed_with(EISDIR));
  EXPECT_EQ(nread, -1);
  EXPECT_EQ(call(pxfread_, written, static_cast<void *>(buffer.data()), 4, &nread), failed_with(EBADF));
  EXPECT_EQ(nread, -1);
  EXPECT_EQ(buffer.text(), "####");
  for (const int fd : {directory, written})
    close(fd);
}

// No host is asked: one of 64 bits would answer as the memory and the descriptor happen to be, and one of 32
// go on behind the caller's variable.
TEST_F(Read, OfANegativeCountIsEinval) {
  const int fd = open("data.txt", O_RDONLY);
  Character buffer(16);
  for (const int32_t descriptor : {fd, -1, 9999}) {
    for (const int32_t nbyte : {-1, INT32_MIN}) {
      Guarded<int32_t> nread(SENTINEL);
      EXPECT_EQ(call(pxfread_, descriptor, static_cast<void *>(buffer.data()), nbyte, &nread),
                failed_with(EINVAL));
      EXPECT_EQ(nread, -1);
    }
  }
  EXPECT_EQ(buffer.text(), std::string(16, '#'));
  EXPECT_EQ(lseek(fd, 0, SEEK_CUR), 0);
  close(fd);
}

TEST_F(Write, OfANegativeCountIsEinval) {
  const int fd = open("data.txt", O_WRONLY | O_APPEND);
  for (const int32_t descriptor : {fd, -1, 9999}) {
    for (const int32_t nbyte : {-1, INT32_MIN}) {
      Guarded<int32_t> nwritten(SENTINEL);
      EXPECT_EQ(call(pxfwrite_, descriptor, static_cast<const void *>("abc"), nbyte, &nwritten),
                failed_with(EINVAL));
      EXPECT_EQ(nwritten, -1);
    }
  }
  EXPECT_EQ(lseek(fd, 0, SEEK_END), 10);
  close(fd);
}

TEST_F(Read, OfAnEmptyPipeThatMustNotBlockIs11) {
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_NONBLOCK), 0);
  Character buffer(4);
  int32_t nread = SENTINEL;
  EXPECT_EQ(call(pxfread_, ends[0], static_cast<void *>(buffer.data()), 4, &nread), failed_with(EAGAIN));
  EXPECT_EQ(nread, -1);
  close(ends[1]);
  EXPECT_EQ(call(pxfread_, ends[0], static_cast<void *>(buffer.data()), 4, &nread), succeeded());
  EXPECT_EQ(nread, 0);
  close(ends[0]);
}

TEST_F(Read, InterruptedBySignalIs4) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  Character buffer(4);
  int32_t nread = SENTINEL;
  Outcome outcome;
  {
    const Interruptions alarms;
    outcome = call(pxfread_, ends[0], static_cast<void *>(buffer.data()), 4, &nread);
  }
  EXPECT_EQ(outcome, failed_with(EINTR));
  EXPECT_EQ(nread, -1);
  EXPECT_EQ(buffer.text(), "####");
  close(ends[0]);
  close(ends[1]);
}

TEST_F(Write, InterruptedBySignalIs4) {
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_NONBLOCK), 0);
  const std::string full(1 << 20, 'x');
  while (write(ends[1], full.data(), full.size()) > 0) {
  }
  fcntl(ends[1], F_SETFL, 0);
  int32_t nwritten = SENTINEL;
  Outcome outcome;
  {
    const Interruptions alarms;
    outcome = call(pxfwrite_, ends[1], static_cast<const void *>(full.data()), 4, &nwritten);
  }
  EXPECT_EQ(outcome, failed_with(EINTR));
  EXPECT_EQ(nwritten, -1);
  close(ends[0]);
  close(ends[1]);
}

TEST_F(Write, PutsTheBytesThere) {
  const int fd = open("data.txt", O_RDWR);
  lseek(fd, 2, SEEK_SET);
  const std::string bytes("\0\xff\n", 3);
  Guarded<int32_t> nwritten(SENTINEL);
  EXPECT_EQ(call(pxfwrite_, fd, static_cast<const void *>(bytes.data()), 3, &nwritten), succeeded());
  EXPECT_EQ(nwritten, 3);
  EXPECT_EQ(call(pxfwrite_, fd, static_cast<const void *>(bytes.data()), 0, &nwritten), succeeded());
  EXPECT_EQ(nwritten, 0);
  char contents[11] = {};
  EXPECT_EQ(pread(fd, contents, 11, 0), 10);
  EXPECT_EQ(std::string(contents, 10), "01" + bytes + "56789");
  close(fd);
}

TEST_F(Write, ToAPipeWithoutAReaderIs32) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  close(ends[0]);
  void (*const former)(int) = signal(SIGPIPE, SIG_IGN);
  int32_t nwritten = SENTINEL;
  EXPECT_EQ(call(pxfwrite_, ends[1], static_cast<const void *>("abc"), 3, &nwritten), failed_with(EPIPE));
  EXPECT_EQ(nwritten, -1);
  signal(SIGPIPE, former);
  close(ends[1]);
}

TEST_F(Write, ToAFullDeviceIs28) {
  const int fd = open("/dev/full", O_WRONLY);
  ASSERT_GE(fd, 0);
  int32_t nwritten = SENTINEL;
  EXPECT_EQ(call(pxfwrite_, fd, static_cast<const void *>("abc"), 3, &nwritten), failed_with(ENOSPC));
  EXPECT_EQ(nwritten, -1);
  close(fd);
}

TEST_F(Write, BehindTheLargestFileSizeIsPartialAndThen27) {
  in_child([] {
    const rlimit five = {5, 5};
    setrlimit(RLIMIT_FSIZE, &five);
    signal(SIGXFSZ, SIG_IGN);
    const int fd = open("limited", O_WRONLY | O_CREAT, 0600);
    int32_t nwritten = SENTINEL;
    const Outcome first = call(pxfwrite_, fd, static_cast<const void *>("0123456789"), 10, &nwritten);
    const int32_t written = nwritten;
    const Outcome second = call(pxfwrite_, fd, static_cast<const void *>("56789"), 5, &nwritten);
    close(fd);
    // The limit holds for a report of the failure as well, so the exit status tells.
    if (first != succeeded() || written != 5 || second != failed_with(EFBIG) || nwritten != -1)
      _exit(2);
  });
}

TEST_F(Write, ToADescriptorForReadingIs9) {
  const int fd = open("data.txt", O_RDONLY);
  int32_t nwritten = SENTINEL;
  EXPECT_EQ(call(pxfwrite_, fd, static_cast<const void *>("abc"), 3, &nwritten), failed_with(EBADF));
  EXPECT_EQ(nwritten, -1);
  close(fd);
}

}  // namespace
