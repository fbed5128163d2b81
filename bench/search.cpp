// File search, deletion and pattern matching, beside the same work done by hand with the system's own calls.
// Times are those of one entry where many are handled.
#include "callers.h"
#include "compat/pattern.h"
#include "files.h"
#include "ratios.h"

#include <qxport/qxport.h>

#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <malloc.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int MANY = 100'000;
constexpr int SOME = 10'000;
constexpr int TO_DELETE = 20'000;

const bench::FullDirectory &directory_of(int count) {
  static const bench::FullDirectory many(MANY);
  static const bench::FullDirectory some(SOME);
  return count == MANY ? many : some;
}

// The two entries that every directory has are entries too.
int entries_of(int files) {
  return files + 2;
}

// By hand: what the routine tells of each entry, in the same kind of record.
int enumerate_by_hand(const std::string &directory, qxport_file_info_i8 *record) {
  DIR *stream = opendir(directory.c_str());
  if (stream == nullptr)
    return -1;
  std::string path = directory + '/';
  const size_t base = path.size();
  int count = 0;
  while (const dirent *entry = readdir(stream)) {
    struct stat status;
    path.replace(base, std::string::npos, entry->d_name);
    if (stat(path.c_str(), &status) != 0)
      continue;
    const size_t length = strlen(entry->d_name);
    memcpy(record->name, entry->d_name, length);
    memset(record->name + length, ' ', sizeof(record->name) - length);
    const int64_t size = status.st_size;
    memcpy(record->length_words, &size, sizeof(size));
    record->last_write_time = static_cast<int32_t>(status.st_mtime);
    record->last_access_time = static_cast<int32_t>(status.st_atime);
    record->creation_time = static_cast<int32_t>(status.st_ctime);
    record->attributes = S_ISDIR(status.st_mode) ? QXPORT_FILE_ATTRIBUTE_DIRECTORY : 0;
    ++count;
  }
  closedir(stream);
  return count;
}

int enumerate_by_ours(const bench::Padded &files, qxport_file_info_i8 *record) {
  intptr_t handle = QXPORT_FILE_SEARCH_BEGIN;
  int count = 0;
  while (getfileinfoqqi8_(files.data(), record, &handle, static_cast<qxport_charlen>(files.size())) > 0)
    ++count;
  return count;
}

void enumeration_ours(benchmark::State &state, int files) {
  const bench::Padded specification(directory_of(files).path() + "/*");
  qxport_file_info_i8 record;
  for (auto _ : state)
    if (enumerate_by_ours(specification, &record) != entries_of(files))
      return state.SkipWithError("entries are missing");
  bench::count_entries(state, entries_of(files));
}
void enumeration_by_hand(benchmark::State &state) {
  qxport_file_info_i8 record;
  for (auto _ : state)
    if (enumerate_by_hand(directory_of(MANY).path(), &record) != entries_of(MANY))
      return state.SkipWithError("entries are missing");
  bench::count_entries(state, entries_of(MANY));
}
BENCHMARK_CAPTURE(enumeration_ours, many, MANY)->Name("getfileinfoqqi8/ours")->Repetitions(7);
BENCHMARK(enumeration_by_hand)->Name("getfileinfoqqi8/readdir and stat")->Repetitions(7);
BENCHMARK_CAPTURE(enumeration_ours, some, SOME)->Name("getfileinfoqqi8/a tenth of the files")->Repetitions(7);

// The second directory of the list is the large one, and the name is in neither: all of the search is made.
struct Search {
  bench::FullDirectory small{1};
  bench::Padded name{"no such file.dat"};
  bench::Padded variable{"QXPORT_BENCH_PATH", 20};
};
const Search &search() {
  static const Search kept;
  return kept;
}

