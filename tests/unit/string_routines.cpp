// LNBLNK, RINDEX, IPXFLENTRIM, PXFUCOMPARE and the placeholder.
#include "fenced_text.h"
#include "recorder.h"

#include <climits>
#include <string>
#include <sys/mman.h>

namespace {

int32_t lnblnk(const std::string &text) {
  return lnblnk_(text.data(), static_cast<qxport_charlen>(text.size()));
}

int32_t ipxflentrim(const std::string &text) {
  return ipxflentrim_(text.data(), static_cast<qxport_charlen>(text.size()));
}

int32_t rindex(const std::string &text, const std::string &sub) {
  return rindex_(text.data(), sub.data(), static_cast<qxport_charlen>(text.size()),
                 static_cast<qxport_charlen>(sub.size()));
}

struct Comparison {
  int32_t order;
  int32_t distance;
  bool operator==(const Comparison &) const = default;
};

std::ostream &operator<<(std::ostream &out, const Comparison &comparison) {
  return out << "order " << comparison.order << ", distance " << comparison.distance;
}

Comparison compared(uint32_t first, uint32_t second) {
  const int32_t i1 = static_cast<int32_t>(first);
  const int32_t i2 = static_cast<int32_t>(second);
  int32_t order[3] = {SENTINEL, SENTINEL, SENTINEL};
  int32_t distance[3] = {SENTINEL, SENTINEL, SENTINEL};
  pxfucompare_(&i1, &i2, &order[1], &distance[1]);
  for (const int i : {0, 2}) {
    EXPECT_EQ(order[i], SENTINEL);
    EXPECT_EQ(distance[i], SENTINEL);
  }
  return {order[1], distance[1]};
}

// LNBLNK and IPXFLENTRIM differ in how they read the hidden length, in nothing else.
class TrimmedLength : public testing::TestWithParam<int32_t (*)(const char *, qxport_charlen)> {
protected:
  void SetUp() override { reset_error_state(); }
  int32_t length_of(const std::string &text) const {
    return GetParam()(text.data(), static_cast<qxport_charlen>(text.size()));
  }
};

INSTANTIATE_TEST_SUITE_P(Routines, TrimmedLength, testing::Values(&lnblnk_, &ipxflentrim_, &qxport_lnblnk_));

}  // namespace

TEST(Lnblnk, BlanksAroundXIs3) {
  EXPECT_EQ(lnblnk("  x  "), 3);
}

TEST(Lnblnk, AllBlanksOrNothingIs0) {
  EXPECT_EQ(lnblnk("     "), 0);
  EXPECT_EQ(lnblnk(""), 0);
}

TEST(Ipxflentrim, XAndThreeBlanksIs1) {
  EXPECT_EQ(ipxflentrim("x   "), 1);
}

TEST(Ipxflentrim, ThreeBlanksIs0) {
  EXPECT_EQ(ipxflentrim("   "), 0);
}

TEST_P(TrimmedLength, LastCharacterThatIsNoBlank) {
  EXPECT_EQ(length_of("x"), 1);
  EXPECT_EQ(length_of("a b c"), 5);
  EXPECT_EQ(length_of(" a b c   "), 6);
}

TEST_P(TrimmedLength, OnlyTheBlankIsTrailing) {
  for (const char other : {'\t', '\n', '\v', '\f', '\r', '\0', '\xa0'})
    EXPECT_EQ(length_of(std::string("x ") + other + "  "), 3) << int{other};
}

TEST_P(TrimmedLength, NoCharactersAre0) {
  EXPECT_EQ(GetParam()("abc", 0), 0);
  EXPECT_EQ(GetParam()(nullptr, 0), 0);
}

TEST_P(TrimmedLength, NegativeLengthIs0) {
  EXPECT_EQ(GetParam()("abc", -1), 0);
  EXPECT_EQ(GetParam()("abc", INT32_MIN), 0);
}

TEST_P(TrimmedLength, LengthCountsNotANul) {
  EXPECT_EQ(GetParam()("abcdef", 3), 3);
  EXPECT_EQ(length_of(std::string("ab\0\0cd  ", 8)), 6);
}

TEST_P(TrimmedLength, HundredThousandCharacters) {
  EXPECT_EQ(length_of(std::string(100000, 'x')), 100000);
  EXPECT_EQ(length_of("x" + std::string(99999, ' ')), 1);
  EXPECT_EQ(length_of(std::string(100000, ' ')), 0);
}

TEST_P(TrimmedLength, ReadsNothingOutsideTheText) {
  for (const std::string text : {"abc", "ab   ", "     "}) {
    const FencedText ended(text);
    const FencedText begun(text, FencedText::Fence::Before);
    EXPECT_EQ(GetParam()(ended.data(), ended.length()), length_of(text));
    EXPECT_EQ(GetParam()(begun.data(), begun.length()), length_of(text));
  }
}

