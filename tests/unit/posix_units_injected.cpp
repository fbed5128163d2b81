// The unit routines of the binding over services of the test's own: what is passed on, and how each answer is
// reported.
#include "recorder.h"

#include "contract/services.h"

namespace {

struct {
  intptr_t unit;
  int64_t offset;
  int32_t origin;
  int32_t character;
  int32_t descriptor;
  std::string access;
  bool name_wanted;
  int64_t name_length;
  const int32_t *address;
} passed;

int64_t answer;

}  // namespace

int32_t __msportlib_d_gethandle(intptr_t unit, char *name, int64_t *name_length) {
  passed.unit = unit;
  passed.name_wanted = name != nullptr;
  passed.name_length = name_length == nullptr ? -1 : *name_length;
  return static_cast<int32_t>(answer);
}

int32_t __msportlib_d_readchar(intptr_t unit) {
  passed.unit = unit;
  return static_cast<int32_t>(answer);
}

int32_t __msportlib_d_writechar(intptr_t unit, int32_t character) {
  passed.unit = unit;
  passed.character = character;
  return static_cast<int32_t>(answer);
}

int32_t __msportlib_d_fseek(intptr_t unit, int64_t offset, int32_t origin) {
  passed.unit = unit;
  passed.offset = offset;
  passed.origin = origin;
  return static_cast<int32_t>(answer);
}

int64_t __msportlib_d_curpos(intptr_t unit) {
  passed.unit = unit;
  return answer;
}

int32_t for_fdopen(int32_t fd, int32_t unit, const char *access, intptr_t access_length) {
  passed.descriptor = fd;
  passed.unit = unit;
  passed.access.assign(access, static_cast<size_t>(access_length));
  return static_cast<int32_t>(answer);
}

int32_t commitqq_(const int32_t *unit) {
  passed.address = unit;
  return static_cast<int32_t>(answer);
}

int32_t __msportlib_set_posix_io_flag(const int32_t *new_flag) {
  passed.address = new_flag;
  return static_cast<int32_t>(answer);
}

namespace {

class PosixUnits : public testing::Test {
protected:
  void SetUp() override {
    passed = {};
    answer = 0;
    reset_error_state();
  }
  // No routine here touches errno, the library's cell or the run-time's status.
  void TearDown() override { EXPECT_EQ(error_state(), untouched()); }

