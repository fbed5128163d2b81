// PXFAINTGET, PXFAINTSET, PXFAINT8GET, PXFAINT8SET, PXFEINTGET, PXFEINTSET: the control characters of a
// termios record, whole or one at a time.
#include "record_calls.h"

#include <array>
#include <numeric>

namespace {

constexpr int32_t ELEMENTS = 20;
constexpr int32_t ROOM = 40;
constexpr int32_t FORMER = 0x5EA15EA1;

// IALEN at and around each boundary.
constexpr int32_t LENGTHS[] = {INT32_MIN, -21, -20, -1, 0, 1, 2, 10, 19, 20, 21, 22, 32, 40, INT32_MAX};

int32_t used(int32_t ialen) {
  return std::clamp(ialen, 0, ELEMENTS);
}

class Array : public testing::Test {
protected:
  void SetUp() override { fill_record(record); }

  const int32_t *elements() const { return record_as<qxport::TermiosRecord>(record).c_cc; }

  // All that is not the array is as it was.
  void expect_others_kept(const Contents &before) const {
    Contents after = contents_of(record);
    after["c_cc"] = before.at("c_cc");
    EXPECT_EQ(after, before);
  }

  const OwnedRecord record{"termios"};
};

template <typename Integer>
class ArrayOf : public Array {
protected:
  static Outcome get(int32_t handle, Integer *value, int32_t *ialen) {
    if constexpr (sizeof(Integer) == 4)
      return aintget(handle, "c_cc", value, ialen);
    else
      return aint8get(handle, "c_cc", value, ialen);
  }
  static Outcome set(int32_t handle, const Integer *value, int32_t *ialen) {
    if constexpr (sizeof(Integer) == 4)
      return aintset(handle, "c_cc", value, ialen);
    else
      return aint8set(handle, "c_cc", value, ialen);
  }
};

using Integers = testing::Types<int32_t, int64_t>;
struct IntegerNames {
  template <typename Integer>
  static std::string GetName(int) {
    return sizeof(Integer) == 4 ? "Integer4" : "Integer8";
  }
};
TYPED_TEST_SUITE(ArrayOf, Integers, IntegerNames);

}  // namespace

TYPED_TEST(ArrayOf, GetGivesAsManyElementsAsIalenSays) {
  const Contents before = contents_of(this->record);
  for (const int32_t length : LENGTHS) {
    SCOPED_TRACE(length);
    std::array<TypeParam, ROOM> value;
    value.fill(FORMER);
    Guarded<int32_t> ialen(length);
    const Outcome outcome = this->get(this->record, value.data(), &ialen);
    EXPECT_EQ(outcome, length > ELEMENTS ? refused_silently(WRONG_INDEX) : succeeded());
    EXPECT_EQ(ialen, length > ELEMENTS ? ELEMENTS : length);
    for (int32_t i = 0; i < ROOM; ++i)
      EXPECT_EQ(value[i], i < used(length) ? this->elements()[i] : FORMER) << i;
  }
  EXPECT_EQ(contents_of(this->record), before);
}

TYPED_TEST(ArrayOf, SetTakesAsManyElementsAsIalenSays) {
  for (const int32_t length : LENGTHS) {
    SCOPED_TRACE(length);
    const Contents before = contents_of(this->record);
    std::array<int32_t, ELEMENTS> expected;
    std::copy_n(this->elements(), ELEMENTS, expected.begin());
    std::array<TypeParam, ROOM> value;
    std::iota(value.begin(), value.end(), length % 1000);
    for (int32_t i = 0; i < used(length); ++i)
      expected[i] = static_cast<int32_t>(value[i]);
    Guarded<int32_t> ialen(length);
    const Outcome outcome = this->set(this->record, value.data(), &ialen);
    EXPECT_EQ(outcome, length > ELEMENTS ? refused_silently(WRONG_INDEX) : succeeded());
    EXPECT_EQ(ialen, length) << "stays";
    for (int32_t i = 0; i < ELEMENTS; ++i)
      EXPECT_EQ(this->elements()[i], expected[i]) << i;
    this->expect_others_kept(before);
  }
}

TYPED_TEST(ArrayOf, IsReadBackElementByElement) {
  std::array<TypeParam, ELEMENTS> value;
  std::iota(value.begin(), value.end(), -7);
  int32_t ialen = ELEMENTS;
  EXPECT_EQ(this->set(this->record, value.data(), &ialen), succeeded());
  for (int32_t index = 1; index <= ELEMENTS; ++index) {
    Guarded<int32_t> element(SENTINEL);
    EXPECT_EQ(eintget(this->record, "c_cc", index, &element), succeeded());
    EXPECT_EQ(element, value[index - 1]) << index;
  }
}

