// PXFOPENDIR, PXFREADDIR, PXFREWINDDIR and PXFCLOSEDIR against the host's streams.
#include "ordinary_user.h"
#include "posix_calls.h"

#include <dirent.h>
#include <fcntl.h>
#include <fstream>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using qxport::DirentRecord;

class Streams : public testing::Test {
protected:
  Streams() { chmod(directory_.path().c_str(), 0777); }

  const TemporaryDirectory directory_;
  const WorkingDirectory working_{directory_.path()};
};

using Opendir = Streams;
using Readdir = Streams;
using Rewinddir = Streams;
using Closedir = Streams;

std::vector<std::string> entries_of_host(const std::string &path) {
  std::vector<std::string> names;
  DIR *stream = opendir(path.c_str());
  while (const dirent *entry = readdir(stream))
    names.push_back(entry->d_name);
  closedir(stream);
  return names;
}

std::vector<std::string> rest_of(int32_t stream) {
  std::vector<std::string> names;
  for (std::string name = next_entry(stream); name != "128"; name = next_entry(stream)) {
    names.push_back(name);
    if (names.size() > 100000) {
      ADD_FAILURE() << "no end";
      break;
    }
  }
  return names;
}

TEST_F(Opendir, NamesByTheRule) {
  for (const auto &[name, ilen] :
       {std::pair(". ", 0), {".", 0}, {".", 1}, {".\t\n", 0}, {"..", 1}, {"./.", 3}}) {
    int32_t stream = SENTINEL;
    EXPECT_EQ(call_named(pxfopendir_, name, ilen, &stream), succeeded()) << name;
    EXPECT_NE(stream, 0);
    EXPECT_EQ(rest_of(stream), entries_of_host("."));
    EXPECT_EQ(call(pxfclosedir_, &stream), succeeded());
  }
}

TEST_F(Opendir, FailureIsTheHostsAndLeavesTheHandle) {
  directory_.file("file");
  ASSERT_EQ(mkdir("closed", 0), 0);
  Guarded<int32_t> stream(SENTINEL);
  for (const std::string &name : {std::string("missing"), std::string("file"), std::string("file/below"),
                                  std::string(""), std::string(300, 'n'), std::string(5000, 'p')})
    EXPECT_EQ(call_named(pxfopendir_, name, 0, &stream),
              as_the_host([&] { return opendir(name.c_str()) == nullptr ? -1 : 0; }))
        << name;
  as_ordinary_user([&] { EXPECT_EQ(call_named(pxfopendir_, "closed", 0, &stream), failed_with(EACCES)); });
  chmod("closed", 0700);
  EXPECT_EQ(call_named(pxfopendir_, "file", 0, &stream), failed_with(ENOTDIR));
  EXPECT_EQ(stream, SENTINEL);
}

TEST_F(Opendir, StreamsAtOnceAreApart) {
  constexpr int COUNT = 300;
  std::vector<int32_t> streams(COUNT);
  for (int i = 0; i < COUNT; ++i) {
    const std::string name = "d" + std::to_string(i);
    ASSERT_EQ(mkdir(name.c_str(), 0755), 0);
    directory_.file(name + "/f" + std::to_string(i));
    ASSERT_EQ(call_named(pxfopendir_, name, 0, &streams[i]), succeeded());
  }
  EXPECT_EQ(std::set(streams.begin(), streams.end()).size(), COUNT + 0u);
  for (int i = COUNT - 1; i >= 0; --i) {
    std::vector<std::string> names = rest_of(streams[i]);
    EXPECT_EQ(names.size(), 3u);
    EXPECT_TRUE(std::count(names.begin(), names.end(), "f" + std::to_string(i)) == 1);
    EXPECT_EQ(call(pxfclosedir_, &streams[i]), succeeded());
  }
}

TEST_F(Readdir, GivesTheHostsEntriesInTheHostsOrder) {
  for (int i = 0; i < 2000; ++i)
    directory_.file("file" + std::to_string(i));
  directory_.file(std::string(255, 'n'));
  directory_.file(" blanks ");
  directory_.file("new\nline");
  directory_.file("\xff\x80\x01");
  const DirectoryStream stream(".");
  EXPECT_EQ(rest_of(stream), entries_of_host("."));
  for (const char *path : {"/", "/dev", "/proc/self/fd"}) {
    const DirectoryStream other(path);
    EXPECT_GT(rest_of(other).size(), 2u) << path;
  }
}

