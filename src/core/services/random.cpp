// The random generator that all of a program shares.
#include "contract/services.h"
#include "core/services/random_generator.h"

#include <algorithm>
#include <atomic>
#include <cerrno>

using namespace qxcore;

namespace {

constexpr int32_t INITIAL_SEED = 1;
constexpr RandomState INITIAL = seeded(INITIAL_SEED);

// One generator for the process, and no lock: threads that draw at the same time may get the same values and
// mix their states, in cells that each stay sound.
struct {
  std::atomic<uint64_t> a, b, c, d;
} cells = {INITIAL.words[0], INITIAL.words[1], INITIAL.words[2], INITIAL.words[3]};
std::atomic<int32_t> seed_last_set = INITIAL_SEED;

// In each service for itself: a call more would be a good part of what a draw costs.
[[gnu::always_inline]] inline RandomState load() {
  constexpr auto RELAXED = std::memory_order_relaxed;
  return {{cells.a.load(RELAXED), cells.b.load(RELAXED), cells.c.load(RELAXED), cells.d.load(RELAXED)}};
}

[[gnu::always_inline]] inline void store(const RandomState &state) {
  constexpr auto RELAXED = std::memory_order_relaxed;
  cells.a.store(state.words[0], RELAXED);
  cells.b.store(state.words[1], RELAXED);
  cells.c.store(state.words[2], RELAXED);
  cells.d.store(state.words[3], RELAXED);
}

[[gnu::always_inline]] inline uint64_t draw() {
  RandomState state = load();
  const uint64_t drawn = next(state);
  store(state);
  return drawn;
}

void restart(int32_t seed) {
  store(seeded(seed));
  seed_last_set.store(seed, std::memory_order_relaxed);
}

// A saved state: what it is, the seed, and the generator's words.
constexpr int64_t SAVED_STATE = 0x7178'7261'6e64'0001;  // "qxrand", and the version of this layout
enum { WHAT, SEED, WORDS };
static_assert(WORDS + 4 == RANDOM_STATE_WORDS);

}  // namespace

double __FFdrand() {
  return real8_of(draw());
}

float __FFfrand() {
  return real4_of(draw());
}

int32_t __FFirand() {
  return integer4_of(draw());
}

void __FFsetseed(int32_t seed) {
  restart(seed);
}

void __FFresetseed() {
  restart(INITIAL_SEED);
}

void __FFgetseed(int32_t *seed) {
  *seed = seed_last_set.load(std::memory_order_relaxed);
}

int32_t __FFsavestate(int64_t *state, intptr_t count) {
  if (count != RANDOM_STATE_WORDS)
    return EINVAL;
  state[WHAT] = SAVED_STATE;
  state[SEED] = seed_last_set.load(std::memory_order_relaxed);
  const RandomState saved = load();
  std::copy_n(saved.words, 4, state + WORDS);
  return 0;
}

int32_t __FFrestorestate(const int64_t *state, intptr_t count) {
  if (count != RANDOM_STATE_WORDS || state[WHAT] != SAVED_STATE ||
      state[SEED] != static_cast<int32_t>(state[SEED]))
    return EINVAL;
  RandomState restored;
  std::copy_n(state + WORDS, 4, restored.words);
  // From zeros only zeros follow.
  if (std::all_of(restored.words, restored.words + 4, [](uint64_t word) { return word == 0; }))
    return EINVAL;
  store(restored);
  seed_last_set.store(static_cast<int32_t>(state[SEED]), std::memory_order_relaxed);
  return 0;
}
