// Control and status words and IEEE_FLAGS, beside the C library's way to the same registers.
#include "ratios.h"

#include <qxport/qxport.h>

#include <cfenv>

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

// Up and down by turns. The processor takes tens of nanoseconds to load another word into the x87 unit alone.
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
                     {"getstatusfpqq", "", 15},
                     {"getstatusfpqq", "fetestexcept"},
                     {"ieee_flags get", "", 150},
                     {"ieee_flags get", "fetestexcept"},
                     {"ieee_flags set", "", 150},
                     {"ieee_flags set", "fesetround"}});
}
