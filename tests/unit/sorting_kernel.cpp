// The kernel of the sort by itself: that its networks sort whatever they are given, and that no array makes
// it slow.
#include "emulated_lanes.h"
#include "sorted_arrays.h"
#include "sorting/sorting.h"
#include "sorting/strings.h"

#include <gtest/gtest.h>
#include <xmmintrin.h>

#include <array>
#include <bit>
#include <climits>
#include <cmath>
#include <numeric>

// --- An element whose value is settled by the comparisons that a sort makes

namespace {

// As long as it can be put off an element is one of those that are greater than all others: what a sort takes
// for a median turns out to be among the least.
class Adversary {
public:
  explicit Adversary(size_t count) : values_(count, UNSETTLED) {}

  bool greater(int a, int b) {
    if (values_[a] == UNSETTLED && values_[b] == UNSETTLED)
      values_[a == candidate_ ? a : b] = settled_++;
    if (values_[a] == UNSETTLED)
      candidate_ = a;
    else if (values_[b] == UNSETTLED)
      candidate_ = b;
    return values_[a] > values_[b];
  }

  // All settled.
  std::vector<int32_t> values() {
    for (int &value : values_)
      if (value == UNSETTLED)
        value = settled_++;
    return {values_.begin(), values_.end()};
  }

private:
  static constexpr int UNSETTLED = INT_MAX;
  std::vector<int> values_;
  int settled_ = 0;
  int candidate_ = -1;
};

Adversary *adversary = nullptr;

}  // namespace

namespace qxport::sorting {

// `just_below` is what lies between the element and all that are less.
struct Guess {
  int index;
  bool just_below;
};

constexpr int GREATEST_OF_ALL = -1, LEAST_OF_ALL = -2;

bool operator>(Guess a, Guess b) {
  if (a.index == b.index)
    return b.just_below && !a.just_below;
  if (a.index < 0 || b.index < 0)
    return a.index == GREATEST_OF_ALL || b.index == LEAST_OF_ALL;
  return adversary->greater(a.index, b.index);
}
bool operator==(Guess a, Guess b) {
  return a.index == b.index && a.just_below == b.just_below;
}

template <>
struct Limits<Guess> {
  static constexpr Guess LARGEST = {GREATEST_OF_ALL, false}, SMALLEST = {LEAST_OF_ALL, false};
};

Guess predecessor(Guess value) {
  return {value.index, true};
}
// Never called, where pivots are always sampled.
Guess middle(Guess, Guess) {
  abort();
}

}  // namespace qxport::sorting

#include "sorting/quicksort.h"

using namespace qxport::sorting;