TEST_P(TrimmedLength, ErrorStateStays) {
  length_of("ab  ");
  length_of("");
  EXPECT_EQ(error_state(), untouched());
}

#if UINTPTR_MAX > UINT32_MAX
constexpr qxport_charlen FOUR_GIGABYTES = qxport_charlen{1} << 32;

// Pages of zeros that take memory only where they are written.
TEST(Lnblnk, HiddenLengthIsAWholeMachineWord) {
  const size_t size = static_cast<size_t>(FOUR_GIGABYTES) + 4096;
  void *area =
      mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  ASSERT_NE(area, MAP_FAILED);
  char *text = static_cast<char *>(area);
  memset(text, ' ', 8);
  memset(text + FOUR_GIGABYTES, ' ', 8);
  text[FOUR_GIGABYTES + 4] = 'x';
  EXPECT_EQ(lnblnk_(text, FOUR_GIGABYTES + 8), 5);
  munmap(area, size);
}

TEST(Ipxflentrim, LowHalfOfTheHiddenLengthCounts) {
  EXPECT_EQ(ipxflentrim_("x  ", FOUR_GIGABYTES + 3), 1);
  EXPECT_EQ(ipxflentrim_("abc", 7 * FOUR_GIGABYTES + 2), 2);
  EXPECT_EQ(ipxflentrim_("abc", FOUR_GIGABYTES), 0);
  EXPECT_EQ(ipxflentrim_("abc", -FOUR_GIGABYTES + 3), 3);
}

TEST(Ipxflentrim, LowHalfOfTheHiddenLengthIsSigned) {
  EXPECT_EQ(ipxflentrim_("abc", FOUR_GIGABYTES - 1), 0);
  EXPECT_EQ(ipxflentrim_("abc", FOUR_GIGABYTES / 2), 0);
}
#endif

TEST(Rindex, LastOccurrenceCounts) {
  EXPECT_EQ(rindex("abcabc", "bc"), 5);
}

TEST(Rindex, LongerSubstringIs0) {
  EXPECT_EQ(rindex("ab", "abc"), 0);
  EXPECT_EQ(rindex("", "a"), 0);
}

TEST(Rindex, TrailingBlanksOfTheStringAreSignificant) {
  EXPECT_EQ(rindex("ab  ", "  "), 3);
}

TEST(Rindex, TrailingBlanksOfTheSubstringAreSignificant) {
  EXPECT_EQ(rindex("xa", "a "), 0);
  EXPECT_EQ(rindex("a xa", "a "), 1);
}

TEST(Rindex, EmptySubstringIsBehindTheLastCharacter) {
  EXPECT_EQ(rindex("abc", ""), 4);
  EXPECT_EQ(rindex("   ", ""), 4);
  EXPECT_EQ(rindex("", ""), 1);
}

TEST(Rindex, WholeStringIs1) {
  EXPECT_EQ(rindex("abc", "abc"), 1);
  EXPECT_EQ(rindex("a", "a"), 1);
}

TEST(Rindex, OccurrencesMayOverlap) {
  EXPECT_EQ(rindex("aaaa", "aa"), 3);
  EXPECT_EQ(rindex("abababa", "aba"), 5);
}

TEST(Rindex, AbsentSubstringIs0) {
  EXPECT_EQ(rindex("abcabc", "x"), 0);
  EXPECT_EQ(rindex("abcabc", "bd"), 0);
  EXPECT_EQ(rindex("abcabc", "ABC"), 0);
}

TEST(Rindex, FirstCharacterAloneIsNoMatch) {
  EXPECT_EQ(rindex("abacad", "ab"), 1);
}

TEST(Rindex, NulIsACharacter) {
  EXPECT_EQ(rindex(std::string("a\0b\0b", 5), std::string("\0b", 2)), 4);
  EXPECT_EQ(rindex(std::string("\0ab", 3), "ab"), 2);
}

TEST(Rindex, NoNulIsFoundBehindTheText) {
  EXPECT_EQ(rindex("abc", std::string(1, '\0')), 0);
  EXPECT_EQ(rindex("abc", std::string("c\0", 2)), 0);
}

TEST(Rindex, BytesOfNoCharacterSet) {
  EXPECT_EQ(rindex("\xff\xfe\xff", "\xff"), 3);
}

TEST(Rindex, NegativeLengthIsNoCharacters) {
  EXPECT_EQ(rindex_("abc", "b", 3, -1), 4);
  EXPECT_EQ(rindex_("abc", "b", -1, 1), 0);
  EXPECT_EQ(rindex_("abc", "b", -1, -1), 1);
}

