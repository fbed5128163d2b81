// ETIME, DTIME and DTIMER8 above counters that show what the test wants, on one processor and on several.
#include "in_child.h"
#include "outcome.h"

#include <ctime>
#include <dlfcn.h>
#include <sys/resource.h>
#include <sys/times.h>
#include <unistd.h>

namespace {

long processors = 1;
int times_asked_for_processors;
tms ticks;
int64_t clock_microseconds;
rusage usage;
int asked_for;

}  // namespace

clock_t times(tms *now) noexcept {
  *now = ticks;
  return 12345;
}

int getrusage(__rusage_who_t who, rusage *result) noexcept {
  asked_for = static_cast<int>(who);
  *result = usage;
  return 0;
}

clock_t clock() noexcept {
  return static_cast<clock_t>(clock_microseconds);
}

// The narrow clock() is not asked on a 32-bit target.
int clock_gettime(clockid_t id, timespec *now) noexcept {
  using Original = int (*)(clockid_t, timespec *);
  static const auto original = reinterpret_cast<Original>(
      dlsym(RTLD_NEXT, sizeof(void *) == 8 ? "clock_gettime" : "__clock_gettime64"));
  if (id != CLOCK_PROCESS_CPUTIME_ID)
    return original(id, now);
  *now = {static_cast<time_t>(clock_microseconds / 1000000),
          static_cast<long>(clock_microseconds % 1000000 * 1000 + 999)};
  return 0;
}

long sysconf(int name) noexcept {
  using Original = long (*)(int);
  static const auto original = reinterpret_cast<Original>(dlsym(RTLD_NEXT, "sysconf"));
  if (name != _SC_NPROCESSORS_ONLN)
    return original(name);
  ++times_asked_for_processors;
  return processors;
}

