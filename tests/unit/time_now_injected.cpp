// Date and time of now, above a clock that shows what the test wants.
#include "in_child.h"
#include "outcome.h"
#include "own_clock.h"
#include "text_functions.h"
#include "zone.h"

#include <array>
#include <cfloat>
#include <cmath>

namespace {

constexpr int64_t NOVEMBER_2026 = 1794700800;  // 15 November 2026, 00:00:00 UTC

// Numbers that a routine stores into its arguments, between guards.
template <typename Integer, size_t COUNT>
std::array<int64_t, COUNT> numbers(const std::array<Integer, 3 * COUNT> &guarded) {
  std::array<int64_t, COUNT> values;
  for (size_t i = 0; i < COUNT; ++i) {
    EXPECT_EQ(guarded[3 * i], 77);
    values[i] = guarded[3 * i + 1];
    EXPECT_EQ(guarded[3 * i + 2], 77);
  }
  return values;
}

template <typename Integer>
std::array<int64_t, 3> three(void (*routine)(Integer *, Integer *, Integer *)) {
  std::array<Integer, 9> values;
  values.fill(77);
  EXPECT_EQ(state_after([&] { routine(&values[1], &values[4], &values[7]); }), untouched());
  return numbers<Integer, 3>(values);
}

template <typename Integer>
std::array<int64_t, 4> four(void (*routine)(Integer *, Integer *, Integer *, Integer *)) {
  std::array<Integer, 12> values;
  values.fill(77);
  EXPECT_EQ(state_after([&] { routine(&values[1], &values[4], &values[7], &values[10]); }), untouched());
  return numbers<Integer, 4>(values);
}

std::array<int64_t, 3> array(void (*routine)(int32_t *)) {
  std::array<int32_t, 5> values;
  values.fill(77);
  EXPECT_EQ(state_after([&] { routine(values.data() + 1); }), untouched());
  EXPECT_EQ(values[0], 77);
  EXPECT_EQ(values[4], 77);
  return {values[1], values[2], values[3]};
}

using Three = std::array<int64_t, 3>;
using Four = std::array<int64_t, 4>;

class Now : public testing::Test {
protected:
  ~Now() override { own_clock = {}; }

