// What the routines of terminals hand to the host, and what they make of every error number.
#include "posix_calls.h"

#include <sstream>
#include <termios.h>
#include <unistd.h>

namespace {

// The last host call, the structure that came with it, and its answer: an error number, or 0 for none.
std::string host_call;
termios structure;
int host_error;

template <typename... Arguments>
int answer(const Arguments &...arguments) {
  std::ostringstream made;
  ((made << arguments << '|'), ...);
  host_call = made.str();
  if (host_error == 0)
    return 0;
  errno = host_error;
  return -1;
}

}  // namespace

int tcgetattr(int fd, termios *attributes) noexcept {
  memset(attributes, 0x81, sizeof(*attributes));
  return answer("tcgetattr", fd);
}
int tcsetattr(int fd, int action, const termios *attributes) noexcept {
  structure = *attributes;
  return answer("tcsetattr", fd, action);
}
speed_t cfgetospeed(const termios *attributes) noexcept {
  structure = *attributes;
  host_call = "cfgetospeed|";
  return 0x80000001;
}
speed_t cfgetispeed(const termios *attributes) noexcept {
  structure = *attributes;
  host_call = "cfgetispeed|";
  return 0x80000002;
}
int cfsetospeed(termios *attributes, speed_t speed) noexcept {
  structure = *attributes;
  attributes->c_cflag = 77;
  return answer("cfsetospeed", speed);
}
int cfsetispeed(termios *attributes, speed_t speed) noexcept {
  structure = *attributes;
  attributes->c_cflag = 77;
  return answer("cfsetispeed", speed);
}
int tcsendbreak(int fd, int duration) noexcept {
  return answer("tcsendbreak", fd, duration);
}
int tcdrain(int fd) {
  return answer("tcdrain", fd);
}
int tcflush(int fd, int queue) noexcept {
  return answer("tcflush", fd, queue);
}
int tcflow(int fd, int action) noexcept {
  return answer("tcflow", fd, action);
}
pid_t tcgetpgrp(int fd) noexcept {
  return answer("tcgetpgrp", fd) == 0 ? 4711 : -1;
}
int tcsetpgrp(int fd, pid_t group) noexcept {
  return answer("tcsetpgrp", fd, group);
}

namespace {

constexpr int32_t FD = 1234;

class Host : public testing::Test {
protected:
  Host() {
    host_error = 0;
    fill_record(record_);
  }

