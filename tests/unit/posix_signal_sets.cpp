// Signal sets, the process's mask, what is pending, and the wait for a signal under a mask.
#include "outcome.h"
#include "record_calls.h"

#include <csignal>
#include <functional>
#include <sys/time.h>
#include <unistd.h>

namespace {

uint32_t mask_in(int32_t handle) {
  return record_as<qxport::SigsetRecord>(handle).mask;
}

void set_mask(int32_t handle, uint32_t mask) {
  record_as<qxport::SigsetRecord>(handle).mask = mask;
}

// The bit of a signal from 1 to 32.
uint32_t bit(int number) {
  return 1U << (number - 1);
}

Outcome empty(int32_t set) {
  return reported_by([&](int32_t *ierror) { pxfsigemptyset_(&set, ierror); });
}
Outcome fill(int32_t set) {
  return reported_by([&](int32_t *ierror) { pxfsigfillset_(&set, ierror); });
}
Outcome add(int32_t set, int32_t number) {
  return reported_by([&](int32_t *ierror) { pxfsigaddset_(&set, &number, ierror); });
}
Outcome remove_from(int32_t set, int32_t number) {
  return reported_by([&](int32_t *ierror) { pxfsigdelset_(&set, &number, ierror); });
}
Outcome ask(int32_t set, int32_t number, int32_t *ismember) {
  return reported_by([&](int32_t *ierror) { pxfsigismember_(&set, &number, ismember, ierror); });
}
Outcome pending(int32_t set) {
  return reported_by([&](int32_t *ierror) { pxfsigpending_(&set, ierror); });
}
Outcome suspend(int32_t set) {
  return reported_by([&](int32_t *ierror) { pxfsigsuspend_(&set, ierror); });
}

int32_t is_member(int32_t set, int32_t number) {
  Guarded<int32_t> ismember(SENTINEL);
  EXPECT_EQ(ask(set, number, &ismember), succeeded());
  return ismember;
}

struct SignalBit {
  int32_t number;
  uint32_t bits;
};

// 0 and negative numbers wrap into the high bits; those above 32 have none.
const SignalBit SIGNAL_BITS[] = {{1, 0x1},          {2, 0x2},          {10, 0x200},
                                 {31, 0x40000000},  {32, 0x80000000},  {0, 0x80000000},
                                 {-1, 0x40000000},  {-2, 0x20000000},  {-31, 0x1},
                                 {-32, 0x80000000}, {-33, 0x40000000}, {INT32_MIN, 0x80000000},
                                 {33, 0},           {40, 0},           {64, 0},
                                 {65, 0},           {INT32_MAX, 0}};

TEST(SignalSet, FreshOneIsEmpty) {
  const OwnedRecord set("sigset");
  EXPECT_EQ(mask_in(set), 0u);
}

TEST(SignalSet, EmptyAndFull) {
  const OwnedRecord set("sigset");
  set_mask(set, 0x12345678);
  EXPECT_EQ(fill(set), succeeded());
  EXPECT_EQ(mask_in(set), 0xffffffffu);
  EXPECT_EQ(empty(set), succeeded());
  EXPECT_EQ(mask_in(set), 0u);
}

TEST(Pxfsigaddset, Signal0IsBit31And40ChangesNothing) {
  const OwnedRecord set("sigset");
  EXPECT_EQ(add(set, 0), succeeded());
  EXPECT_EQ(mask_in(set), 0x80000000u);
  EXPECT_EQ(add(set, 40), succeeded());
  EXPECT_EQ(mask_in(set), 0x80000000u);
}

TEST(Pxfsigaddset, BitOfEachNumber) {
  const OwnedRecord set("sigset");
  for (const auto &[number, bits] : SIGNAL_BITS) {
    set_mask(set, 0);
    EXPECT_EQ(add(set, number), succeeded()) << number;
    EXPECT_EQ(mask_in(set), bits) << number;
    set_mask(set, 0x0f0f0f0f);
    add(set, number);
    EXPECT_EQ(mask_in(set), 0x0f0f0f0f | bits) << number;
  }
}

TEST(Pxfsigdelset, BitOfEachNumber) {
  const OwnedRecord set("sigset");
  for (const auto &[number, bits] : SIGNAL_BITS) {
    set_mask(set, 0xffffffff);
    EXPECT_EQ(remove_from(set, number), succeeded()) << number;
    EXPECT_EQ(mask_in(set), ~bits) << number;
    EXPECT_EQ(remove_from(set, number), succeeded()) << number;
    EXPECT_EQ(mask_in(set), ~bits) << number;
  }
}

TEST(Pxfsigismember, BitOfEachNumber) {
  const OwnedRecord set("sigset");
  for (const auto &[number, bits] : SIGNAL_BITS) {
    set_mask(set, bits);
    EXPECT_EQ(is_member(set, number), bits != 0 ? 1 : 0) << number;
    set_mask(set, ~bits);
    EXPECT_EQ(is_member(set, number), 0) << number;
    EXPECT_EQ(mask_in(set), ~bits);
  }
}

TEST(Pxfsigismember, FullSetHasEverySignalFrom1To32) {
  const OwnedRecord set("sigset");
  fill(set);
  for (int32_t number = 1; number <= 32; ++number)
    EXPECT_EQ(is_member(set, number), 1) << number;
  EXPECT_EQ(is_member(set, 33), 0);
}

TEST(Pxfsigismember, OneSignalDoesNotMakeAnother) {
  const OwnedRecord set("sigset");
  for (int32_t added = 1; added <= 32; ++added) {
    empty(set);
    add(set, added);
    for (int32_t asked = 1; asked <= 32; ++asked)
      EXPECT_EQ(is_member(set, asked), added == asked ? 1 : 0);
  }
}

// The handles that no routine takes.
struct WrongHandles {
  WrongHandles() {
    EXPECT_EQ(create("sigset", &stale), succeeded());
    int32_t freed = stale;
    EXPECT_EQ(release(&freed), succeeded());
  }
  std::vector<int32_t> unknown() const { return {0, stale, INT32_MAX, 0x7ffffe00}; }
  std::vector<int32_t> of_another_kind() const { return {action, stream}; }