TEST(Rindex, HundredThousandCharacters) {
  const std::string text = "needle" + std::string(100000, 'n');
  EXPECT_EQ(rindex(text, "needle"), 1);
  EXPECT_EQ(rindex(text, "n"), 100006);
  EXPECT_EQ(rindex(text, text), 1);
  EXPECT_EQ(rindex(text, std::string(100000, 'n')), 7);
}

TEST(Rindex, ReadsNothingOutsideTheTexts) {
  for (const FencedText::Fence fence : {FencedText::Fence::Behind, FencedText::Fence::Before}) {
    const FencedText text("abcab", fence);
    const FencedText sub("ab", fence);
    EXPECT_EQ(rindex_(text.data(), sub.data(), text.length(), sub.length()), 4);
  }
}

TEST(Rindex, TextsAndErrorStateStay) {
  Character text("abcabc");
  Character sub("bc");
  reset_error_state();
  EXPECT_EQ(rindex_(text.data(), sub.data(), text.length(), sub.length()), 5);
  EXPECT_EQ(rindex_(text.data(), sub.data(), 1, 2), 0);
  EXPECT_EQ(rindex_(text.data(), "x", 6, 1), 0);
  EXPECT_EQ(error_state(), untouched());
  EXPECT_EQ(text.text(), "abcabc");
  EXPECT_EQ(sub.text(), "bc");
}

TEST(Rindex, ModuleNameIsTheSameRoutine) {
  expect_same_routine(qxport_rindex_, rindex_);
}

TEST(Pxfucompare, OneAndTwo) {
  EXPECT_EQ(compared(1, 2), (Comparison{-1, 1}));
  EXPECT_EQ(compared(2, 1), (Comparison{1, 1}));
}

TEST(Pxfucompare, MinusOneIsTheGreatestNumber) {
  EXPECT_EQ(compared(0xFFFFFFFF, 1), (Comparison{1, 2}));
  EXPECT_EQ(compared(1, 0xFFFFFFFF), (Comparison{-1, 2}));
}

TEST(Pxfucompare, EqualNumbers) {
  for (const uint32_t number : {0U, 1U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU})
    EXPECT_EQ(compared(number, number), (Comparison{0, 0}));
}

TEST(Pxfucompare, DistanceIsTrueBelowHalfTheRange) {
  EXPECT_EQ(compared(0, 0x7FFFFFFF), (Comparison{-1, 0x7FFFFFFF}));
  EXPECT_EQ(compared(0x7FFFFFFF, 0), (Comparison{1, 0x7FFFFFFF}));
  EXPECT_EQ(compared(0x7FFFFFFF, 0x80000000), (Comparison{-1, 1}));
  EXPECT_EQ(compared(0x80000001, 0xFFFFFFFF), (Comparison{-1, 0x7FFFFFFE}));
}

TEST(Pxfucompare, DistanceWrapsAroundFromHalfTheRange) {
  EXPECT_EQ(compared(0, 0x80000001), (Comparison{-1, 0x7FFFFFFF}));
  EXPECT_EQ(compared(0x80000001, 0), (Comparison{1, 0x7FFFFFFF}));
  EXPECT_EQ(compared(0, 0xFFFFFFFF), (Comparison{-1, 1}));
  EXPECT_EQ(compared(0xFFFFFFFF, 0), (Comparison{1, 1}));
}

// Its absolute value has no place in 32 bits.
TEST(Pxfucompare, DistanceOfExactlyHalfTheRangeStaysNegative) {
  EXPECT_EQ(compared(0, 0x80000000), (Comparison{-1, INT32_MIN}));
  EXPECT_EQ(compared(0x80000000, 0), (Comparison{1, INT32_MIN}));
}

TEST(Pxfucompare, InputsAndErrorStateStay) {
  const int32_t first = 3;
  const int32_t second = 8;
  int32_t order = SENTINEL;
  int32_t distance = SENTINEL;
  reset_error_state();
  pxfucompare_(&first, &second, &order, &distance);
  EXPECT_EQ((Comparison{order, distance}), (Comparison{-1, 5}));
  EXPECT_EQ(error_state(), untouched());
}

TEST(ForGetsystemerrorDummy, AddsOne) {
  reset_error_state();
  EXPECT_EQ(for_getsystemerror_dummy(0), 1);
  EXPECT_EQ(for_getsystemerror_dummy(41), 42);
  EXPECT_EQ(for_getsystemerror_dummy(-1), 0);
  EXPECT_EQ(for_getsystemerror_dummy(INT32_MIN), INT32_MIN + 1);
  EXPECT_EQ(error_state(), untouched());
}

TEST(ForGetsystemerrorDummy, WrapsAround) {
  EXPECT_EQ(for_getsystemerror_dummy(INT32_MAX), INT32_MIN);
}
