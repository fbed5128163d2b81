// PXFSIGACTION with Fortran and native handlers, and the two bridges between them.
#include "signal_actions.h"

#include <fcntl.h>
#include <sys/wait.h>

namespace {

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

TEST_F(Pxfsigaction, MaskIsBlockedInTheHandler) {
  const Set mask(bit(SIGUSR2) | bit(SIGHUP));
  const Action action(a_, mask);
  EXPECT_EQ(call(SIGUSR1, action, 0), succeeded());
  raise(SIGUSR1);
  for (const int number : {SIGUSR1, SIGUSR2, SIGHUP})
    EXPECT_TRUE(was_blocked(number)) << number;
  for (const int number : {SIGTERM, SIGINT, SIGALRM, SIGRTMIN})
    EXPECT_EQ(was_blocked(number), ALL_ARE_BLOCKED) << number;
}

TEST_F(Pxfsigaction, NoMaskBlocksTheSignalItselfOnly) {
  const Action action(a_);
  call(SIGUSR1, action, 0);
  raise(SIGUSR1);
  for (int number = 1; number < 32; ++number) {
    if (number != SIGKILL && number != SIGSTOP) {
      EXPECT_EQ(was_blocked(number), number == SIGUSR1 || ALL_ARE_BLOCKED) << number;
    }
  }
}

TEST_F(Pxfsigaction, FullMaskIsTaken) {
  const Set mask(0xffffffff), old_mask;
  const Action action(a_, mask), old(0, old_mask);
  EXPECT_EQ(call(SIGUSR1, action, 0).answer, 0);
  EXPECT_EQ(call(SIGUSR1, 0, old).answer, 0);
  // Whether the two that nothing blocks are told is the host's affair.
  const uint32_t unblockable = bit(SIGKILL) | bit(SIGSTOP);
  EXPECT_EQ(old_mask.bits() | unblockable, 0xffffffff & ~bit(32));
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
  EXPECT_EQ(was_blocked(SIGURG), ALL_ARE_BLOCKED);
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
    if (isig != SIGKILL && isig != SIGSTOP && isig != SIGXCPU) {
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

}  // namespace