  const Zone zone_{UTC};
};

TEST_F(Now, TextsInVariablesOfEveryLength) {
  set_clock(NOVEMBER_2026 + 49512, 999999);
  expect_text_in_every_length(fdate_, "Sun Nov 15 13:45:12 2026");
  expect_text_in_every_length(clock_, "13:45:12");
  expect_text_in_every_length(time2_, "13:45:12");
  expect_text_in_every_length(date8_, "11/15/26");
  expect_text_in_every_length(date4_, "15-Nov-2026");
  expect_text_in_every_length(jdate_, "26319");
  expect_text_in_every_length(jdate4_, "2026319");
}

TEST_F(Now, LayoutOfDateDependsOnTheLength) {
  set_clock(NOVEMBER_2026);
  for (const size_t length : {9, 10, 11, 30})
    EXPECT_EQ(answered_by(date_, length), fits(padded("15-Nov-26", length))) << length;
  EXPECT_EQ(answered_by(date_, 8), fits("11/15/26"));
  for (const size_t length : {0, 1, 5, 7})
    EXPECT_EQ(answered_by(date_, length), is_cut(std::string("11/15/26").substr(0, length))) << length;
}

TEST_F(Now, OneDigitNumbersArePadded) {
  set_clock(1767225600 + 3723);  // 1 January 2026
  EXPECT_EQ(answered_by(clock_, 8), fits("01:02:03"));
  EXPECT_EQ(answered_by(fdate_, 24), fits("Thu Jan  1 01:02:03 2026"));
  EXPECT_EQ(answered_by(date_, 9), fits("01-Jan-26"));
  EXPECT_EQ(answered_by(date_, 8), fits("01/01/26"));
  EXPECT_EQ(answered_by(jdate_, 5), fits("26001"));
  EXPECT_EQ(answered_by(jdate4_, 7), fits("2026001"));
}

TEST_F(Now, MonthsByName) {
  const char *const names[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                               "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  const int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  int64_t first = 1767225600;
  for (int month = 0; month < 12; ++month) {
    set_clock(first);
    EXPECT_EQ(answered_by(date_, 9).text, std::string("01-") + names[month] + "-26");
    EXPECT_EQ(answered_by(date4_, 11).text, std::string("01-") + names[month] + "-2026");
    EXPECT_EQ(three(getdat_), (Three{2026, month + 1, 1}));
    first += days[month] * 86400;
  }
}

// Years as each of the routines tells them.
struct Year {
  int64_t begin;  // an instant of it, its 1 January but where told otherwise
  int year;
  const char *date4, *two_digits;
  int64_t short_year;
};

TEST_F(Now, YearsAroundTheTurnOfTheTwoDigits) {
  for (const Year &year : {
           Year{-2366755200, 1895, "01-Jan-1995", "-5", 1995},
           Year{-31536000, 1969, "01-Jan-2069", "69", 2069},
           Year{788918400, 1995, "01-Jan-2095", "95", 2095},
           Year{820454400, 1996, "01-Jan-96  ", "96", 96},
           Year{883612800, 1998, "01-Jan-98  ", "98", 98},
           Year{915148800, 1999, "01-Jan-99  ", "99", 99},
           Year{946684800, 2000, "01-Jan-2000", "00", 2000},
           Year{978307200, 2001, "01-Jan-2001", "01", 2001},
           Year{3944678400, 2095, "01-Jan-2095", "95", 2095},
           Year{3976214400, 2096, "01-Jan-96  ", "96", 96},
           Year{4102444800, 2100, "01-Jan-2000", "00", 2000},
       }) {
    SCOPED_TRACE(year.year);
    set_clock(year.begin);
    const int in_century = (year.year - 1900) % 100;
    EXPECT_EQ(answered_by(date4_, 11), fits(year.date4));
    EXPECT_EQ(answered_by(date_, 9), fits(std::string("01-Jan-") + year.two_digits));
    EXPECT_EQ(answered_by(date_, 8), fits(std::string("01/01/") + year.two_digits));
    EXPECT_EQ(answered_by(jdate_, 5), fits(std::string(year.two_digits) + "001"));
    EXPECT_EQ(answered_by(jdate4_, 7), fits(std::to_string(year.year) + "001"));
    EXPECT_EQ(three(idate4_), (Three{1, 1, year.short_year}));
    EXPECT_EQ(array(f_idate4_), (Three{1, 1, year.short_year}));
    EXPECT_EQ(three(idate1_), (Three{1, 1, in_century}));
    EXPECT_EQ(array(idate_), (Three{1, 1, in_century}));
    EXPECT_EQ(three(getdat_), (Three{year.year, 1, 1}));
    EXPECT_EQ(three(getdati2_), (Three{year.year, 1, 1}));
  }
}

// The last day of a leap year.
TEST_F(Now, Day366) {
  set_clock(1735603200);
  EXPECT_EQ(answered_by(jdate_, 5), fits("24366"));
  EXPECT_EQ(answered_by(jdate4_, 7), fits("2024366"));
}

TEST_F(Now, OrderOfTheNumbers) {
  set_clock(NOVEMBER_2026 + 49512, 789000);
  EXPECT_EQ(three(getdat_), (Three{2026, 11, 15}));
  EXPECT_EQ(three(getdati2_), (Three{2026, 11, 15}));
  EXPECT_EQ(four(gettim_), (Four{13, 45, 12, 78}));
  EXPECT_EQ(four(gettimi2_), (Four{13, 45, 12, 78}));
  EXPECT_EQ(array(itime_), (Three{13, 45, 12}));
  EXPECT_EQ(array(idate_), (Three{15, 11, 26}));
  EXPECT_EQ(three(idate1_), (Three{11, 15, 26}));
  EXPECT_EQ(three(idate4_), (Three{11, 15, 2026}));
  EXPECT_EQ(array(f_idate4_), (Three{15, 11, 2026}));
}

TEST_F(Now, HundredthsAreCutOff) {
  for (const auto &[microseconds, hundredths] :
       {std::pair{0, 0}, {9999, 0}, {10000, 1}, {19999, 1}, {994999, 99}, {999999, 99}}) {
    set_clock(NOVEMBER_2026, microseconds);
    EXPECT_EQ(four(gettim_)[3], hundredths) << microseconds;
    EXPECT_EQ(four(gettimi2_)[3], hundredths) << microseconds;
  }
}

TEST_F(Now, AllAreInLocalTime) {
  Zone::set(NEPAL);
  set_clock(NOVEMBER_2026 - 5 * 3600);  // 14 November, 19:00 UTC
  EXPECT_EQ(answered_by(fdate_, 24), fits("Sun Nov 15 00:45:00 2026"));
  EXPECT_EQ(answered_by(clock_, 8), fits("00:45:00"));
  EXPECT_EQ(answered_by(time2_, 8), fits("00:45:00"));
  EXPECT_EQ(answered_by(date_, 9), fits("15-Nov-26"));
  EXPECT_EQ(answered_by(date_, 8), fits("11/15/26"));
  EXPECT_EQ(answered_by(date8_, 8), fits("11/15/26"));
  EXPECT_EQ(answered_by(date4_, 11), fits("15-Nov-2026"));
  EXPECT_EQ(answered_by(jdate_, 5), fits("26319"));
  EXPECT_EQ(answered_by(jdate4_, 7), fits("2026319"));
  EXPECT_EQ(three(getdat_), (Three{2026, 11, 15}));
  EXPECT_EQ(three(getdati2_), (Three{2026, 11, 15}));
  EXPECT_EQ(four(gettim_), (Four{0, 45, 0, 0}));
  EXPECT_EQ(four(gettimi2_), (Four{0, 45, 0, 0}));
  EXPECT_EQ(array(itime_), (Three{0, 45, 0}));
  EXPECT_EQ(array(idate_), (Three{15, 11, 26}));
  EXPECT_EQ(three(idate1_), (Three{11, 15, 26}));
  EXPECT_EQ(three(idate4_), (Three{11, 15, 2026}));
  EXPECT_EQ(array(f_idate4_), (Three{15, 11, 2026}));
}

TEST_F(Now, BehindJanuary2038) {
  set_clock(4118083200, 250000);  // 1 July 2100
  EXPECT_EQ(time_(), 4118083200);
  EXPECT_EQ(rtc_(), 4118083200.0);
  double clock = 0;
  clockx_(&clock);
  EXPECT_EQ(clock, 4118083200250000.0);
  EXPECT_EQ(answered_by(fdate_, 24), fits("Thu Jul  1 00:00:00 2100"));
  int32_t tv[2], ierr;
  gettimeofday_(tv, &ierr);
  EXPECT_EQ(tv[0], static_cast<int32_t>(4118083200U));
}

TEST_F(Now, YearThatTheHostCannotTell) {
  if (sizeof(time_t) != 8)
    FAIL() << "times have 64 bits";
  set_clock(INT64_MAX);
  for (const auto routine : {fdate_, clock_, time2_, date_, date8_, date4_, jdate_, jdate4_})
    EXPECT_EQ(answered_by(routine, 12).text, padded("", 12));
  const auto zeros = [](auto routine) {
    int32_t values[4] = {7, 7, 7, 7};
    routine(values);
    EXPECT_EQ(values[0] | values[1] | values[2], 0);
  };
  zeros(itime_);
  zeros(idate_);
  zeros(f_idate4_);
  zeros([](int32_t *v) { getdat_(v, v + 1, v + 2); });
  zeros([](int32_t *v) { idate1_(v, v + 1, v + 2); });
  zeros([](int32_t *v) { idate4_(v, v + 1, v + 2); });
  zeros([](int32_t *v) { gettim_(v, v + 1, v + 2, v + 3); });
}

TEST_F(Now, Gettimeofday) {
  int32_t tv[4] = {77, 77, 77, 77}, ierr[3] = {77, 77, 77};
  set_clock(NOVEMBER_2026, 123456);
  EXPECT_EQ(state_after([&] { gettimeofday_(tv + 1, ierr + 1); }), untouched());
  EXPECT_EQ((std::array{tv[0], tv[1], tv[2], tv[3]}),
            (std::array{77, static_cast<int32_t>(NOVEMBER_2026), 123456, 77}));
  EXPECT_EQ((std::array{ierr[0], ierr[1], ierr[2]}), (std::array{77, 0, 77}));
  own_clock.fails = true;
  EXPECT_EQ(state_after([&] { gettimeofday_(tv + 1, ierr + 1); }), (ErrorState{EFAULT, SENTINEL, {}}));
  EXPECT_EQ((std::array{tv[0], tv[1], tv[2], tv[3]}), (std::array{77, 0, 0, 77}));
  EXPECT_EQ((std::array{ierr[0], ierr[1], ierr[2]}), (std::array{77, -1, 77}));
}

TEST_F(Now, Timef) {
  in_child([] {
    set_clock(NOVEMBER_2026, 900000);
    EXPECT_EQ(timef_(), 0.0);
    EXPECT_EQ(timef_(), 0.0);
    set_clock(NOVEMBER_2026 + 3, 100000);
    EXPECT_EQ(timef_(), 3.0);
    set_clock(NOVEMBER_2026 + 5000000000);
    EXPECT_EQ(timef_(), 5000000000.0);
    set_clock(NOVEMBER_2026 - 7);
    EXPECT_EQ(timef_(), -7.0);
  });
}

// SECNDS keeps the largest time of day that it handed out, so each test has a process of its own.
class Secnds : public Now {
protected:
  static float at(double second_of_day, float t = 0) {
    const double whole = std::floor(second_of_day);
    set_clock(NOVEMBER_2026 + static_cast<int64_t>(whole),
              static_cast<int>(std::lround((second_of_day - whole) * 1e6)));
    const float before = t;
    float answer = -1;
    EXPECT_EQ(state_after([&] { answer = secnds_(&t); }), untouched());
    EXPECT_EQ(t, before);
    return answer;
  }
};

TEST_F(Secnds, TimeOfDay) {
  in_child([] {
    EXPECT_EQ(at(0), 0.0F);
    EXPECT_EQ(at(1.5), 1.5F);
    EXPECT_EQ(at(3723.25), 3723.25F);
    EXPECT_EQ(at(86399.96875), 86399.96875F);
  });
}

// Where a division in double precision would come to the next REAL(4).
TEST_F(Secnds, MicrosecondsAreDividedInSinglePrecision) {
  in_child([] {
    EXPECT_EQ(at(1.001185), 1.00118494F);
    EXPECT_EQ(at(2.00237), 2.00236988F);
    EXPECT_EQ(at(100.027668), 100.027664F);
    EXPECT_EQ(at(3723.505249), 3723.50537F);
  });
}

TEST_F(Secnds, NegativeZeroIsZero) {
  in_child([] { EXPECT_EQ(at(100, -0.0F), 100.0F); });
}

TEST_F(Secnds, IsLocal) {
  in_child([] {
    Zone::set(NEPAL);
    EXPECT_EQ(at(10), 5 * 3600 + 45 * 60 + 10.0F);
  });
}

TEST_F(Secnds, Elapsed) {
  in_child([] {
    const float begin = at(1000.5);
    EXPECT_EQ(at(1010.75, begin), 10.25F);
    EXPECT_EQ(at(1010.75, 1010.75F), 0.0F);
  });
}

TEST_F(Secnds, NeverDecreasesAcrossMidnight) {
  in_child([] {
    const float last = at(86399);
    EXPECT_EQ(last, 86399.0F);
    EXPECT_EQ(at(86401), last);
    EXPECT_EQ(at(86401, last), 0.0F);
    EXPECT_EQ(at(86400 + 40000), last);
    EXPECT_EQ(at(86400 + 86399.5), 86399.5F);
    EXPECT_EQ(at(2 * 86400 + 1), 86399.5F);
  });
}

TEST_F(Secnds, SmallNegativeDifferencesAreNone) {
  in_child([] {
    EXPECT_EQ(at(2), 2.0F);
    EXPECT_EQ(at(2, 2.001F), 0.0F);
    EXPECT_EQ(at(2, 2.00195F), 0.0F);
    EXPECT_EQ(at(2, 2.00197F), 2.0F - 2.00197F + 86400.0F);
    EXPECT_EQ(at(2, 3.0F), 86399.0F);
    EXPECT_EQ(at(2, 86400.0F), 2.0F);
  });
  // The last of them, and the one behind it.
  in_child([] {
    EXPECT_EQ(at(0, std::nextafter(0.00196F, 0.0F)), 0.0F);
    EXPECT_EQ(at(0, 0.00196F), 86400.0F);
  });
}

TEST_F(Secnds, DifferenceIsOfSinglePrecision) {
  in_child([] {
    // The time of day has 1/128 s there.
    EXPECT_EQ(at(70000.001), 70000.0F);
    EXPECT_EQ(at(70000.001, 70000.0F), 0.0F);
  });
}

TEST_F(Secnds, OddArguments) {
  in_child([] {
    EXPECT_EQ(at(5, -10.0F), 15.0F);
    EXPECT_EQ(at(5, INFINITY), -INFINITY);
    EXPECT_EQ(at(5, -INFINITY), INFINITY);
    EXPECT_EQ(at(5, FLT_MAX), -FLT_MAX);
  });
  in_child([] {
    set_clock(NOVEMBER_2026 + 5);
    const float nothing = NAN;
    EXPECT_TRUE(std::isnan(secnds_(&nothing)));
  });
}

TEST_F(Secnds, ClockThatFails) {
  in_child([] {
    EXPECT_EQ(at(100), 100.0F);
    own_clock.fails = true;
    float t = 0;
    EXPECT_EQ(secnds_(&t), 0.0F);
    t = 50;
    EXPECT_EQ(secnds_(&t), 0.0F);
    // What was handed out before counts as if nothing had happened.
    own_clock.fails = false;
    EXPECT_EQ(at(99), 100.0F);
    EXPECT_EQ(at(101), 101.0F);
  });
}

TEST_F(Secnds, OtherNamesShareTheState) {
  in_child([] {
    for (const auto routine : {secnds_, f_secnds_, fortran_f_secnds, qxport_f_secnds_}) {
      EXPECT_EQ(at(86390), 86390.0F);
      set_clock(NOVEMBER_2026 + 86400 + 5);
      const float zero = 0, t = 86380;
      EXPECT_EQ(routine(&zero), 86390.0F);
      EXPECT_EQ(routine(&t), 10.0F);
    }
    set_clock(NOVEMBER_2026 + 86395);
    const float zero = 0;
    EXPECT_EQ(fortran_f_secnds(&zero), 86395.0F);
    EXPECT_EQ(at(5), 86395.0F);
  });
}

TEST_F(Now, ModuleNamesAreTheSameRoutines) {
  expect_same_routine(qxport_fdate_, fdate_);
  expect_same_routine(qxport_clock_, clock_);
  expect_same_routine(qxport_time2_, time2_);
  expect_same_routine(qxport_date_, date_);
  expect_same_routine(qxport_date8_, date8_);
  expect_same_routine(qxport_date4_, date4_);
  expect_same_routine(qxport_jdate_, jdate_);
  expect_same_routine(qxport_jdate4_, jdate4_);
  expect_same_routine(qxport_getdat_, getdat_);
  expect_same_routine(qxport_getdati2_, getdati2_);
  expect_same_routine(qxport_gettim_, gettim_);
  expect_same_routine(qxport_gettimi2_, gettimi2_);
  expect_same_routine(qxport_itime_, itime_);
  expect_same_routine(qxport_idate_, idate_);
  expect_same_routine(qxport_idate1_, idate1_);
  expect_same_routine(qxport_idate4_, idate4_);
  expect_same_routine(qxport_f_idate4_, f_idate4_);
  expect_same_routine(qxport_secnds_, secnds_);
  expect_same_routine(qxport_f_secnds_, f_secnds_);
  expect_same_routine(qxport_gettimeofday_, gettimeofday_);
  expect_same_routine(qxport_timef_, timef_);
}

}  // namespace
