// The routines of terminals, on pseudo-terminals, against the host's own calls.
#include "posix_calls.h"
#include "pseudo_terminal.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace {

using qxport::TermiosRecord;

constexpr int32_t NO_DESCRIPTORS[] = {-1, 1 << 20, INT32_MAX, INT32_MIN};
constexpr speed_t SPEEDS[] = {B0,    B50,   B75,   B110,  B134,   B150,   B200,   B300,    B600,   B1200,
                              B1800, B2400, B4800, B9600, B19200, B38400, B57600, B115200, B230400};

class Terminal : public testing::Test {
protected:
  Terminal() { EXPECT_EQ(pipe(pipe_), 0); }
  ~Terminal() override {
    for (const int fd : pipe_)
      close(fd);
  }

  termios attributes() const {
    termios result;
    EXPECT_EQ(tcgetattr(terminal_, &result), 0);
    return result;
  }
  // Bytes go through as they are, and reading does not wait.
  void set_raw() const {
    termios raw = attributes();
    cfmakeraw(&raw);
    raw.c_iflag |= IXON;
    raw.c_cc[VMIN] = 0;
    raw.c_cc[VTIME] = 0;
    EXPECT_EQ(tcsetattr(terminal_, TCSANOW, &raw), 0);
  }

  const PseudoTerminal pseudo_terminal_;
  const int master_ = pseudo_terminal_.master();
  const int terminal_ = pseudo_terminal_.descriptor();
  int pipe_[2];
};

using Tcgetattr = Terminal;
using Tcsetattr = Terminal;
using Speed = Terminal;
using Line = Terminal;
using ForegroundGroup = Terminal;

// A record's fields are as the host's structure has them.
void expect_attributes(int32_t handle, const termios &host) {
  const TermiosRecord &record = record_as<TermiosRecord>(handle);
  EXPECT_EQ(record.c_iflag, static_cast<int32_t>(host.c_iflag));
  EXPECT_EQ(record.c_oflag, static_cast<int32_t>(host.c_oflag));
  EXPECT_EQ(record.c_cflag, static_cast<int32_t>(host.c_cflag));
  EXPECT_EQ(record.c_lflag, static_cast<int32_t>(host.c_lflag));
  for (int i = 0; i < 20; ++i)
    EXPECT_EQ(record.c_cc[i], host.c_cc[i]) << i;
}

TEST_F(Tcgetattr, FillsTheRecordWithTheHostsAttributes) {
  const OwnedRecord record("termios");
  fill_record(record);
  EXPECT_EQ(call(pxftcgetattr_, terminal_, record), succeeded());
  expect_attributes(record, attributes());
  termios changed = attributes();
  changed.c_lflag ^= ECHO | ICANON;
  changed.c_iflag ^= ICRNL;
  for (int i = 0; i < 17; ++i)
    changed.c_cc[i] = static_cast<cc_t>(200 + i);
  ASSERT_EQ(tcsetattr(terminal_, TCSANOW, &changed), 0);
  EXPECT_EQ(call(pxftcgetattr_, terminal_, record), succeeded());
  expect_attributes(record, changed);
  EXPECT_EQ(record_as<TermiosRecord>(record).c_cc[16], 216);
}

TEST_F(Tcgetattr, OfNoTerminalIs25AndLeavesTheRecord) {
  const OwnedRecord record("termios");
  fill_record(record);
  const Contents before = contents_of(record);
  const int null = open("/dev/null", O_RDWR);
  for (const int fd : {pipe_[0], null})
    EXPECT_EQ(call(pxftcgetattr_, fd, record), failed_with(ENOTTY));
  for (const int32_t fd : NO_DESCRIPTORS)
    EXPECT_EQ(call(pxftcgetattr_, fd, record), failed_with(EBADF));
  EXPECT_EQ(contents_of(record), before);
  close(null);
}

TEST_F(Tcgetattr, ChecksTheHandleBeforeTheDescriptor) {
  for (const int fd : {terminal_, -1})
    expect_handle_checked("termios", [&](int32_t handle) { return call(pxftcgetattr_, fd, handle); });
}