  const OwnedRecord record_{"termios"};
};

// The fields of a record that the host never filled, and zeros in all that it does not carry: the line
// discipline, further control characters and the speeds.
void expect_structure_of(const qxport::TermiosRecord &record) {
  termios expected = {};
  expected.c_iflag = static_cast<tcflag_t>(record.c_iflag);
  expected.c_oflag = static_cast<tcflag_t>(record.c_oflag);
  expected.c_cflag = static_cast<tcflag_t>(record.c_cflag);
  expected.c_lflag = static_cast<tcflag_t>(record.c_lflag);
  for (int i = 0; i < 20; ++i)
    expected.c_cc[i] = static_cast<cc_t>(record.c_cc[i]);
  EXPECT_EQ(structure.c_ispeed, 0u);
  EXPECT_EQ(structure.c_ospeed, 0u);
  EXPECT_EQ(structure.c_line, 0);
  EXPECT_EQ(structure.c_iflag, expected.c_iflag);
  EXPECT_EQ(structure.c_oflag, expected.c_oflag);
  EXPECT_EQ(structure.c_cflag, expected.c_cflag);
  EXPECT_EQ(structure.c_lflag, expected.c_lflag);
  EXPECT_EQ(memcmp(structure.c_cc, expected.c_cc, sizeof(expected.c_cc)), 0);
}

// A C library may keep the speeds in fields of their own, and set what it finds there.
TEST_F(Host, SpeedsKeptApartSurvive) {
  termios given;
  memset(&given, 0x81, sizeof(given));
  ASSERT_EQ(call(pxftcgetattr_, FD, record_), succeeded());
  ASSERT_EQ(call(pxftcsetattr_, FD, 0, record_), succeeded());
  EXPECT_EQ(structure.c_ispeed, given.c_ispeed);
  EXPECT_EQ(structure.c_ospeed, given.c_ospeed);
  const OwnedRecord copied("termios");
  ASSERT_EQ(copy("termios", record_, copied), succeeded());
  structure = {};
  ASSERT_EQ(call(pxftcsetattr_, FD, 0, copied), succeeded());
  EXPECT_EQ(structure.c_ospeed, given.c_ospeed);
}

TEST_F(Host, GetsTheRecordInAStructureWithoutSpeeds) {
  const qxport::TermiosRecord before = record_as<qxport::TermiosRecord>(record_);
  int32_t speed = SENTINEL;
  EXPECT_EQ(call(pxftcsetattr_, FD, 9, record_), succeeded());
  EXPECT_EQ(host_call, "tcsetattr|1234|9|");
  expect_structure_of(before);
  EXPECT_EQ(call(pxfcfgetospeed_, record_, &speed), succeeded());
  EXPECT_EQ(host_call, "cfgetospeed|");
  EXPECT_EQ(speed, INT32_MIN + 1);
  expect_structure_of(before);
  EXPECT_EQ(call(pxfcfgetispeed_, record_, &speed), succeeded());
  EXPECT_EQ(host_call, "cfgetispeed|");
  EXPECT_EQ(speed, INT32_MIN + 2);
  expect_structure_of(before);
}

TEST_F(Host, SetsTheSpeedInTheRecordAlsoWhereItFails) {
  using Routine = void (*)(const int32_t *, const int32_t *, int32_t *);
  for (const auto &[routine, name] :
       {std::pair<Routine, std::string>{pxfcfsetospeed_, "cfsetospeed"}, {pxfcfsetispeed_, "cfsetispeed"}})
    for (const int error : {0, EINVAL, 4095}) {
      const OwnedRecord record("termios");
      fill_record(record);
      const qxport::TermiosRecord before = record_as<qxport::TermiosRecord>(record);
      host_error = error;
      EXPECT_EQ(call(routine, record, -5), error == 0 ? succeeded() : failed_with(error));
      EXPECT_EQ(host_call, name + "|4294967291|");
      expect_structure_of(before);
      EXPECT_EQ(record_as<qxport::TermiosRecord>(record).c_cflag, 77);
    }
}

TEST_F(Host, GetsEveryArgument) {
  int32_t group = SENTINEL;
  EXPECT_EQ(call(pxftcsendbreak_, FD, -3), succeeded());
  EXPECT_EQ(host_call, "tcsendbreak|1234|-3|");
  EXPECT_EQ(call(pxftcdrain_, FD), succeeded());
  EXPECT_EQ(host_call, "tcdrain|1234|");
  EXPECT_EQ(call(pxftcflush_, FD, 5), succeeded());
  EXPECT_EQ(host_call, "tcflush|1234|5|");
  EXPECT_EQ(call(pxftcflow_, FD, 6), succeeded());
  EXPECT_EQ(host_call, "tcflow|1234|6|");
  EXPECT_EQ(call(pxftcgetpgrp_, FD, &group), succeeded());
  EXPECT_EQ(host_call, "tcgetpgrp|1234|");
  EXPECT_EQ(group, 4711);
  EXPECT_EQ(call(pxftcsetpgrp_, FD, -7), succeeded());
  EXPECT_EQ(host_call, "tcsetpgrp|1234|-7|");
}

TEST_F(Host, FillsTheRecord) {
  EXPECT_EQ(call(pxftcgetattr_, FD, record_), succeeded());
  const qxport::TermiosRecord &record = record_as<qxport::TermiosRecord>(record_);
  for (const int32_t flags : {record.c_iflag, record.c_oflag, record.c_cflag, record.c_lflag})
    EXPECT_EQ(flags, static_cast<int32_t>(0x81818181));
  for (const int32_t character : record.c_cc)
    EXPECT_EQ(character, 0x81);
}

TEST_F(Host, ReportsEveryError) {
  const Contents before = contents_of(record_);
  for (const int error : {EPERM, EINTR, EIO, EBADF, EINVAL, ENOTTY, 4095}) {
    host_error = error;
    int32_t group = SENTINEL;
    EXPECT_EQ(call(pxftcgetattr_, FD, record_), failed_with(error));
    EXPECT_EQ(call(pxftcsetattr_, FD, 0, record_), failed_with(error));
    EXPECT_EQ(call(pxftcsendbreak_, FD, 0), failed_with(error));
    EXPECT_EQ(call(pxftcdrain_, FD), failed_with(error));
    EXPECT_EQ(call(pxftcflush_, FD, 0), failed_with(error));
    EXPECT_EQ(call(pxftcflow_, FD, 0), failed_with(error));
    EXPECT_EQ(call(pxftcgetpgrp_, FD, &group), failed_with(error));
    EXPECT_EQ(group, -1);
    EXPECT_EQ(call(pxftcsetpgrp_, FD, 1), failed_with(error));
  }
  EXPECT_EQ(contents_of(record_), before);
}

}  // namespace
