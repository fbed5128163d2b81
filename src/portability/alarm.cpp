// ALARM: a procedure called once after some seconds, on a thread of the library's own.
#include "frame/fortran.h"
#include "frame/messages.h"

#include <csignal>
#include <ctime>
#include <pthread.h>

using namespace qxport;

// A program has threads only where something brings them in, in a C library that keeps them apart and in a
// program without shared libraries.
#pragma weak pthread_create

namespace {

constexpr int32_t NO_THREADS = 1008;
constexpr int32_t NONE = -1;

constexpr uint64_t SECOND = 1'000'000'000;
// What remains of an alarm is counted in fiftieths of a second, so that a second that took a little longer is
// one second.
constexpr uint64_t TICK = SECOND / 50;

pthread_mutex_t mutx = PTHREAD_MUTEX_INITIALIZER;
pthread_cond_t condw_run = PTHREAD_COND_INITIALIZER;
pthread_cond_t condw_freeze = PTHREAD_COND_INITIALIZER;

// Guarded by mutx: the seconds of the pending alarm, its procedure, when it was armed, and the thread.
int32_t countdown = NONE;
void (*pRunProc)();
uint64_t savedTicks;
pthread_t hThrtead;
bool fork_is_followed;

// No signal's handler may come in while the lock is held: it might call ALARM itself, or fork.
sigset_t hold_signals() {
  sigset_t all, former;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &former);
  return former;
}

void release_signals(const sigset_t &former) {
  pthread_sigmask(SIG_SETMASK, &former, nullptr);
}

class Lock {
public:
  Lock() : signals_(hold_signals()) { pthread_mutex_lock(&mutx); }
  ~Lock() {
    pthread_mutex_unlock(&mutx);
    release_signals(signals_);
  }
  Lock(const Lock &) = delete;
  Lock &operator=(const Lock &) = delete;

private:
  sigset_t signals_;
};

// A child has the state as it is at the moment of the fork, and none of the threads but the one that forked.
sigset_t signals_of_forking_thread;

void before_fork() {
  const sigset_t former = hold_signals();
  pthread_mutex_lock(&mutx);
  signals_of_forking_thread = former;
}

void behind_fork_in_parent() {
  const sigset_t former = signals_of_forking_thread;
  pthread_mutex_unlock(&mutx);
  release_signals(former);
}

void behind_fork_in_child() {
  mutx = PTHREAD_MUTEX_INITIALIZER;
  condw_run = PTHREAD_COND_INITIALIZER;
  condw_freeze = PTHREAD_COND_INITIALIZER;
  countdown = NONE;
  hThrtead = {};
  release_signals(signals_of_forking_thread);
}

uint64_t ticks_now() {
  timespec now = {};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<uint64_t>(now.tv_sec) * SECOND + static_cast<uint64_t>(now.tv_nsec);
}

// At least 1: an alarm that is late is still to come.
int32_t remaining_seconds(uint64_t now) {
  const uint64_t elapsed = ((now - savedTicks) / TICK + 49) / 50;
  const int64_t remaining = countdown - static_cast<int64_t>(elapsed);
  return static_cast<int32_t>(std::max<int64_t>(remaining, 1));
}

// Under the lock. A waiter may wake without cause: it waits again, and for the same instant.
void wait_for_alarm() {
  while (countdown == NONE)
    pthread_cond_wait(&condw_freeze, &mutx);
  const uint64_t deadline = savedTicks + static_cast<uint64_t>(countdown) * SECOND;
  const timespec instant = {static_cast<time_t>(deadline / SECOND), static_cast<long>(deadline % SECOND)};
  while (ticks_now() < deadline)
    pthread_cond_clockwait(&condw_run, &mutx, CLOCK_MONOTONIC, &instant);
}

// Signals are for the program's own threads; those that an instruction of this one causes reach it anyway.
void leave_signals_to_other_threads() {
  sigset_t others;
  sigfillset(&others);
  for (const int own : {SIGILL, SIGTRAP, SIGBUS, SIGFPE, SIGSEGV, SIGSYS})
    sigdelset(&others, own);
  pthread_sigmask(SIG_SETMASK, &others, nullptr);
}

// Under the lock. A procedure that forks is gone on with by the child's only thread, which is the one that
// alarms run on there, unless the procedure armed one and so made another.
bool is_the_thread() {
  if (pthread_equal(hThrtead, pthread_t{}))
    hThrtead = pthread_self();
  return pthread_equal(hThrtead, pthread_self());
}

void *alarm_callback(void *) {
  leave_signals_to_other_threads();
  for (;;) {
    pthread_mutex_lock(&mutx);
    if (!is_the_thread()) {
      pthread_mutex_unlock(&mutx);
      return nullptr;
    }
    wait_for_alarm();
    void (*const procedure)() = pRunProc;
    countdown = NONE;
    pthread_mutex_unlock(&mutx);
    procedure();
  }
}

// Under the lock.
void start_thread() {
  if (pthread_create == nullptr)
    _zelta_lib_err(NO_THREADS);
  if (!fork_is_followed)
    fork_is_followed = pthread_atfork(before_fork, behind_fork_in_parent, behind_fork_in_child) == 0;
  // Without a thread there is no alarm; the next call tries again.
  if (pthread_create(&hThrtead, nullptr, alarm_callback, nullptr) != 0) {
    hThrtead = {};
    countdown = NONE;
  }
}

}  // namespace

// N = ALARM(SECONDS, PROC)
int32_t alarm_(const int32_t *seconds, void (*proc)()) {
  {
    const Lock lock;
    const uint64_t now = ticks_now();
    // A pending alarm stays as it is: nothing cancels or replaces it.
    if (countdown != NONE)
      return remaining_seconds(now);
    if (*seconds < 1)
      return 0;
    savedTicks = now;
    countdown = *seconds;
    pRunProc = proc;
    if (hThrtead == pthread_t{})
      start_thread();
    else
      pthread_cond_signal(&condw_run);
  }
  pthread_cond_signal(&condw_freeze);
  return 0;
}

QXPORT_ALIAS(alarm_)
