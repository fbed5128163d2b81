// IEEE_HANDLER without the memory for its keywords: an answer of 1, and nothing changed.
#include "failing_allocations.h"
#include "fp_units.h"
#include "ieee_calls.h"

#include <csignal>

namespace {

void handler(int32_t *, const int32_t *) {}

}  // namespace

TEST(IeeeHandlerAllocations, EachFailing) {
  fresh_units();
  signal(SIGFPE, SIG_IGN);
  intptr_t answer = 0;
  const size_t failed = fail_each_allocation(
      [&] {
        reset_error_state();
        answer = ieee_handler("set", "division", handler);
      },
      [&](size_t n) {
        EXPECT_EQ(answer, 1) << n;
        EXPECT_EQ(error_state(), (ErrorState{ENOMEM, SENTINEL, {ENOMEM}})) << n;
        EXPECT_EQ(sse_word(), FRESH_SSE) << n;
        EXPECT_EQ(ieee_handler("get", "division"), 0) << n;
        struct sigaction action;
        EXPECT_EQ(sigaction(SIGFPE, nullptr, &action), 0);
        EXPECT_TRUE(action.sa_handler == SIG_IGN) << n;
      });
  EXPECT_EQ(failed, 2U);
  EXPECT_EQ(answer, 0);
  EXPECT_EQ(ieee_handler("get", "division"), reinterpret_cast<intptr_t>(handler));
  EXPECT_EQ(heap_growth([] {
              ieee_handler("set", "all", handler);
              ieee_handler("clear", "all");
              ieee_handler("clear", "nothing");
              ieee_handler("nothing", "all");
            }),
            0U);
  signal(SIGFPE, SIG_DFL);
}

// The keywords of IEEE_FLAGS need none.
TEST(IeeeFlagsAllocations, None) {
  Character out(9);
  const FailingAllocation counting(0);
  EXPECT_EQ(ieee_flags_("get", "direction", "", out.data(), 3, 9, 0, 9), 0);
  EXPECT_EQ(counting.allocations(), 0U);
}
