// The binding's routines of files, directories, descriptors and terminals with each of their allocations
// failing.
#include "failing_allocations.h"

#include "posix_calls.h"

#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

namespace {

class FileRoutines : public testing::Test {
protected:
  bool exists(const std::string &name) const {
    struct stat status;
    return lstat(name.c_str(), &status) == 0;
  }

  const TemporaryDirectory directory_;
  const std::string file_ = directory_.file("file", "text", 0640);
  const WorkingDirectory working_{directory_.path()};
};

// A number that only the failed allocation can have set.
constexpr int UNUSUAL = 4095;

// Calls a routine that makes this many allocations with each of them failing, then with none. What the
// allocation left in errno is reported.
template <typename Call, typename Check>
void expect_failures(size_t allocations, Call call, Check nothing_happened) {
  for (size_t n = 1; n <= allocations; ++n) {
    Outcome outcome;
    {
      const FailingAllocation failing(n, UNUSUAL);
      outcome = call();
      EXPECT_TRUE(failing.failed()) << n;
    }
    EXPECT_EQ(outcome, failed_with(UNUSUAL)) << "allocation " << n;
    nothing_happened();
  }
  Outcome outcome;
  {
    const FailingAllocation counting(0);
    outcome = call();
    EXPECT_EQ(counting.allocations(), allocations);
  }
  EXPECT_EQ(outcome, succeeded());
}

TEST_F(FileRoutines, UnlinkRemovesNothing) {
  expect_failures(
      1, [] { return call_named(pxfunlink_, "file", 0); }, [&] { EXPECT_TRUE(exists("file")); });
  EXPECT_FALSE(exists("file"));
}

TEST_F(FileRoutines, AccessChmodChownAndUtimeChangeNothing) {
  const auto unchanged = [&] {
    struct stat status;
    ASSERT_EQ(stat("file", &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0640u);
    EXPECT_GT(status.st_mtime, 100);
  };
  expect_failures(
      1, [] { return call_named(pxfaccess_, "file", 0, R_OK); }, unchanged);
  expect_failures(
      1, [] { return call_named(pxfchmod_, "file", 4, 0600); }, unchanged);
  EXPECT_EQ(chmod("file", 0640), 0);
  expect_failures(
      1, [] { return call_named(pxfchown_, "file", 4, -1, -1); }, unchanged);
  const OwnedRecord times("utimbuf");
  expect_failures(
      1, [&] { return call_named(pxfutime_, "file", 4, times); }, unchanged);
}

TEST_F(FileRoutines, MkfifoAndMkdirMakeNothing) {
  const auto nothing_made = [&] { EXPECT_FALSE(exists("made")); };
  expect_failures(
      1, [] { return call_named(pxfmkfifo_, "made ", 0, 0600); }, nothing_made);
  EXPECT_EQ(unlink("made"), 0);
  expect_failures(
      1, [] { return call_named(pxfmkdir_, "made ", 0, 0700); }, nothing_made);
  expect_failures(
      1, [] { return call_named(pxfrmdir_, "made ", 0); }, [&] { EXPECT_TRUE(exists("made")); });
}

TEST_F(FileRoutines, LinkAndRenameNeedBothNames) {
  const auto nothing_made = [&] {
    EXPECT_TRUE(exists("file"));
    EXPECT_FALSE(exists("new"));
  };
  expect_failures(
      2, [] { return call_named_twice(pxflink_, "file ", 0, "new ", 0); }, nothing_made);
  EXPECT_EQ(unlink("new"), 0);
  expect_failures(
      2, [] { return call_named_twice(pxfrename_, "file", 4, "new", 3); }, nothing_made);
  EXPECT_FALSE(exists("file"));
}

TEST_F(FileRoutines, ChdirStays) {
  ASSERT_EQ(mkdir("below", 0755), 0);
  expect_failures(
      1, [] { return call_named(pxfchdir_, "below", 0); },
      [&] { EXPECT_EQ(std::filesystem::current_path(), directory_.path()); });
}

TEST_F(FileRoutines, StatLeavesTheRecord) {
  const OwnedRecord record("stat");
  fill_record(record);
  const Contents before = contents_of(record);
  expect_failures(
      1, [&] { return call_named(pxfstat_, "file", 0, record); },
      [&] { EXPECT_EQ(contents_of(record), before); });
  EXPECT_NE(contents_of(record), before);
}

TEST_F(FileRoutines, OpenCreatAndPathconfLeaveTheirResults) {
  int32_t result = SENTINEL;
  const auto unchanged = [&] { EXPECT_EQ(result, SENTINEL); };
  expect_failures(
      1, [&] { return call_named(pxfopen_, "file", 0, O_RDONLY, 0, &result); }, unchanged);
  close(std::exchange(result, SENTINEL));
  expect_failures(
      1, [&] { return call_named(pxfcreat_, "file", 0, 0600, &result); }, unchanged);
  close(std::exchange(result, SENTINEL));
  expect_failures(
      1, [&] { return call_named(pxfpathconf_, "file", 0, _PC_NAME_MAX, &result); }, unchanged);
}

// The name, and the small record that a stream is registered as.
TEST_F(FileRoutines, OpendirLeavesTheHandleAndNoDescriptor) {
  const auto before = open_descriptors();
  int32_t stream = SENTINEL;
  Outcome outcome;
  const size_t failed = fail_each_allocation([&] { outcome = call_named(pxfopendir_, ".", 0, &stream); },
                                             [&](size_t n) {
                                               EXPECT_EQ(outcome, failed_with(ENOMEM)) << n;
                                               EXPECT_EQ(stream, SENTINEL);
                                               EXPECT_EQ(open_descriptors(), before);
                                             });
  EXPECT_GE(failed, 2u);
  EXPECT_EQ(outcome, succeeded());
  EXPECT_EQ(call(pxfclosedir_, &stream), succeeded());
}

// Also where the table of handles must grow first.
TEST_F(FileRoutines, OpendirGivesBackEverythingWhenNoHandleIsLeft) {
  std::vector<std::unique_ptr<ForeignObject>> others;
  size_t most = 0;
  for (int i = 0; i < 600; ++i) {
    const auto before = open_descriptors();
    int32_t stream = SENTINEL;
    Outcome outcome;
    const size_t failed = fail_each_allocation([&] { outcome = call_named(pxfopendir_, ".", 0, &stream); },
                                               [&](size_t) { EXPECT_EQ(outcome, failed_with(ENOMEM)); });
    most = std::max(most, failed);
    EXPECT_EQ(outcome, succeeded());
    EXPECT_EQ(call(pxfclosedir_, &stream), succeeded());
    ASSERT_EQ(open_descriptors(), before);
    others.push_back(std::make_unique<ForeignObject>());
  }
  EXPECT_GE(most, 2u);
}

TEST_F(FileRoutines, RefusedArgumentsNeedNoHeap) {
  int32_t result = SENTINEL;
  const OwnedRecord record("stat");
  const FailingAllocation failing(1);
  EXPECT_EQ(call_named(pxfopen_, "file", -1, 0, 0, &result), failed_with(EINVAL));
  EXPECT_EQ(call_named(pxfpathconf_, "file", 5, 0, &result), failed_with(EINVAL));
  EXPECT_EQ(call_named(pxfstat_, "file", 0, 0), refused(NO_SUCH_HANDLE));
  EXPECT_EQ(call_named(pxfutime_, "file", 0, record), refused(EINVAL));
  EXPECT_EQ(failing.allocations(), 0u);
}

TEST_F(FileRoutines, DescriptorsNeedNoHeap) {
  const OwnedRecord status("stat"), lock("flock"), termios("termios"), entry("dirent");
  const DirectoryStream stream(".");
  char buffer[4] = {};
  int32_t reader, writer, result, handle = lock;
  Character cwd(300);
  const FailingAllocation failing(1);
  EXPECT_EQ(call(pxfpipe_, &reader, &writer), succeeded());
  EXPECT_EQ(call(pxfwrite_, writer, static_cast<const void *>(buffer), 4, &result), succeeded());
  EXPECT_EQ(call(pxfread_, reader, static_cast<void *>(buffer), 4, &result), succeeded());
  EXPECT_EQ(call(pxffstat_, reader, status), succeeded());
  EXPECT_EQ(call(pxffpathconf_, reader, _PC_PIPE_BUF, &result), succeeded());
  EXPECT_EQ(call(pxfdup2_, reader, writer), succeeded());
  call(pxffcntl_, reader, F_GETLK, &handle, &result);
  call(pxflseek_, reader, 0, SEEK_SET, &result);
  call(pxftcgetattr_, reader, termios);
  call(pxftcsetattr_, reader, TCSANOW, termios);
  EXPECT_EQ(call(pxfcfsetospeed_, termios, B9600), succeeded());
  EXPECT_EQ(call(pxfcfgetospeed_, termios, &result), succeeded());
  EXPECT_EQ(call(pxfreaddir_, stream, entry), succeeded());
  EXPECT_EQ(call(pxfrewinddir_, stream), succeeded());
  EXPECT_EQ(call(pxfclose_, reader), succeeded());
  EXPECT_EQ(call(pxfclose_, writer), succeeded());
  EXPECT_EQ(reported_by([&](int32_t *ierror) { pxfgetcwd_(cwd.data(), &result, ierror, cwd.length()); }),
            succeeded());
  EXPECT_EQ(failing.allocations(), 0u);
}

TEST_F(FileRoutines, GiveBackAllThatTheyObtain) {
  const OwnedRecord status("stat"), entry("dirent");
  Character cwd(300);
  std::string long_name;
  while (long_name.size() < 2000)
    long_name += "./";
  long_name += "file";
  EXPECT_EQ(heap_growth([&] {
              int32_t result = 0;
              for (const std::string &name : {long_name, std::string("missing")}) {
                call_named(pxfaccess_, name, 0, R_OK);
                call_named(pxfchmod_, name, 0, 0640);
                call_named(pxfchown_, name, 0, -1, -1);
                call_named(pxfutime_, name, 0, 0);
                call_named(pxfstat_, name, 0, status);
                call_named(pxfpathconf_, name, 0, _PC_NAME_MAX, &result);
                call_named(pxfmkdir_, name, 0, 0700);
                call_named(pxfrmdir_, name, 0);
                call_named(pxfchdir_, name, 0);
                call_named(pxfmkfifo_, "file", 0, 0600);
                call_named_twice(pxflink_, name, 0, "file", 0);
                call_named_twice(pxfrename_, name, 0, "file", 0);
                call_named(pxfopen_, name, 0, O_RDONLY, 0, &result);
                call(pxfclose_, result);
                call_named(pxfopendir_, name, 0, &result);
              }
              call_named(pxfopendir_, ".", 0, &result);
              call(pxfreaddir_, result, entry);
              call(pxfclosedir_, &result);
              for (const size_t length : {cwd.text().size(), size_t{1}}) {
                int32_t ierror;
                pxfgetcwd_(cwd.data(), &result, &ierror, static_cast<qxport_charlen>(length));
              }
            }),
            0u);
}

}  // namespace