  int32_t ierror = SENTINEL;
  int32_t value = SENTINEL;
};

TEST_F(PosixUnits, PosixioHandsTheAddressOnAndReportsTheFormerSetting) {
  int32_t flag = 7;
  answer = 5;
  pxfposixio_(&flag, &value, &ierror);
  EXPECT_EQ(passed.address, &flag);
  EXPECT_EQ(value, 5);
  EXPECT_EQ(ierror, 0);
  flag = 0;
  pxfposixio_(&flag, &value, &ierror);
  EXPECT_EQ(ierror, EINVAL);
}

TEST_F(PosixUnits, FilenoAsksForNoName) {
  const int32_t unit = -12;
  answer = 9;
  pxffileno_(&unit, &value, &ierror);
  EXPECT_EQ(passed.unit, -12);
  EXPECT_FALSE(passed.name_wanted);
  EXPECT_EQ(passed.name_length, 0);
  EXPECT_EQ(value, 9);
  EXPECT_EQ(ierror, 0);
}

TEST_F(PosixUnits, FilenoOfAnUnconnectedUnitIsEbadf) {
  const int32_t unit = 12;
  answer = -7;
  pxffileno_(&unit, &value, &ierror);
  EXPECT_EQ(value, -7);
  EXPECT_EQ(ierror, EBADF);
}

TEST_F(PosixUnits, FdopenReportsTheAnswerAsItStands) {
  const int32_t descriptor = 4, unit = 44;
  for (const int32_t given : {0, 22, -3}) {
    answer = given;
    pxffdopen_(&descriptor, &unit, "r+  ", &ierror, 4);
    EXPECT_EQ(ierror, given);
  }
  EXPECT_EQ(passed.descriptor, 4);
  EXPECT_EQ(passed.unit, 44);
  EXPECT_EQ(passed.access, "r+  ");
}

TEST_F(PosixUnits, FflushIsEbadfForAFalseAnswer) {
  const int32_t unit = 3;
  pxffflush_(&unit, &ierror);
  EXPECT_EQ(passed.address, &unit);
  EXPECT_EQ(ierror, EBADF);
  for (const int32_t given : {1, -1}) {
    answer = given;
    pxffflush_(&unit, &ierror);
    EXPECT_EQ(ierror, 0);
  }
}

TEST_F(PosixUnits, FseekIsEinvalForANegativeAnswerOnly) {
  const int32_t unit = 3, offset = INT32_MIN, whence = 2;
  for (const auto &[given, expected] : {std::pair{0, 0}, {5, 0}, {-1, EINVAL}}) {
    answer = given;
    pxffseek_(&unit, &offset, &whence, &ierror);
    EXPECT_EQ(ierror, expected);
  }
  EXPECT_EQ(passed.unit, 3);
  EXPECT_EQ(passed.offset, INT32_MIN);
  EXPECT_EQ(passed.origin, 2);
}

TEST_F(PosixUnits, FtellKeepsTheLow32Bits) {
  const int32_t unit = 3;
  answer = 0x100000005;
  pxfftell_(&unit, &value, &ierror);
  EXPECT_EQ(value, 5);
  EXPECT_EQ(ierror, 0);
}

TEST_F(PosixUnits, FtellLeavesTheOffsetAloneWhenItFails) {
  const int32_t unit = 3;
  answer = -9;
  pxfftell_(&unit, &value, &ierror);
  EXPECT_EQ(value, SENTINEL);
  EXPECT_EQ(ierror, EINVAL);
}

TEST_F(PosixUnits, GetcReadsUnit5AndFgetcTheGivenOne) {
  Character ch(1);
  answer = 255;
  pxfgetc_(ch.data(), &ierror, 1);
  EXPECT_EQ(passed.unit, 5);
  EXPECT_EQ(ch.text(), "\xff");
  EXPECT_EQ(ierror, 0);
  const int32_t unit = 31;
  answer = 0;
  pxffgetc_(&unit, ch.data(), &ierror, 1);
  EXPECT_EQ(passed.unit, 31);
  EXPECT_EQ(ch.text(), std::string(1, '\0'));
}

TEST_F(PosixUnits, EndOfFileIsEendAndOtherFailuresStandAsTheyAre) {
  Character ch(1);
  const int32_t unit = 31;
  for (const auto &[given, expected] : {std::pair{-2, -1}, {-1, -1}, {-3, -3}, {-9, -9}}) {
    answer = given;
    pxffgetc_(&unit, ch.data(), &ierror, 1);
    EXPECT_EQ(ierror, expected);
    ierror = SENTINEL;
    pxfgetc_(ch.data(), &ierror, 1);
    EXPECT_EQ(ierror, expected);
  }
  EXPECT_EQ(ch.text(), "#");
}

TEST_F(PosixUnits, PutcWritesUnit6AndFputcTheGivenOne) {
  pxfputc_("\xe9", &ierror, 1);
  EXPECT_EQ(passed.unit, 6);
  EXPECT_EQ(passed.character, 0xe9);
  EXPECT_EQ(ierror, 0);
  const int32_t unit = 31;
  answer = 17;
  pxffputc_(&unit, "a", &ierror, 1);
  EXPECT_EQ(passed.unit, 31);
  EXPECT_EQ(passed.character, 'a');
  EXPECT_EQ(ierror, 0);
}

TEST_F(PosixUnits, AFailedWriteStandsAsItIs) {
  const int32_t unit = 31;
  answer = -5;
  pxfputc_("a", &ierror, 1);
  EXPECT_EQ(ierror, -5);
  ierror = SENTINEL;
  pxffputc_(&unit, "a", &ierror, 1);
  EXPECT_EQ(ierror, -5);
}

}  // namespace