namespace {

const Tier *const TIERS[] = {&PORTABLE_TIER, &AVX2_TIER, &AVX512_TIER};

template <int LANES>
std::vector<int32_t> killer(size_t count) {
  Adversary against(count);
  adversary = &against;
  std::vector<Cell<Guess>> array(count);
  for (size_t i = 0; i < count; ++i)
    array[i].value = {static_cast<int>(i), false};
  quicksort<EmulatedLanes<Guess, LANES>>(array.data(), count, INT_MAX);
  return against.values();
}

// What the kernel parts of an array until it is sorted, in elements.
template <int LANES, typename T>
size_t parted_of(const std::vector<T> &values, int samplings) {
  using Lanes = EmulatedLanes<T, LANES>;
  std::vector<Cell<T>> array(values.size());
  for (size_t i = 0; i < values.size(); ++i)
    array[i].value = values[i];
  std::vector<T> expected = values;
  std::sort(expected.begin(), expected.end());
  Lanes::parted = 0;
  quicksort<Lanes>(array.data(), array.size(), samplings);
  for (size_t i = 0; i < values.size(); ++i)
    EXPECT_EQ(array[i].value, expected[i]) << i;
  return Lanes::parted;
}

template <typename T>
void expect_sorted_by_all_tiers(const std::vector<T> &values, void (*Tier::*sort)(Cell<T> *, size_t)) {
  std::vector<T> expected = values;
  std::sort(expected.begin(), expected.end());
  for (const Tier *tier : TIERS)
    if (runs_here(*tier)) {
      std::vector<T> array = values;
      (tier->*sort)(reinterpret_cast<Cell<T> *>(array.data()), array.size());
      EXPECT_EQ(array, expected) << tier->name;
    }
}

int sampled_levels(size_t count) {
  return 2 * static_cast<int>(std::bit_width(count));
}

// Each level parts every element once at most; a level of halving may need a second parting.
template <typename T>
size_t most_parted(size_t count) {
  return count * static_cast<size_t>(2 * sampled_levels(count) + 2 * 8 * static_cast<int>(sizeof(T)));
}

// --- Networks: what sorts zeros and ones sorts everything

template <int LANES>
using Bits = EmulatedLanes<int32_t, LANES>;

template <int ROWS>
void expect_columns_sorted() {
  for (unsigned ones = 0; ones < 1U << ROWS; ++ones) {
    Bits<1>::V rows[ROWS];
    for (int row = 0; row < ROWS; ++row)
      rows[row] = Bits<1>::all(static_cast<int32_t>(ones >> row & 1));
    sort_columns<Bits<1>, ROWS>(rows);
    const int zeros = ROWS - std::popcount(ones);
    for (int row = 0; row < ROWS; ++row)
      ASSERT_EQ(rows[row].lanes[0], row >= zeros ? 1 : 0) << "network of " << ROWS << ", input " << ones;
  }
}

// The element of a sequence that stands, row by row, in WIDTH lanes from `lane` on.
template <typename V>
int32_t &element_of(V *rows, int lane, int width, int index) {
  return rows[index / width].lanes[lane + index % width];
}

// All groups of the vector at once, each with numbers of zeros of its own.
template <int LANES, int ROWS, int WIDTH>
void expect_merged() {
  if constexpr (WIDTH < LANES) {
    constexpr int LENGTH = ROWS * WIDTH;
    for (int first = 0; first <= LENGTH; ++first)
      for (int second = 0; second <= LENGTH; ++second) {
        typename Bits<LANES>::V rows[ROWS];
        for (int group = 0; group < LANES; group += WIDTH)
          for (int i = 0; i < LENGTH; ++i)
            element_of(rows, group, WIDTH, i) = i >= (group / WIDTH % 2 == 0 ? first : second) ? 1 : 0;
        merge_neighbours<Bits<LANES>, ROWS, WIDTH>(rows);
        for (int group = 0; group < LANES; group += 2 * WIDTH)
          for (int i = 0; i < 2 * LENGTH; ++i)
            ASSERT_EQ(element_of(rows, group, 2 * WIDTH, i), i >= first + second ? 1 : 0)
                << LANES << " lanes, " << ROWS << " rows, " << first << " and " << second << " zeros";
      }
    expect_merged<LANES, ROWS, 2 * WIDTH>();
  }
}

template <int ROWS>
void expect_all_merged() {
  expect_merged<2, ROWS, 1>();
  expect_merged<4, ROWS, 1>();
  expect_merged<8, ROWS, 1>();
  expect_merged<16, ROWS, 1>();
}

}  // namespace

TEST(SortingNetworks, SortEveryColumnOfZerosAndOnes) {
  expect_columns_sorted<1>();
  expect_columns_sorted<2>();
  expect_columns_sorted<3>();
  expect_columns_sorted<4>();
  expect_columns_sorted<6>();
  expect_columns_sorted<8>();
  expect_columns_sorted<12>();
  expect_columns_sorted<16>();
}

TEST(SortingNetworks, MergeAllSequencesOfZerosAndOnes) {
  expect_all_merged<1>();
  expect_all_merged<2>();
  expect_all_merged<3>();
  expect_all_merged<4>();
  expect_all_merged<6>();
  expect_all_merged<8>();
  expect_all_merged<12>();
  expect_all_merged<16>();
}

// --- Adversaries

template <typename Lanes>
class AgainstQuicksort : public testing::Test {};

template <int LANES>
struct Shape {
  static constexpr int VALUE = LANES;
};
using Shapes = testing::Types<Shape<1>, Shape<2>, Shape<4>, Shape<8>, Shape<16>>;
TYPED_TEST_SUITE(AgainstQuicksort, Shapes);

