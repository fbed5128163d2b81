// Control and status words and IEEE_FLAGS, beside the C library's way to the same registers.
#include "ratios.h"

#include <qxport/qxport.h>

#include <cfenv>
#include <xmmintrin.h>

namespace {

void read_control(benchmark::State &state) {
  int16_t control;
  for (auto _ : state) {
    getcontrolfpqq_(&control);
    benchmark::DoNotOptimize(control);
  }
}
BENCHMARK(read_control)->Name("getcontrolfpqq/ours");

void read_rounding(benchmark::State &state) {
  for (auto _ : state)
    benchmark::DoNotOptimize(fegetround());
}
BENCHMARK(read_rounding)->Name("getcontrolfpqq/fegetround");

// The word that holds already, as around a computation that needs it.
void set_same_control(benchmark::State &state) {
  int16_t control;
  getcontrolfpqq_(&control);
  for (auto _ : state)
    setcontrolfpqq_(&control);
}
BENCHMARK(set_same_control)->Name("setcontrolfpqq/ours");

// Up and down by turns.
void set_other_control(benchmark::State &state) {
  int16_t saved;
  getcontrolfpqq_(&saved);
  const int16_t words[] = {static_cast<int16_t>(saved | 0x0400), static_cast<int16_t>(saved | 0x0800)};
  unsigned turn = 0;
  for (auto _ : state)
    setcontrolfpqq_(&words[++turn & 1]);
  setcontrolfpqq_(&saved);
}
BENCHMARK(set_other_control)->Name("setcontrolfpqq, another/ours");

void set_rounding(benchmark::State &state) {
  const int directions[] = {FE_DOWNWARD, FE_UPWARD};
  unsigned turn = 0;
  for (auto _ : state)
    benchmark::DoNotOptimize(fesetround(directions[++turn & 1]));
  fesetround(FE_TONEAREST);
}
BENCHMARK(set_rounding)->Name("setcontrolfpqq, another/fesetround");

// What no setting of both units can do without: each register is read, for what else it holds, and loaded.
// Some processors take tens of nanoseconds for the x87 unit's alone.
void exchange_words(benchmark::State &state) {
  constexpr uint32_t SSE_ROUNDING = 0x6000;
  constexpr unsigned X87_ROUNDING = 0x0C00;
  const unsigned roundings[] = {0x0400, 0x0800};
  unsigned turn = 0;
  const uint32_t sse_before = _mm_getcsr();
  uint16_t x87_before;
  asm volatile("fnstcw %0" : "=m"(x87_before));
  for (auto _ : state) {
    const unsigned rounding = roundings[++turn & 1];
    _mm_setcsr((_mm_getcsr() & ~SSE_ROUNDING) | rounding << 3);
    uint16_t x87;
    asm volatile("fnstcw %0" : "=m"(x87));
    x87 = static_cast<uint16_t>((x87 & ~X87_ROUNDING) | rounding);
    asm volatile("fldcw %0" : : "m"(x87) : "memory");
  }
  _mm_setcsr(sse_before);
  asm volatile("fldcw %0" : : "m"(x87_before) : "memory");
}
BENCHMARK(exchange_words)->Name("setcontrolfpqq, another/bare exchange");

// The two loads alone, by turns.
void load_words(benchmark::State &state) {
  const uint32_t sse_before = _mm_getcsr();
  uint16_t x87_before;
  asm volatile("fnstcw %0" : "=m"(x87_before));
  const uint32_t sse[] = {sse_before | 0x2000, sse_before | 0x4000};
  const uint16_t x87[] = {static_cast<uint16_t>(x87_before | 0x0400),
                          static_cast<uint16_t>(x87_before | 0x0800)};
  unsigned turn = 0;
  for (auto _ : state) {
    ++turn;
    _mm_setcsr(sse[turn & 1]);
    asm volatile("fldcw %0" : : "m"(x87[turn & 1]) : "memory");
  }
  _mm_setcsr(sse_before);
  asm volatile("fldcw %0" : : "m"(x87_before) : "memory");
}
BENCHMARK(load_words)->Name("setcontrolfpqq, another/bare loads");

void read_status(benchmark::State &state) {
  int16_t status;
  for (auto _ : state) {
    getstatusfpqq_(&status);
    benchmark::DoNotOptimize(status);
  }
}
BENCHMARK(read_status)->Name("getstatusfpqq/ours");

void test_exceptions(benchmark::State &state) {
  for (auto _ : state)
    benchmark::DoNotOptimize(fetestexcept(FE_ALL_EXCEPT));
}
BENCHMARK(test_exceptions)->Name("getstatusfpqq/fetestexcept");

void get_exception(benchmark::State &state) {
  char out[9];
  for (auto _ : state) {
    benchmark::DoNotOptimize(ieee_flags_("get", "exception", "underflow", out, 3, 9, 9, sizeof(out)));
    benchmark::ClobberMemory();
  }
}
BENCHMARK(get_exception)->Name("ieee_flags get/ours");
BENCHMARK(test_exceptions)->Name("ieee_flags get/fetestexcept");

void set_direction(benchmark::State &state) {
  char out[9];
  const char *const names[] = {"negative", "positive"};
  unsigned turn = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(ieee_flags_("set", "direction", names[++turn & 1], out, 3, 9, 8, sizeof(out)));
    benchmark::ClobberMemory();
  }
  fesetround(FE_TONEAREST);
}
BENCHMARK(set_direction)->Name("ieee_flags set/ours");
BENCHMARK(set_rounding)->Name("ieee_flags set/fesetround");

}  // namespace

int main(int argc, char **argv) {
  return bench::run(argc, argv,
                    {{"getcontrolfpqq", "", 15},
                     {"getcontrolfpqq", "fegetround"},
                     {"setcontrolfpqq", "", 25},
                     {"setcontrolfpqq, another", "fesetround", 2},
                     {"setcontrolfpqq, another", "bare exchange", 2},
                     {"setcontrolfpqq, another", "bare loads", bench::NO_LIMIT, 25},
                     {"getstatusfpqq", "", 15},
                     {"getstatusfpqq", "fetestexcept"},
                     {"ieee_flags get", "", 150},
                     {"ieee_flags get", "fetestexcept"},
                     {"ieee_flags set", "", 150},
                     {"ieee_flags set", "fesetround"}});
}
