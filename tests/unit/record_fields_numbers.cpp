// PXFINTGET, PXFINTSET, PXFINT8GET, PXFINT8SET: widths, ranges, and what one routine stores as the others
// read it.
#include "record_calls.h"

#include <limits>

namespace {

constexpr int64_t MARK = 0x1234567800000000;
constexpr int64_t HIGHEST = INT32_MAX;
constexpr int64_t LOWEST = INT32_MIN;

struct NumberOfKind {
  std::string kind;
  KnownComponent component;
};
std::ostream &operator<<(std::ostream &out, const NumberOfKind &of_kind) {
  return out << of_kind.kind << ' ' << of_kind.component.name;
}

std::vector<NumberOfKind> numbers() {
  std::vector<NumberOfKind> numbers;
  for (const KnownKind &kind : known_kinds())
    for (const KnownComponent &component : kind.components)
      if (component.form == Form::Number32 || component.form == Form::Number64 ||
          component.form == Form::Handler)
        numbers.push_back({kind.name, component});
  return numbers;
}

class Number : public testing::TestWithParam<NumberOfKind> {
protected:
  const std::string &name() const { return GetParam().component.name; }
  Form form() const { return GetParam().component.form; }
  bool is_wide() const { return form() != Form::Number32; }

  // The component reads as this number, through both routines, and all others are as they were.
  void expect_holds(int64_t number) {
    EXPECT_EQ(contents_of(record).at(name()), std::to_string(number));

    const bool fits = form() != Form::Number64 || (number >= LOWEST && number <= HIGHEST);
    Guarded<int32_t> narrow(SENTINEL);
    EXPECT_EQ(intget(record, name(), &narrow), fits ? succeeded() : refused(ERANGE, ERANGE)) << number;
    EXPECT_EQ(narrow, fits ? static_cast<int32_t>(number) : 0) << number;

    const int64_t low = static_cast<uint32_t>(number);
    for (const int64_t upper : {MARK, int64_t{0}, ~int64_t{0xFFFFFFFF}}) {
      Guarded<int64_t> wide(upper | 0x5EA15EA1);
      EXPECT_EQ(int8get(record, name(), &wide), succeeded());
      EXPECT_EQ(wide, upper | low) << number;
    }

    Contents others = contents_of(record);
    others[name()] = before.at(name());
    EXPECT_EQ(others, before);
  }

  const OwnedRecord record{GetParam().kind};
  const Contents before = [this] {
    fill_record(record);
    return contents_of(record);
  }();
};

INSTANTIATE_TEST_SUITE_P(Fields, Number, testing::ValuesIn(numbers()),
                         [](const auto &info) { return info.param.component.name; });

}  // namespace

TEST_P(Number, Integer4IsStoredWithItsSign) {
  for (const int32_t value : {0, 1, -1, 65536, -65536, INT32_MAX, INT32_MIN}) {
    EXPECT_EQ(intset(record, name(), value), succeeded());
    expect_holds(value);
  }
}

TEST_P(Number, Integer8IsStoredWholeOrCutToItsLowHalf) {
  for (const int64_t value :
       {int64_t{0}, int64_t{1}, int64_t{-1}, HIGHEST, HIGHEST + 1, HIGHEST + 2, LOWEST, LOWEST - 1,
        LOWEST - 2, int64_t{3'000'000'000}, (int64_t{1} << 32) + 5, int64_t{0xFFFFFFFF}, int64_t{1} << 32,
        INT64_MAX, INT64_MIN, int64_t{0x123456789ABCDEF0}, -(int64_t{1} << 32) - 5}) {
    EXPECT_EQ(int8set(record, name(), value), succeeded());
    expect_holds(is_wide() ? value : static_cast<int32_t>(value));
  }
}

TEST_P(Number, ZeroIsGivenForANumberOutOfRange) {
  if (form() != Form::Number64)
    return expect_holds(std::stoll(before.at(name())));
  Guarded<int32_t> value(SENTINEL);
  for (const int64_t wide : {HIGHEST + 1, LOWEST - 1, INT64_MAX, INT64_MIN, int64_t{1} << 32}) {
    EXPECT_EQ(int8set(record, name(), wide), succeeded());
    *&value = SENTINEL;
    EXPECT_EQ(intget(record, name(), &value), refused(ERANGE, ERANGE)) << wide;
    EXPECT_EQ(value, 0) << wide;
  }
  for (const int64_t narrow : {HIGHEST, LOWEST}) {
    EXPECT_EQ(int8set(record, name(), narrow), succeeded());
    EXPECT_EQ(intget(record, name(), &value), succeeded()) << narrow;
    EXPECT_EQ(value, narrow);
  }
}

TEST(IntGet, HandlerIsCutWithoutACheck) {
  const OwnedRecord record("sigaction");
  for (const int64_t wide : {int64_t{3'000'000'000}, (int64_t{1} << 40) + 7, INT64_MIN, INT64_MAX}) {
    EXPECT_EQ(int8set(record, "sa_handler", wide), succeeded());
    int32_t value = SENTINEL;
    EXPECT_EQ(intget(record, "sa_handler", &value), succeeded());
    EXPECT_EQ(value, static_cast<int32_t>(wide));
  }
}

TEST(IntGet, SizeOf3000000000IsOutOfRange) {
  const OwnedRecord record("stat");
  EXPECT_EQ(int8set(record, "st_size", 3'000'000'000), succeeded());
  int32_t value = SENTINEL;
  EXPECT_EQ(intget(record, "st_size", &value), refused(34, 34));
  EXPECT_EQ(value, 0);
}

TEST(Int8Get, UpperHalfOfTheVariableStays) {
  const OwnedRecord record("stat");
  EXPECT_EQ(int8set(record, "st_size", 3'000'000'000), succeeded());
  int64_t value = 0;
  EXPECT_EQ(int8get(record, "st_size", &value), succeeded());
  EXPECT_EQ(value, 3'000'000'000);
  EXPECT_EQ(int8set(record, "st_size", (int64_t{1} << 32) + 5), succeeded());
  value = 0;
  EXPECT_EQ(int8get(record, "st_size", &value), succeeded());
  EXPECT_EQ(value, 5);
  value = -1;
  EXPECT_EQ(int8get(record, "st_size", &value), succeeded());
  EXPECT_EQ(value, static_cast<int64_t>(0xFFFFFFFF00000005));
}

TEST(IntGet, CountOfMembersIsReadThroughBoth) {
  const OwnedRecord record("group");
  fill_record(record);
  int32_t value = SENTINEL;
  EXPECT_EQ(intget(record, "gr_nmem", &value), succeeded());
  EXPECT_EQ(value, 3);
  int64_t wide = MARK;
  EXPECT_EQ(int8get(record, "GR_NMEM", &wide), succeeded());
  EXPECT_EQ(wide, MARK | 3);
}

TEST(IntGet, MaskBitsAreThoseOfTheNumber) {
  const OwnedRecord record("sigaction");
  EXPECT_EQ(int8set(record, "sa_mask", 0xFFFFFFFE), succeeded());
  int32_t value = SENTINEL;
  EXPECT_EQ(intget(record, "sa_mask", &value), succeeded());
  EXPECT_EQ(value, -2);
}
