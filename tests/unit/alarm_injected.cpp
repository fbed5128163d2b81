// ALARM above a clock that the test moves, with a thread that wakes without cause all the time.
#include "captured_child.h"
#include "in_child.h"
#include "outcome.h"

#include <atomic>
#include <csignal>
#include <ctime>
#include <dlfcn.h>
#include <pthread.h>
#include <sched.h>
#include <semaphore.h>
#include <sys/prctl.h>
#include <thread>

// The thread sanitizer ends children of a process with threads that start threads, unless it is told not to.
extern "C" const char *__tsan_default_options() {
  return "die_after_fork=0";
}

namespace {

constexpr int64_t SECOND = 1000000000;

// The monotonic clock in nanoseconds; the host's where it is 0.
std::atomic<int64_t> clock_shows;
// What each wait for an alarm moves the clock on by, where no other thread is there to do it.
std::atomic<int64_t> clock_moves;
// How often the thread waited without an alarm, and what it does at the given time of these.
std::atomic<int> idle_waits;
void (*at_idle_wait)(int count);
// How often the thread looked at the clock to wait, and until when it then waits.
std::atomic<int> waits;
std::atomic<int64_t> waits_until;
std::atomic<bool> waits_by_another_clock;
std::atomic<int> threads_made;
int creation_error;

template <typename Function>
Function original(const char *name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

}  // namespace

int clock_gettime(clockid_t clock, timespec *now) noexcept {
  const int64_t shown = clock_shows;
  if (clock != CLOCK_MONOTONIC || shown == 0) {
    static const auto hosts =
        original<int (*)(clockid_t, timespec *)>(sizeof(void *) == 8 ? "clock_gettime" : "__clock_gettime64");
    return hosts(clock, now);
  }
  *now = {static_cast<time_t>(shown / SECOND), static_cast<long>(shown % SECOND)};
  return 0;
}

// Every wait ends without cause, that for the next alarm too.
int pthread_cond_wait(pthread_cond_t *, pthread_mutex_t *mutex) {
  pthread_mutex_unlock(mutex);
  const int count = ++idle_waits;
  if (at_idle_wait != nullptr)
    at_idle_wait(count);
  sched_yield();
  pthread_mutex_lock(mutex);
  return 0;
}

int pthread_cond_clockwait(pthread_cond_t *, pthread_mutex_t *mutex, clockid_t clock, const timespec *until) {
  if (clock != CLOCK_MONOTONIC)
    waits_by_another_clock = true;
  waits_until = until->tv_sec * SECOND + until->tv_nsec;
  ++waits;
  pthread_mutex_unlock(mutex);
  clock_shows += clock_moves;
  sched_yield();
  pthread_mutex_lock(mutex);
  return 0;
}

int pthread_create(pthread_t *thread, const pthread_attr_t *attributes, void *(*body)(void *),
                   void *argument) noexcept {
  using Create = int (*)(pthread_t *, const pthread_attr_t *, void *(*)(void *), void *);
  static const auto hosts = original<Create>("pthread_create");
  ++threads_made;
  if (creation_error == 0)
    return hosts(thread, attributes, body, argument);
  // The host may leave anything in the place of a thread that it did not make.
  *thread = pthread_self();
  return creation_error;
}

namespace {

// Not at the beginning of a second.
constexpr int64_t START = 1000000 * SECOND + 123456789;

std::atomic<int> calls, calls_of_other;
sem_t called;

void procedure() {
  ++calls;
  sem_post(&called);
}

void other_procedure() {
  ++calls_of_other;
  sem_post(&called);
}

int32_t alarm_of(int32_t seconds, void (*proc)() = procedure) {
  const int32_t before = seconds;
  const Outcome outcome = outcome_of([&] { return alarm_(&seconds, proc); });
  EXPECT_EQ(outcome.state, untouched());
  EXPECT_EQ(seconds, before);
  return outcome.answer;
}

void wait_for_call() {
  while (sem_wait(&called) != 0)
    ;
}

// The thread has looked at the clock as it is now, and waits.
void let_the_thread_look() {
  const int before = waits;
  while (waits < before + 3)
    sched_yield();
}

// The thread has nothing to wait for, and has woken without cause.
void let_the_thread_idle() {
  const int before = idle_waits;
  while (idle_waits < before + 5)
    sched_yield();
}

// The thread is the process's, so each test has a process of its own.
class Alarm : public testing::Test {
protected:
  template <typename Check>
  static void in_new_process(Check check) {
    in_child([&] {
      sem_init(&called, 0, 0);
      clock_shows = START;
      check();
    });
  }
};

TEST_F(Alarm, RunsWhenItsTimeHasComeAndNotBefore) {
  in_new_process([] {
    EXPECT_EQ(alarm_of(3), 0);
    let_the_thread_look();
    EXPECT_EQ(waits_until, START + 3 * SECOND);
    for (const int64_t elapsed : {int64_t{1}, SECOND, 2 * SECOND, 3 * SECOND - 1}) {
      clock_shows = START + elapsed;
      let_the_thread_look();
      EXPECT_EQ(waits_until, START + 3 * SECOND) << elapsed;
      EXPECT_EQ(calls, 0) << elapsed;
    }
    clock_shows = START + 3 * SECOND;
    wait_for_call();
    EXPECT_EQ(calls, 1);
    EXPECT_FALSE(waits_by_another_clock);
  });
}

// However often it wakes, the thread calls nothing until the next alarm is armed and its time has come.
TEST_F(Alarm, IdleThreadThatWakesCallsNothing) {
  in_new_process([] {
    int64_t now = START;
    for (int i = 1; i <= 5; ++i) {
      EXPECT_EQ(alarm_of(1), 0);
      now += SECOND;
      clock_shows = now;
      wait_for_call();
      let_the_thread_idle();
      clock_shows = now + 1000 * SECOND;
      let_the_thread_idle();
      EXPECT_EQ(calls, i);
      now += 1000 * SECOND;
    }
    EXPECT_EQ(threads_made, 1);
  });
}

TEST_F(Alarm, PendingOneAnswersWhatRemains) {
  in_new_process([] {
    EXPECT_EQ(alarm_of(3), 0);
    struct Remaining {
      int64_t milliseconds;
      int32_t seconds;
    };
    // Elapsed time counts up to full seconds; a fiftieth of a second that has begun does not count.
    for (const Remaining &remaining : {Remaining{0, 3},
                                       {19, 3},
                                       {20, 2},
                                       {500, 2},
                                       {1000, 2},
                                       {1019, 2},
                                       {1020, 1},
                                       {2000, 1},
                                       {2020, 1},
                                       {2999, 1}}) {
      clock_shows = START + remaining.milliseconds * 1000000;
      EXPECT_EQ(alarm_of(10, other_procedure), remaining.seconds) << remaining.milliseconds;
      EXPECT_EQ(alarm_of(0, other_procedure), remaining.seconds) << remaining.milliseconds;
      EXPECT_EQ(alarm_of(-4, other_procedure), remaining.seconds) << remaining.milliseconds;
    }
    clock_shows = START + 3 * SECOND;
    wait_for_call();
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(calls_of_other, 0);
  });
}

// A thread that cannot run yet leaves the alarm pending beyond its time.
TEST_F(Alarm, LateOneHasASecondLeft) {
  in_new_process([] {
    EXPECT_EQ(alarm_of(1,
                       [] {
                         // Runs on the thread, which therefore does not wait for the next alarm.
                         EXPECT_EQ(alarm_of(2), 0);
                         clock_shows = START + 500 * SECOND;
                         EXPECT_EQ(alarm_of(7), 1);
                         sem_post(&called);
                       }),
              0);
    clock_shows = START + SECOND;
    wait_for_call();
    wait_for_call();
    EXPECT_EQ(calls, 1);
  });
}

TEST_F(Alarm, ZeroAndNegativeArrangeNothing) {
  in_new_process([] {
    for (const int32_t seconds : {0, -1, -4, INT32_MIN})
      EXPECT_EQ(alarm_of(seconds), 0) << seconds;
    EXPECT_EQ(threads_made, 0);
    EXPECT_EQ(alarm_of(1), 0);
    clock_shows = START + SECOND;
    wait_for_call();
    EXPECT_EQ(calls, 1);
    // Nothing is pending any more.
    EXPECT_EQ(alarm_of(0), 0);
  });
}

TEST_F(Alarm, LongestOne) {
  in_new_process([] {
    EXPECT_EQ(alarm_of(INT32_MAX), 0);
    EXPECT_EQ(alarm_of(1), INT32_MAX);
    let_the_thread_look();
    EXPECT_EQ(waits_until, START + INT32_MAX * SECOND);
    clock_shows = START + (INT32_MAX - 5) * SECOND;
    EXPECT_EQ(alarm_of(1), 5);
    let_the_thread_look();
    EXPECT_EQ(calls, 0);
    clock_shows = START + INT32_MAX * SECOND;
    wait_for_call();
  });
}

TEST_F(Alarm, OneThreadServesAll) {
  in_new_process([] {
    int64_t now = START;
    for (int i = 1; i <= 50; ++i) {
      EXPECT_EQ(alarm_of(2, i % 2 == 0 ? procedure : other_procedure), 0) << i;
      now += 2 * SECOND;
      clock_shows = now;
      wait_for_call();
    }
    EXPECT_EQ(calls, 25);
    EXPECT_EQ(calls_of_other, 25);
    EXPECT_EQ(threads_made, 1);
  });
}

// The first one from outside, each other one from inside the one before.
TEST_F(Alarm, ProcedureArmsTheNextOne) {
  in_new_process([] {
    struct Chain {
      static void link() {
        if (++calls < 20) {
          EXPECT_EQ(alarm_of(1, link), 0);
        }
        clock_shows = clock_shows + SECOND;
        sem_post(&called);
      }
    };
    EXPECT_EQ(alarm_of(1, Chain::link), 0);
    clock_shows = START + SECOND;
    for (int i = 0; i < 20; ++i)
      wait_for_call();
    EXPECT_EQ(calls, 20);
    EXPECT_EQ(threads_made, 1);
    EXPECT_EQ(alarm_of(0), 0);
  });
}

// While the procedure runs nothing is pending and nothing is locked.
TEST_F(Alarm, NextOneCanBeArmedWhileTheProcedureRuns) {
  in_new_process([] {
    static sem_t may_end;
    sem_init(&may_end, 0, 0);
    EXPECT_EQ(alarm_of(1,
                       [] {
                         sem_post(&called);
                         while (sem_wait(&may_end) != 0)
                           ;
                       }),
              0);
    clock_shows = START + SECOND;
    wait_for_call();
    EXPECT_EQ(alarm_of(1), 0);
    EXPECT_EQ(alarm_of(5), 1);
    clock_shows = START + 3 * SECOND;
    sem_post(&may_end);
    wait_for_call();
    EXPECT_EQ(calls, 1);
  });
}

TEST_F(Alarm, OfThreadsThatArmAtTheSameTimeOneGetsIt) {
  in_new_process([] {
    std::atomic<int> ready = 0, armed = 0, remaining = 0;
    const auto arm = [&] {
      ++ready;
      while (ready < 4)
        sched_yield();
      int32_t seconds = 2;
      ++(alarm_(&seconds, procedure) == 0 ? armed : remaining);
    };
    std::thread threads[] = {std::thread(arm), std::thread(arm), std::thread(arm), std::thread(arm)};
    for (std::thread &thread : threads)
      thread.join();
    EXPECT_EQ(armed, 1);
    EXPECT_EQ(remaining, 3);
    clock_shows = START + 2 * SECOND;
    wait_for_call();
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(alarm_of(0), 0);
  });
}

TEST_F(Alarm, WithoutAThreadALaterCallTriesAgain) {
  in_new_process([] {
    creation_error = EAGAIN;
    EXPECT_EQ(alarm_of(5), 0);
    EXPECT_EQ(alarm_of(0), 0);
    EXPECT_EQ(threads_made, 1);
    creation_error = 0;
    EXPECT_EQ(alarm_of(2), 0);
    EXPECT_EQ(threads_made, 2);
    EXPECT_EQ(alarm_of(9), 2);
    clock_shows = START + 2 * SECOND;
    wait_for_call();
    EXPECT_EQ(calls, 1);
  });
}

TEST_F(Alarm, ChildHasNoneAndMayArmItsOwn) {
  in_new_process([] {
    EXPECT_EQ(alarm_of(30), 0);
    in_child([] {
      EXPECT_EQ(alarm_of(0), 0);
      EXPECT_EQ(alarm_of(2, other_procedure), 0);
      EXPECT_EQ(threads_made, 2);
      EXPECT_EQ(alarm_of(9), 2);
      clock_shows = START + 2 * SECOND;
      wait_for_call();
      EXPECT_EQ(calls_of_other, 1);
      EXPECT_EQ(calls, 0);
      // And so its own children.
      in_child([] {
        EXPECT_EQ(alarm_of(1), 0);
        clock_shows = START + 3 * SECOND;
        wait_for_call();
        EXPECT_EQ(calls, 1);
      });
    });
    EXPECT_EQ(alarm_of(0), 30);
    clock_shows = START + 30 * SECOND;
    wait_for_call();
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(calls_of_other, 0);
  });
}

TEST_F(Alarm, ChildOfTheProcedureHasNoneAndMayArmItsOwn) {
  in_new_process([] {
    EXPECT_EQ(alarm_of(1,
                       [] {
                         in_child([] {
                           EXPECT_EQ(alarm_of(0), 0);
                           EXPECT_EQ(alarm_of(2), 0);
                           clock_shows = clock_shows + 2 * SECOND;
                           wait_for_call();
                           EXPECT_EQ(calls, 1);
                         });
                         sem_post(&called);
                       }),
              0);
    clock_shows = START + SECOND;
    wait_for_call();
    EXPECT_EQ(calls, 0);
  });
}

// A child that the procedure forked and that goes on behind the procedure's end.
namespace forked {

constexpr int ALARMS = 20;
constexpr int DONE = 42, CALLED_TOO_OFTEN = 43, CALLED_ELSEWHERE = 44, NOT_ARMED = 45, THREAD_MADE = 46,
              FORKED_AGAIN = 47;

std::atomic<int> status, forks;
int alarms;
pthread_t made_thread;

// Once only, in a process and its children: a procedure that is called too often shall not fill the machine.
// The child ends with the process that waits for it.
pid_t fork_once() {
  if (forks++ > 0)
    _exit(FORKED_AGAIN);
  const pid_t child = fork();
  if (child == 0)
    prctl(PR_SET_PDEATHSIG, SIGKILL);
  return child;
}

void wait_for(pid_t child) {
  int answer = -1;
  waitpid(child, &answer, 0);
  status = answer;
  sem_post(&called);
}

// Each call arms the next one; all are on one thread, and there is one for each alarm.
void next_one() {
  if (alarms == 1)
    made_thread = pthread_self();
  if (!pthread_equal(made_thread, pthread_self()))
    _exit(CALLED_ELSEWHERE);
  if (++calls != alarms)
    _exit(CALLED_TOO_OFTEN);
  if (alarms == ALARMS)
    _exit(threads_made == 2 ? DONE : THREAD_MADE);
  ++alarms;
  if (alarm_of(1, next_one) != 0)
    _exit(NOT_ARMED);
}

// Returns in both processes.
void fork_and_arm() {
  const pid_t child = fork_once();
  if (child > 0) {
    wait_for(child);
    return;
  }
  clock_moves = SECOND / 20;
  alarms = 1;
  if (alarm_of(1, next_one) != 0)
    _exit(NOT_ARMED);
}

void fork_and_return() {
  const pid_t child = fork_once();
  if (child > 0) {
    wait_for(child);
    return;
  }
  clock_moves = SECOND / 20;
  idle_waits = 0;
  // The child's only thread idles, until it is as if somebody armed an alarm.
  at_idle_wait = [](int count) {
    if (count != 5)
      return;
    if (alarm_of(1, [] { _exit(threads_made == 1 ? DONE : THREAD_MADE); }) != 0)
      _exit(NOT_ARMED);
  };
}

}  // namespace forked

// The thread that forked ends where the child has made another, and so no alarm has two that wait for it.
TEST_F(Alarm, ChildOfTheProcedureReturnsWithAnAlarmArmed) {
  in_new_process([] {
    EXPECT_EQ(alarm_of(1, forked::fork_and_arm), 0);
    clock_shows = START + SECOND;
    wait_for_call();
    EXPECT_TRUE(WIFEXITED(forked::status)) << forked::status;
    EXPECT_EQ(WEXITSTATUS(forked::status), forked::DONE);
    // The parent's thread is its only one, as before.
    for (int i = 1; i <= 3; ++i) {
      EXPECT_EQ(alarm_of(2), 0);
      clock_shows = clock_shows + 2 * SECOND;
      wait_for_call();
      let_the_thread_idle();
      EXPECT_EQ(calls, i);
    }
    EXPECT_EQ(threads_made, 1);
  });
}

// Else it is the child's thread for alarms.
TEST_F(Alarm, ChildOfTheProcedureReturnsWithoutAnAlarm) {
  in_new_process([] {
    EXPECT_EQ(alarm_of(1, forked::fork_and_return), 0);
    clock_shows = START + SECOND;
    wait_for_call();
    EXPECT_TRUE(WIFEXITED(forked::status)) << forked::status;
    EXPECT_EQ(WEXITSTATUS(forked::status), forked::DONE);
  });
}

}  // namespace