TEST_F(Tcsetattr, GivesTheTerminalTheRecordsAttributes) {
  const OwnedRecord record("termios");
  for (const int32_t action : {TCSANOW, TCSADRAIN, TCSAFLUSH}) {
    ASSERT_EQ(call(pxftcgetattr_, terminal_, record), succeeded());
    TermiosRecord &fields = record_as<TermiosRecord>(record);
    fields.c_lflag ^= ECHO | ICANON;
    fields.c_iflag ^= ICRNL;
    fields.c_oflag ^= ONLCR;
    fields.c_cc[VINTR] = 0x100 + 65;  // the low byte counts
    fields.c_cc[VMIN] = action + 1;
    const Contents before = contents_of(record);
    EXPECT_EQ(call(pxftcsetattr_, terminal_, action, record), succeeded());
    EXPECT_EQ(contents_of(record), before);
    const termios now = attributes();
    fields.c_cc[VINTR] = 65;
    expect_attributes(record, now);
  }
}

// Input that waits is thrown away by TCSAFLUSH, and by no other action.
TEST_F(Tcsetattr, FlushesPendingInputWhereTheActionSaysSo) {
  set_raw();
  const OwnedRecord record("termios");
  ASSERT_EQ(call(pxftcgetattr_, terminal_, record), succeeded());
  const auto pending = [&] {
    int bytes = -1;
    EXPECT_EQ(ioctl(terminal_, FIONREAD, &bytes), 0);
    return bytes;
  };
  ASSERT_EQ(write(master_, "abc", 3), 3);
  pollfd arrival = {terminal_, POLLIN, 0};
  ASSERT_EQ(poll(&arrival, 1, 60'000), 1);
  for (const int32_t action : {TCSANOW, TCSADRAIN}) {
    EXPECT_EQ(call(pxftcsetattr_, terminal_, action, record), succeeded());
    EXPECT_EQ(pending(), 3) << action;
  }
  EXPECT_EQ(call(pxftcsetattr_, terminal_, TCSAFLUSH, record), succeeded());
  EXPECT_EQ(pending(), 0);
}

TEST_F(Tcsetattr, KeepsTheSpeedThatTheRecordWasReadWith) {
  termios fast = attributes();
  cfsetospeed(&fast, B115200);
  cfsetispeed(&fast, B115200);
  ASSERT_EQ(tcsetattr(terminal_, TCSANOW, &fast), 0);
  const OwnedRecord record("termios");
  ASSERT_EQ(call(pxftcgetattr_, terminal_, record), succeeded());
  ASSERT_EQ(call(pxftcsetattr_, terminal_, TCSANOW, record), succeeded());
  const termios now = attributes();
  EXPECT_EQ(cfgetospeed(&now), speed_t{B115200});
  EXPECT_EQ(cfgetispeed(&now), speed_t{B115200});
}

TEST_F(Tcsetattr, FailuresAreTheHosts) {
  const OwnedRecord record("termios");
  ASSERT_EQ(call(pxftcgetattr_, terminal_, record), succeeded());
  const Contents before = contents_of(record);
  for (const int32_t action : {-1, 3, 99})
    EXPECT_EQ(call(pxftcsetattr_, terminal_, action, record), failed_with(EINVAL));
  EXPECT_EQ(call(pxftcsetattr_, pipe_[0], TCSANOW, record), failed_with(ENOTTY));
  for (const int32_t fd : NO_DESCRIPTORS)
    EXPECT_EQ(call(pxftcsetattr_, fd, TCSANOW, record), failed_with(EBADF));
  EXPECT_EQ(contents_of(record), before);
}

TEST_F(Tcsetattr, ChecksTheHandleBeforeTheDescriptor) {
  for (const int fd : {terminal_, -1})
    expect_handle_checked("termios",
                          [&](int32_t handle) { return call(pxftcsetattr_, fd, TCSANOW, handle); });
}

using SetSpeed = void (*)(const int32_t *, const int32_t *, int32_t *);
using HostSetSpeed = int (*)(termios *, speed_t);
constexpr std::pair<SetSpeed, HostSetSpeed> SET_ROUTINES[] = {{pxfcfsetospeed_, cfsetospeed},
                                                              {pxfcfsetispeed_, cfsetispeed}};
using GetSpeed = void (*)(const int32_t *, int32_t *, int32_t *);
using HostGetSpeed = speed_t (*)(const termios *);
constexpr std::pair<GetSpeed, HostGetSpeed> GET_ROUTINES[] = {{pxfcfgetospeed_, cfgetospeed},
                                                              {pxfcfgetispeed_, cfgetispeed}};

// The host's structure as a fresh record becomes one, with no speeds in it.
TEST_F(Speed, SetSurvivesInTheRecord) {
  for (const auto &[set, host_set] : SET_ROUTINES)
    for (const speed_t speed : SPEEDS) {
      const OwnedRecord record("termios");
      termios host = {};
      EXPECT_EQ(call(set, record, static_cast<int32_t>(speed)), succeeded());
      ASSERT_EQ(host_set(&host, speed), 0);
      expect_attributes(record, host);
      for (const auto &[get, host_get] : GET_ROUTINES) {
        Guarded<int32_t> answer(SENTINEL);
        EXPECT_EQ(call(get, record, &answer), succeeded());
        EXPECT_EQ(answer, static_cast<int32_t>(host_get(&host))) << speed;
      }
    }
}

TEST_F(Speed, OfEachDirectionIsWhatWasSet) {
  const OwnedRecord record("termios");
  ASSERT_EQ(call(pxftcgetattr_, terminal_, record), succeeded());
  for (const speed_t speed : SPEEDS) {
    int32_t output = SENTINEL, input = SENTINEL;
    ASSERT_EQ(call(pxfcfsetospeed_, record, static_cast<int32_t>(speed)), succeeded());
    ASSERT_EQ(call(pxfcfsetispeed_, record, static_cast<int32_t>(speed)), succeeded());
    EXPECT_EQ(call(pxfcfgetospeed_, record, &output), succeeded());
    EXPECT_EQ(call(pxfcfgetispeed_, record, &input), succeeded());
    EXPECT_EQ(output, static_cast<int32_t>(speed));
    EXPECT_EQ(input, static_cast<int32_t>(speed));
  }
}

TEST_F(Speed, ReachesTheTerminal) {
  const OwnedRecord record("termios");
  ASSERT_EQ(call(pxftcgetattr_, terminal_, record), succeeded());
  for (const speed_t speed : {speed_t{B1200}, speed_t{B57600}, speed_t{B9600}}) {
    ASSERT_EQ(call(pxfcfsetospeed_, record, static_cast<int32_t>(speed)), succeeded());
    ASSERT_EQ(call(pxftcsetattr_, terminal_, TCSANOW, record), succeeded());
    const termios now = attributes();
    EXPECT_EQ(cfgetospeed(&now), speed);
  }
}

TEST_F(Speed, ChangesNothingElseOfTheRecord) {
  const OwnedRecord record("termios");
  ASSERT_EQ(call(pxftcgetattr_, terminal_, record), succeeded());
  Contents before = contents_of(record);
  ASSERT_EQ(call(pxfcfsetospeed_, record, static_cast<int32_t>(B300)), succeeded());
  Contents after = contents_of(record);
  EXPECT_NE(after["c_cflag"], before["c_cflag"]);
  before.erase("c_cflag");
  after.erase("c_cflag");
  EXPECT_EQ(after, before);
}

// Control characters have a byte in the host's structure: what comes back shows that it was there.
TEST_F(Speed, RecordIsWrittenBackAfterSuccessAndFailure) {
  for (const auto &[set, host_set] : SET_ROUTINES)
    for (const int32_t speed : {static_cast<int32_t>(B9600), 12345, -1, INT32_MIN}) {
      const OwnedRecord record("termios");
      TermiosRecord &fields = record_as<TermiosRecord>(record);
      fields.c_lflag = INT32_MIN;
      for (int i = 0; i < 20; ++i)
        fields.c_cc[i] = 0x12345600 + 240 + i;
      termios host = {};
      EXPECT_EQ(call(set, record, speed), as_the_host([&, host_set = host_set] {
                  return host_set(&host, static_cast<speed_t>(speed));
                }))
          << speed;
      for (int i = 0; i < 20; ++i)
        EXPECT_EQ(fields.c_cc[i], (240 + i) % 256);
      EXPECT_EQ(fields.c_lflag, INT32_MIN);
      EXPECT_EQ(fields.c_cflag, static_cast<int32_t>(host.c_cflag));
    }
  const OwnedRecord record("termios");
  EXPECT_EQ(call(pxfcfsetospeed_, record, 12345), failed_with(EINVAL));
}

TEST_F(Speed, GetLeavesTheRecord) {
  const OwnedRecord record("termios");
  fill_record(record);
  const Contents before = contents_of(record);
  for (const auto &[get, host_get] : GET_ROUTINES) {
    int32_t answer = SENTINEL;
    EXPECT_EQ(call(get, record, &answer), succeeded());
  }
  EXPECT_EQ(contents_of(record), before);
}

TEST_F(Speed, ChecksTheHandle) {
  for (const auto &[set, host_set] : SET_ROUTINES)
    expect_handle_checked("termios",
                          [routine = set](int32_t handle) { return call(routine, handle, B9600); });
  for (const auto &[get, host_get] : GET_ROUTINES)
    expect_handle_checked("termios", [routine = get](int32_t handle) {
      Guarded<int32_t> speed(SENTINEL);
      const Outcome outcome = call(routine, handle, &speed);
      EXPECT_EQ(speed, SENTINEL);
      return outcome;
    });
}

TEST_F(Speed, SetOfAGroupRecordIs22) {
  const OwnedRecord group("group");
  EXPECT_EQ(call(pxfcfsetospeed_, group, B9600), refused(22));
}

// What the terminal's program finds to read, and what its other end does.
std::string readable(int fd) {
  std::string text;
  char byte;
  pollfd ready = {fd, POLLIN, 0};
  while (poll(&ready, 1, 0) == 1 && read(fd, &byte, 1) == 1)
    text += byte;
  return text;
}

TEST_F(Line, CallsThatSucceed) {
  set_raw();
  for (const int32_t duration : {0, 1})
    EXPECT_EQ(call(pxftcsendbreak_, terminal_, duration), succeeded());
  EXPECT_EQ(call(pxftcdrain_, terminal_), succeeded());
  for (const int32_t queue : {TCIFLUSH, TCOFLUSH, TCIOFLUSH})
    EXPECT_EQ(call(pxftcflush_, terminal_, queue), succeeded());
  for (const int32_t action : {TCOOFF, TCOON, TCIOFF, TCION})
    EXPECT_EQ(call(pxftcflow_, terminal_, action), succeeded());
}

TEST_F(Line, FlushDropsWhatWasNotRead) {
  set_raw();
  for (const int32_t queue : {TCIFLUSH, TCIOFLUSH}) {
    ASSERT_EQ(write(master_, "abc", 3), 3);
    int waiting = 0;
    while (waiting < 3)
      ASSERT_EQ(ioctl(terminal_, FIONREAD, &waiting), 0);
    EXPECT_EQ(call(pxftcflush_, terminal_, queue), succeeded());
    EXPECT_EQ(readable(terminal_), "");
  }
}

TEST_F(Line, FlowSendsStopAndStart) {
  set_raw();
  EXPECT_EQ(call(pxftcflow_, terminal_, TCIOFF), succeeded());
  EXPECT_EQ(call(pxftcflow_, terminal_, TCION), succeeded());
  std::string sent;
  while (sent.size() < 2)
    sent += readable(master_);
  EXPECT_EQ(sent, "\x13\x11");
}

TEST_F(Line, FlowHoldsOutputBack) {
  set_raw();
  ASSERT_EQ(fcntl(terminal_, F_SETFL, O_NONBLOCK), 0);
  EXPECT_EQ(call(pxftcflow_, terminal_, TCOOFF), succeeded());
  EXPECT_EQ(write(terminal_, "x", 1), -1);
  EXPECT_EQ(call(pxftcflow_, terminal_, TCOON), succeeded());
  EXPECT_EQ(write(terminal_, "x", 1), 1);
}

TEST_F(Line, WrongValuesAreTheHostsFailure) {
  for (const int32_t value : {-1, 4, 99, INT32_MAX}) {
    EXPECT_EQ(call(pxftcflush_, terminal_, value), as_the_host([&] { return tcflush(terminal_, value); }));
    EXPECT_EQ(call(pxftcflow_, terminal_, value), as_the_host([&] { return tcflow(terminal_, value); }));
  }
  EXPECT_EQ(call(pxftcflush_, terminal_, 99), failed_with(EINVAL));
  EXPECT_EQ(call(pxftcflow_, terminal_, 99), failed_with(EINVAL));
}

TEST_F(Line, OfNoTerminalIs25AndOfNoDescriptor9) {
  const auto check = [](int32_t fd, const Outcome &expected) {
    Guarded<int32_t> group(SENTINEL);
    EXPECT_EQ(call(pxftcsendbreak_, fd, 0), expected) << fd;
    EXPECT_EQ(call(pxftcdrain_, fd), expected) << fd;
    EXPECT_EQ(call(pxftcflush_, fd, TCIFLUSH), expected) << fd;
    EXPECT_EQ(call(pxftcflow_, fd, TCOON), expected) << fd;
    EXPECT_EQ(call(pxftcgetpgrp_, fd, &group), expected) << fd;
    EXPECT_EQ(group, -1) << fd;
    EXPECT_EQ(call(pxftcsetpgrp_, fd, 1), expected) << fd;
  };
  check(pipe_[0], failed_with(ENOTTY));
  const int null = open("/dev/null", O_RDWR);
  check(null, failed_with(ENOTTY));
  close(null);
  check(null, failed_with(EBADF));
  for (const int32_t fd : NO_DESCRIPTORS)
    check(fd, failed_with(EBADF));
}

TEST_F(ForegroundGroup, OfAForeignTerminalIsTheHostsFailure) {
  Guarded<int32_t> group(SENTINEL);
  EXPECT_EQ(call(pxftcgetpgrp_, terminal_, &group), as_the_host([&] { return tcgetpgrp(terminal_); }));
  EXPECT_EQ(group, -1);
  EXPECT_EQ(call(pxftcsetpgrp_, terminal_, getpgrp()), failed_with(ENOTTY));
}

TEST_F(ForegroundGroup, OfTheControllingTerminalIsReadAndSet) {
  in_child([&] {
    ASSERT_NE(setsid(), -1);
    ASSERT_EQ(ioctl(terminal_, TIOCSCTTY, 0), 0);
    signal(SIGHUP, SIG_IGN);
    signal(SIGTTOU, SIG_IGN);
    Guarded<int32_t> group(SENTINEL);
    EXPECT_EQ(call(pxftcgetpgrp_, terminal_, &group), succeeded());
    EXPECT_EQ(group, getpgrp());
    const pid_t other = fork();
    if (other == 0)
      _exit(pause());
    ASSERT_EQ(setpgid(other, other), 0);
    EXPECT_EQ(call(pxftcsetpgrp_, terminal_, other), succeeded());
    EXPECT_EQ(tcgetpgrp(terminal_), other);
    EXPECT_EQ(call(pxftcgetpgrp_, terminal_, &group), succeeded());
    EXPECT_EQ(group, other);
    // A group of another session, none at all, and a number that is none.
    for (const int32_t wrong : {1, 0, -1, INT32_MAX, INT32_MIN})
      EXPECT_EQ(call(pxftcsetpgrp_, terminal_, wrong),
                as_the_host([&] { return tcsetpgrp(terminal_, wrong); }))
          << wrong;
    EXPECT_EQ(call(pxftcsetpgrp_, terminal_, -1), failed_with(EINVAL));
    EXPECT_EQ(tcgetpgrp(terminal_), other);
    kill(other, SIGKILL);
    EXPECT_EQ(waitpid(other, nullptr, 0), other);
  });
}

}  // namespace