TEST_F(Readdir, EndIs128AndStays128) {
  const DirectoryStream stream(".");
  const OwnedRecord entry("dirent");
  fill_record(entry);
  rest_of(stream);
  const Contents before = contents_of(entry);
  for (int i = 0; i < 3; ++i) {
    Guarded<int32_t> ierror(SENTINEL);
    const int32_t from = stream, to = entry;
    errno = 0;
    pxfreaddir_(&from, &to, &ierror);
    EXPECT_EQ(ierror, 128);
    EXPECT_EQ(errno, 0);
  }
  EXPECT_EQ(contents_of(entry), before);
}

TEST_F(Readdir, EndReportsAFailureLeftOverFromBefore) {
  const DirectoryStream stream(".");
  const OwnedRecord entry("dirent");
  rest_of(stream);
  EXPECT_EQ(call(pxfreaddir_, stream, entry), refused(ERRNO_SENTINEL, ERRNO_SENTINEL));
  EXPECT_EQ(next_entry(stream), "128");
}

TEST_F(Readdir, FailureIsTheHostsAndLeavesTheRecord) {
  const int next = open("/dev/null", O_RDONLY);
  close(next);
  int32_t stream = 0;
  ASSERT_EQ(call_named(pxfopendir_, ".", 0, &stream), succeeded());
  ASSERT_EQ(close(next), 0);
  const OwnedRecord entry("dirent");
  fill_record(entry);
  const Contents before = contents_of(entry);
  EXPECT_EQ(call(pxfreaddir_, stream, entry), failed_with(EBADF));
  EXPECT_EQ(contents_of(entry), before);
  EXPECT_EQ(call(pxfclosedir_, &stream), failed_with(EBADF));
}

TEST_F(Readdir, EntryIs0WhateverIsLeftOverFromBefore) {
  const DirectoryStream stream(".");
  const OwnedRecord entry("dirent");
  EXPECT_EQ(call(pxfreaddir_, stream, entry), succeeded());
  EXPECT_EQ(call(pxfreaddir_, stream, entry), succeeded());
}

// The next name is shorter: its NUL ends it.
TEST_F(Readdir, EntriesReplaceOneAnotherInTheRecord) {
  directory_.file("a name that is longer than others");
  const DirectoryStream stream(".");
  const OwnedRecord entry("dirent");
  for (const std::string &name : entries_of_host(".")) {
    EXPECT_EQ(call(pxfreaddir_, stream, entry), succeeded());
    Character value(40);
    int32_t length = SENTINEL;
    EXPECT_EQ(strget(entry, "d_name", value, &length), succeeded());
    EXPECT_EQ(value.text(), padded(name, 40));
    EXPECT_EQ(length, static_cast<int32_t>(name.size()));
  }
}

TEST_F(Readdir, OfARemovedDirectoryEndsAsTheHostsDoes) {
  for (const char *name : {"one", "two"}) {
    ASSERT_EQ(mkdir(name, 0755), 0);
    directory_.file(std::string(name) + "/file");
  }
  const DirectoryStream stream("one");
  DIR *twin = opendir("two");
  for (const char *name : {"one/file", "two/file"})
    ASSERT_EQ(unlink(name), 0);
  for (const char *name : {"one", "two"})
    ASSERT_EQ(rmdir(name), 0);
  std::vector<std::string> expected;
  errno = 0;
  while (const dirent *entry = readdir(twin))
    expected.push_back(entry->d_name);
  EXPECT_EQ(errno, 0);
  closedir(twin);
  EXPECT_EQ(rest_of(stream), expected);
}

TEST_F(Readdir, OfADirectoryRemovedBetweenTwoEntriesEnds) {
  ASSERT_EQ(mkdir("one", 0755), 0);
  directory_.file("one/file");
  const DirectoryStream stream("one");
  EXPECT_NE(next_entry(stream), "128");
  ASSERT_EQ(unlink("one/file"), 0);
  ASSERT_EQ(rmdir("one"), 0);
  EXPECT_LE(rest_of(stream).size(), 2u);
  EXPECT_EQ(call(pxfrewinddir_, stream), succeeded());
  EXPECT_EQ(next_entry(stream), "128");
}

TEST_F(Readdir, ChecksTheStreamAndThenTheRecord) {
  const DirectoryStream stream(".");
  const OwnedRecord entry("dirent"), other("stat");
  // Of two that are wrong, the first is reported.
  EXPECT_EQ(call(pxfreaddir_, 0, other), refused(NO_SUCH_HANDLE));
  EXPECT_EQ(call(pxfreaddir_, other, 0), refused(EINVAL));
  EXPECT_EQ(call(pxfreaddir_, stream, 0), refused(NO_SUCH_HANDLE));
  EXPECT_EQ(call(pxfreaddir_, stream, other), refused(EINVAL));
  expect_unknown_handles_refused([&](int32_t handle) { return call(pxfreaddir_, handle, entry); });
  expect_handle_checked("dirent", [&](int32_t handle) { return call(pxfreaddir_, stream, handle); });
  EXPECT_EQ(rest_of(stream), entries_of_host("."));
}