  const OwnedRecord action{"sigaction"};
  const ForeignObject stream;
  int32_t stale = 0;
};

void expect_refusals(const std::function<Outcome(int32_t)> &routine) {
  const WrongHandles wrong;
  const Contents before = contents_of(wrong.action);
  for (const int32_t handle : wrong.unknown())
    EXPECT_EQ(routine(handle), refused(NO_SUCH_HANDLE)) << handle;
  for (const int32_t handle : wrong.of_another_kind())
    EXPECT_EQ(routine(handle), refused(EINVAL)) << handle;
  EXPECT_EQ(contents_of(wrong.action), before);
}

TEST(SignalSet, UnknownHandleIs127AndAnotherKindIs22) {
  expect_refusals(empty);
  expect_refusals(fill);
  expect_refusals([](int32_t set) { return add(set, 1); });
  expect_refusals([](int32_t set) { return remove_from(set, 1); });
  expect_refusals(pending);
  Guarded<int32_t> ismember(SENTINEL);
  expect_refusals([&](int32_t set) { return ask(set, 1, &ismember); });
  EXPECT_EQ(ismember, SENTINEL);
}

// The signal mask of the process, as it was at the end of the test.
class Mask : public testing::Test {
protected:
  Mask() { sigprocmask(SIG_SETMASK, nullptr, &former_); }
  ~Mask() override {
    for (const int number : {SIGUSR1, SIGUSR2, SIGALRM, SIGRTMIN}) {
      signal(number, SIG_IGN);  // drops it where it is pending
      signal(number, SIG_DFL);
    }
    sigprocmask(SIG_SETMASK, &former_, nullptr);
  }

  static std::vector<int> blocked() {
    sigset_t set;
    sigprocmask(SIG_SETMASK, nullptr, &set);
    std::vector<int> numbers;
    for (int number = 1; number <= SIGRTMAX; ++number)
      if (sigismember(&set, number) == 1)
        numbers.push_back(number);
    return numbers;
  }
  static void block_only(std::vector<int> numbers) {
    sigset_t set;
    sigemptyset(&set);
    for (const int number : numbers)
      sigaddset(&set, number);
    sigprocmask(SIG_SETMASK, &set, nullptr);
  }

private:
  sigset_t former_;
};

using MaskRoutine = void (*)(const int32_t *, const int32_t *, const int32_t *, int32_t *);

// Under each of its names.
class Pxfsigprocmask : public Mask, public testing::WithParamInterface<MaskRoutine> {
protected:
  static Outcome call(int32_t ihow, int32_t set, int32_t old) {
    return reported_by([&](int32_t *ierror) { GetParam()(&ihow, &set, &old, ierror); });
  }

