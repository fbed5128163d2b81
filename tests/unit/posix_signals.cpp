// PXFSIGACTION with Fortran and native handlers, the two bridges, and the sending of and waiting for signals.
#include "ordinary_user.h"
#include "outcome.h"
#include "posix/signals.h"
#include "record_calls.h"

#include <algorithm>
#include <csignal>
#include <ctime>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// What the handlers of the tests saw.
struct {
  volatile sig_atomic_t calls, number;
} seen_by_a, seen_by_b, seen_natively;
sigset_t blocked_in_handler;

void reset_seen() {
  for (auto *seen : {&seen_by_a, &seen_by_b}) {
    seen->calls = 0;
    seen->number = SENTINEL;
  }
  seen_natively.calls = 0;
  seen_natively.number = SENTINEL;
}

void procedure_a(int32_t *number) {
  seen_by_a.calls = seen_by_a.calls + 1;
  seen_by_a.number = *number;
  sigprocmask(SIG_SETMASK, nullptr, &blocked_in_handler);
  *number = -77;
  errno = 1234;
}

void procedure_b(int32_t *number) {
  seen_by_b.calls = seen_by_b.calls + 1;
  seen_by_b.number = *number;
}

void native_handler(int number) {
  seen_natively.calls = seen_natively.calls + 1;
  seen_natively.number = number;
}

void native_handler_with_information(int number, siginfo_t *, void *) {
  native_handler(number);
}

int32_t handle_of(void (*procedure)(int32_t *)) {
  int32_t handle = 0;
  EXPECT_EQ(reported_by([&](int32_t *ierror) {
              pxfgetsubhandle_(reinterpret_cast<void (*)()>(procedure), &handle, ierror);
            }),
            succeeded());
  return handle;
}

int64_t widened(int32_t handle) {
  return static_cast<uint32_t>(handle);
}

Outcome call(int32_t isig, int32_t jsigact, int32_t josigact) {
  return reported_by([&](int32_t *ierror) { pxfsigaction_(&isig, &jsigact, &josigact, ierror); });
}

struct sigaction action_of(int number) {
  struct sigaction action = {};
  EXPECT_EQ(sigaction(number, nullptr, &action), 0) << number;
  return action;
}

