// The random numbers: what the definition of the generator says of each seed and state, and the states that
// are saved.
#include "outcome.h"

#include <array>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <set>

namespace {

using Words = std::array<uint64_t, 4>;
using State = std::array<int64_t, 6>;
constexpr int32_t STATE_SIZE = 6, NEXT = 0, START_OVER = 1;
constexpr int32_t SEEDS[] = {0, 1, 2, -1, -2, 42, 32768, -5, INT_MAX, INT_MAX - 1, INT_MIN, INT_MIN + 1};

State saved() {
  State state;
  EXPECT_EQ(random_save_(state.data(), &STATE_SIZE), 0);
  return state;
}

Words words_of(const State &state) {
  Words words;
  std::copy(state.begin() + 2, state.end(), words.begin());
  return words;
}

int32_t restore(const State &state, int32_t count = STATE_SIZE) {
  return random_restore_(state.data(), &count);
}

void set_words(const Words &words) {
  State state = saved();
  std::copy(words.begin(), words.end(), state.begin() + 2);
  EXPECT_EQ(restore(state), 0);
}

int32_t seed_now() {
  int32_t seed = SENTINEL;
  ranget_(&seed);
  return seed;
}

void set_seed(int32_t seed) {
  iranset_(&seed);
}

// Has to be the first test where several run in one process.
TEST(RandomNumbers, AProgramBeginsWithSeedOne) {
  EXPECT_EQ(seed_now(), 1);
  EXPECT_EQ(words_of(saved()),
            (Words{0x910a2dec89025cc1, 0xbeeb8da1658eec67, 0xf893a2eefb32555e, 0x71c18690ee42c90b}));
}

// The generators as their authors define them, one operation of a line of theirs after the other.
uint64_t rotated(uint64_t x, int k) {
  return (x << k) | (x >> (64 - k));
}
uint64_t reference_next(Words &s) {
  const uint64_t result = rotated(s[0] + s[3], 23) + s[0];
  const uint64_t t = s[1] << 17;
  s[2] ^= s[0];
  s[3] ^= s[1];
  s[1] ^= s[2];
  s[0] ^= s[3];
  s[2] ^= t;
  s[3] = rotated(s[3], 45);
  return result;
}
Words reference_words(int32_t seed) {
  Words words;
  uint64_t x = static_cast<uint32_t>(seed);
  for (uint64_t &word : words) {
    uint64_t z = (x += 0x9e3779b97f4a7c15);
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9;
    z = (z ^ (z >> 27)) * 0x94d049bb133111eb;
    word = z ^ (z >> 31);
  }
  return words;
}

// What the authors' programs print.
constexpr uint64_t PUBLISHED[] = {41943041,
                                  58720359,
                                  3588806011781223,
                                  3591011842654386,
                                  9228616714210784205U,
                                  9973669472204895162U,
                                  14011001112246962877U,
                                  12406186145184390807U,
                                  15849039046786891736U,
                                  10450023813501588000U};
constexpr Words SEEDED_BY_0 = {0xe220a8397b1dcdaf, 0x6e789e6aa1b965f4, 0x06c45d188009454f,
                               0xf88bb8a8724c81ec};

double real8(uint64_t bits) {
  return std::ldexp(static_cast<double>(bits >> 11), -53);
}
float real4(uint64_t bits) {
  return std::ldexp(static_cast<float>(bits >> 40), -24);
}
int32_t integer4(uint64_t bits) {
  return static_cast<int32_t>(bits >> 33);
}

TEST(RandomNumbers, PublishedValuesFollowFromTheStateOfTheFirstIntegers) {
  set_words({1, 2, 3, 4});
  for (const uint64_t bits : PUBLISHED)
    EXPECT_EQ(drand_(&NEXT), real8(bits));
  set_words({1, 2, 3, 4});
  for (const uint64_t bits : PUBLISHED)
    EXPECT_EQ(rand_(&NEXT), real4(bits));
  set_words({1, 2, 3, 4});
  for (const uint64_t bits : PUBLISHED)
    EXPECT_EQ(irand_(&NEXT), integer4(bits));
}

TEST(RandomNumbers, SeedZeroGivesThePublishedState) {
  set_seed(0);
  EXPECT_EQ(words_of(saved()), SEEDED_BY_0);
}

TEST(RandomNumbers, EverySeedStartsTheSequenceOfItsDefinition) {
  for (const int32_t seed : SEEDS) {
    set_seed(seed);
    Words words = reference_words(seed);
    EXPECT_EQ(words_of(saved()), words) << seed;
    for (int i = 0; i < 1000; ++i) {
      ASSERT_EQ(drand_(&NEXT), real8(reference_next(words))) << seed;
      ASSERT_EQ(drandm_(&NEXT), real8(reference_next(words))) << seed;
      ASSERT_EQ(rand_(&NEXT), real4(reference_next(words))) << seed;
      ASSERT_EQ(rand_(nullptr), real4(reference_next(words))) << seed;
      ASSERT_EQ($$msportlib$random_(&NEXT), real4(reference_next(words))) << seed;
      ASSERT_EQ(qxport_random_(&NEXT), real4(reference_next(words))) << seed;
      ASSERT_EQ(irand_(&NEXT), integer4(reference_next(words))) << seed;
      ASSERT_EQ(irandm_(&NEXT), integer4(reference_next(words))) << seed;
      ASSERT_EQ(irand_(nullptr), integer4(reference_next(words)) % 32768) << seed;
    }
    EXPECT_EQ(words_of(saved()), words) << seed;
  }
}

TEST(RandomNumbers, FlagOneStartsOverFromSeedOne) {
  set_seed(77);
  const double first = drand_(&START_OVER);
  EXPECT_EQ(drand_(&START_OVER), first);
  EXPECT_EQ(seed_now(), 1);
  Words words = reference_words(1);
  EXPECT_EQ(drand_(&START_OVER), real8(reference_next(words)));
  EXPECT_EQ(drand_(&NEXT), real8(reference_next(words)));
}

// Each routine with an IFLAG, its draws as REAL(8).
template <typename Routine>
void expect_flags_followed(Routine routine, double (*expected)(uint64_t)) {
  for (const int32_t seed : SEEDS) {
    if (seed == NEXT)
      continue;
    set_seed(99);
    Words words = reference_words(seed);
    EXPECT_EQ(routine(&seed), expected(reference_next(words))) << seed;
    EXPECT_EQ(seed_now(), seed);
    EXPECT_EQ(routine(&NEXT), expected(reference_next(words))) << seed;
    EXPECT_EQ(seed_now(), seed);
    EXPECT_EQ(words_of(saved()), words);
  }
}

TEST(RandomNumbers, FlagsAreZeroOneOrASeed) {
  const auto as_real8 = [](uint64_t bits) { return real8(bits); };
  const auto as_real4 = [](uint64_t bits) { return static_cast<double>(real4(bits)); };
  const auto as_integer = [](uint64_t bits) { return static_cast<double>(integer4(bits)); };
  expect_flags_followed(drand_, as_real8);
  expect_flags_followed(drandm_, as_real8);
  expect_flags_followed(rand_, as_real4);
  expect_flags_followed($$msportlib$random_, as_real4);
  expect_flags_followed(irand_, as_integer);
  expect_flags_followed(irandm_, as_integer);
}

TEST(RandomNumbers, ExtremesOfADraw) {
  // The first draw of such a state is rotl(a + d, 23) + a, so all bits of it are set, or none.
  set_words({0, 1, 0, UINT64_MAX});
  EXPECT_EQ(drand_(&NEXT), 1 - 0x1p-53);
  set_words({0, 1, 0, UINT64_MAX});
  EXPECT_EQ(rand_(&NEXT), 1 - 0x1p-24F);
  set_words({0, 1, 0, UINT64_MAX});
  EXPECT_EQ(irand_(&NEXT), INT_MAX);
  set_words({0, 1, 0, UINT64_MAX});
  EXPECT_EQ(irand_(nullptr), 32767);
  set_words({0, 1, 0, 0});
  EXPECT_EQ(drand_(&NEXT), 0);
  set_words({0, 1, 0, 0});
  EXPECT_EQ(rand_(&NEXT), 0);
  set_words({0, 1, 0, 0});
  EXPECT_EQ(irand_(&NEXT), 0);
}

TEST(RandomNumbers, WithoutTheArgumentFifteenBits) {
  std::set<int32_t> seen;
  int32_t largest = 0;
  for (int i = 0; i < 400'000; ++i) {
    const int32_t drawn = irand_(nullptr);
    ASSERT_GE(drawn, 0);
    ASSERT_LE(drawn, 32767);
    seen.insert(drawn);
    largest = std::max(largest, irand_(&NEXT));
  }
  EXPECT_GT(seen.size(), 32700U);
  EXPECT_GT(largest, 2'147'000'000);
}

// A rough look at what batteries of tests see to: the mean, the variance and the neighbours.
TEST(RandomNumbers, AreUniform) {
  constexpr int DRAWS = 1'000'000;
  double sum = 0, squares = 0, products = 0, before = drand_(&NEXT);
  for (int i = 0; i < DRAWS; ++i) {
    const double x = drand_(&NEXT);
    sum += x;
    squares += (x - 0.5) * (x - 0.5);
    products += (x - 0.5) * (before - 0.5);
    before = x;
  }
  EXPECT_NEAR(sum / DRAWS, 0.5, 0.0015);
  EXPECT_NEAR(squares / DRAWS, 1.0 / 12, 0.0004);
  EXPECT_NEAR(products / DRAWS, 0, 0.0005);
}

TEST(RandomNumbers, SeedsAreAnsweredAsTheyWereSet) {
  for (const int32_t seed : SEEDS) {
    set_seed(seed);
    const State before = saved();
    int32_t answered = SENTINEL, other = SENTINEL;
    ranget_(&answered);
    iranget_(&other);
    EXPECT_EQ(answered, seed);
    EXPECT_EQ(other, seed);
    EXPECT_EQ(saved(), before) << "asking draws nothing";
    drand_(&NEXT);
    EXPECT_EQ(seed_now(), seed);
  }
}

struct RealSeed {
  double given;
  int32_t seed;
};
constexpr double INFINITE = __builtin_inf(), NONE = __builtin_nan("");
constexpr RealSeed REAL_SEEDS[] = {{3.9, 3},
                                   {-3.9, -3},
                                   {0.0, 0},
                                   {-0.0, 0},
                                   {0.9, 0},
                                   {-0.9, 0},
                                   {1.0, 1},
                                   {16777216, 16777216},
                                   {2147483520, 2147483520},
                                   {2147483648, INT_MIN},
                                   {-2147483648, INT_MIN},
                                   {-2147483904, INT_MIN},
                                   {1e30, INT_MIN},
                                   {-1e30, INT_MIN},
                                   {INFINITE, INT_MIN},
                                   {-INFINITE, INT_MIN},
                                   {NONE, INT_MIN}};
constexpr RealSeed REAL8_SEEDS[] = {
    {2147483647.0, INT_MAX},  {2147483647.9, INT_MAX}, {-2147483648.9, INT_MIN}, {-2147483647.9, -INT_MAX},
    {-2147483649.0, INT_MIN}, {1e300, INT_MIN},        {4294967299.0, INT_MIN},  {0x1p-1074, 0}};

TEST(RandomNumbers, RealSeedsLoseTheirFraction) {
  for (const auto &[given, seed] : REAL_SEEDS) {
    const auto single = static_cast<float>(given);
    set_seed(5);
    ranset_(&single);
    EXPECT_EQ(seed_now(), seed) << given;
    EXPECT_EQ(words_of(saved()), reference_words(seed)) << given;
    set_seed(5);
    dranset_(&given);
    EXPECT_EQ(seed_now(), seed) << given;
  }
  for (const auto &[given, seed] : REAL8_SEEDS) {
    set_seed(5);
    dranset_(&given);
    EXPECT_EQ(seed_now(), seed) << given;
    EXPECT_EQ(words_of(saved()), reference_words(seed)) << given;
  }
}

TEST(RandomNumbers, SrandSeedsTheHostsGeneratorToo) {
  for (const int32_t seed : SEEDS) {
    set_seed(5);
    srand_(&seed);
    EXPECT_EQ(seed_now(), seed);
    EXPECT_EQ(words_of(saved()), reference_words(seed));
    const float first = ranf_(), second = ranf_();
    srand(static_cast<unsigned>(seed));
    EXPECT_EQ(first, static_cast<float>(rand()));
    EXPECT_EQ(second, static_cast<float>(rand()));
    EXPECT_EQ(words_of(saved()), reference_words(seed)) << "RANF draws from the host alone";
  }
}

TEST(RandomNumbers, OtherSeedsLeaveTheHostsGeneratorAlone) {
  const int32_t seed = 4;
  const float single = 6;
  const double real = 7;
  srand(3);
  const int first = rand();
  srand(3);
  iranset_(&seed);
  ranset_(&single);
  dranset_(&real);
  drand_(&seed);
  EXPECT_EQ(rand(), first);
}

TEST(RandomNumbers, StateGoesOnWhereItWasSaved) {
  set_seed(-12);
  for (int i = 0; i < 5; ++i)
    drand_(&NEXT);
  const State state = saved();
  std::vector<double> following(100);
  for (double &x : following)
    x = drand_(&NEXT);
  set_seed(8);
  EXPECT_EQ(outcome_of([&] { return restore(state); }), succeeded());
  EXPECT_EQ(seed_now(), -12);
  EXPECT_EQ(saved(), state);
  for (const double x : following)
    EXPECT_EQ(drand_(&NEXT), x);
}

// A state saved on one target, or by an earlier version, is one everywhere.
TEST(RandomNumbers, StateLooksTheSameEverywhere) {
  set_seed(0);
  State expected = {0x7178'7261'6e64'0001, 0};
  std::copy(SEEDED_BY_0.begin(), SEEDED_BY_0.end(), expected.begin() + 2);
  EXPECT_EQ(saved(), expected);
  set_seed(INT_MIN);
  EXPECT_EQ(saved()[1], INT_MIN);
}

TEST(RandomNumbers, WrongLengthsAreRefused) {
  const State good = saved();
  for (const int32_t count : {0, 5, 7, -6, 12, INT_MAX, INT_MIN}) {
    State state;
    state.fill(SENTINEL);
    const State untouched_state = state;
    EXPECT_EQ(outcome_of([&] { return random_save_(state.data(), &count); }),
              (Outcome{EINVAL, {EINVAL, SENTINEL, {EINVAL}}}))
        << count;
    EXPECT_EQ(state, untouched_state);
    drand_(&NEXT);
    const State before = saved();
    EXPECT_EQ(outcome_of([&] { return restore(good, count); }),
              (Outcome{EINVAL, {EINVAL, SENTINEL, {EINVAL}}}))
        << count;
    EXPECT_EQ(saved(), before);
  }
}

TEST(RandomNumbers, WhatIsNoStateIsRefused) {
  set_seed(9);
  const State good = saved();
  std::vector<State> bad = {State{}, good, good, good, good, good};
  std::fill(bad[1].begin() + 2, bad[1].end(), 0);
  bad[2][0] = 0;
  bad[3][0] += 1;
  bad[4][1] = int64_t{INT_MAX} + 1;
  bad[5][1] = int64_t{INT_MIN} - 1;
  drand_(&NEXT);
  const State before = saved();
  for (const State &state : bad) {
    EXPECT_EQ(outcome_of([&] { return restore(state); }), (Outcome{EINVAL, {EINVAL, SENTINEL, {EINVAL}}}));
    EXPECT_EQ(saved(), before);
  }
  // One word that is not zero is enough, whichever it is.
  for (size_t i = 2; i < good.size(); ++i) {
    State state = good;
    std::fill(state.begin() + 2, state.end(), 0);
    state[i] = INT64_MIN;
    EXPECT_EQ(restore(state), 0);
    EXPECT_EQ(saved(), state);
  }
}

TEST(RandomNumbers, TouchNoErrorState) {
  const int32_t seed = 4;
  const float single = NONE;
  const double real = INFINITE;
  State state;
  int32_t answered, iseed = 4;
  EXPECT_EQ(state_after([&] {
              drand_(&seed), drandm_(&NEXT), rand_(nullptr), rand_(&NEXT), $$msportlib$random_(&NEXT),
                  irand_(nullptr);
              irandm_(&NEXT), srand_(&seed), iranset_(&seed), ranset_(&single), dranset_(&real),
                  ranget_(&answered);
              iranget_(&answered), ranf_(), ran_(&iseed), random_save_(state.data(), &STATE_SIZE);
            }),
            untouched());
}

TEST(RandomNumbers, ModuleCallsTheSameRoutines) {
  expect_same_routine($$msportlib$random_, qxport_random_);
  expect_same_routine(drand_, qxport_drand_);
  expect_same_routine(irand_, qxport_irand_);
  expect_same_routine(ran_, qxport_ran_);
}

// RAN by its definition, in a width in which nothing overflows.
#ifdef __SIZEOF_INT128__
__extension__ using Wide = __int128;
#else
using Wide = int64_t;
#endif
constexpr Wide MODULUS = 2147483647;

int32_t product_of(int32_t seed) {
  const Wide x = seed < 0 ? Wide{seed} + MODULUS : Wide{seed};
  // The remainder of a product that is not positive is taken into 1 to MODULUS.
  const Wide remainder = Wide{48271} * x % MODULUS;
  return static_cast<int32_t>(remainder > 0 ? remainder : remainder + MODULUS);
}

void expect_ran(int32_t seed) {
  int32_t iseed[] = {SENTINEL, seed, SENTINEL};
  const float drawn = ran_(&iseed[1]);
  const int32_t x = product_of(seed);
  ASSERT_EQ(drawn, static_cast<float>(static_cast<double>(x) / 2147483648.0)) << seed;
  ASSERT_EQ(iseed[1], seed == 0 || seed == 1 ? seed : x) << seed;
  ASSERT_EQ(iseed[0], SENTINEL);
  ASSERT_EQ(iseed[2], SENTINEL);
}

TEST(Ran, IsTheProductModuloAPrime) {
  for (int64_t seed = INT_MIN; seed <= INT_MAX; seed += 4099)
    expect_ran(static_cast<int32_t>(seed));
  for (const int32_t around :
       {INT_MIN + 2, -INT_MAX + 44488, -44488, 0, 44488, 48271, 2 * 44488, INT_MAX - 44488, INT_MAX - 2})
    for (int32_t seed = around - 2; seed <= around + 1; ++seed)
      expect_ran(seed);
  // Multiples of the quotient, where the method changes its step.
  for (int32_t multiple = 0; multiple <= 48271; ++multiple)
    expect_ran(multiple * 44488);
  expect_ran(INT_MAX);
  expect_ran(-INT_MAX);
}

TEST(Ran, ValuesThatProgramsKnow) {
  int32_t iseed = 1;
  EXPECT_EQ(ran_(&iseed), 48271 * 0x1p-31F);
  EXPECT_EQ(iseed, 1);
  iseed = 0;
  EXPECT_EQ(ran_(&iseed), 1.0F);
  EXPECT_EQ(iseed, 0);
  iseed = 12345;
  EXPECT_EQ(ran_(&iseed), static_cast<float>(595905495) * 0x1p-31F);
  EXPECT_EQ(iseed, 595905495);
  iseed = -5;
  const float drawn = ran_(&iseed);
  int32_t other = 2147483642;
  EXPECT_EQ(ran_(&other), drawn);
  EXPECT_EQ(other, iseed);
  for (int32_t fixed : {INT_MAX, -INT_MAX}) {
    EXPECT_EQ(ran_(&fixed), 1.0F);
    EXPECT_EQ(fixed, INT_MAX);
  }
}

// Park and Miller's check of a generator of this kind: the ten thousandth number.
TEST(Ran, TenThousandthNumber) {
  int32_t iseed = 2;
  Wide x = 2;
  for (int i = 0; i < 10'000; ++i) {
    ran_(&iseed);
    x = x * 48271 % MODULUS;
  }
  EXPECT_EQ(iseed, static_cast<int32_t>(x));
}

// Constants stand in memory that may not be written.
TEST(Ran, ConstantsZeroAndOneArePassed) {
  static const int32_t constants[] = {0, 1};
  for (const int32_t &constant : constants)
    EXPECT_GT(ran_(const_cast<int32_t *>(&constant)), 0);
}

}  // namespace
