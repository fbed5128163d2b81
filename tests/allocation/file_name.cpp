// File names of the binding without memory.
#include "posix/file_name.h"

#include "failing_allocations.h"
#include "recorder.h"

#include <gtest/gtest.h>

using qxport::CString;
using qxport::file_name;

namespace {

// Stands for a host call that must not be made.
int refuse(const char *) {
  ADD_FAILURE() << "called without a name";
  return 0;
}

}  // namespace

TEST(FileName, AsksForItsLengthAndOneByte) {
  const FailingAllocation counting(0);
  const CString trimmed = file_name("abc  ", 0, 5);
  const CString exact = file_name("abc  ", 4, 5);
  EXPECT_EQ(counting.allocations(), 2U);
  EXPECT_EQ(counting.requested(1), 3U + 1);
  EXPECT_EQ(counting.requested(2), 4U + 1);
}

TEST(FileName, TheSystemsNumberIsReportedAndNothingDone) {
  for (const int error : {ENOMEM, EAGAIN}) {
    int32_t ierror = SENTINEL;
    reset_error_state();
    {
      const FailingAllocation failing(1, error);
      qxport::call_with_name("abc", 3, 3, &ierror, refuse);
      EXPECT_TRUE(failing.failed());
    }
    EXPECT_EQ(ierror, error);
    EXPECT_EQ(error_state(), (ErrorState{error, SENTINEL, {}}));
  }
}

TEST(FileName, GivenBackWhole) {
  EXPECT_EQ(heap_growth([] { const CString name = file_name("abc", 0, 3); }), 0U);
}
