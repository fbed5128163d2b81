// Bits and numbers beside a bare call that does the same; Bessel functions and QSORT beside the host's.
#include "ratios.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <qxport/qxport.h>
#include <random>
#include <type_traits>
#include <vector>

namespace {

// Calls of so little work are handled a thousand at a time.
constexpr int CALLS = 1000;

template <typename Routine, typename... Arguments>
void calls_of(benchmark::State &state, Routine *routine, Arguments... arguments) {
  benchmark::DoNotOptimize(routine);
  for (auto _ : state) {
    for (int i = 0; i < CALLS; ++i) {
      if constexpr (std::is_void_v<decltype(routine(&arguments...))>) {
        routine(&arguments...);
        benchmark::ClobberMemory();
      } else {
        benchmark::DoNotOptimize(routine(&arguments...));
      }
    }
  }
  bench::count_entries(state, CALLS);
}

// What a call costs at least.
[[gnu::noipa]] int32_t bare_shift(const int32_t *ival, const int32_t *ishift) {
  return *ival << (*ishift & 31);
}
[[gnu::noipa]] void bare_bit(const int32_t *bitnum, int32_t *target) {
  *target |= 1 << (*bitnum & 31);
}
[[gnu::noipa]] int64_t bare_double_shift(const int64_t *ileft, const int64_t *iright, const int64_t *ishift) {
  return static_cast<int64_t>(static_cast<uint64_t>(*ileft) << *ishift |
                              static_cast<uint64_t>(*iright) >> (64 - *ishift));
}
[[gnu::noipa]] int32_t bare_difference(const int32_t *i, const int32_t *j) {
  return std::max(*i - *j, 0);
}
[[gnu::noipa]] double bare_conversion(const int32_t *i) {
  return *i;
}
BENCHMARK_CAPTURE(calls_of, lshift, lshift_, 5, 7)->Name("lshift/ours");
BENCHMARK_CAPTURE(calls_of, lshift, bare_shift, 5, 7)->Name("lshift/bare call");
BENCHMARK_CAPTURE(calls_of, shiftr, shiftr_, 5, 7)->Name("shiftr/ours");
BENCHMARK_CAPTURE(calls_of, shiftr, bare_shift, 5, 7)->Name("shiftr/bare call");
BENCHMARK_CAPTURE(calls_of, bis, bis_, 5, 7)->Name("bis/ours");
BENCHMARK_CAPTURE(calls_of, bis, bare_bit, 5, 7)->Name("bis/bare call");
BENCHMARK_CAPTURE(calls_of, dshiftl, dshiftl_, INT64_C(5), INT64_C(7), INT64_C(9))->Name("dshiftl/ours");
BENCHMARK_CAPTURE(calls_of, dshiftl, bare_double_shift, INT64_C(5), INT64_C(7), INT64_C(9))
    ->Name("dshiftl/bare call");
BENCHMARK_CAPTURE(calls_of, jdim, jdim_, 5, 7)->Name("jdim/ours");
BENCHMARK_CAPTURE(calls_of, jdim, bare_difference, 5, 7)->Name("jdim/bare call");
BENCHMARK_CAPTURE(calls_of, dfloatj, dfloatj_, 5)->Name("dfloatj/ours");
BENCHMARK_CAPTURE(calls_of, dfloatj, bare_conversion, 5)->Name("dfloatj/bare call");

[[gnu::noipa]] double host_j0(const double *x) {
  return j0(*x);
}
[[gnu::noipa]] double host_yn(const int32_t *n, const double *x) {
  return yn(*n, *x);
}
BENCHMARK_CAPTURE(calls_of, dbesj0, dbesj0_, 1.5)->Name("dbesj0/ours");
BENCHMARK_CAPTURE(calls_of, dbesj0, host_j0, 1.5)->Name("dbesj0/j0");
BENCHMARK_CAPTURE(calls_of, dbesyn, dbesyn_, 3, 1.5)->Name("dbesyn/ours");
BENCHMARK_CAPTURE(calls_of, dbesyn, host_yn, 3, 1.5)->Name("dbesyn/yn");

int32_t compare(const void *a, const void *b) {
  const double x = *static_cast<const double *>(a), y = *static_cast<const double *>(b);
  return x < y ? -1 : x > y ? 1 : 0;
}

void host_sort(double *values, int64_t count) {
  qsort(values, static_cast<size_t>(count), sizeof(double), compare);
}

void our_sort(double *values, int64_t count) {
  const int64_t size = sizeof(double);
  qsort_(values, &count, &size, reinterpret_cast<void (*)()>(compare));
}

void sorts_of(benchmark::State &state, void (*sort)(double *, int64_t), int64_t count) {
  std::mt19937_64 random(1);
  std::vector<double> unsorted(static_cast<size_t>(count)), values;
  for (double &value : unsorted)
    value = static_cast<double>(random());
  for (auto _ : state) {
    values = unsorted;
    sort(values.data(), count);
    benchmark::DoNotOptimize(values.data());
  }
}
BENCHMARK_CAPTURE(sorts_of, ten, our_sort, 10)->Name("qsort of 10/ours");
BENCHMARK_CAPTURE(sorts_of, ten, host_sort, 10)->Name("qsort of 10/qsort");
BENCHMARK_CAPTURE(sorts_of, many, our_sort, 10000)->Name("qsort of 10000/ours");
BENCHMARK_CAPTURE(sorts_of, many, host_sort, 10000)->Name("qsort of 10000/qsort");

}  // namespace

int main(int argc, char **argv) {
  return bench::run(argc, argv,
                    {{"lshift", "bare call", 1.6},
                     {"shiftr", "bare call", 1.6},
                     {"bis", "bare call", 1.6},
                     {"dshiftl", "bare call", 1.6},
                     {"jdim", "bare call", 1.6},
                     {"dfloatj", "bare call", 1.6},
                     {"dbesj0", "j0", 1.2},
                     {"dbesyn", "yn", 1.2},
                     {"qsort of 10", "qsort", 1.2},
                     {"qsort of 10000", "qsort", 1.1}});
}
