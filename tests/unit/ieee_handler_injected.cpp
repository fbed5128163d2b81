// IEEE_HANDLER with services of the test's own: what it asks of them, what it does itself, and an end that
// comes back.
#include "captured_child.h"
#include "fp_units.h"
#include "ieee_calls.h"

#include <csignal>
#include <cstring>
#include <vector>

namespace {

struct Change {
  uint32_t value, mask;
  bool operator==(const Change &) const = default;
};

std::vector<Change> changes;

}  // namespace

uint32_t controlfp(uint32_t value, uint32_t mask) {
  changes.push_back({value & mask, mask});
  return 0;
}

void for_exit(const int32_t *status) {
  dprintf(STDOUT_FILENO, "end %d\n", *status);
}

class InjectedHandler : public FreshUnits {};

TEST_F(InjectedHandler, ControlWordAndSseRegister) {
  constexpr struct {
    const char *name;
    uint32_t word, sse;
  } WORDS[] = {
      {"inexact", 0x1, 0x1000}, {"division", 0x8, 0x200}, {"underflow", 0x2, 0x800}, {"overflow", 0x4, 0x400},
      {"invalid", 0x10, 0x80},  {"all", 0x8001F, 0x1E80}, {"common", 0x1E, 0xE80},
  };
  for (const auto &[name, word, sse] : WORDS) {
    changes.clear();
    EXPECT_EQ(ieee_handler("set", name), 0);
    EXPECT_EQ(changes, std::vector<Change>({{0, word}})) << name;
    EXPECT_EQ(sse_word(), FRESH_SSE & ~sse) << name;
    EXPECT_EQ(x87_control_word(), FRESH_X87) << "the service's part";
    changes.clear();
    EXPECT_EQ(ieee_handler("clear", name), 0);
    EXPECT_EQ(changes, std::vector<Change>({{word, word}})) << name;
    EXPECT_EQ(sse_word(), FRESH_SSE) << name;
  }
  changes.clear();
  ieee_handler("get", "invalid");
  ieee_handler("set", "nothing");
  ieee_handler("nothing", "all");
  EXPECT_TRUE(changes.empty());
}

// Execution never goes on behind the trap.
TEST_F(InjectedHandler, EndThatComesBack) {
  const ChildReport trapped = run_in_child([] {
    ieee_handler("set", "division");
    sse_divide(1, 0);
  });
  EXPECT_EQ(trapped.exit_code(), 9);
  EXPECT_EQ(trapped.out, "end 9\n");
  const ChildReport sent = run_in_child([] {
    ieee_handler("set", "division");
    raise(SIGFPE);
  });
  EXPECT_EQ(sent.exit_code(), 1);
  EXPECT_EQ(sent.out, "end 1\n");
}
