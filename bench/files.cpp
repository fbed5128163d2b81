// File, directory and environment routines, beside the bare system call (with a name that is terminated
// already) and gfortran's intrinsic of the same purpose.
#include "files.h"
#include "callers.h"
#include "ratios.h"

#include <cstdlib>
#include <cstring>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using bench::Padded;

// The names that are measured with.
struct Place {
  bench::FullDirectory directory{1};
  std::string file = directory.file(0);
  Padded padded_file{file};
  Padded padded_directory{directory.path()};
};

const Place &place() {
  static const Place kept;
  return kept;
}

// Measures a call that answers 0 on success.
template <typename Call>
void measure(benchmark::State &state, Call call) {
  for (auto _ : state)
    if (call() != 0)
      return state.SkipWithError("the call failed");
}

void access_with(benchmark::State &state, int32_t (*routine)(const char *, const char *, size_t, size_t)) {
  const Padded &name = place().padded_file;
  measure(state, [&] { return routine(name.data(), "r", name.size(), 1); });
}
void access_bare(benchmark::State &state) {
  const char *name = place().file.c_str();
  measure(state, [&] { return access(name, R_OK); });
}
BENCHMARK_CAPTURE(access_with, access, qx_access_)->Name("access/ours");
BENCHMARK(access_bare)->Name("access/bare call");
BENCHMARK_CAPTURE(access_with, access, gnu_access_)->Name("access/gfortran");

void chdir_with(benchmark::State &state, int32_t (*routine)(const char *, size_t)) {
  const Padded &name = place().padded_directory;
  measure(state, [&] { return routine(name.data(), name.size()); });
}
void chdir_bare(benchmark::State &state) {
  const char *name = place().directory.path().c_str();
  measure(state, [&] { return chdir(name); });
}
BENCHMARK_CAPTURE(chdir_with, chdir, qx_chdir_)->Name("chdir/ours");
BENCHMARK(chdir_bare)->Name("chdir/bare call");
BENCHMARK_CAPTURE(chdir_with, chdir, gnu_chdir_)->Name("chdir/gfortran");

void stat_with(benchmark::State &state, int32_t (*routine)(const char *, int32_t *, size_t)) {
  const Padded &name = place().padded_file;
  int32_t values[13];
  measure(state, [&] { return routine(name.data(), values, name.size()); });
}
void stat_bare(benchmark::State &state, int (*call)(const char *, struct stat *)) {
  const char *name = place().file.c_str();
  struct stat status;
  measure(state, [&] { return call(name, &status); });
}
BENCHMARK_CAPTURE(stat_with, stat, qx_stat_)->Name("stat/ours");
BENCHMARK_CAPTURE(stat_bare, stat, stat)->Name("stat/bare call");
BENCHMARK_CAPTURE(stat_with, stat, gnu_stat_)->Name("stat/gfortran");
BENCHMARK_CAPTURE(stat_with, lstat, qx_lstat_)->Name("lstat/ours");
BENCHMARK_CAPTURE(stat_bare, lstat, lstat)->Name("lstat/bare call");
BENCHMARK_CAPTURE(stat_with, lstat, gnu_lstat_)->Name("lstat/gfortran");

void getcwd_with(benchmark::State &state, int32_t (*routine)(char *, size_t)) {
  Padded name;
  measure(state, [&] { return routine(name.data(), name.size()); });
}
void getcwd_bare(benchmark::State &state) {
  char name[80];
  measure(state, [&] { return getcwd(name, sizeof(name)) == nullptr; });
}
BENCHMARK_CAPTURE(getcwd_with, getcwd, qx_getcwd_)->Name("getcwd/ours");
BENCHMARK(getcwd_bare)->Name("getcwd/bare call");
BENCHMARK_CAPTURE(getcwd_with, getcwd, gnu_getcwd_)->Name("getcwd/gfortran");

// The variable's name is held by a CHARACTER variable, or it is written out in the call.
using GetEnvironment = void (*)(const char *, char *, size_t, size_t);
void getenv_with(benchmark::State &state, GetEnvironment routine, size_t name_length) {
  const Padded name("HOME", name_length);
  Padded value;
  for (auto _ : state) {
    routine(name.data(), value.data(), name.size(), value.size());
    benchmark::ClobberMemory();
  }
}
void getenv_bare(benchmark::State &state) {
  for (auto _ : state)
    benchmark::DoNotOptimize(getenv("HOME"));
}
BENCHMARK_CAPTURE(getenv_with, held, qx_getenv_, 80)->Name("getenv/ours");
BENCHMARK(getenv_bare)->Name("getenv/bare call");
BENCHMARK_CAPTURE(getenv_with, held, gnu_getenv_, 80)->Name("getenv/gfortran");
BENCHMARK_CAPTURE(getenv_with, written, qx_getenv_, 4)->Name("getenv('HOME')/ours");
BENCHMARK_CAPTURE(getenv_with, written, gnu_getenv_, 4)->Name("getenv('HOME')/gfortran");

// What is looked through for a variable's name must be the same wherever this runs.
void set_small_environment() {
  clearenv();
  setenv("PATH", "/usr/local/bin:/usr/bin:/bin", 1);
  setenv("LANG", "C.UTF-8", 1);
  setenv("SHELL", "/bin/sh", 1);
  setenv("HOME", "/home/somebody", 1);
}

}  // namespace

int main(int argc, char **argv) {
  // All of this runs in the directory that it makes, so that getcwd has something to tell.
  if (chdir(place().directory.path().c_str()) != 0)
    return 1;
  set_small_environment();
  return bench::run(argc, argv,
                    {{"access", "bare call", 1.15},
                     {"access", "gfortran", 1.00},
                     {"chdir", "bare call", 1.15},
                     {"chdir", "gfortran", 1.00},
                     {"stat", "bare call", 1.15},
                     {"stat", "gfortran", 1.00},
                     {"lstat", "bare call", 1.15},
                     {"lstat", "gfortran", 1.00},
                     {"getcwd", "bare call", 1.15},
                     {"getcwd", "gfortran", 1.00},
                     {"getenv", "bare call"},
                     {"getenv", "gfortran", 0.60},
                     {"getenv('HOME')", "gfortran", 0.60}});
}
