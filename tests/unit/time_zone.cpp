// A zone that the program changes while it runs, in every way that a program has.
#include "text_functions.h"
#include "zone.h"

#include <ctime>
#include <fstream>
#include <thread>

namespace {

// The local hour of an instant, at noon in UTC of 1 July 2026.
int hour() {
  constexpr int32_t NOON = 1782907200;
  int32_t fields[9] = {};
  ltime_(&NOON, fields);
  return fields[2];
}

std::string text() {
  constexpr int32_t NOON = 1782907200;
  return answered_by(ctime_, 25, NOON).text;
}

TEST(Zone, ChangeTakesEffectAtTheNextCall) {
  const Zone zone(UTC);
  EXPECT_EQ(hour(), 12);
  Zone::set(CENTRAL_EUROPE);
  EXPECT_EQ(hour(), 14);
  EXPECT_EQ(text(), "Wed Jul  1 14:00:00 2026\n");
  Zone::set(NEPAL);
  EXPECT_EQ(text(), "Wed Jul  1 17:45:00 2026\n");
  EXPECT_EQ(hour(), 17);
  Zone::set(UTC);
  EXPECT_EQ(text(), "Wed Jul  1 12:00:00 2026\n");
  static char entry[] = "TZ=EST5EDT,M3.2.0,M11.1.0";
  putenv(entry);
  EXPECT_EQ(hour(), 8);
}

TEST(Zone, ChangeOfOneCharacterIsSeen) {
  const Zone zone("XYZ1");
  EXPECT_EQ(hour(), 11);
  Zone::set("XYZ2");
  EXPECT_EQ(hour(), 10);
  Zone::set("XYZ22");
  EXPECT_EQ(hour(), 14);
  Zone::set("XYZ2");
  EXPECT_EQ(hour(), 10);
}

// The entry may be changed where it stands, without any call.
TEST(Zone, ChangeInPlaceIsSeen) {
  const Zone zone(UTC);
  static char entry[] = "TZ=XYZ1";
  putenv(entry);
  EXPECT_EQ(hour(), 11);
  entry[6] = '4';
  EXPECT_EQ(hour(), 8);
}

TEST(Zone, EmptyAndInvalidOnesAreUtc) {
  const Zone zone(NEPAL);
  EXPECT_EQ(hour(), 17);
  for (const char *invalid : {"", ":", "/no/such/zone", ":no/such/zone", "1", "\xff\xfe", "<", "-", "="}) {
    Zone::set(invalid);
    EXPECT_EQ(answered_by(ctime_, 25, int32_t{1782907200}), fits("Wed Jul  1 12:00:00 2026\n")) << invalid;
    Zone::set(NEPAL);
    EXPECT_EQ(hour(), 17) << invalid;
  }
}

// The host's own zone stands behind an unset TZ.
TEST(Zone, UnsetIsTheHostsZone) {
  const Zone zone(nullptr);
  const time_t noon = 1782907200;
  tzset();
  const int hosts = localtime(&noon)->tm_hour;
  EXPECT_EQ(hour(), hosts);
  Zone::set("XYZ7:30");
  EXPECT_EQ(text().substr(11, 5), "04:30");
  Zone::set(nullptr);
  EXPECT_EQ(hour(), hosts);
  Zone::set("-");
  EXPECT_EQ(hour(), 12);
  Zone::set(nullptr);
  EXPECT_EQ(hour(), hosts);
}

TEST(Zone, TextOfAnyLength) {
  const Zone zone(UTC);
  for (size_t length = 3; length < 300; ++length) {
    const std::string name(length, 'A');
    Zone::set((name + "1").c_str());
    EXPECT_EQ(hour(), 11) << length;
    EXPECT_EQ(hour(), 11) << length;
    Zone::set((name + "3").c_str());
    EXPECT_EQ(hour(), 9) << length;
    Zone::set((name + "3:30").c_str());
    EXPECT_EQ(text().substr(11, 5), "08:30") << length;
  }
}

// Somebody else had the host read another zone, and TZ is again what it was when the library looked last.
TEST(Zone, ZoneReadBySomebodyElseInBetween) {
  const Zone zone(NEPAL);
  EXPECT_EQ(hour(), 17);
  Zone::set(CENTRAL_EUROPE);
  const time_t noon = 1782907200;
  EXPECT_EQ(localtime(&noon)->tm_hour, 14);
  Zone::set(NEPAL);
  EXPECT_EQ(hour(), 17);
  EXPECT_EQ(hour(), 17);
}

// Files of version 1: no change and one kind of local time, an hour and two minutes and three seconds to the
// east, and a number of leap seconds.
TEST(Zone, OwnFile) {
  const TemporaryDirectory directory;
  const std::string file("TZif\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0"
                         "\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\1\0\0\0\4"
                         "\0\0\x0e\x8b\0\0LMT\0",
                         44 + 10);
  const std::string path = directory.file("zone with a blank", file);
  const Zone zone(UTC);
  EXPECT_EQ(hour(), 12);
  Zone::set((":" + path).c_str());
  EXPECT_EQ(text(), "Wed Jul  1 13:02:03 2026\n");
  Zone::set(path.c_str());
  EXPECT_EQ(text(), "Wed Jul  1 13:02:03 2026\n");
}

TEST(Zone, OwnFileWithLeapSeconds) {
  const TemporaryDirectory directory;
  const std::string file("TZif\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0"
                         "\0\0\0\0\0\0\0\0\0\0\0\1\0\0\0\0\0\0\0\1\0\0\0\4"
                         "\0\0\x0e\x8b\0\0LMT\0"
                         "\x04\xb2\x58\0\0\0\0\1",
                         44 + 10 + 8);
  const std::string path = directory.file("leap", file);
  const Zone zone(UTC);
  EXPECT_EQ(hour(), 12);
  Zone::set((":" + path).c_str());
  EXPECT_EQ(text(), "Wed Jul  1 13:02:02 2026\n");
  EXPECT_EQ(text(), "Wed Jul  1 13:02:02 2026\n");
  Zone::set(UTC);
  EXPECT_EQ(text(), "Wed Jul  1 12:00:00 2026\n");
}

// Nothing that the routines keep is written by two threads in a way that either could see.
TEST(Zone, SeveralThreadsConvertAtTheSameTime) {
  const Zone zone(CENTRAL_EUROPE);
  const auto convert = [] {
    for (int i = 0; i < 2000; ++i) {
      ASSERT_EQ(hour(), 14);
      const int32_t winter = 1767225600 + i;
      int32_t fields[9];
      ltime_(&winter, fields);
      ASSERT_EQ(fields[2] * 3600 + fields[1] * 60 + fields[0], 3600 + i);
      int32_t date[3];
      idate_(date);
      char now[24];
      fdate_(now, 24);
    }
  };
  std::thread other(convert);
  convert();
  other.join();
}

}  // namespace
