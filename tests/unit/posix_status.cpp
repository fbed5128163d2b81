// PXFSTAT and PXFFSTAT against the host's status of the same file, and the tests of a file's type.
#include "ordinary_user.h"
#include "posix_calls.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using qxport::StatRecord;

class Stat : public testing::Test {
protected:
  const TemporaryDirectory directory_;
  const std::string file_ = directory_.file("file", "text", 0640);
  const WorkingDirectory working_{directory_.path()};
};

using Fstat = Stat;

// A record with what it must hold of a status.
void expect_status(int32_t handle, const struct stat &status, const std::string &what) {
  const StatRecord &record = record_as<StatRecord>(handle);
  EXPECT_EQ(record.st_mode, static_cast<int32_t>(status.st_mode)) << what;
  EXPECT_EQ(record.st_ino, static_cast<int64_t>(status.st_ino)) << what;
  EXPECT_EQ(record.st_dev, static_cast<int64_t>(status.st_dev)) << what;
  EXPECT_EQ(record.st_nlink, static_cast<int64_t>(status.st_nlink)) << what;
  EXPECT_EQ(record.st_uid, static_cast<int32_t>(status.st_uid)) << what;
  EXPECT_EQ(record.st_gid, static_cast<int32_t>(status.st_gid)) << what;
  EXPECT_EQ(record.st_size, status.st_size) << what;
  EXPECT_EQ(record.st_atime_, status.st_atime) << what;
  EXPECT_EQ(record.st_mtime_, status.st_mtime) << what;
  EXPECT_EQ(record.st_ctime_, status.st_ctime) << what;
}

void expect_same_as_host(const std::string &name) {
  const OwnedRecord record("stat");
  fill_record(record);
  struct stat status;
  ASSERT_EQ(stat(name.c_str(), &status), 0) << name;
  EXPECT_EQ(call_named(pxfstat_, name, 0, record), succeeded()) << name;
  expect_status(record, status, name);
}

TEST_F(Stat, OfEveryTypeIsTheHosts) {
  ASSERT_EQ(mkfifo("fifo", 0604), 0);
  ASSERT_EQ(mkdir("below", 0751), 0);
  ASSERT_EQ(symlink("file", "link"), 0);
  ASSERT_EQ(link("file", "second"), 0);
  for (const std::string name : {"file", "fifo", "below", "link", "/dev/null", "."})
    expect_same_as_host(name);
}

TEST_F(Stat, NumbersAreAsWideAsTheRecordsFields) {
  const int fd = open("large", O_RDWR | O_CREAT, 07777);
  ASSERT_EQ(ftruncate(fd, (off_t{5} << 30) + 3), 0);
  const timespec times[] = {{5000000000, 999999999}, {-7, 0}};
  ASSERT_EQ(futimens(fd, times), 0);
  close(fd);
  if (geteuid() == 0) {
    ASSERT_EQ(chown("large", 0xFFFFFFF0u, 0xFFFFFFF1u), 0);
  }
  expect_same_as_host("large");
  const OwnedRecord record("stat");
  ASSERT_EQ(call_named(pxfstat_, "large", 0, record), succeeded());
  EXPECT_EQ(record_as<StatRecord>(record).st_size, (int64_t{5} << 30) + 3);
  EXPECT_EQ(record_as<StatRecord>(record).st_atime_, 5000000000);
  EXPECT_EQ(record_as<StatRecord>(record).st_mtime_, -7);
}

TEST_F(Stat, OfEtcPasswdWithLength3IsStillOfEtcPasswd) {
  const OwnedRecord record("stat");
  struct stat status;
  ASSERT_EQ(stat("/etc/passwd", &status), 0);
  EXPECT_EQ(call_named(pxfstat_, "/etc/passwd", 3, record), succeeded());
  EXPECT_EQ(record_as<StatRecord>(record).st_ino, static_cast<int64_t>(status.st_ino));
}

TEST_F(Stat, IgnoresTheLength) {
  const OwnedRecord record("stat");
  for (const int32_t ilen : {0, 1, 4, -1, 100, INT32_MAX, INT32_MIN}) {
    EXPECT_EQ(call_named(pxfstat_, "file", ilen, record), succeeded()) << ilen;
    EXPECT_EQ(call_named(pxfstat_, "file   ", ilen, record), succeeded()) << ilen;
  }
}

TEST_F(Stat, KeepsATabAtTheEnd) {
  const OwnedRecord record("stat");
  for (const std::string name : {"file\t", "file\n", "file\r", "file\v", "file\f", "file \t"})
    EXPECT_EQ(call_named(pxfstat_, name, 0, record), failed_with(ENOENT));
  directory_.file("file\t", "longer text");
  EXPECT_EQ(call_named(pxfstat_, "file\t  ", 0, record), succeeded());
  EXPECT_EQ(record_as<StatRecord>(record).st_size, 11);
}

TEST_F(Stat, OfBlanksIsOfNoName) {
  directory_.file(" ");
  const OwnedRecord record("stat");
  for (const std::string name : {"", " ", "     "})
    EXPECT_EQ(call_named(pxfstat_, name, 0, record), failed_with(ENOENT));
}