void find_ours(benchmark::State &state) {
  setenv("QXPORT_BENCH_PATH", (search().small.path() + ":" + directory_of(SOME).path()).c_str(), 1);
  bench::Padded found;
  for (auto _ : state)
    benchmark::DoNotOptimize(findfileqq_(search().name.data(), search().variable.data(), found.data(),
                                         static_cast<qxport_charlen>(search().name.size()),
                                         static_cast<qxport_charlen>(search().variable.size()),
                                         static_cast<qxport_charlen>(found.size())));
}
void find_by_hand(benchmark::State &state) {
  const char *const directories[] = {".", search().small.path().c_str(), directory_of(SOME).path().c_str()};
  for (auto _ : state) {
    for (const char *directory : directories) {
      const int descriptor = open(directory, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
      struct stat status;
      benchmark::DoNotOptimize(fstatat(descriptor, "no such file.dat", &status, AT_SYMLINK_NOFOLLOW));
      close(descriptor);
    }
  }
}
BENCHMARK(find_ours)->Name("findfileqq/ours");
BENCHMARK(find_by_hand)->Name("findfileqq/open and fstatat");

int delete_by_hand(const std::string &directory) {
  DIR *stream = opendir(directory.c_str());
  if (stream == nullptr || chdir(directory.c_str()) != 0)
    return -1;
  int count = 0;
  while (const dirent *entry = readdir(stream)) {
    struct stat status;
    if (stat(entry->d_name, &status) == 0 && S_ISREG(status.st_mode) && unlink(entry->d_name) == 0)
      ++count;
  }
  closedir(stream);
  return chdir("/") == 0 ? count : -1;
}

// The files are made anew, outside of the time.
template <typename Delete>
void deletion(benchmark::State &state, int count, Delete delete_all) {
  const bench::FullDirectory directory(count);
  bool first = true;
  for (auto _ : state) {
    if (!first) {
      state.PauseTiming();
      directory.fill();
      state.ResumeTiming();
    }
    first = false;
    if (delete_all(directory.path()) != count)
      return state.SkipWithError("files are left");
  }
  bench::count_entries(state, count);
}
void delete_ours(benchmark::State &state, int count) {
  deletion(state, count, [](const std::string &directory) {
    const bench::Padded specification(directory + "/*.dat");
    return delfilesqq_(specification.data(), static_cast<qxport_charlen>(specification.size()));
  });
}
void delete_hand(benchmark::State &state) {
  deletion(state, TO_DELETE, delete_by_hand);
}
BENCHMARK_CAPTURE(delete_ours, all, TO_DELETE)->Name("delfilesqq/ours")->Iterations(1)->Repetitions(5);
BENCHMARK(delete_hand)->Name("delfilesqq/readdir, stat, unlink")->Iterations(1)->Repetitions(5);
BENCHMARK_CAPTURE(delete_ours, tenth, TO_DELETE / 10)
    ->Name("delfilesqq/a tenth of the files")
    ->Iterations(10)
    ->Repetitions(5);

void pathological_pattern(benchmark::State &state) {
  const std::string name(255, 'a');
  for (auto _ : state)
    if (patternMatch(name.c_str(), "*a*a*a*a*b") == 0)
      return state.SkipWithError("it matches");
}
BENCHMARK(pathological_pattern)->Name("patternMatch/ours");

// The heap at the begin of an enumeration and at its peak: it must not grow with the directory. Told where
// nothing else was asked for.
void report_heap() {
  const bench::Padded specification(directory_of(MANY).path() + "/*");
  qxport_file_info_i8 record;
  intptr_t handle = QXPORT_FILE_SEARCH_BEGIN;
  const auto next = [&] {
    return getfileinfoqqi8_(specification.data(), &record, &handle,
                            static_cast<qxport_charlen>(specification.size()));
  };
  next();
  const size_t at_begin = mallinfo2().uordblks;
  size_t most = at_begin;
  while (next() > 0)
    most = std::max(most, static_cast<size_t>(mallinfo2().uordblks));
  printf("getfileinfoqqi8  %zu bytes of heap more at its peak than after the first entry (at most 0)\n",
         most - at_begin);
}

}  // namespace

int main(int argc, char **argv) {
  if (chdir("/") != 0)
    return 1;
  const int status = bench::run(argc, argv,
                                {{"getfileinfoqqi8", "readdir and stat", 1.05},
                                 {"getfileinfoqqi8", "a tenth of the files", 1.50},
                                 {"findfileqq", "", 15'000},
                                 {"findfileqq", "open and fstatat"},
                                 {"delfilesqq", "readdir, stat, unlink", 1.15},
                                 {"delfilesqq", "a tenth of the files", 1.50},
                                 {"patternMatch", "", 1'000'000}});
  if (argc == 1)
    report_heap();
  return status;
}
