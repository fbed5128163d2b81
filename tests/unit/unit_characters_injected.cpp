// The Unix-style character and position routines over services of the test's own: what is passed on, and how
// each answer is reported.
#include "outcome.h"

#include "contract/services.h"

namespace {

enum class Service { None, Read, Write, Seek, Seek64, Position, Position64, Flush };

struct {
  Service service;
  int calls;
  intptr_t unit;
  int64_t offset;
  int32_t origin;
  int32_t character;
  const int32_t *address;
} passed;

int64_t answer;

void called(Service service, intptr_t unit) {
  passed.service = service;
  ++passed.calls;
  passed.unit = unit;
}

}  // namespace

int32_t __msportlib_d_readchar(intptr_t unit) {
  called(Service::Read, unit);
  return static_cast<int32_t>(answer);
}

int32_t __msportlib_d_writechar(intptr_t unit, int32_t character) {
  called(Service::Write, unit);
  passed.character = character;
  return static_cast<int32_t>(answer);
}

int32_t __msportlib_d_fseek(intptr_t unit, int64_t offset, int32_t origin) {
  called(Service::Seek, unit);
  passed.offset = offset;
  passed.origin = origin;
  return static_cast<int32_t>(answer);
}

int32_t __msportlib_d_fseek_i8(intptr_t unit, int64_t offset, int32_t origin) {
  called(Service::Seek64, unit);
  passed.offset = offset;
  passed.origin = origin;
  return static_cast<int32_t>(answer);
}

int64_t __msportlib_d_curpos(intptr_t unit) {
  called(Service::Position, unit);
  return answer;
}

int64_t __msportlib_d_curpos_i8(intptr_t unit) {
  called(Service::Position64, unit);
  return answer;
}

int32_t flushqq_(const int32_t *unit) {
  called(Service::Flush, *unit);
  passed.address = unit;
  return static_cast<int32_t>(answer);
}

