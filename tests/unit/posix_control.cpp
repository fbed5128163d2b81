// PXFFCNTL: its commands that take a value, those that take a lock's record, and all others.
#include "interruptions.h"
#include "posix_calls.h"

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace {

using qxport::FlockRecord;

class Control : public testing::Test {
protected:
  ~Control() override { close(fd_); }

  const TemporaryDirectory directory_;
  const std::string file_ = directory_.file("file", "0123456789");
  const int fd_ = open(file_.c_str(), O_RDWR);
};

using Locks = Control;

// The command, what it leaves in IARGIN and in IARGOUT.
struct Answer {
  Outcome outcome;
  int32_t iargin, iargout;
  bool operator==(const Answer &) const = default;
};
std::ostream &operator<<(std::ostream &out, const Answer &answer) {
  return out << answer.outcome << ", IARGIN " << answer.iargin << ", IARGOUT " << answer.iargout;
}

Answer control(int32_t fd, int32_t command, int32_t argument) {
  Guarded<int32_t> iargin(argument), iargout(SENTINEL);
  const Outcome outcome = call(pxffcntl_, fd, command, &iargin, &iargout);
  return {outcome, iargin, iargout};
}

TEST_F(Control, DuplicatesFromANumberOn) {
  const Answer answer = control(fd_, F_DUPFD, 200);
  EXPECT_EQ(answer.outcome, succeeded());
  EXPECT_GE(answer.iargout, 200);
  EXPECT_EQ(lseek(answer.iargout, 0, SEEK_END), 10);
  EXPECT_EQ(answer.iargin, 200);
  close(answer.iargout);
  EXPECT_EQ(control(fd_, F_DUPFD, -1), (Answer{failed_with(EINVAL), -1, -1}));
}

TEST_F(Control, SetsAndGetsTheDescriptorsFlags) {
  for (const int32_t flags : {FD_CLOEXEC, 0}) {
    EXPECT_EQ(control(fd_, F_SETFD, flags), (Answer{succeeded(), flags, 0}));
    EXPECT_EQ(fcntl(fd_, F_GETFD), flags);
    EXPECT_EQ(control(fd_, F_GETFD, SENTINEL), (Answer{succeeded(), SENTINEL, flags}));
  }
}

TEST_F(Control, SetsAndGetsTheFilesFlags) {
  for (const int32_t flags : {O_NONBLOCK | O_APPEND, O_APPEND, 0}) {
    EXPECT_EQ(control(fd_, F_SETFL, flags), (Answer{succeeded(), flags, 0}));
    EXPECT_EQ(fcntl(fd_, F_GETFL) & (O_NONBLOCK | O_APPEND), flags);
    EXPECT_EQ(control(fd_, F_GETFL, SENTINEL), (Answer{succeeded(), SENTINEL, fcntl(fd_, F_GETFL)}));
  }
}

TEST_F(Control, UnknownCommandIs22) {
  EXPECT_EQ(control(fd_, 99999, 5), (Answer{failed_with(EINVAL), 5, -1}));
  EXPECT_EQ(control(fd_, -1, 5), (Answer{failed_with(EINVAL), 5, -1}));
}

// The host sees an address where a process is expected.
TEST_F(Control, SetOwnDoesNotTakeTheProcessGiven) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const Answer answer = control(ends[0], F_SETOWN, getpid());
  EXPECT_EQ(answer.iargin, getpid());
  EXPECT_NE(fcntl(ends[0], F_GETOWN), getpid());
  EXPECT_EQ(fcntl(ends[0], F_SETOWN, getpid()), 0);
  EXPECT_EQ(control(ends[0], F_GETOWN, SENTINEL), (Answer{succeeded(), SENTINEL, getpid()}));
  close(ends[0]);
  close(ends[1]);
}

struct Lock {
  int32_t type, whence;
  int64_t start, length;
  int32_t pid;
  bool operator==(const Lock &) const = default;
};
std::ostream &operator<<(std::ostream &out, const Lock &lock) {
  return out << lock.type << ' ' << lock.whence << ' ' << lock.start << ' ' << lock.length << ' ' << lock.pid;
}

