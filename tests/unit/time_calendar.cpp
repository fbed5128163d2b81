// CTIME, LTIME and GMTIME of given instants, against a calendar that is counted day by day, and in zones with
// odd offsets and daylight-saving time.
#include "outcome.h"
#include "text_functions.h"
#include "zone.h"

#include <array>
#include <climits>
#include <cstdio>

namespace {

using Fields = std::array<int32_t, 9>;

// The array between guard elements.
template <typename Routine, typename Seconds>
Fields fields_of(Routine routine, Seconds seconds) {
  std::array<int32_t, 11> guarded;
  guarded.fill(SENTINEL);
  EXPECT_EQ(state_after([&] { routine(&seconds, guarded.data() + 1); }), untouched()) << seconds;
  EXPECT_EQ(guarded.front(), SENTINEL);
  EXPECT_EQ(guarded.back(), SENTINEL);
  Fields fields;
  std::copy(guarded.begin() + 1, guarded.end() - 1, fields.begin());
  return fields;
}

// A calendar by counting: every day has the date behind that of the day before.
struct Day {
  int64_t number;  // from 1970-01-01
  int year, month, day, weekday, day_of_year;

  static bool is_leap(int year) { return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0); }
  int days_of_month() const {
    const int days[] = {31, is_leap(year) ? 29 : 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return days[month];
  }
  void next() {
    ++number;
    weekday = (weekday + 1) % 7;
    ++day_of_year;
    if (++day > days_of_month()) {
      day = 1;
      ++month;
    }
    if (month == 12) {
      month = 0;
      day_of_year = 0;
      ++year;
    }
  }
};

// 1 January 1901 was a Tuesday, 25567 days before the epoch.
constexpr Day FIRST = {-25202, 1901, 0, 1, 2, 0};

template <typename Check>
void on_every_day(Check check) {
  Day day = FIRST;
  for (; day.year <= 2262; day.next())
    check(day);
  // 2263 begins on a Thursday.
  EXPECT_EQ(day.weekday, 4);
  EXPECT_EQ(day.number, 107016);
}

std::string text_of(const Day &day, int second_of_day) {
  const char *const names = "SunMonTueWedThuFriSat", *const months = "JanFebMarAprMayJunJulAugSepOctNovDec";
  char text[40];
  snprintf(text, sizeof(text), "%.3s %.3s %2d %02d:%02d:%02d %d\n", names + 3 * day.weekday,
           months + 3 * day.month, day.day, second_of_day / 3600, second_of_day / 60 % 60, second_of_day % 60,
           day.year);
  return text;
}

Fields fields_of_day(const Day &day, int second_of_day, int day_of_year) {
  return {second_of_day % 60,
          second_of_day / 60 % 60,
          second_of_day / 3600,
          day.day,
          day.month,
          day.year - 1900,
          day.weekday,
          day_of_year,
          0};
}

constexpr int SECONDS[] = {0, 45296, 86399};

bool fits_integer4(int64_t seconds) {
  return seconds >= INT32_MIN && seconds <= INT32_MAX;
}

TEST(Gmtime, CountedCalendarOf362Years) {
  on_every_day([](const Day &day) {
    for (const int second : SECONDS) {
      const int64_t seconds = day.number * 86400 + second;
      const Fields expected = fields_of_day(day, second, day.day_of_year);
      ASSERT_EQ(fields_of(gmtimei8_, seconds), expected) << seconds;
      if (fits_integer4(seconds)) {
        ASSERT_EQ(fields_of(gmtime_, static_cast<int32_t>(seconds)), expected) << seconds;
      }
    }
  });
}

TEST(Ltime, CountedCalendarOf362YearsInUtc) {
  const Zone zone(UTC);
  on_every_day([](const Day &day) {
    for (const int second : SECONDS) {
      const int64_t seconds = day.number * 86400 + second;
      const Fields expected = fields_of_day(day, second, day.day_of_year + 1);
      ASSERT_EQ(fields_of(ltimei8_, seconds), expected) << seconds;
      if (fits_integer4(seconds)) {
        ASSERT_EQ(fields_of(ltime_, static_cast<int32_t>(seconds)), expected) << seconds;
      }
    }
  });
}

TEST(Ltime, CountedCalendarOf362YearsFarEast) {
  const Zone zone(NEPAL);
  constexpr int EAST = (5 * 60 + 45) * 60;
  on_every_day([](const Day &day) {
    for (const int second : SECONDS)
      ASSERT_EQ(fields_of(ltimei8_, day.number * 86400 + second - EAST),
                fields_of_day(day, second, day.day_of_year + 1));
  });
}

TEST(Ctime, CountedCalendarOf362Years) {
  const Zone zone(UTC);
  on_every_day([](const Day &day) {
    for (const int second : SECONDS) {
      const int64_t seconds = day.number * 86400 + second;
      char text[25];
      ctimei8_(text, 25, &seconds);
      ASSERT_EQ(std::string(text, 25), text_of(day, second));
      if (fits_integer4(seconds)) {
        const int32_t stime = static_cast<int32_t>(seconds);
        ctime_(text, 25, &stime);
        ASSERT_EQ(std::string(text, 25), text_of(day, second));
      }
    }
  });
}

TEST(Ctime, EpochInUtcWithItsLineFeed) {
  const Zone zone(UTC);
  expect_text_in_every_length(ctime_, "Thu Jan  1 00:00:00 1970\n", int32_t{0});
}

TEST(Ctime, LengthOf24LosesTheLineFeedAndRecordsIt) {
  const Zone zone(UTC);
  EXPECT_EQ(answered_by(ctime_, 24, int32_t{0}), is_cut("Thu Jan  1 00:00:00 1970"));
  EXPECT_EQ(answered_by(ctime_, 25, int32_t{0}), fits("Thu Jan  1 00:00:00 1970\n"));
}

TEST(Ctime, NoAddressIsRecorded) {
  const int32_t stime = 0;
  EXPECT_EQ(state_after([&] { ctime_(nullptr, 25, &stime); }), (ErrorState{EINVAL, SENTINEL, {EINVAL}}));
}

TEST(Ctime, NegativeLengthStoresNothing) {
  const Zone zone(UTC);
  Character variable(8);
  const int32_t stime = 0;
  ctime_(variable.data(), -3, &stime);
  EXPECT_EQ(variable.text(), "########");
}

TEST(Ctime, ExtremesOfAnInteger) {
  const Zone zone(UTC);
  EXPECT_EQ(answered_by(ctime_, 25, INT32_MIN), fits("Fri Dec 13 20:45:52 1901\n"));
  EXPECT_EQ(answered_by(ctime_, 25, INT32_MAX), fits("Tue Jan 19 03:14:07 2038\n"));
  EXPECT_EQ(answered_by(ctime_, 25, int32_t{-1}), fits("Wed Dec 31 23:59:59 1969\n"));
}

TEST(Ctime, YearsOfOtherLengths) {
  const Zone zone(UTC);
  expect_text_in_every_length(ctimei8_, "Sat Jan  1 00:00:00 10000\n", int64_t{253402300800});
  expect_text_in_every_length(ctimei8_, "Tue Jan  1 00:00:00 999\n", int64_t{-30641760000});
  expect_text_in_every_length(ctimei8_, "Sat Jan  1 00:00:00 0\n", int64_t{-62167219200});
  expect_text_in_every_length(ctimei8_, "Fri Dec 31 23:59:59 -1\n", int64_t{-62167219201});
}

TEST(Ctime, InstantWithoutADateIsBlank) {
  const Zone zone(UTC);
  for (const int64_t seconds : {INT64_MIN, INT64_MAX, INT64_MAX / 2})
    for (const size_t length : {0, 1, 25, 40})
      EXPECT_EQ(answered_by(ctimei8_, length, seconds),
                (Answered{padded("", length), {EOVERFLOW, SENTINEL, {}}}));
}

TEST(Ctime, LastYearOfTheHost) {
  const Zone zone(UTC);
  // The years since 1900 have 32 bits.
  EXPECT_EQ(answered_by(ctimei8_, 40, int64_t{67768036191676799}),
            fits(padded("Wed Dec 31 23:59:59 2147485547\n", 40)));
  EXPECT_EQ(answered_by(ctimei8_, 40, int64_t{67768036191676800}).text, padded("", 40));
}

TEST(Ltime, EpochCountsTheDaysOfTheYearFrom1) {
  const Zone zone(UTC);
  EXPECT_EQ(fields_of(ltime_, int32_t{0}), (Fields{0, 0, 0, 1, 0, 70, 4, 1, 0}));
  EXPECT_EQ(fields_of(gmtime_, int32_t{0}), (Fields{0, 0, 0, 1, 0, 70, 4, 0, 0}));
}

TEST(Ltime, ExtremesOfAnInteger) {
  const Zone zone(UTC);
  EXPECT_EQ(fields_of(ltime_, INT32_MIN), (Fields{52, 45, 20, 13, 11, 1, 5, 347, 0}));
  EXPECT_EQ(fields_of(ltime_, INT32_MAX), (Fields{7, 14, 3, 19, 0, 138, 2, 19, 0}));
  EXPECT_EQ(fields_of(gmtime_, INT32_MIN), (Fields{52, 45, 20, 13, 11, 1, 5, 346, 0}));
  EXPECT_EQ(fields_of(gmtime_, INT32_MAX), (Fields{7, 14, 3, 19, 0, 138, 2, 18, 0}));
}

TEST(Ltime, InstantWithoutADateIsZeros) {
  for (const int64_t seconds : {INT64_MIN, INT64_MAX}) {
    for (const auto routine : {ltimei8_, gmtimei8_}) {
      std::array<int32_t, 11> guarded;
      guarded.fill(SENTINEL);
      EXPECT_EQ(state_after([&] { routine(&seconds, guarded.data() + 1); }),
                (ErrorState{EOVERFLOW, SENTINEL, {}}));
      EXPECT_EQ(guarded, (std::array<int32_t, 11>{SENTINEL, 0, 0, 0, 0, 0, 0, 0, 0, 0, SENTINEL}));
    }
  }
}

// Both sides of the changes of 2026.
TEST(Ltime, DaylightSavingTime) {
  const Zone zone(CENTRAL_EUROPE);
  EXPECT_EQ(fields_of(ltime_, int32_t{1774745999}), (Fields{59, 59, 1, 29, 2, 126, 0, 88, 0}));
  EXPECT_EQ(fields_of(ltime_, int32_t{1774746000}), (Fields{0, 0, 3, 29, 2, 126, 0, 88, 1}));
  EXPECT_EQ(fields_of(ltime_, int32_t{1792889999}), (Fields{59, 59, 2, 25, 9, 126, 0, 298, 1}));
  EXPECT_EQ(fields_of(ltime_, int32_t{1792890000}), (Fields{0, 0, 2, 25, 9, 126, 0, 298, 0}));
  EXPECT_EQ(fields_of(gmtime_, int32_t{1774746000})[8], 0);
}

TEST(Ltime, HalfAnHourOfDaylightSavingTime) {
  const Zone zone(LORD_HOWE);
  EXPECT_EQ(fields_of(ltime_, int32_t{1767225600}), (Fields{0, 0, 11, 1, 0, 126, 4, 1, 1}));
  EXPECT_EQ(fields_of(ltime_, int32_t{1782864000}), (Fields{0, 30, 10, 1, 6, 126, 3, 182, 0}));
}

TEST(Ltime, ZoneWestOfUtcHasTheDayBefore) {
  const Zone zone(NEWFOUNDLAND);
  EXPECT_EQ(fields_of(ltime_, int32_t{0}), (Fields{0, 30, 20, 31, 11, 69, 3, 365, 0}));
  EXPECT_EQ(answered_by(ctime_, 25, int32_t{0}), fits("Wed Dec 31 20:30:00 1969\n"));
}

TEST(Ltime, DateBehind2038) {
  const Zone zone(NEW_YORK);
  EXPECT_EQ(fields_of(ltimei8_, int64_t{4118083200}), (Fields{0, 0, 20, 30, 5, 200, 3, 181, 1}));
  EXPECT_EQ(answered_by(ctimei8_, 25, int64_t{4118083200}), fits("Wed Jun 30 20:00:00 2100\n"));
}

TEST(Calendar, ModuleNamesAreTheSameRoutines) {
  expect_same_routine(qxport_ctime_, ctime_);
  expect_same_routine(qxport_ctimei8_, ctimei8_);
  expect_same_routine(qxport_ltime_, ltime_);
  expect_same_routine(qxport_ltimei8_, ltimei8_);
  expect_same_routine(qxport_gmtime_, gmtime_);
  expect_same_routine(qxport_gmtimei8_, gmtimei8_);
}

}  // namespace
