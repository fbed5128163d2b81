// A limit that is missed twice makes the result 1, one that is missed once does not.
#include "ratios.h"

#include <cstdio>

namespace {

constexpr int REPETITIONS = 3;
// How many of the coming runs find the routine slow, and how often it was called.
int slow_runs = 0;
int calls = 0;

void work(benchmark::State &state) {
  for (auto _ : state)
    for (int i = 0; i < 20000; ++i)
      benchmark::DoNotOptimize(i);
}

// What looks like a thousandth of the time is as slow as its peer, and the whole is not.
void routine(benchmark::State &state) {
  work(state);
  bench::count_entries(state, calls++ / REPETITIONS < slow_runs ? 1 : 1000);
}
void peer(benchmark::State &state) {
  work(state);
  bench::count_entries(state, 1000);
}
BENCHMARK(routine)->Name("a (strange) name*/ours")->Iterations(1);
BENCHMARK(peer)->Name("a (strange) name*/peer")->Iterations(1);

int failures = 0;

void expect(int result, int slow, double at_most, double more_at_most, const char *compared_with) {
  char program[] = "limits", repetitions[] = "--benchmark_repetitions=3";
  char *arguments[] = {program, repetitions, nullptr};
  slow_runs = slow;
  calls = 0;
  if (bench::run(2, arguments,
                 {{"a (strange) name*", compared_with, at_most, more_at_most}, {"none", "peer", 0}}) ==
      result)
    return;
  ++failures;
  printf("FAILED: not %d after %d slow runs beside '%s'\n", result, slow, compared_with);
}

}  // namespace

int main() {
  constexpr double NONE = bench::NO_LIMIT;
  expect(0, 0, 100, NONE, "peer");
  expect(0, 1, 100, NONE, "peer");
  expect(1, 2, 100, NONE, "peer");
  // In ns.
  expect(0, 1, NONE, 1000, "peer");
  expect(1, 2, NONE, 1000, "peer");
  expect(0, 1, 1000, NONE, "");
  expect(1, 2, 1000, NONE, "");
  // Without a limit nothing is slow.
  expect(0, 2, NONE, NONE, "peer");
  return failures;
}
