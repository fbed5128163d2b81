// Bits and shifts, against a definition that takes each bit for itself.
#include "outcome.h"

#include <bitset>
#include <climits>
#include <vector>

namespace {

constexpr int32_t WORDS[] = {0,       1,       -1,          2,          -2,         5,          -8,
                             INT_MAX, INT_MIN, INT_MIN + 1, 0x0F0F0F0F, 0x12345678, -0x12345678};
constexpr int64_t LONG_WORDS[] = {0,
                                  1,
                                  -1,
                                  2,
                                  -2,
                                  -8,
                                  INT64_MAX,
                                  INT64_MIN,
                                  INT32_MAX,
                                  UINT32_MAX,
                                  1LL << 40,
                                  0x0123456789ABCDEF,
                                  -0x0123456789ABCDEF};
constexpr int32_t EXTREMES[] = {INT_MIN, INT_MIN + 1, INT_MIN + 31, INT_MAX,  INT_MAX - 31,
                                1 << 16, -(1 << 16),  256 + 3,      -256 + 3, 1 << 30};

std::vector<int32_t> counts() {
  std::vector<int32_t> all(std::begin(EXTREMES), std::end(EXTREMES));
  for (int32_t count = -140; count <= 140; ++count)
    all.push_back(count);
  return all;
}

std::vector<int64_t> long_counts() {
  std::vector<int64_t> all = {INT64_MIN, INT64_MIN + 3,   INT64_MAX,
                              1LL << 32, (1LL << 32) + 3, -(1LL << 32) + 3};
  for (const int32_t count : counts())
    all.push_back(count);
  return all;
}

// A routine that changes a word between words that it must leave alone.
template <typename Word>
Word changed(void (*routine)(const int32_t *, Word *), int32_t bitnum, Word target) {
  Word words[] = {static_cast<Word>(SENTINEL), target, static_cast<Word>(SENTINEL)};
  routine(&bitnum, &words[1]);
  EXPECT_EQ(words[0], static_cast<Word>(SENTINEL));
  EXPECT_EQ(words[2], static_cast<Word>(SENTINEL));
  return words[1];
}

template <typename Word, typename Answer>
void expect_single_bits(const Word &word, void (*clear)(const int32_t *, Word *),
                        void (*set)(const int32_t *, Word *), Answer (*test)(const int32_t *, const Word *)) {
  constexpr int BITS = 8 * sizeof(Word);
  for (const int32_t bitnum : counts()) {
    std::bitset<BITS> cleared(static_cast<std::make_unsigned_t<Word>>(word)), filled = cleared;
    bool is_set = false;
    for (int bit = 0; bit < BITS; ++bit) {
      if (bit != bitnum)
        continue;
      is_set = cleared[bit];
      cleared[bit] = false;
      filled[bit] = true;
    }
    EXPECT_EQ(changed(clear, bitnum, word), static_cast<Word>(cleared.to_ullong()))
        << word << " bit " << bitnum;
    EXPECT_EQ(changed(set, bitnum, word), static_cast<Word>(filled.to_ullong())) << word << " bit " << bitnum;
    EXPECT_EQ(test(&bitnum, &word), is_set ? 1 : 0) << word << " bit " << bitnum;
  }
}

TEST(SingleBits, AreClearedSetAndTested) {
  for (const int32_t word : WORDS)
    expect_single_bits(word, bic_, bis_, bit_);
  for (const int64_t word : LONG_WORDS)
    expect_single_bits(word, bici8_, bisi8_, biti8_);
}

TEST(SingleBits, ValuesThatProgramsKnow) {
  const int32_t beyond = 32, last = 31, ones = -1;
  EXPECT_EQ(changed(bis_, beyond, 5), 5);
  EXPECT_EQ(bit_(&last, &ones), 1);
  EXPECT_EQ(changed<int64_t>(bisi8_, beyond, 0), 1LL << 32);
}

// The bit that a shift by `count` to the left, to the right for a negative one, brings to a place; `filling`
// from outside.
int32_t shifted(int32_t word, int count, bool filling) {
  const std::bitset<32> before(static_cast<uint32_t>(word));
  std::bitset<32> after;
  for (int bit = 0; bit < 32; ++bit)
    after[bit] = bit - count >= 0 && bit - count < 32 ? before[bit - count] : bit - count >= 32 && filling;
  return static_cast<int32_t>(after.to_ulong());
}

int32_t reduced(int32_t count) {
  return count >= 32 ? count - 32 : count;
}

TEST(Shifts, TakeEachBitToItsPlace) {
  for (const int32_t word : WORDS) {
    for (const int32_t count : counts()) {
      const bool in_six_bits = count >= 0 && count <= 63, in_word = count >= 0 && count <= 31;
      EXPECT_EQ(lshift_(&word, &count), in_six_bits ? shifted(word, reduced(count), false) : 0)
          << word << " by " << count;
      EXPECT_EQ(rshift_(&word, &count), in_six_bits ? shifted(word, -reduced(count), word < 0) : 0)
          << word << " by " << count;
      EXPECT_EQ(shiftl_(&word, &count), in_word ? shifted(word, count, false) : 0) << word << " by " << count;
      EXPECT_EQ(shiftr_(&word, &count), in_word ? shifted(word, -count, false) : 0)
          << word << " by " << count;
    }
  }
}

int32_t by(int32_t (*routine)(const int32_t *, const int32_t *), int32_t word, int32_t count) {
  return routine(&word, &count);
}

TEST(Shifts, ValuesThatProgramsKnow) {
  EXPECT_EQ(by(lshift_, 1, 33), 2);
  EXPECT_EQ(by(lshift_, 1, 63), INT_MIN);
  EXPECT_EQ(by(lshift_, 1, 64), 0);
  EXPECT_EQ(by(lshift_, 1, -1), 0);
  EXPECT_EQ(by(shiftl_, 1, 33), 0);
  EXPECT_EQ(by(shiftl_, 1, -1), 0);
  EXPECT_EQ(by(rshift_, -8, 1), -4);
  EXPECT_EQ(by(rshift_, -8, 33), -4);
  EXPECT_EQ(by(rshift_, -8, 64), 0);
  EXPECT_EQ(by(shiftr_, -8, 1), 2147483644);
  EXPECT_EQ(by(shiftr_, -8, 33), 0);
}

// Of the 128 bits of both words, 64 from a place on.
int64_t window(int64_t left, int64_t right, int from) {
  std::bitset<64> upper(static_cast<uint64_t>(left)), lower(static_cast<uint64_t>(right)), seen;
  for (int bit = 0; bit < 64; ++bit)
    seen[bit] = from + bit < 64 ? lower[from + bit] : upper[from + bit - 64];
  return static_cast<int64_t>(seen.to_ullong());
}

TEST(DoubleShifts, AreWindowsOnBothWords) {
  for (const int64_t left : LONG_WORDS) {
    for (const int64_t right : LONG_WORDS) {
      for (const int64_t count : long_counts()) {
        const bool good = count >= 0 && count <= 64;
        const int64_t leftwards = good ? window(left, right, 64 - static_cast<int>(count)) : 0;
        const int64_t rightwards = good ? window(left, right, static_cast<int>(count)) : 0;
        ASSERT_EQ(dshiftl_(&left, &right, &count), leftwards) << left << ' ' << right << " by " << count;
        ASSERT_EQ(_dshiftl(left, right, count), leftwards) << left << ' ' << right << " by " << count;
        ASSERT_EQ(dshiftr_(&left, &right, &count), rightwards) << left << ' ' << right << " by " << count;
        ASSERT_EQ(_dshiftr(left, right, count), rightwards) << left << ' ' << right << " by " << count;
      }
    }
  }
}

TEST(DoubleShifts, ValuesThatProgramsKnow) {
  EXPECT_EQ(_dshiftl(11, 22, 64), 22);
  EXPECT_EQ(_dshiftl(11, 22, 65), 0);
  EXPECT_EQ(_dshiftl(11, 22, 0), 11);
  EXPECT_EQ(_dshiftl(11, 22, -1), 0);
  EXPECT_EQ(_dshiftr(11, 22, 64), 11);
  EXPECT_EQ(_dshiftr(11, 22, 65), 0);
  EXPECT_EQ(_dshiftr(11, 22, 0), 22);
  EXPECT_EQ(_dshiftr(11, 22, -1), 0);
}

TEST(Complements, OfIntegersAndLogicals) {
  for (const int32_t word : WORDS) {
    EXPECT_EQ(complint_(&word), -1 - word);
    EXPECT_EQ(compllog_(&word), word == 0 ? 1 : 0);
  }
  const int32_t one = 1, all = -1;
  EXPECT_EQ(compllog_(&one), 0);
  EXPECT_EQ(compllog_(&all), 0);
}

// On the 32-bit target the register that the answer comes in makes a signalling NaN quiet.
uint32_t as_answered(uint32_t bits) {
  constexpr uint32_t QUIET = 0x00400000;
  const bool is_nan = (bits & 0x7FFFFFFF) > 0x7F800000;
  return sizeof(void *) == 4 && is_nan ? bits | QUIET : bits;
}

TEST(Complements, OfEverySortOfReal) {
  const uint32_t all_bits[] = {0x00000000, 0x80000000, 0x3F800000, 0xBF800000, 0x7F800000, 0xFF800000,
                               0x00000001, 0x007FFFFF, 0x807FFFFF, 0x7FC00000, 0xFFFFFFFF, 0x7FFFFFFF,
                               0x7F800001, 0x00400000, 0x003FFFFF, 0x12345678};
  for (const uint32_t bits : all_bits) {
    float x;
    memcpy(&x, &bits, sizeof(x));
    const float answer = complreal_(&x);
    uint32_t answered;
    memcpy(&answered, &answer, sizeof(answered));
    EXPECT_EQ(answered, as_answered(UINT32_MAX - bits)) << std::hex << bits;
  }
}

TEST(Csmg, TakesEachBitFromOneOfTheTwo) {
  for (const int32_t x : WORDS) {
    for (const int32_t y : WORDS) {
      for (const int32_t z : WORDS) {
        std::bitset<32> merged;
        for (int bit = 0; bit < 32; ++bit)
          merged[bit] = ((z >> bit & 1) != 0 ? x >> bit & 1 : y >> bit & 1) != 0;
        EXPECT_EQ(csmg_(&x, &y, &z), static_cast<int32_t>(merged.to_ulong())) << x << ' ' << y << ' ' << z;
      }
    }
  }
}

TEST(Bits, TouchNoErrorState) {
  const int32_t beyond = 99, word = 5;
  const int64_t long_word = 5, far = 99;
  int32_t target = 5;
  int64_t long_target = 5;
  const float x = 0;
  EXPECT_EQ(state_after([&] {
              bic_(&beyond, &target), bis_(&beyond, &target), bit_(&beyond, &word),
                  bici8_(&beyond, &long_target);
              bisi8_(&beyond, &long_target), biti8_(&beyond, &long_word), lshift_(&word, &beyond),
                  rshift_(&word, &beyond);
              shiftl_(&word, &beyond), shiftr_(&word, &beyond), dshiftl_(&long_word, &long_word, &far);
              dshiftr_(&long_word, &long_word, &far), complint_(&word), complreal_(&x), compllog_(&word);
              csmg_(&word, &word, &word);
            }),
            untouched());
}

}  // namespace
