// The STAT family above host calls that describe what no file system has.
#include "outcome.h"
#include "status_array.h"

#include <optional>
#include <sys/stat.h>

namespace {

struct stat host_status;
std::optional<int> host_error;
std::string host_function;

int answer(const char *function, struct stat *status) {
  host_function = function;
  if (host_error) {
    errno = *host_error;
    return -1;
  }
  *status = host_status;
  return 0;
}

}  // namespace

int stat(const char *, struct stat *status) noexcept {
  return answer("stat", status);
}

int lstat(const char *, struct stat *status) noexcept {
  return answer("lstat", status);
}

int fstat(int, struct stat *status) noexcept {
  return answer("fstat", status);
}

namespace {

constexpr int32_t UNIT = 6;

class StatInjected : public testing::Test {
protected:
  StatInjected() {
    host_error = std::nullopt;
    host_status = {};
    host_status.st_dev = 0x1122334455667788;
    host_status.st_ino = 0x8765432187654321;
    host_status.st_mode = 0xFFFFFFFE;
    host_status.st_nlink = 0xFFFFFFFD;
    host_status.st_uid = 4294967294;
    host_status.st_gid = 4294967293;
    host_status.st_rdev = 0x7766554433221100;
    host_status.st_size = 123456789;
    host_status.st_atime = 0x123456789;
    host_status.st_mtime = 0x2FFFFFFFF;
    host_status.st_ctime = -2;
    host_status.st_blksize = 65536;
  }
};

const std::array<int32_t, 13> LOW_ORDER_BITS = {
    0x55667788, static_cast<int32_t>(0x87654321), -2, -3, -2, -3, 0x33221100, 123456789, 0x23456789, -1, -2,
    65536,      StatusArray<int32_t>::FORMER};

const std::array<int64_t, 13> ALL_BITS = {0x1122334455667788,
                                          static_cast<int64_t>(0x8765432187654321),
                                          4294967294,
                                          4294967293,
                                          4294967294,
                                          4294967293,
                                          0x7766554433221100,
                                          123456789,
                                          0x123456789,
                                          0x2FFFFFFFF,
                                          -2,
                                          65536,
                                          StatusArray<int64_t>::FORMER};

// Calls one of the six routines.
struct Call4 {
  const char *host;
  int32_t (*call)(int32_t *statb);
};
struct Call8 {
  const char *host;
  int32_t (*call)(int64_t *statb);
};

const Call4 CALLS4[] = {{"stat", [](int32_t *statb) { return stat_("name", statb, 4); }},
                        {"lstat", [](int32_t *statb) { return lstat_("name", statb, 4); }},
                        {"fstat", [](int32_t *statb) { return fstat_(&UNIT, statb); }}};
const Call8 CALLS8[] = {{"stat", [](int64_t *statb) { return stati8_("name", statb, 4); }},
                        {"lstat", [](int64_t *statb) { return lstati8_("name", statb, 4); }},
                        {"fstat", [](int64_t *statb) { return fstati8_(&UNIT, statb); }}};

TEST_F(StatInjected, Integer4TakesLowOrderBits) {
  for (const Call4 &routine : CALLS4) {
    StatusArray<int32_t> statb;
    EXPECT_EQ(outcome_of([&] { return routine.call(statb.data()); }), succeeded());
    EXPECT_EQ(statb.elements(), LOW_ORDER_BITS) << routine.host;
    EXPECT_EQ(host_function, routine.host);
  }
}

TEST_F(StatInjected, Integer8TakesAllBits) {
  for (const Call8 &routine : CALLS8) {
    StatusArray<int64_t> statb;
    EXPECT_EQ(outcome_of([&] { return routine.call(statb.data()); }), succeeded());
    EXPECT_EQ(statb.elements(), ALL_BITS) << routine.host;
    EXPECT_EQ(host_function, routine.host);
  }
}

TEST_F(StatInjected, LargeSizeIs34WithAllElseFilled) {
  for (const int64_t size : {int64_t{INT32_MAX} + 1, int64_t{3} << 30, int64_t{1} << 32, INT64_MAX}) {
    host_status.st_size = size;
    for (const Call4 &routine : CALLS4) {
      StatusArray<int32_t> statb;
      EXPECT_EQ(outcome_of([&] { return routine.call(statb.data()); }), reported(ERANGE)) << size;
      std::array<int32_t, 13> expected = LOW_ORDER_BITS;
      expected[7] = -1;
      EXPECT_EQ(statb.elements(), expected) << routine.host;
    }
    for (const Call8 &routine : CALLS8) {
      StatusArray<int64_t> statb;
      EXPECT_EQ(outcome_of([&] { return routine.call(statb.data()); }), succeeded()) << size;
      EXPECT_EQ(statb.elements()[7], size) << routine.host;
    }
  }
}

TEST_F(StatInjected, HostErrorIsReportedAndTheArrayLeft) {
  for (const int error : {EACCES, EBADF, ELOOP, ENOMEM, EOVERFLOW, EIO, 4095}) {
    host_error = error;
    for (const Call4 &routine : CALLS4) {
      StatusArray<int32_t> statb;
      EXPECT_EQ(outcome_of([&] { return routine.call(statb.data()); }), reported(error)) << routine.host;
      EXPECT_EQ(statb.elements(), StatusArray<int32_t>::former());
    }
    for (const Call8 &routine : CALLS8) {
      StatusArray<int64_t> statb;
      EXPECT_EQ(outcome_of([&] { return routine.call(statb.data()); }), reported(error)) << routine.host;
      EXPECT_EQ(statb.elements(), StatusArray<int64_t>::former());
    }
  }
}

}  // namespace
