// A caller's side of PXFSIGACTION: procedures and native handlers that tell what they saw, records by their
// fields, and signals without an action around each test.
#ifndef TESTS_SUPPORT_SIGNAL_ACTIONS_H
#define TESTS_SUPPORT_SIGNAL_ACTIONS_H

#include "outcome.h"
#include "posix/signals.h"
#include "record_calls.h"

#include <csignal>
#include <sys/time.h>
#include <unistd.h>
#include <vector>

// What the handlers of the tests saw.
struct Seen {
  volatile sig_atomic_t calls, number;
};
inline Seen seen_by_a, seen_by_b, seen_natively;
inline sigset_t blocked_in_handler;

// The thread sanitizer runs every handler with all signals blocked, whatever the action's mask.
#ifdef __SANITIZE_THREAD__
constexpr bool ALL_ARE_BLOCKED = true;
#else
constexpr bool ALL_ARE_BLOCKED = false;
#endif
inline bool was_blocked(int number) {
  return sigismember(&blocked_in_handler, number) == 1;
}

inline void reset_seen() {
  for (Seen *seen : {&seen_by_a, &seen_by_b, &seen_natively}) {
    seen->calls = 0;
    seen->number = SENTINEL;
  }
}

inline void procedure_a(int32_t *number) {
  seen_by_a.calls = seen_by_a.calls + 1;
  seen_by_a.number = *number;
  sigprocmask(SIG_SETMASK, nullptr, &blocked_in_handler);
  *number = -77;
  errno = 1234;
}

inline void procedure_b(int32_t *number) {
  seen_by_b.calls = seen_by_b.calls + 1;
  seen_by_b.number = *number;
}

inline void native_handler(int number) {
  seen_natively.calls = seen_natively.calls + 1;
  seen_natively.number = number;
}

inline void native_handler_with_information(int number, siginfo_t *, void *) {
  native_handler(number);
}

inline int32_t handle_of(void (*procedure)(int32_t *)) {
  int32_t handle = 0;
  EXPECT_EQ(reported_by([&](int32_t *ierror) {
              pxfgetsubhandle_(reinterpret_cast<void (*)()>(procedure), &handle, ierror);
            }),
            succeeded());
  return handle;
}

inline int64_t widened(int32_t handle) {
  return static_cast<uint32_t>(handle);
}

inline Outcome call(int32_t isig, int32_t jsigact, int32_t josigact) {
  return reported_by([&](int32_t *ierror) { pxfsigaction_(&isig, &jsigact, &josigact, ierror); });
}

inline struct sigaction action_of(int number) {
  struct sigaction action = {};
  EXPECT_EQ(sigaction(number, nullptr, &action), 0) << number;
  return action;
}

inline void install_natively(int number, void (*handler)(int), int flags = 0, std::vector<int> mask = {}) {
  struct sigaction action = {};
  action.sa_handler = handler;
  action.sa_flags = flags;
  for (const int blocked : mask)
    sigaddset(&action.sa_mask, blocked);
  ASSERT_EQ(sigaction(number, &action, nullptr), 0) << number;
}

// A sigaction record by its fields.
class Action {
public:
  explicit Action(int64_t handler = 0, int32_t mask = 0, int32_t flags = 0) {
    fields().sa_handler_ = handler;
    fields().sa_mask = mask;
    fields().sa_flags = flags;
  }
  operator int32_t() const { return record_; }
  qxport::SigactionRecord &fields() const { return record_as<qxport::SigactionRecord>(record_); }

private:
  const OwnedRecord record_{"sigaction"};
};

class Set {
public:
  explicit Set(uint32_t mask = 0) { bits() = mask; }
  operator int32_t() const { return record_; }
  uint32_t &bits() const { return record_as<qxport::SigsetRecord>(record_).mask; }

private:
  const OwnedRecord record_{"sigset"};
};

inline uint32_t bit(int number) {
  return 1U << (number - 1);
}

// The handle of a freed record, which the next few records do not get again: they take the lower places, and
// are smaller.
inline int32_t stale_handle() {
  int32_t handles[20];
  for (int32_t &handle : handles)
    EXPECT_EQ(create("utsname", &handle), succeeded());
  const int32_t last = handles[19];
  for (int32_t &handle : handles)
    EXPECT_EQ(release(&handle), succeeded());
  return last;
}

// Signals without an action before and behind each test.
class Signals : public testing::Test {
protected:
  Signals() {
    reset_seen();
    restore();
  }
  ~Signals() override {
    const itimerval none = {};
    setitimer(ITIMER_REAL, &none, nullptr);
    restore();
  }
  static void restore() {
    for (const int number : {SIGUSR1, SIGUSR2, SIGALRM, SIGURG, SIGWINCH, SIGIO})
      signal(number, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
  }

  // A signal again and again, so that one that comes too early is not the last.
  static void alarm_soon() {
    const itimerval timer = {{0, 50000}, {0, 50000}};
    setitimer(ITIMER_REAL, &timer, nullptr);
  }

  const int32_t a_ = handle_of(procedure_a);
  const int32_t b_ = handle_of(procedure_b);
};

#endif