TEST_F(Readdir, OfARecordIs22AndTheRecordStays) {
  const OwnedRecord entry("dirent");
  const Contents before = contents_of(entry);
  for (const KnownKind &kind : known_kinds()) {
    const OwnedRecord record(kind.name);
    fill_record(record);
    const Contents held = contents_of(record);
    EXPECT_EQ(call(pxfreaddir_, record, entry), refused(EINVAL)) << kind.name;
    EXPECT_EQ(contents_of(record), held);
  }
  EXPECT_EQ(contents_of(entry), before);
}

TEST_F(Rewinddir, StartsAgain) {
  directory_.file("file");
  const DirectoryStream stream(".");
  const std::string first = next_entry(stream);
  EXPECT_EQ(call(pxfrewinddir_, stream), succeeded());
  EXPECT_EQ(next_entry(stream), first);
  rest_of(stream);
  EXPECT_EQ(call(pxfrewinddir_, stream), succeeded());
  EXPECT_EQ(next_entry(stream), first);
}

TEST_F(Rewinddir, SeesWhatCameSince) {
  const DirectoryStream stream(".");
  EXPECT_EQ(rest_of(stream).size(), 2u);
  directory_.file("file");
  EXPECT_EQ(call(pxfrewinddir_, stream), succeeded());
  EXPECT_EQ(rest_of(stream).size(), 3u);
}

TEST_F(Rewinddir, OfNoStreamIs0AndNothing) {
  for (const int32_t handle : {0, -1, 99999, INT32_MAX, INT32_MIN})
    EXPECT_EQ(call(pxfrewinddir_, handle), succeeded());
  for (const KnownKind &kind : known_kinds()) {
    const OwnedRecord record(kind.name);
    fill_record(record);
    const Contents before = contents_of(record);
    EXPECT_EQ(call(pxfrewinddir_, record), succeeded());
    EXPECT_EQ(contents_of(record), before);
  }
}

TEST_F(Closedir, ReleasesTheDescriptorAndTheHandle) {
  const auto before = open_descriptors();
  int32_t stream = 0;
  ASSERT_EQ(call_named(pxfopendir_, ".", 0, &stream), succeeded());
  EXPECT_EQ(open_descriptors(), before + 1);
  int32_t second = stream;
  EXPECT_EQ(call(pxfclosedir_, &stream), succeeded());
  EXPECT_EQ(stream, 0);
  EXPECT_EQ(open_descriptors(), before);
  const OwnedRecord entry("stat");
  EXPECT_EQ(call(pxfclosedir_, &second), refused(EINVAL));
  EXPECT_EQ(second, 0);
}

TEST_F(Closedir, StaleHandleIsUnknownToTheOthers) {
  int32_t stream = 0;
  const OwnedRecord entry("dirent");
  ASSERT_EQ(call_named(pxfopendir_, ".", 0, &stream), succeeded());
  const int32_t stale = stream;
  ASSERT_EQ(call(pxfclosedir_, &stream), succeeded());
  EXPECT_EQ(call(pxfreaddir_, stale, entry), refused(NO_SUCH_HANDLE));
  EXPECT_EQ(call(pxfrewinddir_, stale), succeeded());
}

TEST_F(Closedir, OfAnUnknownHandleIs22AndClearsIt) {
  for (const int32_t unknown : {0, -1, 99999, INT32_MAX, INT32_MIN}) {
    Guarded<int32_t> handle(unknown);
    EXPECT_EQ(call(pxfclosedir_, &handle), refused(EINVAL));
    EXPECT_EQ(handle, 0);
  }
}

TEST_F(Closedir, OfARecordIs22AndTheRecordStays) {
  for (const KnownKind &kind : known_kinds()) {
    const OwnedRecord record(kind.name);
    fill_record(record);
    const Contents before = contents_of(record);
    Guarded<int32_t> handle(record);
    EXPECT_EQ(call(pxfclosedir_, &handle), refused(EINVAL)) << kind.name;
    EXPECT_EQ(handle, 0);
    EXPECT_EQ(contents_of(record), before);
  }
}