// A command with a record, and what the record holds afterwards.
struct LockAnswer {
  Outcome outcome;
  int32_t iargout;
  Lock record;
  bool operator==(const LockAnswer &) const = default;
};
std::ostream &operator<<(std::ostream &out, const LockAnswer &answer) {
  return out << answer.outcome << ", IARGOUT " << answer.iargout << ", record " << answer.record;
}

LockAnswer lock_by(int32_t fd, int32_t command, const Lock &lock) {
  const OwnedRecord handle("flock");
  FlockRecord &record = record_as<FlockRecord>(handle);
  record.l_type = lock.type;
  record.l_whence = lock.whence;
  record.l_start = lock.start;
  record.l_len = lock.length;
  record.l_pid = lock.pid;
  const Answer answer = control(fd, command, handle);
  EXPECT_EQ(answer.iargin, static_cast<int32_t>(handle));
  return {answer.outcome,
          answer.iargout,
          {record.l_type, record.l_whence, record.l_start, record.l_len, record.l_pid}};
}

// Another process that holds a lock on the file while one is alive.
class OtherProcess {
public:
  OtherProcess(const std::string &path, const Lock &lock) {
    int ready[2];
    EXPECT_EQ(pipe(ready), 0);
    child_ = fork();
    if (child_ == 0) {
      const int fd = open(path.c_str(), O_RDWR);
      struct flock host = {};
      host.l_type = static_cast<short>(lock.type);
      host.l_whence = static_cast<short>(lock.whence);
      host.l_start = lock.start;
      host.l_len = lock.length;
      const char held = fcntl(fd, F_SETLK, &host) == 0 ? 'y' : 'n';
      _exit(write(ready[1], &held, 1) == 1 && pause());
    }
    close(ready[1]);
    char held = 0;
    EXPECT_EQ(read(ready[0], &held, 1), 1);
    EXPECT_EQ(held, 'y');
    close(ready[0]);
  }
  ~OtherProcess() {
    end();
    EXPECT_EQ(waitpid(child_, nullptr, 0), child_);
  }
  OtherProcess(const OtherProcess &) = delete;
  OtherProcess &operator=(const OtherProcess &) = delete;

  int32_t pid() const { return child_; }
  void end() const { kill(child_, SIGKILL); }

private:
  pid_t child_;
};

constexpr int64_t FAR = int64_t{5} << 30;

TEST_F(Locks, OfNobodyElseAreHad) {
  const Lock lock = {F_WRLCK, SEEK_SET, 2, 3, 0};
  EXPECT_EQ(lock_by(fd_, F_SETLK, lock), (LockAnswer{succeeded(), 0, lock}));
  const Lock unlock = {F_UNLCK, SEEK_SET, 0, 0, 0};
  EXPECT_EQ(lock_by(fd_, F_SETLKW, unlock), (LockAnswer{succeeded(), 0, unlock}));
  EXPECT_EQ(lock_by(fd_, F_GETLK, lock), (LockAnswer{succeeded(), 0, {F_UNLCK, SEEK_SET, 2, 3, 0}}));
}

TEST_F(Locks, AreSeenByAnotherProcess) {
  ASSERT_EQ(lock_by(fd_, F_SETLK, {F_WRLCK, SEEK_SET, FAR, 3, 0}).outcome, succeeded());
  const pid_t holder = getpid();
  in_child([&] {
    const int fd = open(file_.c_str(), O_RDWR);
    struct flock lock = {};
    lock.l_type = F_RDLCK;
    EXPECT_EQ(fcntl(fd, F_GETLK, &lock), 0);
    EXPECT_EQ(lock.l_type, F_WRLCK);
    EXPECT_EQ(lock.l_start, FAR);
    EXPECT_EQ(lock.l_len, 3);
    EXPECT_EQ(lock.l_pid, holder);
  });
}

