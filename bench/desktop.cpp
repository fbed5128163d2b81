// Paths, commands and packed times of the desktop family, beside the host's own calls.
#include "compat/path_resolution.h"
#include "ratios.h"

#include <qxport/qxport.h>

#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// Five members, all of which exist.
constexpr char EXISTING[] = "/usr/share/zoneinfo/Etc/UTC";
// The host is not asked about it: a single question takes longer than all else that is measured, and varies
// by more.
constexpr char ROOT[] = "/";

qxport_charlen length_of(const char *text) {
  return static_cast<qxport_charlen>(strlen(text));
}

void full_path_ours(benchmark::State &state) {
  char path[1024];
  for (auto _ : state)
    benchmark::DoNotOptimize(fullpathqq_(EXISTING, path, length_of(EXISTING), sizeof(path)));
}
void full_path_realpath(benchmark::State &state) {
  char path[PATH_MAX];
  for (auto _ : state)
    benchmark::DoNotOptimize(realpath(EXISTING, path));
}
BENCHMARK(full_path_ours)->Name("fullpathqq/ours");
BENCHMARK(full_path_realpath)->Name("fullpathqq/realpath");

void split_ours(benchmark::State &state) {
  char drive[3], dir[256], name[256], ext[256];
  for (auto _ : state)
    benchmark::DoNotOptimize(splitpathqq_(ROOT, drive, dir, name, ext, length_of(ROOT), sizeof(drive),
                                          sizeof(dir), sizeof(name), sizeof(ext)));
}
void split_resolution(benchmark::State &state) {
  char path[qxport::RESOLVED_LIMIT + 1];
  for (auto _ : state) {
    __qxport_resolve_unix_path(ROOT, path);
    benchmark::DoNotOptimize(path);
  }
}
BENCHMARK(split_ours)->Name("splitpathqq/ours");
BENCHMARK(split_resolution)->Name("splitpathqq/the resolution in it");

void run_ours(benchmark::State &state) {
  for (auto _ : state)
    if (runqq_(":", "", 1, 0) != 0)
      return state.SkipWithError("the command failed");
}
void run_system(benchmark::State &state) {
  for (auto _ : state)
    if (system("\":\" ") != 0)
      return state.SkipWithError("the command failed");
}
BENCHMARK(run_ours)->Name("runqq/ours")->UseRealTime();
BENCHMARK(run_system)->Name("runqq/system")->UseRealTime();

void system_ours(benchmark::State &state) {
  for (auto _ : state)
    if (systemqq_(":", 1) != 1)
      return state.SkipWithError("the command failed");
}
// What a program does that keeps the command's signals from itself, as the routine has to.
void system_by_hand(benchmark::State &state) {
  struct sigaction ignore = {}, interrupt, quit;
  ignore.sa_handler = SIG_IGN;
  sigset_t child_ended, mask;
  sigemptyset(&child_ended);
  sigaddset(&child_ended, SIGCHLD);
  const auto put_back = [&] {
    sigaction(SIGINT, &interrupt, nullptr);
    sigaction(SIGQUIT, &quit, nullptr);
    sigprocmask(SIG_SETMASK, &mask, nullptr);
  };
  for (auto _ : state) {
    sigaction(SIGINT, &ignore, &interrupt);
    sigaction(SIGQUIT, &ignore, &quit);
    sigprocmask(SIG_BLOCK, &child_ended, &mask);
    const pid_t child = fork();
    if (child == 0) {
      put_back();
      execl("/bin/sh", "sh", "-c", ":", nullptr);
      _exit(127);
    }
    int status;
    const bool waited = waitpid(child, &status, 0) == child;
    put_back();
    if (!waited)
      return state.SkipWithError("no child");
  }
}
BENCHMARK(system_ours)->Name("systemqq/ours")->UseRealTime();
BENCHMARK(system_by_hand)->Name("systemqq/by hand")->UseRealTime();

constexpr int32_t SUMMER = 1689429600;

void unpack_ours(benchmark::State &state) {
  setenv("TZ", "Europe/Paris", 1);
  int16_t f[6];
  int32_t time = SUMMER;
  for (auto _ : state) {
    unpacktimeqq_(&time, &f[0], &f[1], &f[2], &f[3], &f[4], &f[5]);
    benchmark::DoNotOptimize(f);
    ++time;
  }
}
void unpack_by_host(benchmark::State &state) {
  setenv("TZ", "Europe/Paris", 1);
  tzset();
  time_t time = SUMMER;
  struct tm fields;
  for (auto _ : state) {
    benchmark::DoNotOptimize(localtime_r(&time, &fields));
    ++time;
  }
}
BENCHMARK(unpack_ours)->Name("unpacktimeqq/ours");
BENCHMARK(unpack_by_host)->Name("unpacktimeqq/localtime_r");

void pack_ours(benchmark::State &state) {
  setenv("TZ", "Europe/Paris", 1);
  const int16_t year = 2023, month = 7, day = 15, hour = 12;
  int16_t minute = 0;
  const int16_t second = 0;
  int32_t time;
  for (auto _ : state) {
    packtimeqq_(&time, &year, &month, &day, &hour, &minute, &second);
    benchmark::DoNotOptimize(time);
    minute = static_cast<int16_t>((minute + 1) % 60);
  }
}
void pack_by_host(benchmark::State &state) {
  setenv("TZ", "Europe/Paris", 1);
  int minute = 0;
  for (auto _ : state) {
    struct tm fields = {};
    fields.tm_year = 123;
    fields.tm_mon = 6;
    fields.tm_mday = 15;
    fields.tm_hour = 12;
    fields.tm_min = minute;
    fields.tm_isdst = -1;
    benchmark::DoNotOptimize(mktime(&fields));
    minute = (minute + 1) % 60;
  }
}
BENCHMARK(pack_ours)->Name("packtimeqq/ours");
BENCHMARK(pack_by_host)->Name("packtimeqq/mktime");

}  // namespace

int main(int argc, char **argv) {
  return bench::run(argc, argv,
                    {{"fullpathqq", "realpath", 1.10},
                     {"splitpathqq", "the resolution in it", bench::NO_LIMIT, 60},
                     {"runqq", "system", 1.05},
                     {"systemqq", "by hand", 1.05},
                     {"packtimeqq", "", 60},
                     {"packtimeqq", "mktime"},
                     {"unpacktimeqq", "localtime_r", 1.60}});
}
