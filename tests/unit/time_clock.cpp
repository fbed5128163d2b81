// The routines that tell instants and times, between two looks at the host's own clocks; the routines that
// refuse to set the clock; and the run-time's services for the start of the process.
#include "contract/services.h"
#include "in_child.h"
#include "outcome.h"

#include <atomic>
#include <cmath>
#include <ctime>
#include <dlfcn.h>
#include <fstream>
#include <sys/resource.h>
#include <sys/time.h>
#include <sys/times.h>
#include <thread>
#include <unistd.h>

namespace {

// What happens while somebody asks for the system's time, which is then a second later.
void (*while_asked)();

}  // namespace

int clock_gettime(clockid_t clock, timespec *now) noexcept {
  using Original = int (*)(clockid_t, timespec *);
  static const auto hosts = reinterpret_cast<Original>(
      dlsym(RTLD_NEXT, sizeof(void *) == 8 ? "clock_gettime" : "__clock_gettime64"));
  const int answer = hosts(clock, now);
  if (clock == CLOCK_REALTIME && while_asked != nullptr) {
    void (*const happens)() = while_asked;
    while_asked = nullptr;
    happens();
    ++now->tv_sec;
  }
  return answer;
}

namespace {

double realtime() {
  timespec now;
  clock_gettime(CLOCK_REALTIME, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

double uptime() {
  timespec now;
  clock_gettime(CLOCK_BOOTTIME, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

// The value lies between two looks at the clock. The host's coarse clocks are late by a tick.
template <typename Clock, typename Routine>
void expect_between(Clock clock, Routine routine, double late) {
  for (int i = 0; i < 200; ++i) {
    const double before = clock();
    double value = 0;
    EXPECT_EQ(state_after([&] { value = routine(); }), untouched());
    EXPECT_GE(value, before - late);
    EXPECT_LE(value, clock() + 1e-6);
  }
}

TEST(Time, IsTheHostsClock) {
  expect_between(
      realtime, [] { return static_cast<double>(time_()); }, 1.02);
}

TEST(Time, Rtc) {
  expect_between(realtime, rtc_, 1.02);
  EXPECT_EQ(rtc_(), std::floor(rtc_()));
}

TEST(Time, Clockx) {
  expect_between(
      realtime,
      [] {
        double clock[3] = {-1, -1, -1};
        clockx_(clock + 1);
        EXPECT_EQ(clock[0], -1);
        EXPECT_EQ(clock[2], -1);
        EXPECT_EQ(clock[1], std::floor(clock[1]));
        return clock[1] / 1e6;
      },
      2e-6);
}

TEST(Time, Gettimeofday) {
  expect_between(
      realtime,
      [] {
        int32_t tv[2], ierr;
        gettimeofday_(tv, &ierr);
        EXPECT_EQ(ierr, 0);
        return tv[0] + tv[1] / 1e6;
      },
      2e-6);
}

TEST(Time, FirstTimefIsZero) {
  in_child([] {
    EXPECT_EQ(timef_(), 0.0);
    const double second = timef_();
    EXPECT_EQ(second, std::floor(second));
    EXPECT_GE(second, 0.0);
  });
}

// The processor time so far lies between two looks at the host's own count.
TEST(ProcessorTime, EtimeIsTheProcesss) {
  const auto used = [] {
    rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval &time) {
      return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + (sysconf(_SC_NPROCESSORS_ONLN) > 1 ? 0 : seconds(usage.ru_stime));
  };
  for (volatile int i = 0; i < 20000000;)
    i = i + 1;
  const double before = used();
  float tarray[2];
  const float answer = etime_(tarray);
  // Ticks are a hundredth of a second.
  EXPECT_GE(answer, before - 0.021);
  EXPECT_LE(answer, used() + 0.021);
  EXPECT_EQ(answer, tarray[0] + tarray[1]);
}

TEST(ProcessorTime, DtimeAddsUpToTheProcesss) {
  in_child([] {
    double sum = 0;
    for (int call = 0; call < 6; ++call) {
      for (volatile int i = 0; i < 3000000;)
        i = i + 1;
      float tarray[2];
      sum += dtime_(tarray);
    }
    tms used;
    times(&used);
    const double host = static_cast<double>(used.tms_utime + used.tms_stime) / 100;
    EXPECT_NEAR(sum, host, 0.05);
    // A call right behind answers about nothing; what the machine does in between is not known.
    double again[2];
    EXPECT_LT(std::fabs(dtimer8_(again)), 0.05 + (static_cast<double>(clock()) / 1e6 - host));
  });
}

// Since the start of the process as the host tells it, whenever the first call is made.
double age() {
  std::ifstream file("/proc/self/stat");
  std::string text;
  std::getline(file, text);
  text.erase(0, text.rfind(')') + 2);
  size_t begin = 0;
  for (int field = 3; field < 22; ++field)
    begin = text.find(' ', begin) + 1;
  return uptime() - std::stod(text.substr(begin)) / 100;
}

TEST(Dclock, CountsFromTheStartOfTheProcess) {
  in_child([] { expect_between(age, dclock_, 1e-6); });
}

TEST(Dclock, FirstCallNeedNotBeEarly) {
  in_child([] {
    usleep(50000);
    const double first = dclock_();
    EXPECT_GE(first, 0.05);
    EXPECT_LE(first, age() + 1e-6);
  });
}

TEST(Dclock, NeverDecreases) {
  in_child([] {
    double before = dclock_();
    for (int i = 0; i < 10000; ++i) {
      const double now = dclock_();
      ASSERT_GE(now, before);
      before = now;
    }
  });
}

// The name of the program, which the host tells before the start, may hold anything.
TEST(Dclock, ProgramOfAnyName) {
  for (const char *name : {") 1 2 3", "(((", "a b c d e", "x) R 1 1 (y", ""})
    in_child([name] {
      pthread_setname_np(pthread_self(), name);
      expect_between(age, dclock_, 1e-6);
    });
}

// What a child counts from is the instant that its parent has counted from, and not its own start.
TEST(Dclock, ChildGoesOnCounting) {
  in_child([] {
    usleep(50000);
    const double earliest = uptime();
    const double parents = dclock_();
    const double latest = uptime();
    in_child([=] {
      const double before = uptime();
      const double childs = dclock_();
      const double after = uptime();
      EXPECT_GE(childs, parents + (before - latest) - 1e-6);
      EXPECT_LE(childs, parents + (after - earliest) + 1e-6);
    });
  });
}

// Without a descriptor to read it by, the start is not known: the first call counts from itself.
TEST(Dclock, WithoutDescriptorsCountsFromTheFirstCall) {
  in_child([] {
    usleep(50000);
    rlimit none;
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &none), 0);
    none.rlim_cur = 0;
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    const double before = uptime();
    double first = -1;
    EXPECT_EQ(state_after([&] { first = dclock_(); }), untouched());
    const double within = uptime() - before;
    EXPECT_GE(first, 0.0);
    EXPECT_LE(first, within + 1e-6);
    expect_between([before] { return uptime() - before; }, dclock_, within + 1e-6);
  });
}

TEST(StartInstant, IsCountedFromTheEpoch) {
  in_child([] {
    const double start = for__process_start_time();
    EXPECT_NEAR(realtime() - start, age(), 0.001);
    EXPECT_EQ(for__process_start_time(), start);
    const double now = realtime();
    const double since = for_since_epoch_t(&now);
    EXPECT_GE(since, -1e-5);
    EXPECT_LT(since, 60.0);
    const double later = now + 1000;
    EXPECT_NEAR(for_since_epoch_t(&later), -1000, 60);
    const double before = now - 1000;
    EXPECT_NEAR(for_since_epoch_t(&before), 1000, 60);
  });
}

TEST(StartInstant, LeavesNothingOpen) {
  in_child([] {
    const int before = dup(0);
    close(before);
    for__process_start_time();
    const int behind = dup(0);
    close(behind);
    EXPECT_EQ(behind, before);
  });
}

// All threads count from one instant, also when they are the first to ask.
TEST(StartInstant, IsTheSameForThreads) {
  in_child([] {
    std::atomic<int> ready = 0;
    double starts[2];
    const auto ask = [&](double *start) {
      ++ready;
      while (ready < 2)
        std::this_thread::yield();
      *start = for__process_start_time();
    };
    std::thread other([&] { ask(&starts[0]); });
    ask(&starts[1]);
    other.join();
    EXPECT_EQ(starts[0], starts[1]);
  });
}

// One that asked before has the answer of the one that was faster.
TEST(StartInstant, IsTheFirstOneFound) {
  in_child([] {
    static double faster;
    while_asked = [] { faster = for__process_start_time(); };
    EXPECT_EQ(for__process_start_time(), faster);
    EXPECT_EQ(while_asked, nullptr);
    EXPECT_EQ(for__process_start_time(), faster);
  });
}

TEST(SetClock, IsRefusedAndRecorded) {
  const ErrorState refused = {ERRNO_SENTINEL, SENTINEL, {ENOTSUP}};
  EXPECT_EQ(ENOTSUP, 95);
  const int32_t number = 1;
  const int16_t narrow = 1;
  for (const auto routine : {setdat_, qxport_setdat_})
    EXPECT_EQ(outcome_of([&] { return routine(&number, &number, &number); }), (Outcome{0, refused}));
  for (const auto routine : {setdati2_, qxport_setdati2_})
    EXPECT_EQ(outcome_of([&] { return routine(&narrow, &narrow, &narrow); }), (Outcome{0, refused}));
  for (const auto routine : {settim_, qxport_settim_})
    EXPECT_EQ(outcome_of([&] { return routine(&number, &number, &number, &number); }), (Outcome{0, refused}));
  for (const auto routine : {settimi2_, qxport_settimi2_})
    EXPECT_EQ(outcome_of([&] { return routine(&narrow, &narrow, &narrow, &narrow); }), (Outcome{0, refused}));
}

TEST(SetClock, ArgumentsAreNotLookedAt) {
  const ErrorState refused = {ERRNO_SENTINEL, SENTINEL, {ENOTSUP}};
  EXPECT_EQ(outcome_of([] { return setdat_(nullptr, nullptr, nullptr); }), (Outcome{0, refused}));
  EXPECT_EQ(outcome_of([] { return setdati2_(nullptr, nullptr, nullptr); }), (Outcome{0, refused}));
  EXPECT_EQ(outcome_of([] { return settim_(nullptr, nullptr, nullptr, nullptr); }), (Outcome{0, refused}));
  EXPECT_EQ(outcome_of([] { return settimi2_(nullptr, nullptr, nullptr, nullptr); }), (Outcome{0, refused}));
}

TEST(Clock, ModuleNamesAreTheSameRoutines) {
  expect_same_routine(qxport_time_, time_);
  expect_same_routine(qxport_rtc_, rtc_);
  expect_same_routine(qxport_clockx_, clockx_);
  expect_same_routine(qxport_dclock_, dclock_);
  expect_same_routine(qxport_setdat_, setdat_);
  expect_same_routine(qxport_setdati2_, setdati2_);
  expect_same_routine(qxport_settim_, settim_);
  expect_same_routine(qxport_settimi2_, settimi2_);
}

}  // namespace
