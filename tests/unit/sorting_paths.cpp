// Every element type on every path of the processor, beside a Shell sort that knows nothing of them.
#include "fenced_text.h"
#include "sorted_arrays.h"
#include "sorting/sorting.h"

#include <gtest/gtest.h>

#include <map>
#include <numeric>

using namespace qxport::sorting;

namespace {

const Tier *const TIERS[] = {&PORTABLE_TIER, &AVX2_TIER, &AVX512_TIER};

const std::map<int32_t, Element> ELEMENTS = {
    {0x10000, Element::Real4},    {0x20000, Element::Real8},    {0x30000, Element::Integer1},
    {0x40000, Element::Integer2}, {0x50000, Element::Integer4}, {0x60000, Element::Integer8},
    {0x80000, Element::Real16},
};

void sort_on(const Tier &tier, const ElementKind &kind, char *array, size_t count) {
  const auto number = ELEMENTS.find(kind.code);
  if (number != ELEMENTS.end())
    return sort_numbers(tier, number->second, array, count);
  Bytes scratch(kind.width);
  sort_strings(tier, array, count, kind.width, scratch.data());
}

constexpr size_t GUARD = 64;

// The array as it is sorted at an address that is aligned to nothing, between guard bytes.
Bytes sorted_between_guards(const Tier &tier, const ElementKind &kind, const Bytes &array, size_t offset) {
  Bytes place(GUARD + offset + array.size() + GUARD, '\x7e');
  char *const begin = place.data() + GUARD + offset;
  std::copy(array.begin(), array.end(), begin);
  sort_on(tier, kind, begin, array.size() / kind.width);
  const Bytes result(begin, begin + array.size());
  std::fill(begin, begin + array.size(), '\x7e');
  EXPECT_EQ(place, Bytes(place.size(), '\x7e')) << "a guard byte was written";
  return result;
}

// The tier sorts no more than the keys of strings of other widths; those are tried on all tiers with the
// kernel.
std::vector<ElementKind> kinds_of_tiers() {
  std::vector<ElementKind> kinds = number_kinds();
  for (const size_t width : {1, 2, 4, 8, 16})
    kinds.push_back(string_kind(width));
  return kinds;
}
std::vector<ElementKind> kinds_without_tier() {
  std::vector<ElementKind> kinds = all_kinds();
  for (const ElementKind &other : kinds_of_tiers())
    std::erase_if(kinds, [&](const ElementKind &kind) { return kind.code == other.code; });
  return kinds;
}

std::vector<Filling> fillings_of(const ElementKind &kind) {
  std::vector<Filling> fillings;
  const Filling end = kind.infinity != 0 ? Filling::ONE_BEHIND_LAST : Filling::SomeNans;
  for (int filling = 0; filling < static_cast<int>(end); ++filling)
    fillings.push_back(static_cast<Filling>(filling));
  return fillings;
}

}  // namespace

class SortingPath : public testing::TestWithParam<std::tuple<const Tier *, ElementKind>> {
protected:
  void SetUp() override {
    if (!runs_here(tier()))
      GTEST_SKIP() << "this processor lacks the path " << tier().name;
  }

  const Tier &tier() const { return *std::get<0>(GetParam()); }
  const ElementKind &kind() const { return std::get<1>(GetParam()); }

  void expect_sorted(size_t count, Filling filling, size_t offset = 0) {
    const Bytes array = filler.fill(kind(), count, filling);
    Bytes expected = array;
    shell_sort(&expected, kind());
    ASSERT_EQ(sorted_between_guards(tier(), kind(), array, offset), expected)
        << count << " elements, filling " << static_cast<int>(filling);
  }

  Filler filler{20261122};
};

// Strings of the longer widths are sorted by one code, where their number matters little.
TEST_P(SortingPath, EveryLengthUpTo2000) {
  const size_t step = kind().width <= 16 ? 1 : 7;
  const std::vector<Filling> fillings = fillings_of(kind());
  for (size_t count = 0; count <= 2000; count += count < 200 ? 1 : step) {
    expect_sorted(count, Filling::Random, count % 64);
    if (count % 4 == 0)
      expect_sorted(count, fillings[count / 4 % fillings.size()], count / 7 % 64);
    if (HasFatalFailure())
      return;
  }
}

TEST_P(SortingPath, EveryFillingOfShortArrays) {
  for (const Filling filling : fillings_of(kind()))
    for (size_t count = 1; count <= 300; count += count < 40 ? 3 : 37) {
      expect_sorted(count, filling, count % 16);
      if (HasFatalFailure())
        return;
    }
}

TEST_P(SortingPath, EveryFillingOfLongArrays) {
  for (const Filling filling : fillings_of(kind()))
    for (const size_t count : {4095, 12011}) {
      expect_sorted(count, filling);
      if (HasFatalFailure())
        return;
    }
}

// The bytes before and behind the array are on pages that must not even be read, however far a look at the
// elements gets.
TEST_P(SortingPath, NothingBesideTheArrayIsRead) {
  for (const Filling filling : fillings_of(kind()))
    for (size_t count = 0; count <= 700; count += count < 70 ? 1 : 23)
      for (const auto fence : {FencedText::Fence::Before, FencedText::Fence::Behind}) {
        const Bytes array = filler.fill(kind(), count, filling);
        Bytes expected = array;
        shell_sort(&expected, kind());
        const FencedText fenced(std::string(array.begin(), array.end()), fence);
        char *const begin = const_cast<char *>(fenced.data());
        sort_on(tier(), kind(), begin, count);
        ASSERT_EQ(Bytes(begin, begin + array.size()), expected)
            << count << " elements, filling " << static_cast<int>(filling);
      }
}

std::string name_of(const testing::TestParamInfo<std::tuple<const Tier *, ElementKind>> &info) {
  return std::string(std::get<0>(info.param)->name) + std::get<1>(info.param).name;
}

INSTANTIATE_TEST_SUITE_P(OfTiers, SortingPath,
                         testing::Combine(testing::ValuesIn(TIERS), testing::ValuesIn(kinds_of_tiers())),
                         name_of);
INSTANTIATE_TEST_SUITE_P(WithoutTier, SortingPath,
                         testing::Combine(testing::Values(&PORTABLE_TIER),
                                          testing::ValuesIn(kinds_without_tier())),
                         name_of);

TEST(BestTier, IsOneThatRunsHere) {
  EXPECT_TRUE(runs_here(best_tier()));
  EXPECT_EQ(&best_tier(), &best_tier());
  EXPECT_TRUE(runs_here(PORTABLE_TIER));
}