TYPED_TEST(ArrayOf, NameComesBeforeTheLength) {
  TypeParam value[ROOM] = {};
  for (const int32_t length : {32, -1, 5}) {
    Guarded<int32_t> ialen(length);
    const OwnedRecord stat("stat");
    EXPECT_EQ(this->get(stat, value, &ialen), refused(NO_SUCH_NAME));
    EXPECT_EQ(this->set(stat, value, &ialen), refused(NO_SUCH_NAME));
    EXPECT_EQ(ialen, length);
  }
}

TEST_F(Array, GetOf32CopiesAllAndSays20) {
  int32_t value[32] = {};
  int32_t ialen = 32;
  EXPECT_EQ(aintget(record, "c_cc", value, &ialen), refused_silently(125));
  EXPECT_EQ(ialen, 20);
  EXPECT_TRUE(std::equal(value, value + 20, elements()));
  EXPECT_EQ(value[20], 0);
}

TEST_F(Array, SetOf32StoresTwentyAndLeavesIalen) {
  int32_t value[32];
  std::iota(value, value + 32, 100);
  int32_t ialen = 32;
  EXPECT_EQ(aintset(record, "c_cc", value, &ialen), refused_silently(125));
  EXPECT_EQ(ialen, 32);
  EXPECT_TRUE(std::equal(value, value + 20, elements()));
}

TEST_F(Array, Integer8ElementsGetTheSign) {
  int32_t ialen = 2;
  const int32_t value[2] = {INT32_MIN, -1};
  EXPECT_EQ(aintset(record, "c_cc", value, &ialen), succeeded());
  int64_t wide[2] = {0, 0};
  EXPECT_EQ(aint8get(record, "c_cc", wide, &ialen), succeeded());
  EXPECT_EQ(wide[0], INT32_MIN);
  EXPECT_EQ(wide[1], -1);
}

TEST_F(Array, Integer8ElementsKeepTheirLowHalf) {
  int32_t ialen = 4;
  const int64_t wide[4] = {0x1234567880000001, 0xFFFFFFFF, (int64_t{1} << 32), INT64_MIN};
  EXPECT_EQ(aint8set(record, "c_cc", wide, &ialen), succeeded());
  EXPECT_EQ(elements()[0], static_cast<int32_t>(0x80000001));
  EXPECT_EQ(elements()[1], -1);
  EXPECT_EQ(elements()[2], 0);
  EXPECT_EQ(elements()[3], 0);
}

TEST_F(Array, EachElementIsSetAlone) {
  for (int32_t index = 1; index <= ELEMENTS; ++index) {
    std::array<int32_t, ELEMENTS> expected;
    std::copy_n(elements(), ELEMENTS, expected.begin());
    const Contents before = contents_of(record);
    expected[index - 1] = -index;
    EXPECT_EQ(eintset(record, "c_cc", index, -index), succeeded());
    EXPECT_TRUE(std::equal(expected.begin(), expected.end(), elements())) << index;
    expect_others_kept(before);
    Guarded<int32_t> value(SENTINEL);
    EXPECT_EQ(eintget(record, "C_CC", index, &value), succeeded());
    EXPECT_EQ(value, -index);
  }
}

TEST_F(Array, IndexOutOfRangeChangesNothing) {
  const Contents before = contents_of(record);
  for (const int32_t index : {0, 21, -1, -20, 22, 32, 256, 257, INT32_MAX, INT32_MIN}) {
    Guarded<int32_t> value(SENTINEL);
    EXPECT_EQ(eintget(record, "c_cc", index, &value), refused_silently(125)) << index;
    EXPECT_EQ(value, SENTINEL);
    EXPECT_EQ(eintset(record, "c_cc", index, 1), refused_silently(125)) << index;
  }
  EXPECT_EQ(contents_of(record), before);
}

TEST_F(Array, NameComesBeforeTheIndex) {
  for (const int32_t index : {0, 1, 21}) {
    Guarded<int32_t> value(SENTINEL);
    EXPECT_EQ(eintget(record, "c_iflag", index, &value), refused(NO_SUCH_NAME));
    EXPECT_EQ(eintset(record, "c_iflag", index, 1), refused(NO_SUCH_NAME));
    EXPECT_EQ(value, SENTINEL);
  }
}
