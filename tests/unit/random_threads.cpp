// What the reference says of threads that draw: no harm for the shared generator, and no sharing for RAN.
#include "outcome.h"
#include "together.h"

#include <array>

namespace {

constexpr int THREADS = 4;
constexpr int DRAWS = 20'000;

TEST(RandomThreads, DrawTogetherWithoutHarm) {
  std::array<bool, THREADS> good = {};
  do_together(THREADS, [&](int thread) {
    const int32_t next = 0;
    bool mine = true;
    for (int i = 0; i < DRAWS; ++i) {
      const double x = drand_(&next);
      const float y = rand_(nullptr);
      const int32_t k = irand_(&next);
      mine = mine && x >= 0 && x < 1 && y >= 0 && y < 1 && k >= 0;
    }
    good[thread] = mine;
  });
  EXPECT_EQ(good, (std::array<bool, THREADS>{true, true, true, true}));
}

TEST(RandomThreads, SeedAndSaveTogetherWithoutHarm) {
  std::array<bool, THREADS> good = {};
  do_together(THREADS, [&](int thread) {
    const int32_t seed = 100 + thread, count = 6, next = 0;
    bool mine = true;
    for (int i = 0; i < DRAWS / 10; ++i) {
      iranset_(&seed);
      int64_t state[6];
      mine = mine && random_save_(state, &count) == 0 && random_restore_(state, &count) == 0;
      drand_(&next);
      int32_t seen = 0;
      ranget_(&seen);
      mine = mine && seen >= 100 && seen < 100 + THREADS;
    }
    good[thread] = mine;
  });
  EXPECT_EQ(good, (std::array<bool, THREADS>{true, true, true, true}));
}

// Each with a variable of its own: the same values as one after the other.
TEST(RandomThreads, RanIsTheCallersAlone) {
  const auto last_of = [](int32_t iseed) {
    for (int i = 0; i < DRAWS; ++i)
      ran_(&iseed);
    return iseed;
  };
  std::array<int32_t, THREADS> together = {}, alone = {};
  do_together(THREADS, [&](int thread) { together[thread] = last_of(1000 + thread); });
  for (int thread = 0; thread < THREADS; ++thread)
    alone[thread] = last_of(1000 + thread);
  EXPECT_EQ(together, alone);
}

}  // namespace
