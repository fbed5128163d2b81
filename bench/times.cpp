// Clock, calendar and processor time, beside the compiler's intrinsics and the host's bare clock.
#include "callers.h"
#include "contract/services.h"
#include "ratios.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <qxport/qxport.h>
#include <semaphore.h>
#include <string>

namespace {

constexpr int32_t INSTANT = 1782907200;  // 1 July 2026

void bare_clock(benchmark::State &state) {
  for (auto _ : state) {
    timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    benchmark::DoNotOptimize(now);
  }
}

template <typename Result>
void clock_with(benchmark::State &state, Result (*routine)()) {
  for (auto _ : state)
    benchmark::DoNotOptimize(routine());
}
BENCHMARK(bare_clock)->Name("time/clock_gettime");
BENCHMARK_CAPTURE(clock_with, time, time_)->Name("time/ours");
BENCHMARK(bare_clock)->Name("rtc/clock_gettime");
BENCHMARK_CAPTURE(clock_with, rtc, rtc_)->Name("rtc/ours");
BENCHMARK(bare_clock)->Name("dclock/clock_gettime");
BENCHMARK_CAPTURE(clock_with, dclock, dclock_)->Name("dclock/ours");

void clockx(benchmark::State &state) {
  for (auto _ : state) {
    double microseconds;
    clockx_(&microseconds);
    benchmark::DoNotOptimize(microseconds);
  }
}
BENCHMARK(bare_clock)->Name("clockx/clock_gettime");
BENCHMARK(clockx)->Name("clockx/ours");

void time_of_day(benchmark::State &state) {
  for (auto _ : state) {
    int32_t tv[2], ierr;
    gettimeofday_(tv, &ierr);
    benchmark::DoNotOptimize(tv);
  }
}
BENCHMARK(bare_clock)->Name("gettimeofday/clock_gettime");
BENCHMARK(time_of_day)->Name("gettimeofday/ours");

// A routine that fills an array.
void array_with(benchmark::State &state, void (*routine)(int32_t *)) {
  for (auto _ : state) {
    int32_t values[3];
    routine(values);
    benchmark::DoNotOptimize(values);
  }
}
BENCHMARK_CAPTURE(array_with, idate, qx_idate_)->Name("idate/ours");
BENCHMARK_CAPTURE(array_with, idate, gnu_idate_)->Name("idate/intrinsic");
BENCHMARK_CAPTURE(array_with, itime, qx_itime_)->Name("itime/ours");
BENCHMARK_CAPTURE(array_with, itime, gnu_itime_)->Name("itime/intrinsic");

// Of another hour each time.
void fields_with(benchmark::State &state, void (*routine)(const int32_t *, int32_t *)) {
  int32_t instant = INSTANT;
  for (auto _ : state) {
    int32_t fields[9];
    instant = instant < INSTANT + 30 * 86400 ? instant + 3601 : INSTANT;
    routine(&instant, fields);
    benchmark::DoNotOptimize(fields);
  }
}
BENCHMARK_CAPTURE(fields_with, ltime, qx_ltime_)->Name("ltime/ours");
BENCHMARK_CAPTURE(fields_with, ltime, gnu_ltime_)->Name("ltime/intrinsic");
BENCHMARK_CAPTURE(fields_with, gmtime, qx_gmtime_)->Name("gmtime/ours");
BENCHMARK_CAPTURE(fields_with, gmtime, gnu_gmtime_)->Name("gmtime/intrinsic");

void ctime_with(benchmark::State &state, void (*routine)(const int32_t *, char *, size_t)) {
  int32_t instant = INSTANT;
  for (auto _ : state) {
    char text[25];
    instant = instant < INSTANT + 30 * 86400 ? instant + 3601 : INSTANT;
    routine(&instant, text, sizeof(text));
    benchmark::DoNotOptimize(text);
  }
}
BENCHMARK_CAPTURE(ctime_with, ctime, qx_ctime_)->Name("ctime/ours");
BENCHMARK_CAPTURE(ctime_with, ctime, gnu_ctime_)->Name("ctime/intrinsic");

void fdate_with(benchmark::State &state, void (*routine)(char *, size_t)) {
  for (auto _ : state) {
    char text[24];
    routine(text, sizeof(text));
    benchmark::DoNotOptimize(text);
  }
}
BENCHMARK_CAPTURE(fdate_with, fdate, qx_fdate_)->Name("fdate/ours");
BENCHMARK_CAPTURE(fdate_with, fdate, gnu_fdate_)->Name("fdate/intrinsic");

void etime_with(benchmark::State &state, float (*routine)(float *)) {
  for (auto _ : state) {
    float elements[2];
    benchmark::DoNotOptimize(routine(elements));
  }
}
BENCHMARK_CAPTURE(etime_with, etime, qx_etime_)->Name("etime/ours");
BENCHMARK_CAPTURE(etime_with, etime, gnu_etime_)->Name("etime/intrinsic");

void secnds_with(benchmark::State &state, float (*routine)(const float *)) {
  const float zero = 0;
  for (auto _ : state)
    benchmark::DoNotOptimize(routine(&zero));
}
BENCHMARK_CAPTURE(secnds_with, secnds, qx_secnds_)->Name("secnds/ours");
BENCHMARK_CAPTURE(secnds_with, secnds, gnu_secnds_)->Name("secnds/intrinsic");

// How late the procedure of an alarm starts.
std::atomic<int64_t> called_at;
sem_t called;

int64_t monotonic() {
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return int64_t{now.tv_sec} * 1000000000 + now.tv_nsec;
}

void report_lateness_of_alarms() {
  constexpr int ALARMS = 3;
  sem_init(&called, 0, 0);
  for (int i = 0; i < ALARMS; ++i) {
    const int32_t second = 1;
    const int64_t begin = monotonic();
    alarm_(&second, [] {
      called_at = monotonic();
      sem_post(&called);
    });
    while (sem_wait(&called) != 0)
      ;
    printf("%-28s %11.3f ms late (5 ms wanted on an idle machine)\n", "alarm",
           static_cast<double>(called_at - begin - 1000000000) / 1e6);
  }
}

}  // namespace

int main(int argc, char **argv) {
  // Everybody in the same zone, which has daylight-saving time.
  setenv("TZ", "Europe/Berlin", 0);
  const int status = bench::run(argc, argv,
                                {{"time", "clock_gettime", 1.2},
                                 {"rtc", "clock_gettime", 1.2},
                                 {"clockx", "clock_gettime", 1.2},
                                 {"gettimeofday", "clock_gettime", 1.2},
                                 {"dclock", "clock_gettime"},
                                 {"idate", "intrinsic", 1.6},
                                 {"itime", "intrinsic", 1.6},
                                 {"ltime", "intrinsic", 1.6},
                                 {"gmtime", "intrinsic", 1.0},
                                 {"ctime", "intrinsic", 0.25},
                                 {"fdate", "intrinsic", 0.25},
                                 {"etime", "intrinsic", 1.05},
                                 {"secnds", "intrinsic", 1.0}});
  if (argc == 1)
    report_lateness_of_alarms();
  return status;
}