TEST_F(Stat, NameEndsAtANul) {
  const OwnedRecord record("stat");
  EXPECT_EQ(call_named(pxfstat_, std::string("file\0rest", 9), 0, record), succeeded());
  EXPECT_EQ(record_as<StatRecord>(record).st_size, 4);
}

TEST_F(Stat, FailureIsTheHostsAndLeavesTheRecord) {
  ASSERT_EQ(symlink("loop", "loop"), 0);
  const OwnedRecord record("stat");
  fill_record(record);
  const Contents before = contents_of(record);
  for (const std::string &name : {std::string("missing"), std::string("file/below"), std::string("loop"),
                                  std::string(300, 'n'), std::string(5000, 'p')}) {
    struct stat status;
    EXPECT_EQ(call_named(pxfstat_, name, 0, record), as_the_host([&] { return stat(name.c_str(), &status); }))
        << name;
    EXPECT_EQ(contents_of(record), before);
  }
}

TEST_F(Stat, InAClosedDirectoryIs13) {
  chmod(directory_.path().c_str(), 0777);
  ASSERT_EQ(mkdir("closed", 0), 0);
  const OwnedRecord record("stat");
  as_ordinary_user([&] { EXPECT_EQ(call_named(pxfstat_, "closed/file", 0, record), failed_with(EACCES)); });
  chmod("closed", 0700);
}

TEST_F(Stat, ChecksTheHandleBeforeTheName) {
  for (const std::string name : {"file", "missing", ""})
    expect_handle_checked("stat", [&](int32_t handle) { return call_named(pxfstat_, name, 0, handle); });
}

TEST_F(Stat, WithADirentRecordIs22WithNoHandle127) {
  const OwnedRecord dirent("dirent");
  EXPECT_EQ(call_named(pxfstat_, "file", 0, dirent), refused(22));
  EXPECT_EQ(call_named(pxfstat_, "file", 0, 0), refused(127));
  EXPECT_EQ(call_named(pxfstat_, "file", 0, 123456), refused(127));
}

TEST_F(Fstat, OfEveryTypeIsTheHosts) {
  int pipes[2], sockets[2];
  ASSERT_EQ(pipe(pipes), 0);
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, sockets), 0);
  const int file = open("file", O_RDONLY), directory = open(".", O_RDONLY),
            null = open("/dev/null", O_WRONLY);
  for (const int fd : {pipes[0], pipes[1], sockets[0], sockets[1], file, directory, null}) {
    const OwnedRecord record("stat");
    fill_record(record);
    struct stat status;
    ASSERT_EQ(fstat(fd, &status), 0);
    EXPECT_EQ(call(pxffstat_, fd, record), succeeded());
    expect_status(record, status, std::to_string(fd));
    close(fd);
  }
}

TEST_F(Fstat, OfNoDescriptorIs9AndLeavesTheRecord) {
  const OwnedRecord record("stat");
  fill_record(record);
  const Contents before = contents_of(record);
  for (const int32_t fd : {-1, INT32_MAX, INT32_MIN, 1 << 20})
    EXPECT_EQ(call(pxffstat_, fd, record), failed_with(EBADF)) << fd;
  EXPECT_EQ(contents_of(record), before);
}

TEST_F(Fstat, ChecksTheHandleBeforeTheDescriptor) {
  const int file = open("file", O_RDONLY);
  for (const int fd : {file, -1})
    expect_handle_checked("stat", [&](int32_t handle) { return call(pxffstat_, fd, handle); });
  close(file);
}

// Masked with 0xF000, a mode is of at most one type.
TEST(FileType, IsToldOfEveryMode) {
  using Test = int32_t (*)(const int32_t *);
  struct Type {
    int32_t bits;
    Test traditional, of_the_module;
  };
  const Type types[] = {{0x4000, pxfisdir_, qxport_pxfisdir_},
                        {0x2000, pxfischr_, qxport_pxfischr_},
                        {0x6000, pxfisblk_, qxport_pxfisblk_},
                        {0x8000, pxfisreg_, qxport_pxfisreg_},
                        {0x1000, pxfisfifo_, qxport_pxfisfifo_}};
  for (int32_t bits = 0; bits < 16; ++bits)
    for (const int32_t others : {0, 0644, 07777, 0x10000, INT32_MIN, 0x7FFF0000}) {
      const int32_t mode = bits << 12 | others;
      for (const Type &type : types) {
        const bool is = bits << 12 == type.bits;
        EXPECT_EQ(type.traditional(&mode), is ? -1 : 0) << std::hex << mode;
        EXPECT_EQ(type.of_the_module(&mode), is ? 1 : 0) << std::hex << mode;
      }
    }
}

TEST(FileType, RegularIsMinus1AndNoDirectory) {
  const int32_t mode = 0100644;
  EXPECT_EQ(pxfisreg_(&mode), -1);
  EXPECT_EQ(pxfisdir_(&mode), 0);
}

TEST(FileType, TouchesNoErrorState) {
  const int32_t mode = 0100644;
  EXPECT_EQ(state_after([&] { pxfisreg_(&mode); }), untouched());
}

}  // namespace