// Somebody closed the descriptor below the stream: the failure is reported, and the handle is gone all the
// same.
TEST_F(Closedir, FailureIsTheHostsAndReleasesTheHandle) {
  const int next = open("/dev/null", O_RDONLY);
  close(next);
  int32_t stream = 0;
  ASSERT_EQ(call_named(pxfopendir_, ".", 0, &stream), succeeded());
  ASSERT_EQ(close(next), 0);
  const int32_t stale = stream;
  EXPECT_EQ(call(pxfclosedir_, &stream), failed_with(EBADF));
  EXPECT_EQ(stream, 0);
  const OwnedRecord entry("dirent");
  EXPECT_EQ(call(pxfrewinddir_, stale), succeeded());
  int32_t again = stale;
  EXPECT_EQ(call(pxfclosedir_, &again).answer, EINVAL);
}

// Routines for records tell that a stream is none.
TEST_F(Streams, AreNoRecords) {
  directory_.file("file");
  const DirectoryStream stream("."), other(".");
  const OwnedRecord entry("dirent");
  int32_t number = SENTINEL, length = 20;
  int64_t wide = SENTINEL;
  int32_t elements[20] = {};
  int64_t wide_elements[20] = {};
  Character text(8);
  EXPECT_EQ(next_entry(stream), next_entry(other));
  EXPECT_EQ(intget(stream, "st_mode", &number), refused(NO_SUCH_NAME));
  EXPECT_EQ(intset(stream, "st_mode", 1), refused(NO_SUCH_NAME));
  EXPECT_EQ(int8get(stream, "st_size", &wide), refused(NO_SUCH_NAME));
  EXPECT_EQ(int8set(stream, "st_size", 1), refused(NO_SUCH_NAME));
  EXPECT_EQ(aintget(stream, "c_cc", elements, &length), refused(NO_SUCH_NAME));
  EXPECT_EQ(aintset(stream, "c_cc", elements, &length), refused(NO_SUCH_NAME));
  EXPECT_EQ(aint8get(stream, "c_cc", wide_elements, &length), refused(NO_SUCH_NAME));
  EXPECT_EQ(aint8set(stream, "c_cc", wide_elements, &length), refused(NO_SUCH_NAME));
  EXPECT_EQ(eintget(stream, "c_cc", 1, &number), refused(NO_SUCH_NAME));
  EXPECT_EQ(eintset(stream, "c_cc", 1, 1), refused(NO_SUCH_NAME));
  EXPECT_EQ(estrget(stream, "gr_mem", 1, text, &length), refused(EINVAL));
  EXPECT_EQ(strget(stream, "d_name", text, &length), refused(NO_SUCH_NAME));
  EXPECT_EQ(strset(stream, "d_name", "x"), refused(NO_SUCH_NAME));
  EXPECT_EQ(copy("dirent", stream, entry), refused(EINVAL));
  EXPECT_EQ(copy("dirent", entry, stream), refused(EINVAL));
  EXPECT_EQ(copy("dirent", stream, other).answer, NO_SUCH_NAME);
  int32_t handle = stream;
  EXPECT_EQ(release(&handle), refused(NO_SUCH_NAME));
  EXPECT_EQ(handle, static_cast<int32_t>(stream));
  EXPECT_EQ(number, SENTINEL);
  EXPECT_EQ(wide, SENTINEL);
  EXPECT_EQ(text.text(), "########");
  EXPECT_EQ(rest_of(stream), rest_of(other));
}

long resident_pages() {
  long total = 0, resident = 0;
  std::ifstream("/proc/self/statm") >> total >> resident;
  return resident;
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int CYCLES = 100000;
constexpr long MOST_PAGES_MORE = 100000;  // what was freed is kept for a while
#else
constexpr int CYCLES = 1000000;
constexpr long MOST_PAGES_MORE = 64;
#endif

TEST_F(Streams, OpenedAndClosedForeverTakeNoMoreOfAnything) {
  const int32_t one = 1;
  const auto cycles = [&](int count) {
    for (int i = 0; i < count; ++i) {
      int32_t stream = 0, ierror = -1;
      pxfopendir_(".", &one, &stream, &ierror, 1);
      ASSERT_EQ(ierror, 0);
      pxfclosedir_(&stream, &ierror);
      ASSERT_EQ(ierror, 0);
    }
  };
  cycles(1000);
  const auto descriptors = open_descriptors();
  const long pages = resident_pages();
  cycles(CYCLES);
  EXPECT_EQ(open_descriptors(), descriptors);
  EXPECT_LE(resident_pages(), pages + MOST_PAGES_MORE);
}

}  // namespace
