// PACKTIMEQQ, UNPACKTIMEQQ and SETFILETIMEQQ.
#include "outcome.h"
#include "time_zone.h"

#include <array>
#include <climits>
#include <ctime>
#include <ostream>
#include <random>
#include <sys/stat.h>

namespace {

struct Fields {
  int16_t year, month, day, hour, minute, second;
  bool operator==(const Fields &) const = default;
};

std::ostream &operator<<(std::ostream &out, const Fields &f) {
  return out << f.year << '-' << f.month << '-' << f.day << ' ' << f.hour << ':' << f.minute << ':'
             << f.second;
}

int32_t packed(const Fields &f) {
  int32_t time = SENTINEL;
  packtimeqq_(&time, &f.year, &f.month, &f.day, &f.hour, &f.minute, &f.second);
  return time;
}

Fields unpacked(int32_t time) {
  Fields f = {};
  unpacktimeqq_(&time, &f.year, &f.month, &f.day, &f.hour, &f.minute, &f.second);
  return f;
}

// By the host alone.
Fields unpacked_by_host(time_t time) {
  const struct tm *t = localtime(&time);
  return {static_cast<int16_t>(t->tm_year + 1900), static_cast<int16_t>(t->tm_mon + 1),
          static_cast<int16_t>(t->tm_mday),        static_cast<int16_t>(t->tm_hour),
          static_cast<int16_t>(t->tm_min),         static_cast<int16_t>(t->tm_sec)};
}

time_t packed_by_host(const Fields &f) {
  struct tm t = {};
  t.tm_year = f.year - 1900;
  t.tm_mon = f.month - 1;
  t.tm_mday = f.day;
  t.tm_hour = f.hour;
  t.tm_min = f.minute;
  t.tm_sec = f.second;
  t.tm_isdst = -1;
  return mktime(&t);
}

constexpr int32_t YEAR_2023 = 1672531200;
constexpr int32_t DAY = 86400;

TEST(PackedTime, KnownTimes) {
  const TimeZone zone("UTC0");
  EXPECT_EQ(packed({1970, 1, 1, 0, 0, 0}), 0);
  EXPECT_EQ(packed({2000, 2, 29, 12, 30, 45}), 951827445);
  EXPECT_EQ(packed({2038, 1, 19, 3, 14, 7}), INT32_MAX);
  EXPECT_EQ(packed({1901, 12, 13, 20, 45, 52}), INT32_MIN);
  EXPECT_EQ(packed({1969, 12, 31, 23, 59, 59}), -1);
  EXPECT_EQ(unpacked(0), (Fields{1970, 1, 1, 0, 0, 0}));
  EXPECT_EQ(unpacked(-1), (Fields{1969, 12, 31, 23, 59, 59}));
  EXPECT_EQ(unpacked(INT32_MAX), (Fields{2038, 1, 19, 3, 14, 7}));
  EXPECT_EQ(unpacked(INT32_MIN), (Fields{1901, 12, 13, 20, 45, 52}));
}

TEST(PackedTime, IsLocal) {
  const TimeZone zone("Europe/Paris");
  EXPECT_EQ(packed({2023, 1, 1, 1, 0, 0}), packed_by_host({2023, 1, 1, 1, 0, 0}));
  const int32_t winter = packed({2023, 1, 15, 12, 0, 0}), summer = packed({2023, 7, 15, 12, 0, 0});
  TimeZone::set("UTC0");
  EXPECT_EQ(unpacked(winter), (Fields{2023, 1, 15, 11, 0, 0}));
  EXPECT_EQ(unpacked(summer), (Fields{2023, 7, 15, 10, 0, 0}));
  TimeZone::set("XYZ-5:30");
  EXPECT_EQ(unpacked(0), (Fields{1970, 1, 1, 5, 30, 0}));
  EXPECT_EQ(packed({1970, 1, 1, 5, 30, 0}), 0);
}

// To and fro over a year in which the clocks are put forward and back, hour by hour; of an hour that comes
// twice either instant will do.
TEST(PackedTime, EveryHourOfAYearInFiveZones) {
  for (const char *name :
       {"Europe/Paris", "America/New_York", "Australia/Lord_Howe", "America/St_Johns", "Africa/Casablanca"}) {
    const TimeZone zone(name);
    int twice = 0;
    for (int32_t time = YEAR_2023 - DAY; time < YEAR_2023 + 366 * DAY; time += 3600) {
      const Fields fields = unpacked(time);
      EXPECT_EQ(fields, unpacked_by_host(time)) << name << ' ' << time;
      const int32_t back = packed(fields);
      EXPECT_EQ(unpacked(back), fields) << name << ' ' << time;
      twice += back != time;
    }
    EXPECT_LE(twice, 2) << name;
  }
}

TEST(PackedTime, TimeThatIsLeftOutIsNear) {
  const TimeZone zone("Europe/Paris");
  const Fields left_out = {2023, 3, 26, 2, 30, 0};
  EXPECT_EQ(packed(left_out), packed_by_host(left_out));
  const Fields shown = unpacked(packed(left_out));
  EXPECT_TRUE(shown == (Fields{2023, 3, 26, 1, 30, 0}) || shown == (Fields{2023, 3, 26, 3, 30, 0})) << shown;
}

// Each field in turn at both ends of its type, and beyond its range by one.
TEST(PackedTime, FieldsOutOfRangeAreCarriedOn) {
  const TimeZone zone("UTC0");
  EXPECT_EQ(unpacked(packed({2023, 13, 1, 0, 0, 0})), (Fields{2024, 1, 1, 0, 0, 0}));
  EXPECT_EQ(unpacked(packed({2023, 0, 1, 0, 0, 0})), (Fields{2022, 12, 1, 0, 0, 0}));
  EXPECT_EQ(unpacked(packed({2023, 3, 0, 0, 0, 0})), (Fields{2023, 2, 28, 0, 0, 0}));
  EXPECT_EQ(unpacked(packed({2024, 2, 30, 0, 0, 0})), (Fields{2024, 3, 1, 0, 0, 0}));
  EXPECT_EQ(unpacked(packed({2023, 6, 15, 24, 0, 0})), (Fields{2023, 6, 16, 0, 0, 0}));
  EXPECT_EQ(unpacked(packed({2023, 6, 15, 12, -1, 0})), (Fields{2023, 6, 15, 11, 59, 0}));
  EXPECT_EQ(unpacked(packed({2023, 6, 15, 12, 0, 60})), (Fields{2023, 6, 15, 12, 1, 0}));
  for (const int16_t value : {int16_t{INT16_MIN}, int16_t{-1}, int16_t{0}, int16_t{99}, int16_t{INT16_MAX}})
    for (int place = 0; place < 6; ++place) {
      Fields fields = {2000, 6, 15, 12, 30, 30};
      int16_t *const places[] = {&fields.year, &fields.month,  &fields.day,
                                 &fields.hour, &fields.minute, &fields.second};
      *places[place] = value;
      EXPECT_EQ(packed(fields), static_cast<int32_t>(packed_by_host(fields))) << fields;
    }
}

TEST(PackedTime, RandomFields) {
  std::mt19937 random(1993);
  for (const char *name : {"UTC0", "Asia/Kathmandu"}) {
    const TimeZone zone(name);
    for (int i = 0; i < 20000; ++i) {
      const auto field = [&] {
        return static_cast<int16_t>(static_cast<int16_t>(random()) >> (random() % 14));
      };
      const Fields fields = {field(), field(), field(), field(), field(), field()};
      EXPECT_EQ(packed(fields), static_cast<int32_t>(packed_by_host(fields))) << fields;
    }
  }
}

using WideFields = std::array<int32_t, 6>;

int32_t packed_wide(const WideFields &f) {
  int32_t time = SENTINEL;
  packtimeqqi4_(&time, &f[0], &f[1], &f[2], &f[3], &f[4], &f[5]);
  return time;
}

TEST(PackedTime, WideFieldsAreAsTheHostCountsThem) {
  const TimeZone zone("Asia/Kathmandu");
  std::mt19937 random(32);
  const auto any_of = [&](int32_t least, int32_t most) {
    return std::uniform_int_distribution<int32_t>(least, most)(random);
  };
  for (int i = 0; i < 20000; ++i) {
    const int32_t far = i % 2 == 0 ? 100'000 : INT32_MAX / 2;
    const WideFields f = {any_of(1900, 2037), any_of(-30, 30),   any_of(-far, far),
                          any_of(-far, far),  any_of(-far, far), any_of(-far, far)};
    struct tm t = {};
    t.tm_year = f[0] - 1900;
    t.tm_mon = f[1] - 1;
    t.tm_mday = f[2];
    t.tm_hour = f[3];
    t.tm_min = f[4];
    t.tm_sec = f[5];
    t.tm_isdst = -1;
    ASSERT_EQ(packed_wide(f), static_cast<int32_t>(mktime(&t)))
        << f[0] << ' ' << f[1] << ' ' << f[2] << ' ' << f[3] << ' ' << f[4] << ' ' << f[5];
  }
}

TEST(PackedTime, WideFieldsOfNoYearAreMinusOne) {
  const TimeZone zone("UTC0");
  EXPECT_EQ(packed_wide({1970, 1, 1, 0, 0, 0}), 0);
  EXPECT_EQ(packed_wide({INT32_MIN, 1, 1, 0, 0, 0}), -1);
  EXPECT_EQ(packed_wide({INT32_MIN + 1899, 1, 1, 0, 0, 0}), -1);
  EXPECT_EQ(packed_wide({INT32_MIN + 1900, 0, 1, 0, 0, 0}), -1);
  EXPECT_EQ(packed_wide({2000, INT32_MIN, 1, 0, 0, 0}), -1);
}

TEST(PackedTime, ErrorStateIsLeftAlone) {
  for (const char *name : {"UTC0", "Europe/Paris", "no/such/zone"}) {
    const TimeZone zone(name);
    EXPECT_EQ(state_after([] { unpacked(packed({2023, 3, 26, 2, 30, 0})); }), untouched());
  }
}

Outcome set_time(const std::string &name, int32_t time) {
  return outcome_of(
      [&] { return setfiletimeqq_(name.data(), &time, static_cast<qxport_charlen>(name.size())); });
}

TEST(FileTime, BothTimesAreSet) {
  const TemporaryDirectory directory;
  const std::string file = directory.file("file");
  struct stat status;
  for (const int32_t time : {0, 1, 951827445, INT32_MAX, -2, -86400}) {
    EXPECT_EQ(set_time(file + "   ", time), (Outcome{1, untouched()})) << time;
    ASSERT_EQ(stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_atime, time);
    EXPECT_EQ(status.st_mtime, time);
  }
}

TEST(FileTime, MinusOneIsTheCurrentTime) {
  const TemporaryDirectory directory;
  const std::string file = directory.file("file");
  EXPECT_EQ(set_time(file, 0).answer, 1);
  const time_t before = time(nullptr);
  EXPECT_EQ(set_time(file, -1), (Outcome{1, untouched()}));
  struct stat status;
  ASSERT_EQ(stat(file.c_str(), &status), 0);
  // The file system's clock may lag behind by a tick.
  EXPECT_GE(status.st_mtime, before - 1);
  EXPECT_GE(status.st_atime, before - 1);
}

TEST(FileTime, FailuresAreRecorded) {
  const TemporaryDirectory directory;
  const std::string file = directory.file("file");
  const auto no = [](int32_t error) { return Outcome{0, {error, SENTINEL, {error}}}; };
  EXPECT_EQ(set_time(directory / "none", 0), no(ENOENT));
  EXPECT_EQ(set_time(file + "/x", -1), no(ENOTDIR));
  EXPECT_EQ(set_time("", 0), no(ENOENT));
  EXPECT_EQ(set_time(std::string(5000, 'n'), 0), no(ENAMETOOLONG));
  const int32_t time = 0;
  EXPECT_EQ(outcome_of([&] { return setfiletimeqq_(nullptr, &time, 4); }), no(EINVAL));
}

}  // namespace
