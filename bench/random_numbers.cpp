// Random numbers a draw, beside the compiler's own; and the loop of the generator by itself.
#include "callers.h"
#include "core/services/random_generator.h"
#include "ratios.h"

#include <qxport/qxport.h>

namespace {

constexpr int DRAWS = 1024;

// Fortran loops that add up their draws.
template <typename Sum>
void draws_with(benchmark::State &state, Sum (*sum_of_draws)(const int32_t *)) {
  const int32_t draws = DRAWS;
  for (auto _ : state)
    benchmark::DoNotOptimize(sum_of_draws(&draws));
  bench::count_entries(state, DRAWS);
}
BENCHMARK_CAPTURE(draws_with, rand, qx_sum_of_rand_)->Name("rand/ours");
BENCHMARK_CAPTURE(draws_with, rand, gnu_sum_of_rand_)->Name("rand/RAND");
BENCHMARK_CAPTURE(draws_with, rand_real4, gnu_sum_of_random_number_4_)->Name("rand/RANDOM_NUMBER(4)");
BENCHMARK_CAPTURE(draws_with, rand_real8, gnu_sum_of_random_number_8_)->Name("rand/RANDOM_NUMBER");
BENCHMARK_CAPTURE(draws_with, drand, qx_sum_of_drand_)->Name("drand/ours");
BENCHMARK_CAPTURE(draws_with, drand_rand, gnu_sum_of_rand_)->Name("drand/RAND");
BENCHMARK_CAPTURE(draws_with, drand_real8, gnu_sum_of_random_number_8_)->Name("drand/RANDOM_NUMBER");
BENCHMARK_CAPTURE(draws_with, irand, qx_sum_of_irand_)->Name("irand/ours");
BENCHMARK_CAPTURE(draws_with, irand_rand, gnu_sum_of_rand_)->Name("irand/RAND");
BENCHMARK_CAPTURE(draws_with, irand_real8, gnu_sum_of_random_number_8_)->Name("irand/RANDOM_NUMBER");
BENCHMARK_CAPTURE(draws_with, ran, qx_sum_of_ran_)->Name("ran/ours");
BENCHMARK_CAPTURE(draws_with, ran_rand, gnu_sum_of_rand_)->Name("ran/RAND");

void generator(benchmark::State &state) {
  static double values[DRAWS];
  qxcore::RandomState random = qxcore::seeded(1);
  for (auto _ : state) {
    for (double &value : values)
      value = qxcore::real8_of(next(random));
    benchmark::DoNotOptimize(values);
    benchmark::ClobberMemory();
  }
  bench::count_entries(state, DRAWS);
}
BENCHMARK(generator)->Name("generator/ours");

}  // namespace

int main(int argc, char **argv) {
  return bench::run(argc, argv,
                    {{"rand", "RAND", 0.5},
                     {"rand", "RANDOM_NUMBER", 0.5},
                     {"rand", "RANDOM_NUMBER(4)", 1.0},
                     {"drand", "RAND", 0.5},
                     {"drand", "RANDOM_NUMBER", 0.5},
                     {"irand", "RAND", 0.5},
                     {"irand", "RANDOM_NUMBER", 0.5},
                     {"ran", "RAND", 1.0},
                     {"generator", "", 2.0}});
}
