// What PXFSIGACTION refuses before the host's call, with nothing changed, and what it reports behind it.
#include "signal_actions.h"

namespace {

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

// Of several mistakes the first in this order is reported: the new action, its handler, its mask, the old
// action.
TEST_F(Refusal, OrderOfTheChecks) {
  expect(stale_, other_, refused(NO_SUCH_HANDLE));
  expect(other_, stale_, refused(EINVAL));
  const Action no_handler(2, other_), no_mask(b_, stale_), mask_of_another_kind(b_, other_);
  expect(no_handler, other_, refused(NO_SUCH_HANDLE));
  expect(no_mask, other_, refused(NO_SUCH_HANDLE));
  expect(mask_of_another_kind, stale_, refused(EINVAL));
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

}  // namespace
