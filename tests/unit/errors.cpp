// Where error numbers stand and who reads them.
#include "frame/errors.h"

#include "recorder.h"

#include <string>
#include <thread>

namespace {

// Before main(), and so before any routine can have failed.
const int32_t local_at_start = portlib_local_errno;

int32_t access_result(const std::string &name) {
  return access_(name.data(), "r", static_cast<qxport_charlen>(name.size()), 1);
}

}  // namespace

TEST(PortlibLocalErrno, IsZeroAtFirst) {
  EXPECT_EQ(local_at_start, 0);
}

TEST(Ierrno, ReadsTheCell) {
  for (const int32_t number : {0, 22, -1, INT32_MAX, INT32_MIN}) {
    portlib_local_errno = number;
    EXPECT_EQ(ierrno_(), number);
    EXPECT_EQ(qxport_ierrno_(), number);
  }
}

TEST(Ierrno, ChangesNothing) {
  reset_error_state();
  EXPECT_EQ(ierrno_(), SENTINEL);
  EXPECT_EQ(error_state(), untouched());
}

TEST(Ierrno, CellIsOneForAllThreads) {
  portlib_local_errno = 5;
  int32_t seen = 0;
  std::thread([&seen] {
    seen = ierrno_();
    portlib_local_errno = 6;
  }).join();
  EXPECT_EQ(seen, 5);
  EXPECT_EQ(ierrno_(), 6);
}

TEST(Ierrno, KeepsTheFailureThroughASuccess) {
  const TemporaryDirectory directory;
  const WorkingDirectory restored(".");
  EXPECT_EQ(access_result(directory / "missing"), EINVAL);
  EXPECT_EQ(ierrno_(), EINVAL);
  EXPECT_EQ(chdir_(directory.path().data(), static_cast<qxport_charlen>(directory.path().size())), 0);
  EXPECT_EQ(ierrno_(), EINVAL);
}

TEST(Ierrno, HoldsTheLastOfTwoFailures) {
  const TemporaryDirectory directory;
  const std::string missing = directory / "missing";
  EXPECT_EQ(access_result(missing), EINVAL);
  const int32_t second = unlink_(missing.data(), static_cast<qxport_charlen>(missing.size()));
  EXPECT_EQ(second, ENOENT);
  EXPECT_EQ(ierrno_(), ENOENT);
}

class Getlasterror : public testing::TestWithParam<int32_t (*)()> {};

INSTANTIATE_TEST_SUITE_P(Routines, Getlasterror,
                         testing::Values(&getlasterror_, &getlasterrorqq_, &qxport_getlasterror_));

TEST_P(Getlasterror, ReadsErrno) {
  for (const int number : {0, ENOENT, ERRNO_SENTINEL, -1}) {
    errno = number;
    const int32_t answer = GetParam()();
    EXPECT_EQ(answer, number);
  }
}

TEST_P(Getlasterror, ChangesNothing) {
  reset_error_state();
  EXPECT_EQ(GetParam()(), ERRNO_SENTINEL);
  EXPECT_EQ(error_state(), untouched());
}

TEST_P(Getlasterror, IsNotTheLocalCell) {
  reset_error_state();
  portlib_local_errno = 22;
  EXPECT_EQ(GetParam()(), ERRNO_SENTINEL);
}

TEST_P(Getlasterror, EachThreadHasItsOwn) {
  errno = 5;
  int32_t of_the_other = -1;
  std::thread([&of_the_other, read = GetParam()] {
    errno = 6;
    of_the_other = read();
  }).join();
  const int32_t of_this_one = GetParam()();
  EXPECT_EQ(of_the_other, 6);
  EXPECT_EQ(of_this_one, 5);
}

TEST_P(Getlasterror, SeesWhatARoutineLeft) {
  EXPECT_EQ(chdir_("/no/such/directory", 18), ENOENT);
  EXPECT_EQ(GetParam()(), ENOENT);
}

// The recordings themselves: five arguments, the second the number, the others 0 (error_state() looks).
TEST(RecordStatus, StatusOnly) {
  reset_error_state();
  qxport::record_status(ENOTTY);
  EXPECT_EQ(error_state(), (ErrorState{ERRNO_SENTINEL, SENTINEL, {ENOTTY}}));
}

TEST(RecordStatus, SetStoresErrnoToo) {
  reset_error_state();
  qxport::set_and_record_status(EINVAL);
  EXPECT_EQ(error_state(), (ErrorState{EINVAL, SENTINEL, {EINVAL}}));
}

TEST(RecordLocal, CellStatusAndResult) {
  reset_error_state();
  EXPECT_EQ(qxport::record_local(ENOENT), ENOENT);
  EXPECT_EQ(error_state(), (ErrorState{ERRNO_SENTINEL, ENOENT, {ENOENT}}));
}

TEST(RecordLocal, SetStoresErrnoToo) {
  reset_error_state();
  EXPECT_EQ(qxport::set_and_record_local(EINVAL), EINVAL);
  EXPECT_EQ(error_state(), (ErrorState{EINVAL, EINVAL, {EINVAL}}));
}