  const OwnedRecord set_{"sigset"};
  const OwnedRecord old_{"sigset"};
};

INSTANTIATE_TEST_SUITE_P(Names, Pxfsigprocmask, testing::Values(&pxfsigprocmask_, &fortran_pxfsigprocmask));

TEST_P(Pxfsigprocmask, BlocksUnblocksAndSets) {
  block_only({SIGUSR2});
  set_mask(set_, bit(SIGUSR1) | bit(SIGHUP));
  EXPECT_EQ(call(SIG_BLOCK, set_, 0), succeeded());
  EXPECT_EQ(blocked(), (std::vector<int>{SIGHUP, SIGUSR1, SIGUSR2}));
  set_mask(set_, bit(SIGUSR2) | bit(SIGHUP));
  EXPECT_EQ(call(SIG_UNBLOCK, set_, 0), succeeded());
  EXPECT_EQ(blocked(), std::vector<int>{SIGUSR1});
  set_mask(set_, bit(SIGALRM));
  EXPECT_EQ(call(SIG_SETMASK, set_, 0), succeeded());
  EXPECT_EQ(blocked(), std::vector<int>{SIGALRM});
  EXPECT_EQ(mask_in(set_), bit(SIGALRM));
}

TEST_P(Pxfsigprocmask, FormerMaskIsAnswered) {
  block_only({SIGHUP, SIGUSR2, SIGSYS});
  set_mask(set_, bit(SIGUSR1));
  set_mask(old_, 0xffffffff);
  EXPECT_EQ(call(SIG_SETMASK, set_, old_), succeeded());
  EXPECT_EQ(mask_in(old_), bit(SIGHUP) | bit(SIGUSR2) | bit(SIGSYS));
  EXPECT_EQ(mask_in(set_), bit(SIGUSR1));
  EXPECT_EQ(blocked(), std::vector<int>{SIGUSR1});
}

TEST_P(Pxfsigprocmask, OneRecordForBothIsExchanged) {
  block_only({SIGUSR2});
  set_mask(set_, bit(SIGUSR1));
  EXPECT_EQ(call(SIG_SETMASK, set_, set_), succeeded());
  EXPECT_EQ(mask_in(set_), bit(SIGUSR2));
  EXPECT_EQ(blocked(), std::vector<int>{SIGUSR1});
}

TEST_P(Pxfsigprocmask, SignalsAbove32AreNotAnswered) {
  block_only({SIGUSR2, SIGRTMIN, SIGRTMAX});
  EXPECT_EQ(call(SIG_BLOCK, set_, old_), succeeded());
  EXPECT_EQ(mask_in(old_), bit(SIGUSR2));
  EXPECT_EQ(blocked(), (std::vector<int>{SIGUSR2, SIGRTMIN, SIGRTMAX})) << "nor changed";
}

TEST_P(Pxfsigprocmask, FullSetBlocksAllThatCanBe) {
  fill(set_);
  EXPECT_EQ(call(SIG_SETMASK, set_, 0).answer, 0);
  const std::vector<int> numbers = blocked();
  for (int number = 1; number < 32; ++number)
    EXPECT_EQ(std::count(numbers.begin(), numbers.end(), number),
              number == SIGKILL || number == SIGSTOP ? 0 : 1);
  block_only({});
}

TEST_P(Pxfsigprocmask, WrongHowIs22AndChangesNothing) {
  block_only({SIGUSR2});
  set_mask(set_, bit(SIGUSR1));
  set_mask(old_, 0x77);
  for (const int32_t ihow : {-1, 3, INT32_MAX})
    EXPECT_EQ(call(ihow, set_, old_), refused(EINVAL)) << ihow;
  EXPECT_EQ(mask_in(old_), 0x77u);
  EXPECT_EQ(blocked(), std::vector<int>{SIGUSR2});
}

TEST_P(Pxfsigprocmask, WrongNewSetIs127Or22AndChangesNothing) {
  block_only({SIGUSR2});
  set_mask(old_, 0x77);
  expect_refusals([&](int32_t set) { return call(SIG_SETMASK, set, old_); });
  EXPECT_EQ(mask_in(old_), 0x77u);
  EXPECT_EQ(blocked(), std::vector<int>{SIGUSR2});
}

TEST_P(Pxfsigprocmask, UnknownFormerSetIs127AndErrnoStays) {
  block_only({SIGUSR2});
  set_mask(set_, bit(SIGUSR1));
  const WrongHandles wrong;
  for (const int32_t old : wrong.unknown()) {
    if (old != 0) {
      EXPECT_EQ(call(SIG_SETMASK, set_, old), refused_silently(NO_SUCH_HANDLE)) << old;
    }
  }
  EXPECT_EQ(blocked(), std::vector<int>{SIGUSR2});
}

// So errno is set where both are unknown.
TEST_P(Pxfsigprocmask, NewSetIsCheckedBeforeTheFormer) {
  const WrongHandles wrong;
  EXPECT_EQ(call(SIG_SETMASK, wrong.stale, wrong.stale), refused(NO_SUCH_HANDLE));
  EXPECT_EQ(call(SIG_SETMASK, wrong.action, wrong.stale), refused(EINVAL));
  EXPECT_EQ(call(-1, set_, wrong.stale), refused_silently(NO_SUCH_HANDLE)) << "the host is asked last";
}

TEST_P(Pxfsigprocmask, FormerSetOfAnotherKindIs22) {
  block_only({SIGUSR2});
  set_mask(set_, bit(SIGUSR1));
  const WrongHandles wrong;
  for (const int32_t old : wrong.of_another_kind())
    EXPECT_EQ(call(SIG_SETMASK, set_, old), refused(EINVAL)) << old;
  EXPECT_EQ(blocked(), std::vector<int>{SIGUSR2});
}

class Pxfsigpending : public Mask {};

TEST_F(Pxfsigpending, AreTheBlockedOnesThatCame) {
  const OwnedRecord set("sigset");
  block_only({SIGUSR1, SIGUSR2, SIGALRM, SIGRTMIN});
  set_mask(set, 0xffffffff);
  EXPECT_EQ(pending(set), succeeded());
  EXPECT_EQ(mask_in(set), 0u);
  kill(getpid(), SIGUSR1);
  kill(getpid(), SIGALRM);
  kill(getpid(), SIGRTMIN);
  EXPECT_EQ(pending(set), succeeded());
  EXPECT_EQ(mask_in(set), bit(SIGUSR1) | bit(SIGALRM));
}

class Pxfsigsuspend : public Mask {
protected:
  Pxfsigsuspend() {
    for (const int number : {SIGUSR1, SIGUSR2, SIGALRM})
      signal(number, [](int caught) { caught_[caught] = caught_[caught] + 1; });
    std::fill(std::begin(caught_), std::end(caught_), 0);
  }

