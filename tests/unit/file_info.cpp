// GETFILEINFOQQ and GETFILEINFOQQI8: what they store of an entry.
#include "file_search.h"

#include <fcntl.h>
#include <filesystem>
#include <sys/socket.h>
#include <sys/un.h>

namespace {

// Changes what the system says of a file, for what a test cannot make on every machine.
void (*alter_status)(struct stat &status) = nullptr;

}  // namespace

// Takes the host's routine over.
extern "C" int stat(const char *path, struct stat *status) noexcept {
  const int result = fstatat(AT_FDCWD, path, status, 0);
  if (result == 0 && alter_status != nullptr)
    alter_status(*status);
  return result;
}

namespace {

struct stat status_of(const std::string &path) {
  struct stat status;
  EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
  return status;
}

void make_socket(const std::string &directory, mode_t mode) {
  const WorkingDirectory inside(directory);
  const sockaddr_un address = {AF_UNIX, "socket"};
  const int descriptor = socket(AF_UNIX, SOCK_STREAM, 0);
  EXPECT_EQ(bind(descriptor, reinterpret_cast<const sockaddr *>(&address), sizeof(address)), 0);
  EXPECT_EQ(chmod("socket", mode), 0);
  close(descriptor);
}

}  // namespace

template <typename Routine>
class FileInfo : public testing::Test {
protected:
  ~FileInfo() override { alter_status = nullptr; }

  // Searches for the one file and compares the whole record.
  void expect_record(const std::string &name, int32_t attributes) {
    Search<Routine> search(directory / name);
    std::string expected = Routine::stored(search.record.text(), status_of(directory / name), attributes);
    expected.replace(Routine::NAME, 255, padded(name, 255));
    expect_entry(search, name);
    EXPECT_EQ(search.record.text(), expected) << name;
    expect_end(search, END);
  }

  TemporaryDirectory directory;
};
TYPED_TEST_SUITE(FileInfo, Routines, RoutineNames);

TYPED_TEST(FileInfo, RecordOfARegularFile) {
  const std::string path = this->directory.file("file", "12345");
  const timespec times[2] = {{1100000001, 0}, {1000000002, 999999999}};
  ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
  this->expect_record("file", 0);
}

TYPED_TEST(FileInfo, RecordMayLieAnywhere) {
  const std::string files = this->directory.file("file", "12345");
  Character record(TypeParam::SIZE + 1);
  intptr_t handle = BEGIN;
  EXPECT_EQ(TypeParam::call(files.data(), record.data() + 1, &handle, files.size()), 4);
  EXPECT_EQ(record.text().substr(0, 1), "#");
  EXPECT_EQ(record.text().substr(1 + TypeParam::NAME), padded("file", 255));
  EXPECT_EQ(TypeParam::call(files.data(), record.data() + 1, &handle, files.size()), 0);
}

TYPED_TEST(FileInfo, LengthsBeyond32Bits) {
  for (const int64_t length : {int64_t{3} << 30, (int64_t{5} << 30) + 7}) {
    ASSERT_EQ(truncate(this->directory.file("large").c_str(), length), 0) << length;
    this->expect_record("large", 0);
  }
}

TYPED_TEST(FileInfo, TimesKeepTheirLow32Bits) {
  this->directory.file("file");
  alter_status = [](struct stat &status) {
    status.st_mtime = (int64_t{1} << 32) + 5;
    status.st_atime = (int64_t{1} << 33) - 6;
    status.st_ctime = -7;
  };
  this->expect_record("file", 0);
}

TYPED_TEST(FileInfo, AttributesTellTheKindOfAFileAndOfALinksTarget) {
  const TemporaryDirectory &directory = this->directory;
  std::filesystem::create_directory(directory / "directory");
  ASSERT_EQ(mkfifo((directory / "fifo").c_str(), 0600), 0);
  make_socket(directory.path(), 0600);
  directory.file("regular");
  std::filesystem::create_symlink("/dev/null", directory / "device");
  const std::pair<std::string, int32_t> kinds[] = {
      {"directory", 16}, {"fifo", 4}, {"socket", 0}, {"regular", 0}, {"device", 4}};
  for (const auto &[name, attributes] : kinds) {
    this->expect_record(name, attributes);
    std::filesystem::create_symlink(name, directory / "link_to_" + name);
    this->expect_record("link_to_" + name, attributes);
  }
}

