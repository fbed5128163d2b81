// The binding's directory streams, descriptors and unit characters, beside the same calls by hand and
// gfortran's intrinsic. Times are those of one entry or character where many are handled.
#include "callers.h"
#include "files.h"
#include "ratios.h"

#include <qxport/qxport.h>

#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int MANY = 100'000;
constexpr int CHARACTERS = 1'000'000;

const bench::FullDirectory &directory() {
  static const bench::FullDirectory many(MANY);
  return many;
}

int32_t record_of(const char *kind) {
  int32_t handle = 0, ierror;
  pxfstructcreate_(kind, &handle, &ierror, static_cast<qxport_charlen>(strlen(kind)));
  return handle;
}

// Each entry's name is read and its status taken, as a program that lists a directory does.
int list_ours() {
  const std::string &path = directory().path();
  const int32_t entry = record_of("dirent"), status = record_of("stat");
  int32_t length = 0, stream = 0, ierror, count = 0;
  pxfopendir_(path.data(), &length, &stream, &ierror, static_cast<qxport_charlen>(path.size()));
  char name[4096];
  memcpy(name, path.data(), path.size());
  name[path.size()] = '/';
  char *const end = name + path.size() + 1;
  for (;;) {
    pxfreaddir_(&stream, &entry, &ierror);
    if (ierror != 0)
      break;
    pxfstrget_(&entry, "d_name", end, &length, &ierror, 6, 256);
    const int32_t ignored = 0;
    pxfstat_(name, &ignored, &status, &ierror, static_cast<qxport_charlen>(path.size() + 257));
    count += ierror == 0 ? 1 : 0;
  }
  pxfclosedir_(&stream, &ierror);
  int32_t freed = entry;
  pxfstructfree_(&freed, &ierror);
  freed = status;
  pxfstructfree_(&freed, &ierror);
  return count;
}

int list_by_hand() {
  const std::string &path = directory().path();
  DIR *stream = opendir(path.c_str());
  char name[4096];
  memcpy(name, path.data(), path.size());
  name[path.size()] = '/';
  int count = 0;
  while (const dirent *entry = readdir(stream)) {
    struct stat status;
    strcpy(name + path.size() + 1, entry->d_name);
    count += stat(name, &status) == 0 ? 1 : 0;
  }
  closedir(stream);
  return count;
}

void listing(benchmark::State &state, int (*list)()) {
  for (auto _ : state) {
    errno = 0;
    if (list() != MANY + 2)
      return state.SkipWithError("entries are missing");
  }
  bench::count_entries(state, MANY + 2);
}
BENCHMARK_CAPTURE(listing, ours, list_ours)
    ->Name("pxfreaddir and pxfstat/ours")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(listing, hand, list_by_hand)
    ->Name("pxfreaddir and pxfstat/by hand")
    ->Unit(benchmark::kMillisecond);

int null_descriptor() {
  static const int fd = open("/dev/null", O_RDONLY | O_CLOEXEC);
  return fd;
}

void read_ours(benchmark::State &state) {
  const int32_t fd = null_descriptor(), nothing = 0;
  char buffer[1];
  int32_t count, ierror;
  for (auto _ : state) {
    pxfread_(&fd, buffer, &nothing, &count, &ierror);
    benchmark::DoNotOptimize(count);
  }
}
void read_by_hand(benchmark::State &state) {
  const int fd = null_descriptor();
  char buffer[1];
  for (auto _ : state)
    benchmark::DoNotOptimize(read(fd, buffer, 0));
}
BENCHMARK(read_ours)->Name("pxfread of nothing/ours");
BENCHMARK(read_by_hand)->Name("pxfread of nothing/read");

// Units with the same characters: one with a number, and one that NEWUNIT numbered.
struct Units {
  int32_t numbered = 20, renumbered;

  Units() {
    const std::string paths[] = {directory().path() + ".numbered", directory().path() + ".renumbered"};
    for (const std::string &path : paths)
      std::ofstream(path) << std::string(CHARACTERS, 'x');
    open_for_reading_(&numbered, paths[0].data(), paths[0].size());
    renumbered = open_new_unit_for_reading_(paths[1].data(), paths[1].size());
    for (const std::string &path : paths)
      unlink(path.c_str());
  }
};

const Units &units() {
  static const Units kept;
  return kept;
}

using CountCharacters = int32_t (*)(const int32_t *);
void characters_with(benchmark::State &state, CountCharacters count, int32_t Units::*unit) {
  const int32_t number = units().*unit;
  for (auto _ : state)
    if (count(&number) != CHARACTERS)
      return state.SkipWithError("characters are missing");
  bench::count_entries(state, CHARACTERS);
}
BENCHMARK_CAPTURE(characters_with, ours, qx_count_characters_, &Units::numbered)
    ->Name("pxffgetc/ours")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(characters_with, gfortran, gnu_count_characters_, &Units::numbered)
    ->Name("pxffgetc/fgetc")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(characters_with, ours_new, qx_count_characters_, &Units::renumbered)
    ->Name("pxffgetc, NEWUNIT/ours")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(characters_with, gfortran_new, gnu_count_characters_, &Units::renumbered)
    ->Name("pxffgetc, NEWUNIT/fgetc")
    ->Unit(benchmark::kMillisecond);

void open_and_close(benchmark::State &state) {
  int32_t length = 0, stream = 0, ierror;
  for (auto _ : state) {
    pxfopendir_("/", &length, &stream, &ierror, 1);
    pxfclosedir_(&stream, &ierror);
  }
}
void open_and_close_by_hand(benchmark::State &state) {
  for (auto _ : state)
    closedir(opendir("/"));
}
BENCHMARK(open_and_close)->Name("pxfopendir and pxfclosedir/ours");
BENCHMARK(open_and_close_by_hand)->Name("pxfopendir and pxfclosedir/by hand");

}  // namespace

int main(int argc, char **argv) {
  return bench::run(argc, argv,
                    {{"pxfreaddir and pxfstat", "by hand", 1.05},
                     {"pxfread of nothing", "read", bench::NO_LIMIT, 10},
                     // Four calls of the run-time to its one: FGETC alone passes over what READ has in
                     // its buffer.
                     {"pxffgetc", "fgetc", 4.5},
                     {"pxffgetc, NEWUNIT", "fgetc", 5},
                     {"pxfopendir and pxfclosedir", "by hand"}});
}
