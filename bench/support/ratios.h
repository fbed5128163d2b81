// Runs the benchmarks of an area and prints each routine's time beside its peers'.
#ifndef QXPORT_BENCH_RATIOS_H
#define QXPORT_BENCH_RATIOS_H

#include <benchmark/benchmark.h>

#include <limits>
#include <vector>

namespace bench {

constexpr double NO_LIMIT = std::numeric_limits<double>::infinity();

// One line of the table. The names are those of two benchmarks: "access/ours" and "access/bare call". With an
// empty peer the limit is for the time itself, in ns.
struct Comparison {
  const char *routine;
  const char *peer;
  double at_most = NO_LIMIT;
  // How much longer than the peer, in ns.
  double more_at_most = NO_LIMIT;
};

// A benchmark that handles many entries in one iteration says how many; the table shows the time of one.
inline void count_entries(benchmark::State &state, int entries) {
  state.counters["entries"] = entries;
}

// Repetitions are interleaved in random order, so that what else the machine does falls on all alike, and the
// table compares medians of processor time. The arguments are those of Google Benchmark. Lines that miss a
// limit are measured once more, since a busy machine can be the cause; the result is 1 when one misses it
// then too.
int run(int argc, char **argv, const std::vector<Comparison> &comparisons);

}  // namespace bench

#endif