TYPED_TEST(FileInfo, BlockDeviceIsASystemFile) {
  this->directory.file("disk");
  alter_status = [](struct stat &status) { status.st_mode = S_IFBLK | 0400; };
  this->expect_record("disk", 4);
}

TYPED_TEST(FileInfo, ReadOnlyDirectoriesAndFifosKeepTheirKind) {
  ASSERT_EQ(mkdir((this->directory / "directory").c_str(), 0500), 0);
  this->expect_record("directory", 16);
  ASSERT_EQ(mkfifo((this->directory / "fifo").c_str(), 0400), 0);
  this->expect_record("fifo", 4);
}

using GetFileInfoQQ = FileInfo<Default>;
using GetFileInfoQQI8 = FileInfo<Wide>;

TEST_F(GetFileInfoQQ, ReadOnlyFileHasAttributes0) {
  directory.file("regular", "x", 0477);
  expect_record("regular", 0);
}

// The owner's bit decides, whoever asks.
TEST_F(GetFileInfoQQI8, ReadOnlyFileHasAttributes1) {
  directory.file("regular", "x", 0477);
  expect_record("regular", 1);
  std::filesystem::create_symlink("regular", directory / "link");
  expect_record("link", 1);
  make_socket(directory.path(), 0400);
  expect_record("socket", 1);
  directory.file("writable", "x", 0200);
  expect_record("writable", 0);
}

TEST_F(GetFileInfoQQ, LeavesTheFirstFieldAsTheCallerSetIt) {
  qxport_file_info record = {};
  record.creation_time = 4711;
  const std::string files = directory.file("file", "123");
  intptr_t handle = BEGIN;
  EXPECT_EQ(getfileinfoqq_(files.data(), &record, &handle, files.size()), 4);
  EXPECT_EQ(record.creation_time, 4711);
  EXPECT_EQ(record.length, 3);
  EXPECT_EQ(getfileinfoqq_(files.data(), &record, &handle, files.size()), 0);
}

TEST_F(GetFileInfoQQI8, StoresTheStatusChangeTimeInTheFirstField) {
  const std::string files = directory.file("file");
  alter_status = [](struct stat &status) { status.st_ctime = 1234567890; };
  qxport_file_info_i8 record = {};
  intptr_t handle = BEGIN;
  EXPECT_EQ(getfileinfoqqi8_(files.data(), &record, &handle, files.size()), 4);
  EXPECT_EQ(record.creation_time, 1234567890);
  EXPECT_EQ(getfileinfoqqi8_(files.data(), &record, &handle, files.size()), 0);
}

TYPED_TEST(FileInfo, NameOf255BytesFillsTheField) {
  this->directory.file(std::string(255, 'n'), "123");
  this->expect_record(std::string(255, 'n'), 0);
}

TYPED_TEST(FileInfo, NameMayHoldAnyByte) {
  for (const char *name : {"two words", " leading", "tab\tnew\nline", "\xff\xfe\x01", "a\\b", "~"}) {
    this->directory.file(name);
    this->expect_record(name, 0);
  }
}

TYPED_TEST(FileInfo, TrailingBlanksOfANameAreCounted) {
  this->directory.file("file  ");
  Search<TypeParam> search(this->directory / "file*");
  expect_entry(search, "file  ");
  expect_end(search, END);
}

// --- FILE_LENGTH

TEST(FileLength, PutsTheTwoWordsTogether) {
  qxport_file_info_i8 record = {};
  for (const int64_t length : {int64_t{0}, int64_t{1} << 32, INT64_MAX, int64_t{-1}, 0x0123456789abcdef}) {
    memcpy(record.length_words, &length, sizeof(length));
    EXPECT_EQ(file_length_(&record), length);
  }
}

TEST(FileLength, ReadsWhatTheSearchStored) {
  const TemporaryDirectory directory;
  const std::string files = directory.file("large");
  ASSERT_EQ(truncate(files.c_str(), (int64_t{5} << 30) + 7), 0);
  qxport_file_info_i8 record = {};
  intptr_t handle = BEGIN;
  EXPECT_EQ(getfileinfoqqi8_(files.data(), &record, &handle, files.size()), 5);
  EXPECT_EQ(file_length_(&record), (int64_t{5} << 30) + 7);
  EXPECT_EQ(getfileinfoqqi8_(files.data(), &record, &handle, files.size()), 0);
}
