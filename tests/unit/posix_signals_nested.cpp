// A handler that another signal's interrupts: each sees its own number, and the interrupted code its errno.
#include "signal_actions.h"

namespace {

// What the outer handler saw before and behind the inner one's work.
volatile sig_atomic_t before_inner, behind_inner, inner;
volatile sig_atomic_t error_behind_inner;

void inner_handler(int32_t *number) {
  inner = *number;
  errno = EIO;
}

void outer_handler(int32_t *number) {
  before_inner = *number;
  errno = EAGAIN;
  raise(SIGUSR2);
  behind_inner = *number;
  error_behind_inner = errno;
}

class NestedHandlers : public testing::Test {
protected:
  NestedHandlers() {
    for (volatile sig_atomic_t *seen : {&before_inner, &behind_inner, &inner, &error_behind_inner})
      *seen = SENTINEL;
  }
  ~NestedHandlers() override {
    for (const int number : {SIGUSR1, SIGUSR2})
      signal(number, SIG_DFL);
  }
};

}  // namespace

TEST_F(NestedHandlers, SeeEachItsOwnNumberAndErrno) {
  const Action outer(widened(handle_of(outer_handler))), nested(widened(handle_of(inner_handler)));
  ASSERT_EQ(call(SIGUSR1, outer, 0), succeeded());
  ASSERT_EQ(call(SIGUSR2, nested, 0), succeeded());
  errno = ERRNO_SENTINEL;
  raise(SIGUSR1);
  EXPECT_EQ(errno, ERRNO_SENTINEL);
  EXPECT_EQ(before_inner, SIGUSR1);
  EXPECT_EQ(inner, SIGUSR2);
  EXPECT_EQ(behind_inner, SIGUSR1) << "the inner one's number is its own";
  // The thread sanitizer runs the inner handler behind the outer one.
  EXPECT_EQ(error_behind_inner, EAGAIN);
}

// A set of all 32 bits holds a signal that the host keeps to itself and refuses to put into a set.
TEST_F(NestedHandlers, FullMasksLeaveErrnoAlone) {
  const Set full(UINT32_MAX), former;
  const Action action(0, full);
  EXPECT_EQ(call(SIGUSR1, action, 0), succeeded());
  const int32_t how = SIG_UNBLOCK, jsigset = full, josigset = former;
  EXPECT_EQ(reported_by([&](int32_t *ierror) { pxfsigprocmask_(&how, &jsigset, &josigset, ierror); }),
            succeeded());
  EXPECT_EQ(reported_by([&](int32_t *ierror) { pxfsigpending_(&josigset, ierror); }), succeeded());
}