// The array that is worst for vectors of so many lanes: with sampled pivots alone it takes far more work than
// the bound, so it is what the bound is for.
TYPED_TEST(AgainstQuicksort, WorkIsBounded) {
  constexpr int LANES = TypeParam::VALUE;
  const size_t count = 4000 * LANES + 16000;
  const std::vector<int32_t> values = killer<LANES>(count);
  const size_t unbounded = parted_of<LANES>(values, INT_MAX);
  const size_t bounded = parted_of<LANES>(values, sampled_levels(count));
  EXPECT_LT(bounded, most_parted<int32_t>(count));
  EXPECT_LT(2 * bounded, unbounded);
  expect_sorted_by_all_tiers(values, &Tier::sort_4);
  expect_sorted_by_all_tiers(std::vector<int64_t>(values.begin(), values.end()), &Tier::sort_8);
  std::vector<float> reals(values.begin(), values.end());
  std::vector<float> expected = reals;
  std::sort(expected.begin(), expected.end());
  for (const Tier *tier : TIERS)
    if (runs_here(*tier)) {
      std::vector<float> array = reals;
      tier->sort_reals_4(reinterpret_cast<Cell<int32_t> *>(array.data()), count);
      EXPECT_EQ(array, expected) << tier->name;
    }
}

// Values that are doubled from one to the next part worst when they are halved by value.
TYPED_TEST(AgainstQuicksort, HalvingByValueEnds) {
  constexpr int LANES = TypeParam::VALUE;
  std::mt19937_64 random(7);
  std::vector<int64_t> doubled(40000), extremes(40000);
  for (int64_t &value : doubled)
    value = (random() % 2 == 0 ? -1 : 1) * (int64_t{1} << random() % 63);
  for (int64_t &value : extremes)
    value = random() % 2 == 0 ? INT64_MIN + static_cast<int64_t>(random() % 3)
                              : INT64_MAX - static_cast<int64_t>(random() % 3);
  for (const std::vector<int64_t> &values : {doubled, extremes}) {
    EXPECT_LT(parted_of<LANES>(values, 0), most_parted<int64_t>(values.size()));
    expect_sorted_by_all_tiers(values, &Tier::sort_8);
  }
}

// The range of the values is that of all elements, wherever the one is that differs.
TYPED_TEST(AgainstQuicksort, HalvingSeesEveryElement) {
  constexpr size_t LANES = TypeParam::VALUE, SHORTEST = FEW<Bits<LANES>> + 1;
  for (size_t count = SHORTEST; count < SHORTEST + LANES; ++count)
    for (size_t from_end = 1; from_end <= 2 * LANES; ++from_end)
      for (const int32_t other : {4, 6}) {
        std::vector<int32_t> values(count, 5);
        values[count - from_end] = other;
        parted_of<LANES>(values, 0);
      }
}

// Reals are halved by the values of their images.
TEST(HalvingByValue, OfReals) {
  std::mt19937_64 random(8);
  std::vector<double> values(20000);
  for (double &value : values)
    value = std::ldexp(random() % 2 == 0 ? -1.0 : 1.0, static_cast<int>(random() % 2000) - 1000);
  values[17] = 0;
  values[18] = std::numeric_limits<double>::infinity();
  values[19] = -values[18];
  values[20] = std::numeric_limits<double>::denorm_min();
  EXPECT_LT(parted_of<4>(values, 0), most_parted<double>(values.size()));
  for (double &value : values)
    value = value > 0 ? 0.0 : -1.0;
  EXPECT_LT(parted_of<4>(values, 0), most_parted<double>(values.size()));
  for (double &value : values)
    value = value < 0 ? -0.0 : std::numeric_limits<double>::denorm_min();
  EXPECT_LT(parted_of<4>(values, 0), most_parted<double>(values.size()));
}

// --- The modes of the floating-point unit