void install_natively(int number, void (*handler)(int), int flags = 0, std::vector<int> mask = {}) {
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

uint32_t bit(int number) {
  return 1U << (number - 1);
}

// The handle of a freed record, which the next few records do not get again: they take the lower places, and
// are smaller.
int32_t stale_handle() {
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

using Pxfsigaction = Signals;

TEST_F(Pxfsigaction, Signal33OrMinus1Is22) {
  const Action action(a_), old;
  fill_record(old);
  const Contents before = contents_of(old);
  for (const int32_t isig : {33, -1, 64, 65, INT32_MIN, INT32_MAX}) {
    EXPECT_EQ(call(isig, action, old), refused(EINVAL)) << isig;
    EXPECT_EQ(call(isig, 0, 0), refused(EINVAL)) << isig;
    EXPECT_EQ(call(isig, stale_handle(), stale_handle()), refused(EINVAL)) << "checked first";
  }
  EXPECT_EQ(contents_of(old), before);
  for (const int number : {SIGRTMIN, SIGRTMAX})
    EXPECT_EQ(action_of(number).sa_handler, SIG_DFL);
}

// 0 is none, and the C library keeps 32 for itself.
TEST_F(Pxfsigaction, SignalThatTheHostRejectsIsItsError) {
  const Action action(a_), old;
  fill_record(old);
  const Contents before = contents_of(old);
  for (const int32_t isig : {0, 32, SIGKILL, SIGSTOP})
    EXPECT_EQ(call(isig, action, old), refused(EINVAL, EINVAL)) << isig;
  EXPECT_EQ(contents_of(old), before);
  EXPECT_EQ(call(0, stale_handle(), 0), refused(NO_SUCH_HANDLE)) << "the host is asked last";
}

TEST_F(Pxfsigaction, HandlesOf0OnlyTestTheNumber) {
  install_natively(SIGUSR1, native_handler, SA_NODEFER);
  for (int32_t isig = 1; isig < 32; ++isig)
    EXPECT_EQ(call(isig, 0, 0), succeeded()) << isig;
  EXPECT_EQ(action_of(SIGUSR1).sa_handler, native_handler);
}

TEST_F(Pxfsigaction, HandlerIsCalledOnceWithTheNumber) {
  const Action action(a_);
  EXPECT_EQ(call(SIGUSR1, action, 0), succeeded());
  const int32_t pid = getpid(), isig = SIGUSR1;
  EXPECT_EQ(reported_by([&](int32_t *ierror) { pxfkill_(&pid, &isig, ierror); }), succeeded());
  EXPECT_EQ(seen_by_a.calls, 1);
  EXPECT_EQ(seen_by_a.number, SIGUSR1);
  EXPECT_EQ(isig, SIGUSR1) << "the procedure's argument is a copy";
  EXPECT_EQ(action_of(SIGUSR1).sa_handler, posixlib_signal_handler);
}

TEST_F(Pxfsigaction, EverySignalHasItsOwnProcedure) {
  const Action with_a(a_), with_b(b_);
  call(SIGUSR1, with_a, 0);
  call(SIGUSR2, with_b, 0);
  call(SIGURG, with_a, 0);
  kill(getpid(), SIGUSR2);
  EXPECT_EQ(seen_by_b.calls, 1);
  EXPECT_EQ(seen_by_b.number, SIGUSR2);
  EXPECT_EQ(seen_by_a.calls, 0);
  kill(getpid(), SIGURG);
  EXPECT_EQ(seen_by_a.number, SIGURG);
}

TEST_F(Pxfsigaction, ErrnoOfTheInterruptedProgramStays) {
  const Action action(a_);
  call(SIGUSR1, action, 0);
  errno = 4321;
  raise(SIGUSR1);
  EXPECT_EQ(errno, 4321);
  EXPECT_EQ(seen_by_a.calls, 1);
}

TEST_F(Pxfsigaction, AThenBReturnsA) {
  const Action with_a(a_), with_b(b_), old;
  EXPECT_EQ(call(SIGUSR1, with_a, old), succeeded());
  EXPECT_EQ(old.fields().sa_handler_, 0);
  EXPECT_EQ(call(SIGUSR1, with_b, old), succeeded());
  EXPECT_EQ(old.fields().sa_handler_, widened(a_));
  EXPECT_EQ(get_address_from_handle(static_cast<int32_t>(old.fields().sa_handler_), StaticHandles),
            reinterpret_cast<void *>(procedure_a));
  raise(SIGUSR1);
  EXPECT_EQ(seen_by_a.calls, 0);
  EXPECT_EQ(seen_by_b.calls, 1);
  EXPECT_EQ(call(SIGUSR1, old, 0), succeeded());
  raise(SIGUSR1);
  EXPECT_EQ(seen_by_a.calls, 1) << "the old action, installed again";
}

TEST_F(Pxfsigaction, OneRecordForBothIsExchanged) {
  const Action with_a(a_), record(b_);
  call(SIGUSR1, with_a, 0);
  EXPECT_EQ(call(SIGUSR1, record, record), succeeded());
  EXPECT_EQ(record.fields().sa_handler_, widened(a_));
  raise(SIGUSR1);
  EXPECT_EQ(seen_by_b.calls, 1);
}

TEST_F(Pxfsigaction, QueryChangesNothing) {
  const Action with_a(a_, 0, SA_RESTART), old;
  call(SIGUSR1, with_a, 0);
  EXPECT_EQ(call(SIGUSR1, 0, old), succeeded());
  EXPECT_EQ(old.fields().sa_handler_, widened(a_));
  EXPECT_EQ(old.fields().sa_flags, SA_RESTART);
  raise(SIGUSR1);
  EXPECT_EQ(seen_by_a.calls, 1);
}

TEST_F(Pxfsigaction, DefaultAndIgnorePassThrough) {
  const Action by_default(0), ignored(1), old(77);
  EXPECT_EQ(call(SIGUSR1, ignored, old), succeeded());
  EXPECT_EQ(old.fields().sa_handler_, 0);
  EXPECT_EQ(action_of(SIGUSR1).sa_handler, SIG_IGN);
  EXPECT_EQ(call(SIGUSR1, by_default, old), succeeded());
  EXPECT_EQ(old.fields().sa_handler_, 1);
  EXPECT_EQ(action_of(SIGUSR1).sa_handler, SIG_DFL);
}

TEST_F(Pxfsigaction, ProcedureStaysInTheTableBehindDefaultAndIgnore) {
  const Action with_a(a_), by_default(0), ignored(1), old;
  call(SIGUSR1, with_a, 0);
  EXPECT_EQ(call(SIGUSR1, by_default, old), succeeded());
  EXPECT_EQ(old.fields().sa_handler_, widened(a_));
  posixlib_signal_handler(SIGUSR1);
  EXPECT_EQ(seen_by_a.calls, 1);
  call(SIGUSR1, ignored, 0);
  raise(SIGUSR1);
  EXPECT_EQ(seen_by_a.calls, 1);
  EXPECT_EQ(call(SIGUSR1, 0, old), succeeded());
  EXPECT_EQ(old.fields().sa_handler_, 1);
}

// The handler's field is wider than a handle, of which its low half is one.
TEST_F(Pxfsigaction, LowHalfOfTheHandlerIsTheHandle) {
  const Action action((int64_t{5} << 32) | widened(a_));
  EXPECT_EQ(call(SIGUSR1, action, 0), succeeded());
  raise(SIGUSR1);
  EXPECT_EQ(seen_by_a.calls, 1);
  const Action high_half_only(int64_t{1} << 32);
  EXPECT_EQ(call(SIGUSR1, high_half_only, 0), refused(NO_SUCH_HANDLE)) << "neither 0 nor 1";
}

// What a refusal before the host's call must leave: the action, the procedure and the old action's record.
class Refusal : public Signals {
protected:
  Refusal() {
    const Action with_a(a_, 0, SA_RESTART);
    call(SIGUSR1, with_a, 0);
    fill_record(old_);
    before_ = contents_of(old_);
  }
  void expect(int32_t jsigact, int32_t josigact, const Outcome &outcome) {
    reset_seen();
    EXPECT_EQ(call(SIGUSR1, jsigact, josigact), outcome);
    EXPECT_EQ(contents_of(old_), before_);
    EXPECT_EQ(action_of(SIGUSR1).sa_handler, posixlib_signal_handler);
    EXPECT_NE(action_of(SIGUSR1).sa_flags & SA_RESTART, 0);
    raise(SIGUSR1);
    EXPECT_EQ(seen_by_a.calls, 1);
    EXPECT_EQ(seen_by_b.calls, 0);
  }

  const Action old_;
  const Action with_b_{b_};
  Contents before_;
  const ForeignObject stream_;
  const OwnedRecord other_{"tms"};
  const int32_t stale_ = stale_handle();
};

TEST_F(Refusal, NewActionUnknownIs127AndOfAnotherKind22) {
  for (const int32_t handle : {stale_, INT32_MAX, 0x7ffffe00})
    expect(handle, old_, refused(NO_SUCH_HANDLE));
  for (const int32_t handle : {static_cast<int32_t>(stream_), static_cast<int32_t>(other_)})
    expect(handle, old_, refused(EINVAL));
}

TEST_F(Refusal, OldActionUnknownIs127AndOfAnotherKind22) {
  for (const int32_t handle : {stale_, INT32_MAX, 0x7ffffe00})
    expect(with_b_, handle, refused(NO_SUCH_HANDLE));
  for (const int32_t handle : {static_cast<int32_t>(stream_), static_cast<int32_t>(other_)})
    expect(with_b_, handle, refused(EINVAL));
  const Contents other = contents_of(other_);
  expect(0, other_, refused(EINVAL));
  EXPECT_EQ(contents_of(other_), other);
}

TEST_F(Refusal, HandlerThatIsNoProcedureIs127) {
  const Action wrong;
  for (const int64_t handler :
       {int64_t{2}, int64_t{15}, int64_t{0x7ffffe00}, int64_t{INT32_MAX}, int64_t{1} << 32}) {
    wrong.fields().sa_handler_ = handler;
    expect(wrong, old_, refused(NO_SUCH_HANDLE));
  }
}

TEST_F(Refusal, MaskUnknownIs127AndOfAnotherKind22) {
  for (const int64_t handler : {int64_t{0}, int64_t{1}, widened(b_)}) {
    const Action wrong(handler);
    wrong.fields().sa_mask = stale_;
    expect(wrong, old_, refused(NO_SUCH_HANDLE));
    for (const int32_t mask : {static_cast<int32_t>(stream_), static_cast<int32_t>(other_)}) {
      wrong.fields().sa_mask = mask;
      expect(wrong, old_, refused(EINVAL));
    }
  }
}

// The set of the old action's record is looked at behind the host's call only: the action stays installed,
// and of the record only the flags are filled.
class MaskOfTheOldAction : public Signals {
protected:
  void expect(int32_t mask, const Outcome &outcome) {
    const Action with_a(a_, 0, SA_NODEFER), with_b(b_, 0, SA_RESTART), old(77, mask, 88);
    call(SIGUSR1, with_a, 0);
    reset_seen();
    EXPECT_EQ(call(SIGUSR1, with_b, old), outcome);
    EXPECT_EQ(action_of(SIGUSR1).sa_flags & (SA_RESTART | SA_NODEFER), SA_RESTART);
    EXPECT_EQ(old.fields().sa_flags, SA_NODEFER);
    EXPECT_EQ(old.fields().sa_handler_, 77);
    EXPECT_EQ(old.fields().sa_mask, mask);
    raise(SIGUSR1);
    EXPECT_EQ(seen_by_a.calls, 1) << "the former procedure still handles it";
    EXPECT_EQ(seen_by_b.calls, 0);
  }
};

TEST_F(MaskOfTheOldAction, UnknownIs127) {
  expect(stale_handle(), refused(NO_SUCH_HANDLE));
}

TEST_F(MaskOfTheOldAction, OfAnotherKindIs22) {
  const OwnedRecord other("tms");
  const ForeignObject stream;
  expect(other, refused(EINVAL));
  expect(stream, refused(EINVAL));
}

TEST_F(MaskOfTheOldAction, ErrorLeavesADefaultInstalled) {
  const Action with_a(a_), by_default(0), old(77, stale_handle());
  call(SIGUSR1, with_a, 0);
  EXPECT_EQ(call(SIGUSR1, by_default, old), refused(NO_SUCH_HANDLE));
  EXPECT_EQ(action_of(SIGUSR1).sa_handler, SIG_DFL);
}

// No other test installs a procedure for SIGIO, so its place in the table is empty.
TEST_F(MaskOfTheOldAction, TrampolineWithoutAProcedureReadsAs0) {
  const Action with_b(b_), old(77, stale_handle());
  EXPECT_EQ(call(SIGIO, with_b, old), refused(NO_SUCH_HANDLE));
  EXPECT_EQ(action_of(SIGIO).sa_handler, posixlib_signal_handler);
  raise(SIGIO);
  EXPECT_EQ(seen_by_b.calls, 0) << "dropped";
  const Action readable(77);
  EXPECT_EQ(call(SIGIO, 0, readable), succeeded());
  EXPECT_EQ(readable.fields().sa_handler_, 0);
}

TEST_F(Pxfsigaction, MaskIsBlockedInTheHandler) {
  const Set mask(bit(SIGUSR2) | bit(SIGHUP));
  const Action action(a_, mask);
  EXPECT_EQ(call(SIGUSR1, action, 0), succeeded());
  raise(SIGUSR1);
  for (const int number : {SIGUSR1, SIGUSR2, SIGHUP})
    EXPECT_EQ(sigismember(&blocked_in_handler, number), 1) << number;
  for (const int number : {SIGTERM, SIGINT, SIGALRM, SIGRTMIN})
    EXPECT_EQ(sigismember(&blocked_in_handler, number), 0) << number;
}

TEST_F(Pxfsigaction, NoMaskBlocksTheSignalItselfOnly) {
  const Action action(a_);
  call(SIGUSR1, action, 0);
  raise(SIGUSR1);
  for (int number = 1; number < 32; ++number)
    EXPECT_EQ(sigismember(&blocked_in_handler, number), number == SIGUSR1 ? 1 : 0) << number;
}

TEST_F(Pxfsigaction, FullMaskIsTaken) {
  const Set mask(0xffffffff), old_mask;
  const Action action(a_, mask), old(0, old_mask);
  EXPECT_EQ(call(SIGUSR1, action, 0).answer, 0);
  EXPECT_EQ(call(SIGUSR1, 0, old).answer, 0);
  EXPECT_EQ(old_mask.bits(), 0xffffffff & ~(bit(SIGKILL) | bit(SIGSTOP) | bit(32)));
}

TEST_F(Pxfsigaction, OldMaskIsStoredInTheSetOfTheRecord) {
  const Set new_mask(bit(SIGHUP)), old_mask(0x77);
  const Action action(a_, new_mask), old(0, old_mask);
  install_natively(SIGUSR1, native_handler, 0, {SIGTERM, SIGUSR2, SIGRTMIN + 3});
  EXPECT_EQ(call(SIGUSR1, action, old), succeeded());
  EXPECT_EQ(old_mask.bits(), bit(SIGTERM) | bit(SIGUSR2));
  EXPECT_EQ(old.fields().sa_mask, old_mask);
  EXPECT_EQ(new_mask.bits(), bit(SIGHUP));
  EXPECT_EQ(call(SIGUSR1, action, old), succeeded());
  EXPECT_EQ(old_mask.bits(), bit(SIGHUP));
}

TEST_F(Pxfsigaction, OldMaskWithoutASetIsDropped) {
  const Action old(0, 0);
  install_natively(SIGUSR1, native_handler, 0, {SIGTERM});
  EXPECT_EQ(call(SIGUSR1, 0, old), succeeded());
  EXPECT_EQ(old.fields().sa_mask, 0);
}

TEST_F(Pxfsigaction, FlagsPassThroughWithoutTheLibrarysOwn) {
  const Action old;
  for (const int32_t flags : {0, SA_RESTART, SA_NODEFER, SA_NOCLDSTOP, SA_ONSTACK,
                              static_cast<int32_t>(SA_RESETHAND), SA_RESTART | SA_NODEFER | SA_ONSTACK}) {
    const Action action(a_, 0, flags);
    EXPECT_EQ(call(SIGUSR1, action, 0), succeeded());
    EXPECT_EQ(action_of(SIGUSR1).sa_flags & ~0x04000000, flags);
    EXPECT_EQ(call(SIGUSR1, 0, old), succeeded());
    EXPECT_EQ(old.fields().sa_flags, flags);
  }
}

TEST_F(Pxfsigaction, FlagsHaveTheirEffect) {
  const Action once(a_, 0, static_cast<int32_t>(SA_RESETHAND)), open_to_itself(a_, 0, SA_NODEFER), old(77);
  call(SIGURG, once, 0);
  raise(SIGURG);
  raise(SIGURG);
  EXPECT_EQ(seen_by_a.calls, 1);
  EXPECT_EQ(call(SIGURG, 0, old), succeeded());
  EXPECT_EQ(old.fields().sa_handler_, 0);
  call(SIGURG, open_to_itself, 0);
  raise(SIGURG);
  EXPECT_EQ(sigismember(&blocked_in_handler, SIGURG), 0);
}

// What a read answers that a signal interrupts, once by then a child has written.
ssize_t interrupted_read() {
  int ends[2];
  EXPECT_EQ(pipe(ends), 0);
  const pid_t child = fork();
  if (child == 0) {
    usleep(300000);
    _exit(write(ends[1], "x", 1) == 1 ? 0 : 1);
  }
  const itimerval timer = {{0, 50000}, {0, 50000}};
  setitimer(ITIMER_REAL, &timer, nullptr);
  char byte;
  const ssize_t count = read(ends[0], &byte, 1);
  const int error = errno;
  const itimerval none = {};
  setitimer(ITIMER_REAL, &none, nullptr);
  waitpid(child, nullptr, 0);
  close(ends[0]);
  close(ends[1]);
  return count < 0 ? -error : count;
}

TEST_F(Pxfsigaction, RestartFlagRestartsAnInterruptedCall) {
  const Action restarting(a_, 0, SA_RESTART), plain(a_);
  call(SIGALRM, restarting, 0);
  EXPECT_EQ(interrupted_read(), 1);
  EXPECT_GE(seen_by_a.calls, 1);
  call(SIGALRM, plain, 0);
  EXPECT_EQ(interrupted_read(), -EINTR);
}

TEST_F(Pxfsigaction, NativeHandlerReadsAsTheWrapper) {
  const Action old;
  install_natively(SIGUSR1, native_handler);
  EXPECT_EQ(call(SIGUSR1, 0, old), succeeded());
  const auto handle = static_cast<int32_t>(old.fields().sa_handler_);
  EXPECT_EQ(old.fields().sa_handler_, widened(handle));
  void *address = get_address_from_handle(handle, StaticHandles);
  EXPECT_EQ(address, reinterpret_cast<void *>(posixlib_fortran_wrapper));
  const int32_t number = SIGUSR1;
  reinterpret_cast<void (*)(const int32_t *)>(address)(&number);
  EXPECT_EQ(seen_natively.calls, 1);
  EXPECT_EQ(seen_natively.number, SIGUSR1);
  EXPECT_EQ(number, SIGUSR1);
  EXPECT_EQ(action_of(SIGUSR1).sa_handler, native_handler) << "it was only asked for";
}

TEST_F(Pxfsigaction, NativeHandlerIsInstalledAgainBehindTrampolineAndWrapper) {
  const Action with_a(a_), old;
  install_natively(SIGUSR1, native_handler);
  EXPECT_EQ(call(SIGUSR1, with_a, old), succeeded());
  raise(SIGUSR1);
  EXPECT_EQ(seen_by_a.calls, 1);
  EXPECT_EQ(call(SIGUSR1, old, 0), succeeded());
  EXPECT_EQ(action_of(SIGUSR1).sa_handler, posixlib_signal_handler);
  raise(SIGUSR1);
  EXPECT_EQ(seen_natively.calls, 1);
  EXPECT_EQ(seen_natively.number, SIGUSR1);
  EXPECT_EQ(seen_by_a.calls, 1);
}

TEST_F(Pxfsigaction, EverySignalHasItsOwnNativeHandler) {
  const Action with_a(a_), old;
  install_natively(SIGUSR1, native_handler);
  install_natively(SIGUSR2, [](int number) { seen_natively.number = -number; });
  call(SIGUSR1, with_a, old);
  call(SIGUSR2, with_a, old);
  int32_t number = SIGUSR2;
  posixlib_fortran_wrapper(&number);
  EXPECT_EQ(seen_natively.number, -SIGUSR2);
  number = SIGUSR1;
  posixlib_fortran_wrapper(&number);
  EXPECT_EQ(seen_natively.number, SIGUSR1);
}

TEST_F(Pxfsigaction, NativeHandlerWithInformationIsCalledWithTheNumber) {
  struct sigaction action = {};
  action.sa_sigaction = native_handler_with_information;
  action.sa_flags = SA_SIGINFO;
  ASSERT_EQ(sigaction(SIGUSR1, &action, nullptr), 0);
  const Action old;
  EXPECT_EQ(call(SIGUSR1, 0, old), succeeded());
  EXPECT_EQ(old.fields().sa_flags, SA_SIGINFO);
  EXPECT_EQ(call(SIGUSR1, old, 0), succeeded());
  raise(SIGUSR1);
  EXPECT_EQ(seen_natively.number, SIGUSR1);
}

// No test installs anything for SIGXCPU.
TEST_F(Signals, TrampolineIgnoresOtherNumbersAndEmptyPlaces) {
  const Action action(a_);
  for (int32_t isig = 1; isig < 32; ++isig)
    if (isig != SIGKILL && isig != SIGSTOP && isig != SIGXCPU && isig != SIGIO) {
      const struct sigaction former = action_of(isig);
      EXPECT_EQ(call(isig, action, 0), succeeded());
      sigaction(isig, &former, nullptr);
    }
  for (const int number : {0, -1, 33, 64, 65, INT32_MIN, INT32_MAX, SIGXCPU})
    posixlib_signal_handler(number);
  EXPECT_EQ(seen_by_a.calls, 0);
  posixlib_signal_handler(SIGSYS);
  EXPECT_EQ(seen_by_a.calls, 1);
}

TEST_F(Signals, WrapperIgnoresOtherNumbersAndEmptyPlaces) {
  const Action old;
  install_natively(SIGUSR1, native_handler);
  call(SIGUSR1, 0, old);
  for (const int32_t number : {0, -1, 33, 64, 65, INT32_MIN, INT32_MAX, SIGXCPU, 32})
    posixlib_fortran_wrapper(&number);
  EXPECT_EQ(seen_natively.calls, 0);
}

TEST_F(Signals, ErrorStateStaysWhereNothingIsToBeCalled) {
  const int32_t number = 33;
  EXPECT_EQ(state_after([&] {
              posixlib_signal_handler(number);
              posixlib_fortran_wrapper(&number);
            }),
            untouched());
}

Outcome send(int32_t ipid, int32_t isig) {
  return reported_by([&](int32_t *ierror) { pxfkill_(&ipid, &isig, ierror); });
}

TEST_F(Signals, KillSends) {
  const Action action(a_);
  call(SIGUSR2, action, 0);
  EXPECT_EQ(send(getpid(), SIGUSR2), succeeded());
  EXPECT_EQ(seen_by_a.number, SIGUSR2);
  EXPECT_EQ(send(getpid(), 0), succeeded()) << "0 only tests";
  EXPECT_EQ(seen_by_a.calls, 1);
  const pid_t child = fork();
  if (child == 0)
    for (;;)
      pause();
  EXPECT_EQ(send(child, SIGTERM), succeeded());
  int status = 0;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, SIGTERM);
  EXPECT_EQ(send(child, 0), refused(ESRCH, ESRCH));
}

TEST_F(Signals, KillFailsWithTheHostsError) {
  for (const int32_t isig : {-1, 65, INT32_MIN, INT32_MAX})
    EXPECT_EQ(send(getpid(), isig), refused(EINVAL, EINVAL)) << isig;
  EXPECT_EQ(send(INT32_MAX, 0), refused(ESRCH, ESRCH));
  // A number that the binding cannot catch is sent all the same.
  install_natively(SIGRTMAX, native_handler);
  EXPECT_EQ(send(getpid(), 64), succeeded());
  EXPECT_EQ(seen_natively.number, 64);
  signal(SIGRTMAX, SIG_DFL);
}

TEST_F(Signals, KillOfAnothersProcessIsEperm) {
  as_ordinary_user([] {
    errno = 0;
    const int32_t expected = kill(1, 0) == 0 ? 0 : errno;
    EXPECT_EQ(send(1, 0).answer, expected);
  });
}

struct Remainder {
  int32_t left;
  Outcome outcome;
};

Remainder set_alarm(int32_t iseconds) {
  Guarded<int32_t> isecleft(SENTINEL);
  const Outcome outcome = reported_by([&](int32_t *ierror) { pxfalarm_(&iseconds, &isecleft, ierror); });
  return {isecleft, outcome};
}

Remainder sleep_for(int32_t iseconds) {
  Guarded<int32_t> isecleft(SENTINEL);
  const Outcome outcome = reported_by([&](int32_t *ierror) { pxfsleep_(&iseconds, &isecleft, ierror); });
  return {isecleft, outcome};
}

TEST_F(Signals, AlarmAnswersWhatIsLeftOfTheOneBefore) {
  const Remainder first = set_alarm(1000);
  EXPECT_EQ(first.left, 0);
  EXPECT_EQ(first.outcome, succeeded());
  const Remainder second = set_alarm(2000);
  EXPECT_GE(second.left, 900);
  EXPECT_LE(second.left, 1000);
  EXPECT_EQ(second.outcome, succeeded());
  EXPECT_GT(set_alarm(0).left, 1900) << "0 ends it";
  EXPECT_EQ(set_alarm(0).left, 0);
}

TEST_F(Signals, AlarmComesAndEndsAPause) {
  const Action action(a_);
  call(SIGALRM, action, 0);
  EXPECT_EQ(set_alarm(1).outcome, succeeded());
  EXPECT_EQ(reported_by([](int32_t *ierror) { pxfpause_(ierror); }), refused(EINTR, EINTR));
  EXPECT_EQ(seen_by_a.calls, 1);
  EXPECT_EQ(seen_by_a.number, SIGALRM);
}

TEST_F(Signals, SleepThatEndsHasNothingLeft) {
  for (const int32_t seconds : {0, 1}) {
    const Remainder slept = sleep_for(seconds);
    EXPECT_EQ(slept.left, 0);
    EXPECT_EQ(slept.outcome.answer, 0);
  }
}

// Its IERROR is 0 then too; errno is the host's.
TEST_F(Signals, SleepThatASignalEndsAnswersTheRest) {
  const Action action(a_);
  call(SIGALRM, action, 0);
  alarm_soon();
  const Remainder slept = sleep_for(1000);
  EXPECT_GE(slept.left, 900);
  EXPECT_LE(slept.left, 1000);
  EXPECT_EQ(slept.outcome.answer, 0);
  EXPECT_GE(seen_by_a.calls, 1);
}

TEST(Signal, ModuleNamesAreTheSameRoutines) {
  EXPECT_EQ(qxport_pxfsigaction_, pxfsigaction_);
  EXPECT_EQ(qxport_pxfkill_, pxfkill_);
  EXPECT_EQ(qxport_pxfalarm_, pxfalarm_);
  EXPECT_EQ(qxport_pxfpause_, pxfpause_);
  EXPECT_EQ(qxport_pxfsleep_, pxfsleep_);
}

// Two processes exchange signals while each creates, fills, checks and frees records and changes actions. The
// next signal of a number is sent only when the one before was counted, so none may get lost.
class Storm {
public:
  static constexpr int NUMBERS[] = {SIGUSR1, SIGUSR2, SIGURG, SIGWINCH, SIGIO, SIGPROF, SIGVTALRM, SIGALRM};
  static constexpr int EACH = 1250;  // of each number to each of the two: 20,000 in all

  struct Side {
    volatile sig_atomic_t received[33];
    int32_t sent[33];
    volatile sig_atomic_t failures;
  };

  Storm()
      : sides_(static_cast<Side *>(
            mmap(nullptr, 2 * sizeof(Side), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0))) {
    EXPECT_NE(static_cast<void *>(sides_), MAP_FAILED);
  }
  ~Storm() { munmap(sides_, 2 * sizeof(Side)); }
  Storm(const Storm &) = delete;
  Storm &operator=(const Storm &) = delete;

  const Side &side(int index) const { return sides_[index]; }

  // Where the handlers of this process count.
  void prepare(int index) { own_ = &sides_[index]; }

  // One side's part, up to its end or the deadline.
  void run(int index, pid_t other) {
    Side &opposite = sides_[1 - index];
    const time_t deadline = time(nullptr) + 90;
    for (int round = 0; !finished(opposite) && time(nullptr) < deadline; ++round) {
      bool sent = false;
      for (const int number : NUMBERS)
        if (own_->sent[number] < EACH && opposite.received[number] == own_->sent[number]) {
          ++own_->sent[number];
          int32_t ierror = -1;
          pxfkill_(&other, &number, &ierror);
          expect(ierror == 0);
          sent = true;
        }
      use_records(round);
      if (!sent)
        usleep(50);
    }
  }

  static void install(const int32_t *handles) {
    for (const int number : NUMBERS) {
      const Action action(handles[0], 0, SA_RESTART);
      EXPECT_EQ(call(number, action, 0), succeeded());
    }
    handles_[0] = handles[0];
    handles_[1] = handles[1];
  }

  static void count(int32_t *number) { own_->received[*number] = own_->received[*number] + 1; }
  static void count_too(int32_t *number) { own_->received[*number] = own_->received[*number] + 1; }

private:
  static void expect(bool holds) { own_->failures = own_->failures + (holds ? 0 : 1); }

  // All was sent and counted on both sides.
  static bool finished(const Side &opposite) {
    return std::all_of(std::begin(NUMBERS), std::end(NUMBERS), [&](int number) {
      return own_->sent[number] == EACH && opposite.received[number] == EACH &&
             own_->received[number] == EACH;
    });
  }

  static void use_records(int round) {
    int32_t records[8], ierror = -1;
    for (int i = 0; i < 8; ++i) {
      pxfstructcreate_(i % 2 == 0 ? "flock" : "sigaction", &records[i], &ierror, i % 2 == 0 ? 5 : 9);
      expect(ierror == 0);
      const int32_t value = round * 8 + i;
      pxfintset_(&records[i], i % 2 == 0 ? "l_pid" : "sa_flags", &value, &ierror, i % 2 == 0 ? 5 : 8);
      expect(ierror == 0);
    }
    exchange_action(round, records[1]);
    for (int i = 7; i >= 0; --i) {
      int32_t value = -1;
      pxfintget_(&records[i], i % 2 == 0 ? "l_pid" : "sa_flags", &value, &ierror, i % 2 == 0 ? 5 : 8);
      expect(ierror == 0 && (i == 1 || value == round * 8 + i));
      pxfstructfree_(&records[i], &ierror);
      expect(ierror == 0);
    }
  }

  // Installs the one procedure where the other was: the old action names that one.
  static void exchange_action(int round, int32_t action) {
    const int32_t isig = NUMBERS[0];
    auto &fields = record_as<qxport::SigactionRecord>(action);
    fields = {fields.kind, widened(handles_[(round + 1) % 2]), 0, SA_RESTART};
    int32_t ierror = -1;
    pxfsigaction_(&isig, &action, &action, &ierror);
    expect(ierror == 0 && fields.sa_handler_ == widened(handles_[round % 2]) &&
           fields.sa_flags == SA_RESTART);
  }

  static Side *own_;
  static int32_t handles_[2];
  Side *const sides_;
};

Storm::Side *Storm::own_;
int32_t Storm::handles_[2];

TEST_F(Signals, StormLosesNoStateAndCrashesNothing) {
  Storm storm;
  const int32_t handles[] = {handle_of(Storm::count), handle_of(Storm::count_too)};
  ASSERT_NE(handles[0], handles[1]);
  Storm::install(handles);
  // What comes before a side runs has to wait.
  sigset_t all, former;
  sigfillset(&all);
  sigprocmask(SIG_SETMASK, &all, &former);
  const pid_t parent = getpid();
  const pid_t child = fork();
  ASSERT_NE(child, -1);
  const int index = child == 0 ? 1 : 0;
  storm.prepare(index);
  sigprocmask(SIG_SETMASK, &former, nullptr);
  storm.run(index, child == 0 ? parent : child);
  if (child == 0)
    _exit(0);
  int status = -1;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  for (const int number : Storm::NUMBERS) {
    EXPECT_EQ(storm.side(0).received[number], Storm::EACH) << number;
    EXPECT_EQ(storm.side(1).received[number], Storm::EACH) << number;
    signal(number, SIG_DFL);
  }
  EXPECT_EQ(storm.side(0).failures, 0);
  EXPECT_EQ(storm.side(1).failures, 0);
}

}  // namespace
