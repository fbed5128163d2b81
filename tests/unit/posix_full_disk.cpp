// Files, directories and units on a file system that is full: small ones of the test's own, seen by nobody
// else. Where the host lets the test mount none, a device that is always full.
#include "posix_calls.h"

#include "contract/services.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int32_t ROOM = 65536;

bool write_text(const char *path, const std::string &text) {
  const int fd = open(path, O_WRONLY);
  const bool written = write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  close(fd);
  return written;
}

// A view of the mounts of its own: the superuser simply has it, others as superusers of a user namespace.
bool separate_mounts() {
  if (unshare(CLONE_NEWNS) == 0)
    return true;
  const std::string user = std::to_string(geteuid()), group = std::to_string(getegid());
  return unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0 && write_text("/proc/self/setgroups", "deny") &&
         write_text("/proc/self/uid_map", "0 " + user + " 1") &&
         write_text("/proc/self/gid_map", "0 " + group + " 1");
}

// Room for so many bytes, in three files besides the directory itself.
bool mount_small_disk(const char *path) {
  return mkdir(path, 0700) == 0 && mount("none", path, "tmpfs", 0, "size=65536,nr_inodes=4") == 0;
}

struct Written {
  Outcome outcome;
  int32_t count;
  bool operator==(const Written &) const = default;
};
std::ostream &operator<<(std::ostream &out, const Written &written) {
  return out << written.outcome << ", count " << written.count;
}

const std::string bytes(ROOM, 'x');

Written write_ours(int32_t fd, int32_t count) {
  Guarded<int32_t> written(SENTINEL);
  const Outcome outcome = call(pxfwrite_, fd, static_cast<const void *>(bytes.data()), count, &written);
  return {outcome, written};
}
Written write_by_host(int fd, int32_t count) {
  ssize_t written = 0;
  const Outcome outcome =
      as_the_host([&] { return written = write(fd, bytes.data(), static_cast<size_t>(count)); });
  return {outcome, static_cast<int32_t>(written)};
}

const Written NO_ROOM = {failed_with(ENOSPC), -1};

int32_t put_character(int32_t unit) {
  int32_t ierror = SENTINEL;
  pxffputc_(&unit, "x", &ierror, 1);
  return ierror;
}

void expect_full_device() {
  const int fd = open("/dev/full", O_WRONLY);
  for (const int32_t count : {1, 3, ROOM})
    EXPECT_EQ(write_ours(fd, count), NO_ROOM);
  EXPECT_EQ(write_ours(fd, 0), write_by_host(fd, 0));
  EXPECT_EQ(for_fdopen(fd, 40, "w", 1), 0);
  EXPECT_EQ(put_character(40), -ENOSPC);
  close(fd);
}

class FullDisk : public testing::Test {
protected:
  // In a child process whose working directory holds two small disks, `ours` and `twin`.
  template <typename Check>
  void on_small_disks(Check check) const {
    in_child([&] {
      ASSERT_EQ(chdir(directory_.path().c_str()), 0);
      if (separate_mounts() && mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
          mount_small_disk("ours") && mount_small_disk("twin"))
        check();
      else
        expect_full_device();
    });
  }

private:
  const TemporaryDirectory directory_;
};

TEST_F(FullDisk, TakesWhatTheHostTakesAndThenIs28) {
  on_small_disks([] {
    const int fd = open("ours/file", O_WRONLY | O_CREAT, 0600);
    const int twin = open("twin/file", O_WRONLY | O_CREAT, 0600);
    int32_t total = 0;
    for (const int32_t count : {1, 50000, 50000, 50000, 1, 0}) {
      const Written written = write_ours(fd, count);
      EXPECT_EQ(written, write_by_host(twin, count)) << count;
      total += std::max(written.count, 0);
    }
    EXPECT_EQ(total, ROOM);
    EXPECT_EQ(write_ours(fd, 1), NO_ROOM);
    EXPECT_EQ(lseek(fd, 0, SEEK_CUR), ROOM);
    ASSERT_EQ(ftruncate(fd, 0), 0);
    ASSERT_EQ(lseek(fd, 0, SEEK_SET), 0);
    EXPECT_EQ(write_ours(fd, 1), (Written{succeeded(), 1}));
    close(fd);
    close(twin);
  });
}

TEST_F(FullDisk, TakesNoCharacterOfAUnit) {
  on_small_disks([] {
    const int fd = open("ours/file", O_WRONLY | O_CREAT, 0600);
    while (write(fd, bytes.data(), bytes.size()) > 0) {
    }
    ASSERT_EQ(for_fdopen(fd, 40, "w", 1), 0);
    EXPECT_EQ(put_character(40), -ENOSPC);
    ASSERT_EQ(ftruncate(fd, 0), 0);
    EXPECT_EQ(put_character(40), 0);
    close(fd);
  });
}

TEST_F(FullDisk, WithoutRoomForAFileMakesNone) {
  on_small_disks([] {
    Guarded<int32_t> fd(SENTINEL), opened(SENTINEL);
    for (const char *name : {"ours/1", "ours/2", "ours/3"}) {
      ASSERT_EQ(call_named(pxfcreat_, name, 0, 0600, &fd), succeeded());
      EXPECT_EQ(call(pxfclose_, fd.value()), succeeded());
    }
    EXPECT_EQ(call_named(pxfcreat_, "ours/4", 0, 0600, &fd), failed_with(ENOSPC));
    EXPECT_EQ(fd, -1);
    EXPECT_EQ(call_named(pxfopen_, "ours/4", 0, O_RDWR | O_CREAT, 0600, &opened), failed_with(ENOSPC));
    EXPECT_EQ(opened, -1);
    EXPECT_EQ(call_named(pxfmkdir_, "ours/4", 0, 0700), failed_with(ENOSPC));
    EXPECT_EQ(call_named(pxfmkfifo_, "ours/4", 0, 0600), failed_with(ENOSPC));
    EXPECT_EQ(call_named_twice(pxflink_, "ours/1", 0, "ours/4", 0),
              as_the_host([] { return link("ours/1", "ours/5"); }));
    EXPECT_NE(access("ours/4", F_OK), 0);
    EXPECT_EQ(call_named_twice(pxflink_, "ours/1", 0, "twin/1", 0), failed_with(EXDEV));
    EXPECT_EQ(call_named_twice(pxfrename_, "ours/1", 0, "twin/1", 0), failed_with(EXDEV));
    EXPECT_EQ(call_named_twice(pxfrename_, "ours/1", 0, "ours/4", 0), succeeded());
    EXPECT_EQ(call_named(pxfunlink_, "ours/4", 0), succeeded());
    EXPECT_EQ(call_named(pxfmkdir_, "ours/4", 0, 0700), succeeded());
  });
}

}  // namespace
