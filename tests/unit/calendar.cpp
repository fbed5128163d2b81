// Local time beside the host's own localtime and mktime.
#include "frame/calendar.h"
#include "outcome.h"
#include "time_zone.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <ostream>
#include <random>
#include <thread>
#include <unistd.h>

using namespace qxport;

namespace {

struct Fields {
  int year, month, day, hour, minute, second, weekday, day_of_year, daylight_saving;
  long offset;
  bool operator==(const Fields &) const = default;
};

std::ostream &operator<<(std::ostream &out, const Fields &f) {
  return out << f.year << '-' << f.month << '-' << f.day << ' ' << f.hour << ':' << f.minute << ':'
             << f.second << " weekday " << f.weekday << " day " << f.day_of_year << " dst "
             << f.daylight_saving << " offset " << f.offset;
}

Fields fields_of(const struct tm &t) {
  return {t.tm_year, t.tm_mon,  t.tm_mday, t.tm_hour,  t.tm_min,
          t.tm_sec,  t.tm_wday, t.tm_yday, t.tm_isdst, t.tm_gmtoff};
}

void expect_as_host(time_t instant) {
  struct tm ours = {};
  const bool answered = local_fields(instant, &ours);
  const struct tm *hosts = localtime(&instant);
  ASSERT_EQ(answered, hosts != nullptr) << instant;
  if (hosts != nullptr) {
    EXPECT_EQ(fields_of(ours), fields_of(*hosts)) << instant << " TZ " << (getenv("TZ") ? getenv("TZ") : "-");
  }
}

void expect_way_back(time_t instant) {
  struct tm ours = {};
  if (!local_fields(instant, &ours))
    return;
  const struct tm before = ours;
  const time_t back = local_instant(ours);
  EXPECT_EQ(memcmp(&before, &ours, sizeof(ours)), 0) << "written";
  struct tm again = {};
  ASSERT_TRUE(local_fields(back, &again));
  Fields expected = fields_of(before), got = fields_of(again);
  // An hour that comes twice has two instants; either will do.
  expected.daylight_saving = got.daylight_saving;
  expected.offset = got.offset;
  EXPECT_EQ(got, expected) << instant;
  if (fields_of(before) == fields_of(again)) {
    EXPECT_EQ(back, instant);
  }
}

constexpr time_t YEAR_2023 = 1672531200;
const char *const ZONES[] = {
    "Europe/Paris",   "America/New_York",          "Australia/Lord_Howe", "America/Sao_Paulo",
    "Asia/Kathmandu", "Africa/Casablanca",         ":Pacific/Apia",       "UTC0",
    "EST5EDT",        "CET-1CEST,M3.5.0,M10.5.0/3"};

TEST(Calendar, EveryHourOfAYear) {
  for (const char *name : ZONES) {
    const TimeZone zone(name);
    for (time_t instant = YEAR_2023 - 86400; instant < YEAR_2023 + 366 * 86400; instant += 3600) {
      expect_as_host(instant);
      expect_way_back(instant);
    }
  }
}

TEST(Calendar, EverySecondAroundAChange) {
  for (const char *name : {"Europe/Paris", "Europe/London"}) {
    const TimeZone zone(name);
    for (const time_t change : {1679792400, 1698541200})
      for (time_t instant = change - 7300; instant < change + 7300; ++instant) {
        expect_as_host(instant);
        expect_way_back(instant);
      }
  }
}

// Summer time became standard time there, by the same offset.
TEST(Calendar, DaylightSavingThatEndsWithoutAChangeOfTheOffset) {
  const TimeZone zone("Europe/London");
  constexpr time_t OCTOBER_1968 = -37242000;
  for (time_t instant = OCTOBER_1968 - 20000; instant < OCTOBER_1968 + 20000; instant += 10)
    expect_as_host(instant);
}

// Centuries without a leap day, and the end of the calendar's cycle of 400 years.
TEST(Calendar, EveryDayOfTwoCycles) {
  const TimeZone zone("UTC0");
  constexpr int DAYS = 146097;
  for (int day = -DAYS; day < DAYS; ++day) {
    expect_as_host(time_t{day} * 86400);
    expect_way_back(time_t{day} * 86400 + 86399);
  }
}

// Zones that count the leap seconds, the one of 2016-12-31 among them.
TEST(Calendar, LeapSeconds) {
  for (const char *name : {"right/UTC", "right/Europe/Paris"}) {
    const TimeZone zone(name);
    const auto expect = [](time_t instant) {
      struct tm ours = {};
      ASSERT_TRUE(local_fields(instant, &ours));
      const struct tm *hosts = localtime(&instant);
      Fields expected = fields_of(*hosts), got = fields_of(ours);
      expected.offset = got.offset = 0;
      EXPECT_EQ(got, expected) << instant;
      struct tm copy = *hosts;
      copy.tm_isdst = -1;
      EXPECT_EQ(local_instant(*hosts), mktime(&copy));
    };
    for (time_t instant = 1483228800; instant < 1483228800 + 60; ++instant)
      expect(instant);
    for (time_t instant = 0; instant < YEAR_2023; instant += 1234567)
      expect(instant);
  }
}

TEST(Calendar, HourThatIsLeftOutIsAsMktimeHasIt) {
  const TimeZone zone("Europe/Paris");
  struct tm fields = {};
  fields.tm_year = 123;
  fields.tm_mon = 2;
  fields.tm_mday = 26;
  fields.tm_hour = 2;
  fields.tm_min = 30;
  const time_t ours = local_instant(fields);
  struct tm copy = fields;
  copy.tm_isdst = -1;
  EXPECT_EQ(ours, mktime(&copy));
}

TEST(Calendar, InstantsOfAllSizes) {
  std::mt19937_64 random(20230326);
  for (const char *name : ZONES) {
    const TimeZone zone(name);
    for (int bits = 1; bits < 63; ++bits)
      for (int i = 0; i < 20; ++i) {
        const auto size = static_cast<time_t>(random() >> (64 - bits));
        for (const time_t instant : {size, static_cast<time_t>(-size)}) {
          expect_as_host(instant);
          expect_way_back(instant);
        }
      }
    for (const time_t instant : {time_t{0}, time_t{-1}, time_t{INT32_MAX}, time_t{INT32_MIN}, time_t{1} << 44,
                                 (time_t{1} << 44) - 1, -(time_t{1} << 44)})
      expect_as_host(instant);
  }
}

TEST(Calendar, YearThatDoesNotFitIsRefused) {
  const TimeZone zone("UTC0");
  struct tm fields = {};
  EXPECT_FALSE(local_fields(std::numeric_limits<time_t>::max(), &fields));
  EXPECT_FALSE(local_fields(std::numeric_limits<time_t>::min(), &fields));
}

TEST(Calendar, FieldsOutOfRangeAreBroughtIntoIt) {
  std::mt19937 random(7);
  for (const char *name : {"America/New_York", "UTC0"}) {
    const TimeZone zone(name);
    for (int i = 0; i < 20000; ++i) {
      const auto field = [&] { return static_cast<int>(static_cast<int16_t>(random())) >> (random() % 12); };
      struct tm fields = {};
      fields.tm_year = field();
      fields.tm_mon = field();
      fields.tm_mday = field();
      fields.tm_hour = field();
      fields.tm_min = field();
      fields.tm_sec = field();
      fields.tm_isdst = -1;
      const time_t ours = local_instant(fields);
      struct tm hosts = fields, back = {};
      const time_t theirs = mktime(&hosts);
      if (ours == theirs)
        continue;
      // The hour that comes twice: the fields must agree.
      ASSERT_TRUE(local_fields(ours, &back));
      Fields expected = fields_of(hosts), got = fields_of(back);
      expected.offset = got.offset;
      expected.daylight_saving = got.daylight_saving;
      EXPECT_EQ(got, expected) << ours << ' ' << theirs;
    }
  }
}

TEST(Calendar, FollowsTheEnvironmentFromCallToCall) {
  const TimeZone restored(nullptr);
  const char *const several[] = {"Europe/Paris",
                                 nullptr,
                                 "",
                                 "UTC0",
                                 "Asia/Tokyo",
                                 "XYZ3",
                                 "XYZ4",
                                 "America/Argentina/ComodRivadavia",
                                 "America/Argentina/Catamarca"};
  const time_t instant = YEAR_2023 + 200 * 86400;
  for (const char *first : several)
    for (const char *second : several) {
      TimeZone::set(first);
      expect_as_host(instant);
      TimeZone::set(second);
      struct tm ours = {};
      ASSERT_TRUE(local_fields(instant, &ours));
      const struct tm *hosts = localtime(&instant);
      EXPECT_EQ(fields_of(ours), fields_of(*hosts));
      EXPECT_EQ(local_instant(ours), instant);
      TimeZone::set(first);
      EXPECT_EQ(local_instant(*localtime(&instant)), instant);
    }
}

// Variables before TZ, and TZ itself, may come and go, and the list may be another one.
TEST(Calendar, FollowsTheEnvironmentHoweverItIsChanged) {
  const TimeZone restored("UTC0");
  char **const former = environ;
  char longer[] = "TZX=UTC-9", one[] = "TZ=UTC-1", two[] = "TZ=UTC-2", three[] = "TZ=UTC-3",
       other[] = "ATZ=UTC-8";
  char *list[6], *another_list[6];
  // Where local time is that many hours ahead.
  const auto expect_hours = [](int hours, std::initializer_list<char *> entries, char **environment) {
    *std::copy(entries.begin(), entries.end(), environment) = nullptr;
    environ = environment;
    struct tm ours = {};
    ASSERT_TRUE(local_fields(YEAR_2023, &ours));
    EXPECT_EQ(ours.tm_gmtoff, 3600 * hours);
    EXPECT_EQ(local_instant(ours), YEAR_2023);
  };
  expect_hours(1, {longer, one, two, other}, list);
  expect_hours(2, {longer, two, other}, list);
  expect_hours(2, {two, other}, list);
  expect_hours(3, {longer, other, three}, list);
  expect_hours(1, {longer, other, one}, another_list);
  expect_hours(3, {longer, other, three}, list);
  expect_hours(2, {longer, other, two}, list);
  two[7] = '5';
  expect_hours(5, {longer, other, two}, list);
  two[0] = 'X';
  expect_hours(1, {longer, other, two, one}, list);
  two[0] = 'T';
  expect_hours(5, {longer, other, two, one}, another_list);
  // Without TZ it is the system's zone, as one call of the host's tells.
  const time_t instant = YEAR_2023;
  for (char **environment : {list, another_list, static_cast<char **>(nullptr)}) {
    environ = environment;
    if (environment != nullptr)
      environment[0] = nullptr;
    expect_as_host(instant);
  }
  environ = former;
}

// A program may tell the host of another zone, and take it back without a word.
// Programs end the list at its first entry; what stood behind it is no environment any more.
TEST(Calendar, EnvironmentThatIsEndedAtItsBeginning) {
  char other[] = "A=1", zone[] = "TZ=<+0545>-5:45";
  char *entries[] = {other, zone, nullptr};
  char **const former = environ;
  environ = entries;
  expect_as_host(YEAR_2023);
  entries[0] = nullptr;
  expect_as_host(YEAR_2023);
  environ = former;
  expect_as_host(YEAR_2023);
}

TEST(Calendar, HostThatKnowsAnotherZone) {
  for (const char *name : {"Europe/Paris", "AAA0BBB,J100/2,J100/4"}) {
    const TimeZone zone(name);
    expect_as_host(YEAR_2023);
    TimeZone::set("Asia/Tokyo");
    tzset();
    TimeZone::set(name);
    struct tm ours = {};
    const time_t another = YEAR_2023 + 86400;
    ASSERT_TRUE(local_fields(another, &ours));
    EXPECT_EQ(fields_of(ours), fields_of(*localtime(&another)));
  }
}

TEST(Calendar, LongTextsThatBeginAlike) {
  const TimeZone restored(nullptr);
  const std::string alike = "<" + std::string(70, 'A') + ">";
  for (const char *hours : {"3", "4", "-5", "3"}) {
    TimeZone::set((alike + hours).c_str());
    expect_as_host(YEAR_2023);
    expect_way_back(YEAR_2023);
  }
}

// Daylight saving for one hour of one day.
TEST(Calendar, RuleThatChangesToAndFro) {
  const TimeZone zone("AAA0BBB,J100/2,J100/4");
  for (time_t instant = YEAR_2023 + 98 * 86400; instant < YEAR_2023 + 101 * 86400; instant += 60) {
    expect_as_host(instant);
    expect_way_back(instant);
  }
}

TEST(Calendar, ErrorStateIsLeftAlone) {
  for (const char *name : {"Europe/Paris", "UTC0"}) {
    const TimeZone zone(name);
    struct tm fields = {};
    EXPECT_EQ(state_after([&] {
                local_fields(YEAR_2023, &fields);
                local_fields(YEAR_2023, &fields);
                local_instant(fields);
              }),
              untouched());
  }
}

TEST(Calendar, ThreadsAtTheSameTime) {
  const TimeZone zone("Europe/Paris");
  std::vector<std::thread> threads;
  for (int number = 0; number < 4; ++number)
    threads.emplace_back([number] {
      for (time_t instant = YEAR_2023 + number; instant < YEAR_2023 + 300 * 86400; instant += 40000) {
        struct tm ours = {}, hosts = {};
        EXPECT_TRUE(local_fields(instant, &ours));
        localtime_r(&instant, &hosts);
        EXPECT_EQ(fields_of(ours), fields_of(hosts));
      }
    });
  for (std::thread &thread : threads)
    thread.join();
}

}  // namespace