namespace {

constexpr int32_t UNITS[] = {0, 5, 6, 1000, -10, INT32_MAX, INT32_MIN};

// In the library's own cell only.
ErrorState told(int32_t number) {
  return {ERRNO_SENTINEL, number, {}};
}

class UnitCharacters : public testing::Test {
protected:
  void SetUp() override {
    passed = {};
    answer = 0;
  }
  // One service is asked once.
  void expect_called(Service service, intptr_t unit) {
    EXPECT_EQ(passed.service, service);
    EXPECT_EQ(passed.unit, unit);
    EXPECT_EQ(passed.calls, 1);
    passed = {};
  }
};

TEST_F(UnitCharacters, EveryUnitNumberIsPassedWithItsSign) {
  Character ch(1);
  const int32_t offset = 0, origin = 0;
  const int64_t offset8 = 0;
  for (const int32_t unit : UNITS) {
    fgetc_(&unit, ch.data(), 1);
    expect_called(Service::Read, unit);
    fputc_(&unit, ch.data(), 1);
    expect_called(Service::Write, unit);
    fseek_(&unit, &offset, &origin);
    expect_called(Service::Seek, unit);
    fseeki8_(&unit, &offset8, &origin);
    expect_called(Service::Seek64, unit);
    ftell_(&unit);
    expect_called(Service::Position, unit);
    ftelli8_(&unit);
    expect_called(Service::Position64, unit);
    getpos_(&unit);
    expect_called(Service::Position, unit);
    getposi8_(&unit);
    expect_called(Service::Position64, unit);
    flush_(&unit);
    expect_called(Service::Flush, unit);
  }
}

TEST_F(UnitCharacters, GetcIsOfUnit5AndPutcOfUnit6) {
  Character ch(1);
  getc_(ch.data(), 1);
  expect_called(Service::Read, 5);
  putc_(ch.data(), 1);
  expect_called(Service::Write, 6);
}

TEST_F(UnitCharacters, EveryByteIsReadIntoOneCharacterAndNothingIsRecorded) {
  const int32_t unit = 31;
  for (answer = 0; answer < 256; ++answer) {
    Character ch(3), standard(3);
    EXPECT_EQ(outcome_of([&] { return fgetc_(&unit, ch.data(), 3); }), succeeded());
    EXPECT_EQ(ch.text(), std::string(1, static_cast<char>(answer)) + "##");
    EXPECT_EQ(outcome_of([&] { return getc_(standard.data(), 3); }), succeeded());
    EXPECT_EQ(standard.text(), ch.text());
  }
}

TEST_F(UnitCharacters, FgetcTellsTheEndWithoutRecordingIt) {
  Character ch(1);
  const int32_t unit = 31;
  answer = READ_END;
  EXPECT_EQ(outcome_of([&] { return fgetc_(&unit, ch.data(), 1); }), (Outcome{-1, untouched()}));
  EXPECT_EQ(ch.text(), "#");
}

TEST_F(UnitCharacters, EveryOtherFailureOfFgetcIsEinval) {
  Character ch(1);
  const int32_t unit = 31;
  for (const int32_t failure : {-1, -3, -EBADF, -EINVAL, -4095, INT32_MIN}) {
    answer = failure;
    EXPECT_EQ(outcome_of([&] { return fgetc_(&unit, ch.data(), 1); }), reported(EINVAL)) << failure;
  }
  EXPECT_EQ(ch.text(), "#");
}

TEST_F(UnitCharacters, GetcAnswersMinus1ToEveryFailureAndRecordsNone) {
  Character ch(1);
  for (const int32_t failure : {-1, READ_END, -3, -EBADF, -EINVAL, -4095, INT32_MIN}) {
    answer = failure;
    EXPECT_EQ(outcome_of([&] { return getc_(ch.data(), 1); }), (Outcome{-1, untouched()})) << failure;
  }
  EXPECT_EQ(ch.text(), "#");
}

TEST_F(UnitCharacters, EveryByteIsPassedWithoutASign) {
  const int32_t unit = 31;
  for (int byte = 0; byte < 256; ++byte) {
    const char text[] = {static_cast<char>(byte), 'x'};
    EXPECT_EQ(outcome_of([&] { return fputc_(&unit, text, 2); }), succeeded());
    EXPECT_EQ(passed.character, byte);
    passed.character = SENTINEL;
    EXPECT_EQ(outcome_of([&] { return putc_(text, 2); }), succeeded());
    EXPECT_EQ(passed.character, byte);
  }
}

TEST_F(UnitCharacters, WritingSucceedsWithEveryAnswerThatIsNotNegative) {
  const int32_t unit = 31;
  for (const int32_t success : {0, 1, 255, INT32_MAX}) {
    answer = success;
    EXPECT_EQ(outcome_of([&] { return fputc_(&unit, "a", 1); }), succeeded());
    EXPECT_EQ(outcome_of([&] { return putc_("a", 1); }), succeeded());
  }
}

TEST_F(UnitCharacters, EveryFailureOfWritingIsEinval) {
  const int32_t unit = 31;
  for (const int32_t failure : {-1, READ_END, -EBADF, -ENOSPC, INT32_MIN}) {
    answer = failure;
    EXPECT_EQ(outcome_of([&] { return fputc_(&unit, "a", 1); }), reported(EINVAL));
    EXPECT_EQ(outcome_of([&] { return putc_("a", 1); }), reported(EINVAL));
  }
}

TEST_F(UnitCharacters, SeeksPassWhatTheyAreGiven) {
  const int32_t unit = 31;
  for (const int32_t origin : {0, 1, 2, 3, -1, INT32_MAX, INT32_MIN}) {
    for (const int32_t offset : {0, 1, -1, INT32_MAX, INT32_MIN}) {
      fseek_(&unit, &offset, &origin);
      EXPECT_EQ(passed.offset, offset);
      EXPECT_EQ(passed.origin, origin);
    }
    for (const int64_t offset : {int64_t{0}, int64_t{-1}, int64_t{INT32_MAX} + 1, INT64_MAX, INT64_MIN}) {
      fseeki8_(&unit, &offset, &origin);
      EXPECT_EQ(passed.offset, offset);
      EXPECT_EQ(passed.origin, origin);
    }
  }
}

// A success behind a failure is told too.
TEST_F(UnitCharacters, TheAnswerOfASeekIsTheResultAndIsToldEachTime) {
  const int32_t unit = 31, offset = 0, origin = 0;
  const int64_t offset8 = 0;
  for (const int32_t given : {-EINVAL, 0, -EBADF, 22, INT32_MIN, 0}) {
    answer = given;
    EXPECT_EQ(outcome_of([&] { return fseek_(&unit, &offset, &origin); }), (Outcome{given, told(given)}));
    EXPECT_EQ(outcome_of([&] { return fseeki8_(&unit, &offset8, &origin); }), (Outcome{given, told(given)}));
  }
}

struct Position {
  int64_t given;
  int32_t low;
};
constexpr Position POSITIONS[] = {
    {0, 0},           {INT32_MAX, INT32_MAX}, {int64_t{INT32_MAX} + 1, INT32_MIN},
    {0xFFFFFFF7, -9}, {0x100000000, 0},       {0x100000005, 5},
    {INT64_MAX, -1}};

// Only the position itself can be a failure: its low half may well look like one.
TEST_F(UnitCharacters, PositionsAreAnsweredAndNotTold) {
  const int32_t unit = 31;
  for (const auto &[given, low] : POSITIONS) {
    answer = given;
    EXPECT_EQ(outcome_of([&] { return ftell_(&unit); }), (Outcome{low, untouched()})) << given;
    EXPECT_EQ(outcome_of([&] { return getpos_(&unit); }), (Outcome{low, untouched()})) << given;
    int64_t whole = 0;
    EXPECT_EQ(state_after([&] { whole = ftelli8_(&unit); }), untouched());
    EXPECT_EQ(whole, given);
    EXPECT_EQ(state_after([&] { whole = getposi8_(&unit); }), untouched());
    EXPECT_EQ(whole, given);
  }
}

TEST_F(UnitCharacters, FailuresArePositionsBelow0AndOnlyTheTellRoutinesTellThem) {
  const int32_t unit = 31;
  for (const int32_t number : {1, EBADF, ESPIPE, 4095}) {
    answer = -number;
    EXPECT_EQ(outcome_of([&] { return ftell_(&unit); }), (Outcome{-number, told(number)}));
    EXPECT_EQ(outcome_of([&] { return getpos_(&unit); }), (Outcome{-number, untouched()}));
    int64_t whole = 0;
    EXPECT_EQ(state_after([&] { whole = ftelli8_(&unit); }), told(number));
    EXPECT_EQ(whole, -number);
    EXPECT_EQ(state_after([&] { whole = getposi8_(&unit); }), untouched());
    EXPECT_EQ(whole, -number);
  }
}

TEST_F(UnitCharacters, FlushPassesItsArgumentAndTellsNothing) {
  const int32_t unit = 31;
  for (const int32_t given : {0, 1, -1}) {
    answer = given;
    EXPECT_EQ(state_after([&] { flush_(&unit); }), untouched());
    EXPECT_EQ(passed.address, &unit);
  }
}

TEST(UnitCharactersAliases, TheModulesNamesAreTheRoutines) {
  expect_same_routine(fgetc_, qxport_fgetc_);
  expect_same_routine(getc_, qxport_getc_);
  expect_same_routine(fputc_, qxport_fputc_);
  expect_same_routine(putc_, qxport_putc_);
  expect_same_routine(fseek_, qxport_fseek_);
  expect_same_routine(fseeki8_, qxport_fseeki8_);
  expect_same_routine(ftell_, qxport_ftell_);
  expect_same_routine(ftelli8_, qxport_ftelli8_);
  expect_same_routine(getpos_, qxport_getpos_);
  expect_same_routine(getposi8_, qxport_getposi8_);
  expect_same_routine(flush_, qxport_flush_);
}

}  // namespace