namespace {

constexpr unsigned SUBNORMALS_ARE_ZERO = 0x8040, TRAPS = 0x1F80, FLAGS = 0x3F, UPWARD = 0x4000;

// Subnormal numbers of both signs, and large ones.
template <typename Real, typename Word>
void expect_modes_play_no_part(void (*Tier::*sort)(Cell<Word> *, size_t), unsigned modes) {
  std::mt19937_64 random(modes);
  for (const size_t count : {2, 5, 9, 16, 40, 3000}) {
    std::vector<Word> unsorted(count);
    for (Word &bits : unsorted) {
      bits = static_cast<Word>(random() % 1000 + 1);
      if (random() % 2 == 0)
        bits = static_cast<Word>(bits | std::numeric_limits<Word>::min());
      if (random() % 4 == 0)
        bits = static_cast<Word>(bits + std::bit_cast<Word>(Real{1}));
    }
    std::vector<Word> expected = unsorted;
    std::sort(expected.begin(), expected.end(),
              [](Word a, Word b) { return image_of<Word>(a) < image_of<Word>(b); });
    for (const Tier *tier : TIERS)
      if (runs_here(*tier)) {
        std::vector<Word> array = unsorted;
        const unsigned former = _mm_getcsr();
        _mm_setcsr(modes);
        (tier->*sort)(reinterpret_cast<Cell<Word> *>(array.data()), count);
        const unsigned after = _mm_getcsr();
        _mm_setcsr(former);
        EXPECT_EQ(array, expected) << tier->name << ' ' << count << " modes " << modes;
        EXPECT_EQ(after, modes) << tier->name;
      }
  }
}

}  // namespace

TEST(FloatingPointModes, PlayNoPartAndStay) {
  for (const unsigned modes :
       {TRAPS, TRAPS | SUBNORMALS_ARE_ZERO, 0U, SUBNORMALS_ARE_ZERO | UPWARD, TRAPS | FLAGS, TRAPS | 0x21U}) {
    expect_modes_play_no_part<float>(&Tier::sort_reals_4, modes);
    expect_modes_play_no_part<double>(&Tier::sort_reals_8, modes);
  }
}

// Two elements, which never come to a tier, in every combination of what is special.
TEST(Pairs, OfReals) {
  const double inf = std::numeric_limits<double>::infinity(), nan = std::numeric_limits<double>::quiet_NaN();
  const double values[] = {-inf, -1, -0.0, 0.0, 1, inf, nan, -nan};
  for (const double first : values)
    for (const double second : values) {
      double pair[] = {first, second};
      sort_numbers(PORTABLE_TIER, Element::Real8, pair, 2);
      const double expected[] = {first > second ? second : first, first > second ? first : second};
      EXPECT_EQ(memcmp(pair, expected, sizeof(pair)), 0) << first << ' ' << second;
      float narrow[] = {static_cast<float>(first), static_cast<float>(second)};
      const float expected_narrow[] = {static_cast<float>(expected[0]), static_cast<float>(expected[1])};
      sort_numbers(PORTABLE_TIER, Element::Real4, narrow, 2);
      EXPECT_EQ(memcmp(narrow, expected_narrow, sizeof(narrow)), 0) << first << ' ' << second;
      __float128 wide[] = {first, second};
      const __float128 expected_wide[] = {expected[0], expected[1]};
      sort_numbers(PORTABLE_TIER, Element::Real16, wide, 2);
      EXPECT_EQ(memcmp(wide, expected_wide, sizeof(wide)), 0) << first << ' ' << second;
    }
}

// Three elements, which go down one chain.
namespace {

template <typename Real>
void expect_triple_sorted(Element element, Real first, Real second, Real third) {
  Real triple[] = {first, second, third};
  sort_numbers(PORTABLE_TIER, element, triple, 3);
  Real expected[] = {first, second, third};
  for (const size_t place : {1, 2})
    for (size_t hole = place; hole > 0 && expected[hole - 1] > expected[hole]; --hole)
      std::swap(expected[hole - 1], expected[hole]);
  for (const size_t place : {0, 1, 2}) {
    const auto bits = [](Real value) { return std::bit_cast<std::array<char, sizeof(Real)>>(value); };
    EXPECT_EQ(bits(triple[place]), bits(expected[place]))
        << static_cast<double>(first) << ' ' << static_cast<double>(second) << ' '
        << static_cast<double>(third);
  }
}

}  // namespace

