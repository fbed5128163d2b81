// ALARM on the host's clock, among signals, forks and other threads.
#include "captured_child.h"
#include "in_child.h"
#include "outcome.h"

#include <atomic>
#include <csignal>
#include <ctime>
#include <pthread.h>
#include <semaphore.h>
#include <set>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

// The thread sanitizer ends children of a process with threads that start threads, unless it is told not to.
extern "C" const char *__tsan_default_options() {
  return "die_after_fork=0";
}

namespace {

double monotonic() {
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

sem_t called;
std::atomic<int> calls;
std::atomic<double> called_at[4];  // the n-th call, from 0
std::atomic<pthread_t> called_on;

void procedure() {
  called_at[calls % 4] = monotonic();
  called_on = pthread_self();
  ++calls;
  sem_post(&called);
}

int32_t alarm_of(int32_t seconds, void (*proc)() = procedure) {
  return alarm_(&seconds, proc);
}

void wait_for_call() {
  while (sem_wait(&called) != 0)
    ;
}

// The thread is the process's, so each test has a process of its own.
template <typename Check>
void in_new_process(Check check) {
  in_child([&] {
    sem_init(&called, 0, 0);
    check();
  });
}

TEST(Alarm, RunsOnAnotherThreadWhenItsTimeHasCome) {
  in_new_process([] {
    const double begin = monotonic();
    EXPECT_EQ(alarm_of(1), 0);
    wait_for_call();
    EXPECT_GE(called_at[0], begin + 1);
    EXPECT_FALSE(pthread_equal(called_on, pthread_self()));
    const pthread_t first = called_on;
    const double again = monotonic();
    EXPECT_EQ(qxport_alarm_(std::array{1}.data(), procedure), 0);
    wait_for_call();
    EXPECT_GE(called_at[1], again + 1);
    EXPECT_TRUE(pthread_equal(called_on, first));
    EXPECT_EQ(calls, 2);
  });
}

// Signals by the thousand, with a handler that arms alarms itself: none comes too early, none is lost, and no
// handler runs on the library's thread.
std::atomic<int> handled, handled_elsewhere, armed_by_handler;
std::atomic<double> armed_after[4];  // an instant before the n-th alarm was armed by the handler, from 0
pthread_t main_thread;

void handle(int) {
  ++handled;
  if (!pthread_equal(pthread_self(), main_thread))
    ++handled_elsewhere;
  const double before = monotonic();
  if (alarm_of(1) == 0)
    armed_after[armed_by_handler++ % 4] = before;
}

TEST(Alarm, SignalsDisturbNothing) {
  in_new_process([] {
    main_thread = pthread_self();
    struct sigaction action = {};
    action.sa_handler = handle;
    sigaction(SIGUSR1, &action, nullptr);
    const double begin = monotonic();
    EXPECT_EQ(alarm_of(1), 0);
    const pid_t self = getpid();
    const pid_t sender = fork();
    if (sender == 0) {
      while (getppid() == self && kill(self, SIGUSR1) == 0)
        ;
      _exit(0);
    }
    wait_for_call();
    EXPECT_GE(called_at[0], begin + 1);
    // The handler has armed the next one, be it before the procedure had come to its first line.
    wait_for_call();
    EXPECT_GE(armed_by_handler, 1);
    EXPECT_GE(called_at[1], armed_after[0] + 1);
    kill(sender, SIGKILL);
    waitpid(sender, nullptr, 0);
    EXPECT_GT(handled, 10);
    EXPECT_EQ(handled_elsewhere, 0);
    sigset_t none;
    sigemptyset(&none);
    sigset_t blocked;
    pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
    for (int number = 1; number < 32; ++number)
      EXPECT_EQ(sigismember(&blocked, number), 0) << number;
  });
}

// A signal that the program holds off is held off, and does not find the library's thread open for it.
TEST(Alarm, BlockedSignalStaysBlocked) {
  in_new_process([] {
    main_thread = pthread_self();
    EXPECT_EQ(alarm_of(1), 0);
    sigset_t set, pending;
    sigemptyset(&set);
    sigaddset(&set, SIGUSR2);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    kill(getpid(), SIGUSR2);
    wait_for_call();
    sigpending(&pending);
    EXPECT_EQ(sigismember(&pending, SIGUSR2), 1);
    EXPECT_EQ(alarm_of(0), 0);
  });
}

sigset_t blocked_in_procedure;

TEST(Alarm, FaultsOfTheProcedureAreItsOwn) {
  in_new_process([] {
    EXPECT_EQ(alarm_of(1,
                       [] {
                         pthread_sigmask(SIG_SETMASK, nullptr, &blocked_in_procedure);
                         sem_post(&called);
                       }),
              0);
    wait_for_call();
    for (const int number : {SIGILL, SIGTRAP, SIGBUS, SIGFPE, SIGSEGV, SIGSYS})
      EXPECT_EQ(sigismember(&blocked_in_procedure, number), 0) << number;
    for (const int number : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGUSR1, SIGALRM, SIGCHLD, SIGPIPE})
      EXPECT_EQ(sigismember(&blocked_in_procedure, number), 1) << number;
  });
}

// The caller's mask is as before.
TEST(Alarm, MaskOfTheCallerStays) {
  in_new_process([] {
    sigset_t set, now;
    sigemptyset(&set);
    sigaddset(&set, SIGUSR1);
    sigaddset(&set, SIGHUP);
    pthread_sigmask(SIG_SETMASK, &set, nullptr);
    for (const int seconds : {0, 60, 60}) {
      alarm_of(seconds);
      pthread_sigmask(SIG_SETMASK, nullptr, &now);
      for (int number = 1; number < 32; ++number)
        EXPECT_EQ(sigismember(&now, number), sigismember(&set, number)) << number;
    }
    in_child([&] {
      pthread_sigmask(SIG_SETMASK, nullptr, &now);
      for (int number = 1; number < 32; ++number)
        EXPECT_EQ(sigismember(&now, number), sigismember(&set, number)) << number;
    });
    pthread_sigmask(SIG_SETMASK, nullptr, &now);
    for (int number = 1; number < 32; ++number)
      EXPECT_EQ(sigismember(&now, number), sigismember(&set, number)) << number;
  });
}

// Other threads call ALARM all the while; no child finds the lock held.
TEST(Alarm, ForksAmongCallsOfOtherThreads) {
  in_new_process([] {
    EXPECT_EQ(alarm_of(3600), 0);
    std::atomic<bool> stop = false;
    std::thread other([&] {
      while (!stop)
        EXPECT_GT(alarm_of(0), 0);
    });
    for (int i = 0; i < 100; ++i) {
      const ChildReport report = run_in_child([] {
        if (alarm_of(0) != 0 || alarm_of(100) != 0 || alarm_of(0) < 2)
          _exit(1);
      });
      ASSERT_EQ(report.exit_code(), CAME_BACK);
    }
    stop = true;
    other.join();
    EXPECT_GT(alarm_of(0), 3000);
  });
}

TEST(Alarm, ModuleNameIsTheSameRoutine) {
  expect_same_routine(qxport_alarm_, alarm_);
}

}  // namespace
