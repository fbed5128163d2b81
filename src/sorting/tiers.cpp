// The one place that asks what the processor can do.
#include "sorting/tier.h"

#include <atomic>
#include <cpuid.h>

namespace qxport::sorting {

namespace {

// What the system saves of the registers when it switches between programs.
constexpr uint32_t VECTORS_OF_256_BITS = 0x06;
constexpr uint32_t VECTORS_OF_512_BITS = 0xE6;

uint32_t saved_registers() {
  uint32_t low, high;
  __asm__("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
  return low;
}

const Tier &detect() {
  uint32_t a, b, c, d;
  if (__get_cpuid(1, &a, &b, &c, &d) == 0 || (c & bit_OSXSAVE) == 0 || (c & bit_AVX) == 0 ||
      (c & bit_POPCNT) == 0)
    return PORTABLE_TIER;
  const uint32_t saved = saved_registers();
  if (__get_cpuid_count(7, 0, &a, &b, &c, &d) == 0)
    return PORTABLE_TIER;
  const auto has = [b](uint32_t features) { return (b & features) == features; };
  if ((saved & VECTORS_OF_512_BITS) == VECTORS_OF_512_BITS &&
      has(bit_AVX2 | bit_BMI | bit_BMI2 | bit_AVX512F | bit_AVX512BW | bit_AVX512DQ | bit_AVX512VL))
    return AVX512_TIER;
  if ((saved & VECTORS_OF_256_BITS) == VECTORS_OF_256_BITS && has(bit_AVX2 | bit_BMI | bit_BMI2))
    return AVX2_TIER;
  return PORTABLE_TIER;
}

// Threads that call first at the same time find the same out.
constinit std::atomic<const Tier *> best = nullptr;

}  // namespace

const Tier &best_tier() {
  const Tier *known = best.load(std::memory_order_relaxed);
  if (known == nullptr) {
    known = &detect();
    best.store(known, std::memory_order_relaxed);
  }
  return *known;
}

bool runs_here(const Tier &tier) {
  const Tier *here = &best_tier();
  return &tier == here || &tier == &PORTABLE_TIER || (&tier == &AVX2_TIER && here == &AVX512_TIER);
}

}  // namespace qxport::sorting