TEST(Triples, OfReals) {
  const double inf = std::numeric_limits<double>::infinity(), nan = std::numeric_limits<double>::quiet_NaN();
  const double values[] = {-inf, -1, -0.0, 0.0, 1, inf, nan, -nan};
  for (const double first : values)
    for (const double second : values)
      for (const double third : values) {
        expect_triple_sorted<double>(Element::Real8, first, second, third);
        expect_triple_sorted<float>(Element::Real4, static_cast<float>(first), static_cast<float>(second),
                                    static_cast<float>(third));
        expect_triple_sorted<__float128>(Element::Real16, first, second, third);
      }
}

TEST(Triples, OfIntegers) {
  for (int order = 0; order < 27; ++order) {
    const int64_t values[] = {order % 3 - 1, order / 3 % 3 - 1, order / 9 - 1};
    const auto expect_sorted = [&](Element element, auto zero) {
      using Integer = decltype(zero);
      std::array<Integer, 4> array = {static_cast<Integer>(values[0]), static_cast<Integer>(values[1]),
                                      static_cast<Integer>(values[2]), 77};
      std::array<Integer, 4> expected = array;
      std::sort(expected.begin(), expected.begin() + 3);
      sort_numbers(PORTABLE_TIER, element, array.data(), 3);
      EXPECT_EQ(array, expected) << order;
    };
    expect_sorted(Element::Integer1, int8_t{});
    expect_sorted(Element::Integer2, int16_t{});
    expect_sorted(Element::Integer4, int32_t{});
    expect_sorted(Element::Integer8, int64_t{});
  }
}

// --- Reals of which each image is less than the one before it

namespace {

// `positive` values from the largest to 1, what is in the middle, and `negative` ones from -1 on.
template <typename Real, typename Word>
void expect_descending_sorted(const ElementKind &kind, void (*Tier::*sort)(Cell<Word> *, size_t),
                              size_t positive, const std::vector<Real> &middle, size_t negative,
                              bool nan_first = false, bool nan_last = false) {
  std::vector<Real> unsorted;
  const Real nan = std::numeric_limits<Real>::quiet_NaN();
  if (nan_first)
    unsorted.push_back(nan);
  for (size_t i = positive; i > 0; --i)
    unsorted.push_back(static_cast<Real>(i));
  unsorted.insert(unsorted.end(), middle.begin(), middle.end());
  for (size_t i = 1; i <= negative; ++i)
    unsorted.push_back(-static_cast<Real>(i));
  if (nan_last)
    unsorted.push_back(-nan);
  Bytes expected(unsorted.size() * sizeof(Real));
  memcpy(expected.data(), unsorted.data(), expected.size());
  shell_sort(&expected, kind);
  for (const Tier *tier : TIERS)
    if (runs_here(*tier)) {
      std::vector<Real> array = unsorted;
      (tier->*sort)(reinterpret_cast<Cell<Word> *>(array.data()), array.size());
      EXPECT_EQ(memcmp(array.data(), expected.data(), expected.size()), 0)
          << tier->name << ' ' << kind.name << ": " << positive << ", " << middle.size() << ", " << negative
          << (nan_first ? ", NaN first" : "") << (nan_last ? ", NaN last" : "");
    }
}

template <typename Real, typename Word>
void expect_descending_sorted(const ElementKind &kind, void (*Tier::*sort)(Cell<Word> *, size_t)) {
  const Real zero = 0;
  for (const std::vector<Real> &middle : std::vector<std::vector<Real>>{
           {}, {zero}, {-zero}, {zero, zero}, {-zero, -zero}, {zero, -zero}, {zero, zero, -zero, -zero}})
    for (const size_t positive : {0, 1, 20, 333})
      for (const size_t negative : {0, 1, 17, 400}) {
        if (positive + middle.size() + negative < 2)
          continue;
        expect_descending_sorted<Real, Word>(kind, sort, positive, middle, negative);
        expect_descending_sorted<Real, Word>(kind, sort, positive, middle, negative, true, false);
        expect_descending_sorted<Real, Word>(kind, sort, positive, middle, negative, false, true);
      }
}

}  // namespace

