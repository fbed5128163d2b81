// Strings across the Fortran boundary, beside the compiler's intrinsics and the same work by hand, and what
// loading the library costs.
#include "callers.h"
#include "files.h"
#include "frame/strings.h"
#include "ratios.h"
#include "records/handles.h"

#include <cstdlib>
#include <cstring>
#include <string>

namespace {

using bench::Padded;

const Padded &name() {
  static const Padded kept("/home/somebody/data/input.dat");
  return kept;
}

void length_with(benchmark::State &state, int32_t (*routine)(const char *, size_t)) {
  for (auto _ : state)
    benchmark::DoNotOptimize(routine(name().data(), name().size()));
}
BENCHMARK_CAPTURE(length_with, lnblnk, qx_lnblnk_)->Name("lnblnk/ours");
BENCHMARK_CAPTURE(length_with, lnblnk, gnu_len_trim_)->Name("lnblnk/len_trim");

void search_with(benchmark::State &state, int32_t (*routine)(const char *, const char *, size_t, size_t)) {
  for (auto _ : state)
    benchmark::DoNotOptimize(routine(name().data(), "data", name().size(), 4));
}
BENCHMARK_CAPTURE(search_with, rindex, qx_rindex_)->Name("rindex/ours");
BENCHMARK_CAPTURE(search_with, rindex, gnu_index_back_)->Name("rindex/index");

void copy_ours(benchmark::State &state) {
  for (auto _ : state) {
    char *copy = allocCstr(name().data(), static_cast<qxport::charlen>(name().size()));
    benchmark::DoNotOptimize(copy);
    deallocCstr(copy);
  }
}
void copy_by_hand(benchmark::State &state) {
  for (auto _ : state) {
    const size_t length = static_cast<size_t>(gnu_len_trim_(name().data(), name().size()));
    char *copy = static_cast<char *>(malloc(length + 1));
    memcpy(copy, name().data(), length);
    copy[length] = '\0';
    benchmark::DoNotOptimize(copy);
    free(copy);
  }
}
BENCHMARK(copy_ours)->Name("allocCstr/ours");
BENCHMARK(copy_by_hand)->Name("allocCstr/len_trim, malloc");

void store_ours(benchmark::State &state) {
  const std::string text = "/home/somebody/data/input.dat";
  Padded variable;
  for (auto _ : state) {
    benchmark::DoNotOptimize(CstrToFstr(variable.data(), text.c_str(),
                                        static_cast<qxport::charlen>(variable.size()),
                                        static_cast<qxport::charlen>(strlen(text.c_str()))));
    benchmark::ClobberMemory();
  }
}
void store_by_hand(benchmark::State &state) {
  const std::string text = "/home/somebody/data/input.dat";
  Padded variable;
  for (auto _ : state) {
    const size_t length = strlen(text.c_str());
    memcpy(variable.data(), text.c_str(), length);
    memset(variable.data() + length, ' ', variable.size() - length);
    benchmark::ClobberMemory();
  }
}
BENCHMARK(store_ours)->Name("CstrToFstr/ours");
BENCHMARK(store_by_hand)->Name("CstrToFstr/memcpy, memset");

// What the constructor does.
void load(benchmark::State &state) {
  for (auto _ : state)
    benchmark::DoNotOptimize(init_handle_table());
}
BENCHMARK(load)->Name("loading/ours");

}  // namespace

int main(int argc, char **argv) {
  return bench::run(argc, argv,
                    {{"lnblnk", "len_trim"},
                     {"rindex", "index"},
                     {"allocCstr", "len_trim, malloc"},
                     {"CstrToFstr", "memcpy, memset"},
                     {"loading", "", 1000}});
}