TEST_F(Locks, HeldByAnotherProcessAreTold) {
  const OtherProcess other(file_, {F_WRLCK, SEEK_SET, FAR, 100, 0});
  EXPECT_EQ(lock_by(fd_, F_GETLK, {F_RDLCK, SEEK_SET, 0, 0, -7}),
            (LockAnswer{succeeded(), 0, {F_WRLCK, SEEK_SET, FAR, 100, other.pid()}}));
  EXPECT_EQ(lock_by(fd_, F_GETLK, {F_RDLCK, SEEK_SET, 0, FAR, -7}).record.type, F_UNLCK);
}

TEST_F(Locks, HeldByAnotherProcessAreRefused) {
  const OtherProcess other(file_, {F_RDLCK, SEEK_SET, 0, 5, 0});
  const Lock lock = {F_WRLCK, SEEK_SET, 4, 1, 0};
  struct flock host = {F_WRLCK, SEEK_SET, 4, 1, 0};
  EXPECT_EQ(lock_by(fd_, F_SETLK, lock),
            (LockAnswer{as_the_host([&] { return fcntl(fd_, F_SETLK, &host); }), -1, lock}));
  EXPECT_EQ(lock_by(fd_, F_SETLK, {F_RDLCK, SEEK_SET, 0, 5, 0}).outcome, succeeded());
  EXPECT_EQ(lock_by(fd_, F_SETLK, {F_WRLCK, SEEK_SET, 5, 5, 0}).outcome, succeeded());
}

TEST_F(Locks, WaitedForAreInterruptedBySignals) {
  const OtherProcess other(file_, {F_WRLCK, SEEK_SET, 0, 0, 0});
  const Interruptions alarms;
  const Lock lock = {F_WRLCK, SEEK_SET, 0, 1, 0};
  EXPECT_EQ(lock_by(fd_, F_SETLKW, lock), (LockAnswer{failed_with(EINTR), -1, lock}));
}

TEST_F(Locks, WaitedForAreHadWhenTheOtherProcessEnds) {
  const OtherProcess other(file_, {F_WRLCK, SEEK_SET, 0, 0, 0});
  const Lock lock = {F_WRLCK, SEEK_SET, 0, 1, 0};
  EXPECT_NE(lock_by(fd_, F_SETLK, lock).outcome, succeeded());
  other.end();
  EXPECT_EQ(lock_by(fd_, F_SETLKW, lock), (LockAnswer{succeeded(), 0, lock}));
}

// Two of the fields have 16 bits in the host's structure: what comes back shows that it was there, whether
// the command failed or not.
TEST_F(Locks, RecordIsWrittenBackAfterSuccess) {
  EXPECT_EQ(lock_by(fd_, F_SETLK, {0x50000 | F_RDLCK, 0x70000 | SEEK_SET, 1, 2, 9}),
            (LockAnswer{succeeded(), 0, {F_RDLCK, SEEK_SET, 1, 2, 9}}));
}

TEST_F(Locks, RecordIsWrittenBackAfterFailure) {
  EXPECT_EQ(lock_by(fd_, F_SETLK, {0x18001, 0x1FFFF, -1, INT64_MIN, INT32_MIN}),
            (LockAnswer{failed_with(EINVAL), -1, {-32767, -1, -1, INT64_MIN, INT32_MIN}}));
  for (const int32_t command : {F_GETLK, F_SETLK, F_SETLKW})
    for (const int32_t fd : {-1, 1 << 20, INT32_MAX, INT32_MIN})
      EXPECT_EQ(lock_by(fd, command, {0x50000 | F_WRLCK, SEEK_SET, FAR, -FAR, 3}),
                (LockAnswer{failed_with(EBADF), -1, {F_WRLCK, SEEK_SET, FAR, -FAR, 3}}));
}

TEST_F(Locks, HandleIsCheckedBeforeAnythingIsDone) {
  for (const int32_t command : {F_GETLK, F_SETLK, F_SETLKW})
    for (const int32_t fd : {fd_, -1})
      expect_handle_checked("flock", [&](int32_t handle) {
        const Answer answer = control(fd, command, handle);
        EXPECT_EQ(answer.iargin, handle);
        EXPECT_EQ(answer.iargout, SENTINEL);
        return answer.outcome;
      });
}

}  // namespace
