// What the provider without a Fortran run-time answers for every error number of a read and a write.
#include "recorder.h"

#include "contract/services.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int FD = 1234;
int host_error;
int interruptions;

ssize_t answer() {
  if (interruptions > 0) {
    --interruptions;
    errno = EINTR;
    return -1;
  }
  errno = host_error;
  return host_error == 0 ? 1 : -1;
}

}  // namespace

int fcntl(int, int command, ...) {
  return command == F_DUPFD_CLOEXEC ? FD : O_RDWR;
}
int fstat(int, struct stat *status) noexcept {
  *status = {};
  return 0;
}
ssize_t read(int fd, void *buffer, size_t count) {
  EXPECT_EQ(fd, FD);
  EXPECT_EQ(count, 1u);
  *static_cast<char *>(buffer) = 'c';
  return answer();
}
ssize_t write(int fd, const void *buffer, size_t count) {
  EXPECT_EQ(fd, FD);
  EXPECT_EQ(count, 1u);
  EXPECT_EQ(*static_cast<const char *>(buffer), 'c');
  return answer();
}

namespace {

class Unit : public testing::Test {
protected:
  Unit() { EXPECT_EQ(for_fdopen(FD, 40, "r+", 2), 0); }
};

// Numbers below 3 would be taken for the end of the file.
TEST_F(Unit, ReadAnswersMinusTheErrorNumberButNeverTheEnd) {
  host_error = 0;
  EXPECT_EQ(__msportlib_d_readchar(40), 'c');
  for (const int error : {EIO, EBADF, EAGAIN, 4095}) {
    host_error = error;
    EXPECT_EQ(__msportlib_d_readchar(40), -error);
  }
  for (const int error : {EPERM, ENOENT}) {
    host_error = error;
    EXPECT_EQ(__msportlib_d_readchar(40), -3);
  }
}

TEST_F(Unit, WriteAnswersMinusTheErrorNumber) {
  host_error = 0;
  EXPECT_EQ(__msportlib_d_writechar(40, 'c'), 0);
  for (const int error : {EPERM, ENOENT, EIO, ENOSPC, EPIPE, 4095}) {
    host_error = error;
    EXPECT_EQ(__msportlib_d_writechar(40, 'c'), -error);
  }
}

TEST_F(Unit, AnInterruptedCharacterIsMovedAllTheSame) {
  host_error = 0;
  interruptions = 3;
  EXPECT_EQ(__msportlib_d_readchar(40), 'c');
  EXPECT_EQ(interruptions, 0);
  interruptions = 3;
  EXPECT_EQ(__msportlib_d_writechar(40, 'c'), 0);
  EXPECT_EQ(interruptions, 0);
}

}  // namespace