  static volatile sig_atomic_t caught_[65];
};

volatile sig_atomic_t Pxfsigsuspend::caught_[65];

TEST_F(Pxfsigsuspend, ReturnsWithEintrBehindTheHandler) {
  const OwnedRecord set("sigset");
  block_only({SIGUSR1});
  kill(getpid(), SIGUSR1);
  EXPECT_EQ(caught_[SIGUSR1], 0);
  EXPECT_EQ(suspend(set), refused(EINTR, EINTR));
  EXPECT_EQ(caught_[SIGUSR1], 1);
  EXPECT_EQ(blocked(), std::vector<int>{SIGUSR1}) << "the former mask is back";
}

TEST_F(Pxfsigsuspend, SignalsOfTheMaskWait) {
  const OwnedRecord set("sigset");
  set_mask(set, bit(SIGUSR2));
  block_only({SIGALRM, SIGUSR2});
  kill(getpid(), SIGUSR2);
  const itimerval soon = {{0, 0}, {0, 50000}};
  setitimer(ITIMER_REAL, &soon, nullptr);
  EXPECT_EQ(suspend(set), refused(EINTR, EINTR));
  EXPECT_EQ(caught_[SIGALRM], 1);
  EXPECT_EQ(caught_[SIGUSR2], 0);
  block_only({});
  EXPECT_EQ(caught_[SIGUSR2], 1);
}

TEST_F(Pxfsigsuspend, UnknownHandleAndAnotherKindAreBoth127) {
  const WrongHandles wrong;
  for (const int32_t handle : wrong.unknown())
    EXPECT_EQ(suspend(handle), refused(NO_SUCH_HANDLE)) << handle;
  for (const int32_t handle : wrong.of_another_kind())
    EXPECT_EQ(suspend(handle), refused(NO_SUCH_HANDLE)) << handle;
}

}  // namespace
