// FSTAT, ISATTY and TTYNAM above a unit lookup of the test's own.
#include "contract/services.h"
#include "outcome.h"
#include "status_array.h"

#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// What the lookup answers, and what it was asked.
int32_t descriptor;
std::string unit_name;
intptr_t asked_unit;
std::optional<int64_t> asked_capacity;

// What the host says of a descriptor.
int terminal;
int asked_descriptor;

}  // namespace

int32_t __msportlib_d_gethandle(intptr_t unit, char *name, int64_t *name_length) {
  asked_unit = unit;
  asked_capacity = std::nullopt;
  if (name != nullptr) {
    asked_capacity = *name_length;
    memcpy(name, unit_name.data(), unit_name.size());
    *name_length = static_cast<int64_t>(unit_name.size());
  }
  return descriptor;
}

int isatty(int fd) noexcept {
  asked_descriptor = fd;
  return terminal;
}

namespace {

class UnitLookup : public testing::Test {
protected:
  UnitLookup() {
    descriptor = 0;
    unit_name = "";
    terminal = 0;
  }
  ~UnitLookup() override { terminal = 0; }
};

constexpr int32_t NUMBERS[] = {0, 5, 6, 1000, -10, INT32_MAX, INT32_MIN};

ErrorState status_only(int32_t error) {
  return {error, SENTINEL, {error}};
}

TEST_F(UnitLookup, TakesEveryUnitNumberWithoutAName) {
  for (const int32_t unit : NUMBERS) {
    StatusArray<int32_t> statb;
    EXPECT_EQ(outcome_of([&] { return fstat_(&unit, statb.data()); }), succeeded());
    EXPECT_EQ(asked_unit, unit);
    EXPECT_EQ(asked_capacity, std::nullopt);
    StatusArray<int64_t> statb8;
    EXPECT_EQ(outcome_of([&] { return fstati8_(&unit, statb8.data()); }), succeeded());
    EXPECT_EQ(asked_unit, unit);
    EXPECT_EQ(asked_capacity, std::nullopt);
    EXPECT_EQ(outcome_of([&] { return isatty_(&unit); }), succeeded());
    EXPECT_EQ(asked_unit, unit);
    EXPECT_EQ(asked_capacity, std::nullopt);
  }
}

TEST_F(UnitLookup, EveryNegativeDescriptorIsNoUnit) {
  const int32_t unit = 7;
  for (const int32_t negative : {-1, -2, INT32_MIN}) {
    descriptor = negative;
    terminal = 1;
    unit_name = "/dev/something";
    StatusArray<int32_t> statb;
    EXPECT_EQ(outcome_of([&] { return fstat_(&unit, statb.data()); }), reported(EINVAL));
    EXPECT_EQ(statb.elements(), StatusArray<int32_t>::former());
    StatusArray<int64_t> statb8;
    EXPECT_EQ(outcome_of([&] { return fstati8_(&unit, statb8.data()); }), reported(EINVAL));
    EXPECT_EQ(statb8.elements(), StatusArray<int64_t>::former());
    EXPECT_EQ(outcome_of([&] { return isatty_(&unit); }), (Outcome{0, status_only(EBADF)}));
    Character name(20);
    EXPECT_EQ(state_after([&] { ttynam_(name.data(), &unit, name.length()); }), status_only(EBADF));
    EXPECT_EQ(name.text(), padded("", 20));
  }
}

TEST_F(UnitLookup, DescriptorThatIsNotOpenIsEbadf) {
  const int32_t unit = 7;
  descriptor = 1000000;
  StatusArray<int32_t> statb;
  EXPECT_EQ(outcome_of([&] { return fstat_(&unit, statb.data()); }), reported(EBADF));
  EXPECT_EQ(statb.elements(), StatusArray<int32_t>::former());
}

TEST_F(UnitLookup, AnyNonzeroIsattyIsTrueAnd1) {
  const int32_t unit = 7;
  for (const int answer : {1, 2, -1, 256}) {
    terminal = answer;
    descriptor = 3;
    EXPECT_EQ(outcome_of([&] { return isatty_(&unit); }), (Outcome{1, untouched()}));
    EXPECT_EQ(asked_descriptor, 3);
  }
}

TEST_F(UnitLookup, NameIsAskedForWithRoomFor255) {
  terminal = 1;
  const int32_t unit = 7;
  Character name(1000);
  for (const size_t length : {0u, 1u, 254u, 255u}) {
    unit_name = std::string(length, 'n');
    EXPECT_EQ(state_after([&] { ttynam_(name.data(), &unit, name.length()); }), untouched());
    EXPECT_EQ(name.text(), padded(unit_name, 1000));
    EXPECT_EQ(asked_capacity, 255);
    EXPECT_EQ(asked_unit, 7);
  }
}

TEST_F(UnitLookup, NameOf255CharactersFitsExactlyAndIsCut) {
  terminal = 1;
  unit_name = std::string(255, 'n');
  const int32_t unit = 7;
  Character exact(255);
  EXPECT_EQ(state_after([&] { ttynam_(exact.data(), &unit, exact.length()); }), untouched());
  EXPECT_EQ(exact.text(), unit_name);
  Character shorter(254);
  EXPECT_EQ(state_after([&] { ttynam_(shorter.data(), &unit, shorter.length()); }), status_only(EINVAL));
  EXPECT_EQ(shorter.text(), unit_name.substr(1));
}

TEST_F(UnitLookup, NameOfNoTerminalIsNotStored) {
  unit_name = "/a/file";
  const int32_t unit = 7;
  Character name(20);
  EXPECT_EQ(state_after([&] { ttynam_(name.data(), &unit, name.length()); }), status_only(ENOTTY));
  EXPECT_EQ(name.text(), padded("", 20));
}

}  // namespace