TEST(DescendingReals, WithZerosAndNans) {
  expect_descending_sorted<float>(number_kind<float>("Real4", 0x10000), &Tier::sort_reals_4);
  expect_descending_sorted<double>(number_kind<double>("Real8", 0x20000), &Tier::sort_reals_8);
}

// --- Elements of one and two bytes

// Counters of two bytes' values run over after 256 elements.
TEST(Counting, ValuesThatOccurOften) {
  Filler filler(12);
  for (const size_t rare : {0, 1, 300})
    for (const size_t often : {255, 256, 257, 511, 512, 65536, 400000}) {
      std::vector<int16_t> array(5000 + often);
      for (size_t i = 0; i < array.size(); ++i)
        array[i] = static_cast<int16_t>(i < 5000 ? filler.random() % (rare + 1) : 0x7FFF - i % 3 * 0x7FFF);
      std::vector<int16_t> expected = array;
      std::sort(expected.begin(), expected.end());
      sort_numbers(best_tier(), Element::Integer2, array.data(), array.size());
      EXPECT_EQ(array, expected) << rare << ' ' << often;
    }
}

// Their counters are zero again, among those of values that do not occur.
TEST(Counting, ValuesThatOccur256TimesOrTwice) {
  std::vector<int16_t> array(6000, 7);
  for (size_t i = 0; i < 256; ++i)
    array[3 * i] = 0x4321;
  for (size_t i = 0; i < 512; ++i)
    array[5000 + i] = -0x4321;
  std::vector<int16_t> expected = array;
  std::sort(expected.begin(), expected.end());
  sort_numbers(best_tier(), Element::Integer2, array.data(), array.size());
  EXPECT_EQ(array, expected);
}

// --- Strings

namespace {

void expect_strings_sorted(const Bytes &unsorted, size_t width, int samplings_per_halving) {
  const ElementKind kind = string_kind(width);
  Bytes expected = unsorted;
  shell_sort(&expected, kind);
  for (const Tier *tier : TIERS)
    if (runs_here(*tier)) {
      Bytes array = unsorted, scratch(width);
      sort_strings_in_place(*tier, array.data(), array.size() / width, width, scratch.data(),
                            samplings_per_halving);
      EXPECT_EQ(array, expected) << tier->name << ' ' << width;
    }
}

}  // namespace

TEST(Strings, HalvedByValueFromTheStart) {
  Filler filler(31);
  for (const size_t width : {3, 5, 7, 8, 9, 15, 16, 17, 33, 64, 65, 100})
    for (const Filling filling :
         {Filling::Random, Filling::FewValues, Filling::Sawtooth, Filling::LongPrefixes})
      for (const int samplings_per_halving : {0, 2})
        expect_strings_sorted(filler.fill(string_kind(width), 6000, filling), width, samplings_per_halving);
}

// Every string shares more with the next one than with the one before it, so each look at a word tells only
// the last few of them apart.
TEST(Strings, Staircase) {
  for (const size_t width : {9, 16, 64, 200, 3000})
    for (const size_t count : {size_t{200}, width + 300}) {
      Bytes array(count * width, 'a');
      for (size_t i = 0; i < count; ++i)
        for (size_t at = i * 7919 % count; at < width; ++at)
          array[i * width + at] = static_cast<char>(at % 2 == 0 ? 'b' : '\xee');
      expect_strings_sorted(array, width, 2);
    }
}

// Strings that differ in the last bytes alone, at each distance from the end.
TEST(Strings, LateDifferences) {
  std::mt19937_64 random(9);
  for (size_t width = 3; width <= 40; ++width)
    for (size_t tail = 1; tail <= std::min<size_t>(width, 10); ++tail) {
      Bytes array(900 * width, '\x80');
      for (size_t i = 0; i < 900; ++i)
        for (size_t at = width - tail; at < width; ++at)
          array[i * width + at] = static_cast<char>(random() % 3 == 0 ? random() : 0x7f);
      expect_strings_sorted(array, width, 2);
    }
}