namespace {

void set_ticks(clock_t user, clock_t system) {
  // Those of children do not count.
  ticks = {user, system, 777, 888};
}

void set_usage(time_t seconds, suseconds_t microseconds) {
  usage = {};
  usage.ru_utime = {seconds, microseconds};
  usage.ru_stime = {99, 0};
}

template <typename Real>
struct Times {
  Real answer, user, system;
  bool operator==(const Times &) const = default;
  friend std::ostream &operator<<(std::ostream &out, const Times &times) {
    return out << times.answer << " = " << times.user << " + " << times.system;
  }
};

template <typename Real>
Times<Real> times_of(Real (*routine)(Real *)) {
  Real tarray[4] = {-77, -77, -77, -77};
  Real answer = 0;
  EXPECT_EQ(state_after([&] { answer = routine(tarray + 1); }), untouched());
  EXPECT_EQ(tarray[0], -77);
  EXPECT_EQ(tarray[3], -77);
  return {answer, tarray[1], tarray[2]};
}

using Single = Times<float>;
using Double = Times<double>;

// The count of DTIME and the number of processors are the process's.
#define IN_A_NEW_PROCESS(...) in_child([] __VA_ARGS__)

TEST(Etime, OneProcessorHasUserAndSystemTime) {
  IN_A_NEW_PROCESS({
    set_ticks(1234, 56);
    set_usage(5, 0);
    EXPECT_EQ(times_of(etime_), (Single{12.34F + 0.56F, 12.34F, 0.56F}));
    set_ticks(0, 0);
    EXPECT_EQ(times_of(etime_), (Single{0, 0, 0}));
  });
}

TEST(Etime, SeveralProcessorsHaveUserTimeOnly) {
  IN_A_NEW_PROCESS({
    processors = 2;
    set_ticks(1234, 56);
    set_usage(12, 345678);
    asked_for = 77;
    EXPECT_EQ(times_of(etime_), (Single{12.345678F, 12.345678F, 0}));
    EXPECT_EQ(asked_for, RUSAGE_SELF);
  });
}

TEST(Etime, ProcessorsAreCountedOnce) {
  IN_A_NEW_PROCESS({
    processors = 4;
    set_usage(1, 0);
    for (int i = 0; i < 3; ++i)
      EXPECT_EQ(times_of(etime_).system, 0);
    processors = 1;
    set_ticks(300, 200);
    EXPECT_EQ(times_of(etime_), (Single{1, 1, 0}));
    EXPECT_EQ(times_asked_for_processors, 1);
  });
}

TEST(Etime, ProcessorsThatCannotBeCountedAreAskedForAgain) {
  IN_A_NEW_PROCESS({
    processors = -1;
    set_ticks(300, 200);
    set_usage(1, 0);
    EXPECT_EQ(times_of(etime_), (Single{5, 3, 2}));
    EXPECT_EQ(times_of(etime_), (Single{5, 3, 2}));
    EXPECT_EQ(times_asked_for_processors, 2);
    processors = 2;
    EXPECT_EQ(times_of(etime_), (Single{1, 1, 0}));
    EXPECT_EQ(times_of(etime_), (Single{1, 1, 0}));
    EXPECT_EQ(times_asked_for_processors, 3);
  });
}

TEST(Dtime, FirstCallCountsFromTheStart) {
  IN_A_NEW_PROCESS({
    set_ticks(150, 25);
    EXPECT_EQ(times_of(dtime_), (Single{1.75F, 1.5F, 0.25F}));
  });
  IN_A_NEW_PROCESS({
    processors = 2;
    clock_microseconds = 9000000;
    set_ticks(150, 25);
    EXPECT_EQ(times_of(dtimer8_), (Double{1.75, 1.5, 0.25}));
    EXPECT_EQ(times_asked_for_processors, 0);
  });
}

TEST(Dtime, OneProcessorTakesTicksInEveryCall) {
  IN_A_NEW_PROCESS({
    clock_microseconds = 9000000;
    set_ticks(100, 50);
    EXPECT_EQ(times_of(dtime_), (Single{1.5F, 1, 0.5F}));
    set_ticks(175, 75);
    EXPECT_EQ(times_of(dtime_), (Single{1, 0.75F, 0.25F}));
    set_ticks(200, 75);
    EXPECT_EQ(times_of(dtime_), (Single{0.25F, 0.25F, 0}));
    EXPECT_EQ(times_of(dtime_), (Single{0, 0, 0}));
    set_ticks(200, 175);
    EXPECT_EQ(times_of(dtime_), (Single{1, 0, 1}));
  });
}

// The sources alternate, and the system time moves to and fro between them.
TEST(Dtime, SeveralProcessorsAlternateBetweenTheirSources) {
  IN_A_NEW_PROCESS({
    processors = 8;
    set_ticks(100, 50);
    clock_microseconds = 1500000;
    EXPECT_EQ(times_of(dtimer8_), (Double{1.5, 1, 0.5}));
    clock_microseconds = 2250000;
    EXPECT_EQ(times_of(dtimer8_), (Double{0.75, 1.25, -0.5}));
    set_ticks(200, 75);
    EXPECT_EQ(times_of(dtimer8_), (Double{0.5, -0.25, 0.75}));
    clock_microseconds = 3000000;
    EXPECT_EQ(times_of(dtimer8_), (Double{0.25, 1, -0.75}));
  });
}

TEST(Dtime, BothRoutinesShareTheCount) {
  IN_A_NEW_PROCESS({
    set_ticks(100, 0);
    EXPECT_EQ(times_of(dtime_), (Single{1, 1, 0}));
    set_ticks(300, 100);
    EXPECT_EQ(times_of(dtimer8_), (Double{3, 2, 1}));
    set_ticks(350, 100);
    EXPECT_EQ(times_of(dtime_), (Single{0.5F, 0.5F, 0}));
    set_ticks(350, 200);
    EXPECT_EQ(times_of(dtimer8_), (Double{1, 0, 1}));
  });
}

// ETIME has no part in the count.
TEST(Dtime, EtimeDoesNotDisturbTheCount) {
  IN_A_NEW_PROCESS({
    set_ticks(100, 0);
    EXPECT_EQ(times_of(dtime_), (Single{1, 1, 0}));
    set_ticks(300, 0);
    EXPECT_EQ(times_of(etime_), (Single{3, 3, 0}));
    EXPECT_EQ(times_of(dtime_), (Single{2, 2, 0}));
  });
}

// Differences are taken in double precision, and rounded then.
TEST(Dtime, DifferenceOfLongTimesIsExact) {
  IN_A_NEW_PROCESS({
    set_ticks(1000000000, 0);
    EXPECT_EQ(times_of(dtime_).user, 1e7F);
    set_ticks(1000000001, 3);
    EXPECT_FLOAT_EQ(times_of(dtime_).user, 0.01F);
  });
}

// The sum is one of what the array has.
TEST(Dtime, SumIsOfTheCallersPrecision) {
  IN_A_NEW_PROCESS({
    set_ticks(1, 4);
    EXPECT_EQ(times_of(dtime_), (Single{0.01F + 0.04F, 0.01F, 0.04F}));
    set_ticks(2, 8);
    EXPECT_EQ(times_of(dtimer8_), (Double{(0.02 - 0.01) + (0.08 - 0.04), 0.02 - 0.01, 0.08 - 0.04}));
  });
}

// Ticks and microseconds have no sign.
TEST(Dtime, MicrosecondsBeyondTheirSign) {
  IN_A_NEW_PROCESS({
    processors = 2;
    set_ticks(0, 0);
    EXPECT_EQ(times_of(dtimer8_).user, 0);
    if constexpr (sizeof(clock_t) == 8) {
      clock_microseconds = INT64_MIN + 500000;
      EXPECT_EQ(times_of(dtimer8_).user, (9223372036854775808.0 + 500000) / 1e6);
    } else {
      // Beyond all that a narrow counter can tell.
      clock_microseconds = 5000500000;
      EXPECT_EQ(times_of(dtimer8_).user, 5000.5);
    }
  });
}

TEST(Dtime, TicksBeyondTheirSign) {
  IN_A_NEW_PROCESS({
    constexpr clock_t FAR = static_cast<clock_t>(1UL << (8 * sizeof(clock_t) - 1));
    set_ticks(FAR, 0);
    EXPECT_EQ(times_of(dtimer8_).user, (sizeof(clock_t) == 8 ? 9223372036854775808.0 : 2147483648.0) / 100);
  });
}

TEST(ProcessorTime, ModuleNamesAreTheSameRoutines) {
  expect_same_routine(qxport_etime_, etime_);
  expect_same_routine(qxport_dtime_, dtime_);
  expect_same_routine(qxport_dtimer8_, dtimer8_);
}

}  // namespace
