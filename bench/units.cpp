// Characters of units beside gfortran's intrinsics, of which ours are made. Times are those of one character.
//
// The intrinsics neither see what READ has in its buffer nor ask whether the unit is still the one that it
// was. Ours ask before each character (in ns, where the intrinsic takes 22):
//   INQUIRE (READ= or WRITE=, ACCESS=)  31  CLOSE and OPEN may have made another unit of the number
//   FSEEK by nothing                    14  of a pipe, FTELL would lose what READ has in its buffer
//   FTELL                               17  brings READ's position and the intrinsic's together
// Most of each is finding the unit and locking it, FNUM's 16 for instance, so that not one question more than
// the character itself would fit into 1.2 of the intrinsic. And nothing cheaper than a question will do: of a
// statement that the program executed in between there is no trace outside the run-time.
#include "callers.h"
#include "files.h"
#include "ratios.h"

#include <fstream>
#include <string>
#include <unistd.h>

namespace {

constexpr int CHARACTERS = 10'000'000;

// Units of files that go when the program ends: a number for reading, one for writing, and one of NEWUNIT.
struct Units {
  int32_t reading = 20, writing = 21, renumbered;

  Units() {
    const bench::FullDirectory directory(1);
    const std::string paths[] = {directory.path() + ".read", directory.path() + ".renumbered",
                                 directory.path() + ".written"};
    for (const std::string &path : paths)
      std::ofstream(path) << std::string(CHARACTERS, 'x');
    open_for_reading_(&reading, paths[0].data(), paths[0].size());
    renumbered = open_new_unit_for_reading_(paths[1].data(), paths[1].size());
    open_for_writing_(&writing, paths[2].data(), paths[2].size());
    for (const std::string &path : paths)
      unlink(path.c_str());
  }
};

const Units &units() {
  static const Units kept;
  return kept;
}

void reading(benchmark::State &state, int32_t (*read)(const int32_t *), int32_t Units::*unit) {
  const int32_t number = units().*unit;
  for (auto _ : state)
    if (read(&number) != CHARACTERS)
      return state.SkipWithError("characters are missing");
  bench::count_entries(state, CHARACTERS);
}

void writing(benchmark::State &state, int32_t (*write)(const int32_t *, const int32_t *)) {
  for (auto _ : state)
    if (write(&units().writing, &CHARACTERS) != CHARACTERS)
      return state.SkipWithError("characters are missing");
  bench::count_entries(state, CHARACTERS);
}

void once(benchmark::internal::Benchmark *benchmark) {
  benchmark->Iterations(1)->Unit(benchmark::kMillisecond);
}
BENCHMARK_CAPTURE(reading, ours, qx_read_characters_, &Units::reading)->Name("fgetc/ours")->Apply(once);
BENCHMARK_CAPTURE(reading, theirs, gnu_read_characters_, &Units::reading)
    ->Name("fgetc/intrinsic")
    ->Apply(once);
BENCHMARK_CAPTURE(reading, ours_new, qx_read_characters_, &Units::renumbered)
    ->Name("fgetc, NEWUNIT/ours")
    ->Apply(once);
BENCHMARK_CAPTURE(reading, theirs_new, gnu_read_characters_, &Units::renumbered)
    ->Name("fgetc, NEWUNIT/intrinsic")
    ->Apply(once);
BENCHMARK_CAPTURE(writing, ours, qx_write_characters_)->Name("fputc/ours")->Apply(once);
BENCHMARK_CAPTURE(writing, theirs, gnu_write_characters_)->Name("fputc/intrinsic")->Apply(once);

}  // namespace

int main(int argc, char **argv) {
  return bench::run(
      argc, argv,
      {{"fgetc", "intrinsic", 5}, {"fgetc, NEWUNIT", "intrinsic", 5.5}, {"fputc", "intrinsic", 5}});
}
