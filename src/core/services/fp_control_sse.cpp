// 64-bit: arithmetic is the SSE unit's, which knows neither precision nor infinity control. They are kept as
// state of the thread, and never reach the x87 unit: REAL(10) arithmetic and the mathematics library count on
// its 64 bits.
#include "contract/fp_units.h"
#include "core/services/fp_control.h"

#include <atomic>
#include <pthread.h>

using namespace qxport;

namespace qxcore {

namespace {

constexpr uint32_t KEPT = FP_PRECISION | FP_INFINITY;

// The key of the threads' state, plus 1; 0 until a thread sets other than the initial state.
std::atomic<unsigned> key_of_state;

uint32_t kept_state() {
  const unsigned key = key_of_state.load(std::memory_order_acquire);
  return key == 0 ? 0 : static_cast<uint32_t>(reinterpret_cast<uintptr_t>(pthread_getspecific(key - 1)));
}

// A process without a free key keeps the initial state.
unsigned made_key() {
  pthread_key_t made;
  if (pthread_key_create(&made, nullptr) != 0)
    return 0;
  unsigned key = 0;
  if (key_of_state.compare_exchange_strong(key, made + 1))
    return made + 1;
  pthread_key_delete(made);
  return key;
}

void keep_state(uint32_t state) {
  unsigned key = key_of_state.load(std::memory_order_acquire);
  if (key == 0)
    key = made_key();
  if (key != 0)
    pthread_setspecific(key - 1, reinterpret_cast<void *>(static_cast<uintptr_t>(state)));
}

// An unloaded library gives its key back.
[[gnu::destructor]] void release_key() {
  const unsigned key = key_of_state.exchange(0);
  if (key != 0)
    pthread_key_delete(key - 1);
}

}  // namespace

uint32_t control_word(uint32_t sse) {
  return exceptions_of_unit(sse >> SSE_MASKS_SHIFT) | (sse & sse_fields(X87_ROUNDING)) >> 5 | kept_state();
}

void set_precision_and_infinity(uint32_t value, uint32_t mask) {
  const uint32_t before = kept_state();
  const uint32_t state = (before & ~mask) | (value & mask & KEPT);
  if (state != before)
    keep_state(state);
}

}  // namespace qxcore
