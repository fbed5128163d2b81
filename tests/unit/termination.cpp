// What EXIT and ABORT hand to the run-time. The tests' own run-time notes it and comes back.
#include "contract/services.h"

#include "fenced_text.h"
#include "recorder.h"

#include <string>

namespace {

struct {
  const int32_t *status;
  int calls;
} exited;

struct {
  std::string text;
  int32_t length;
  bool terminated;
  int calls;
} aborted;

// What the stack held before must not be taken for a NUL.
[[gnu::noinline]] void fill_the_stack() {
  volatile char rubbish[4096];
  for (volatile char &byte : rubbish)
    byte = 'R';
}

// The text that ABORT makes of a message.
std::string abort_text(const char *msg, qxport_charlen length) {
  aborted = {};
  fill_the_stack();
  abort_(msg, length);
  EXPECT_EQ(aborted.calls, 1);
  EXPECT_EQ(aborted.length, static_cast<int32_t>(aborted.text.size()));
  return aborted.text;
}

std::string abort_text(const std::string &msg) {
  return abort_text(msg.data(), static_cast<qxport_charlen>(msg.size()));
}

}  // namespace

void for_exit(const int32_t *status) {
  exited = {status, exited.calls + 1};
}

void for_abort(const char *text, int32_t length) {
  aborted.text.assign(text, static_cast<size_t>(length));
  aborted.length = length;
  aborted.terminated = text[length] == '\0';
  ++aborted.calls;
}

TEST(Exit, HandsItsArgumentOn) {
  const int32_t status = 7;
  for (void (*const routine)(const int32_t *) : {&exit_, &qxport_exit_}) {
    exited = {};
    routine(&status);
    EXPECT_EQ(exited.calls, 1);
    EXPECT_EQ(exited.status, &status) << "the address itself";
  }
  EXPECT_EQ(status, 7);
}

TEST(Exit, AbsentStatusIsHandedOn) {
  const int32_t status = 7;
  exited = {&status, 0};
  exit_(nullptr);
  EXPECT_EQ(exited.calls, 1);
  EXPECT_EQ(exited.status, nullptr);
}

TEST(Abort, MessageBehindAPrefix) {
  EXPECT_EQ(abort_text("bad"), "abort: bad");
}

TEST(Abort, AbsentMessage) {
  EXPECT_EQ(abort_text(nullptr, 0), "abort: Fortran Abort Called");
  EXPECT_EQ(abort_text(nullptr, 12), "abort: Fortran Abort Called");
}

TEST(Abort, EmptyMessageIsPresent) {
  EXPECT_EQ(abort_text("bad", 0), "abort: ");
}

TEST(Abort, NegativeLengthIsAnEmptyMessage) {
  EXPECT_EQ(abort_text("bad", -1), "abort: ");
}

TEST(Abort, TrailingBlanksStay) {
  EXPECT_EQ(abort_text("bad  "), "abort: bad  ");
  EXPECT_EQ(abort_text("   "), "abort:    ");
}

TEST(Abort, NulEndsTheMessage) {
  EXPECT_EQ(abort_text(std::string("ba\0d", 4)), "abort: ba");
  EXPECT_EQ(abort_text(std::string("\0bad", 4)), "abort: ");
}

TEST(Abort, LengthCountsNotANul) {
  EXPECT_EQ(abort_text("badly", 3), "abort: bad");
}

TEST(Abort, TwoHundredAndFortyCharactersAtMost) {
  const std::string text = std::string(239, 'x') + "yz" + std::string(59, 'z');
  ASSERT_EQ(text.size(), 300U);
  for (const size_t length : {239U, 240U, 241U, 256U, 300U})
    EXPECT_EQ(abort_text(text.substr(0, length)), "abort: " + text.substr(0, std::min<size_t>(length, 240)));
}

TEST(Abort, HundredThousandCharacters) {
  EXPECT_EQ(abort_text(std::string(100000, 'x')), "abort: " + std::string(240, 'x'));
}

TEST(Abort, ReadsNothingBehindTheMessage) {
  for (const size_t length : {3U, 240U}) {
    const FencedText message(std::string(length, 'x'));
    EXPECT_EQ(abort_text(message.data(), message.length()), "abort: " + std::string(length, 'x'));
  }
}

// A run-time that takes for_abort over may read the text up to a NUL.
TEST(Abort, NulFollowsTheText) {
  for (const size_t length : {0U, 3U, 240U, 300U}) {
    abort_text(std::string(length, 'x'));
    EXPECT_TRUE(aborted.terminated) << length;
  }
  abort_text(nullptr, 0);
  EXPECT_TRUE(aborted.terminated);
}

#if UINTPTR_MAX > UINT32_MAX
TEST(Abort, HiddenLengthIsAWholeMachineWord) {
  const std::string text(300, 'x');
  EXPECT_EQ(abort_text(text.data(), (qxport_charlen{1} << 32) + 3), "abort: " + std::string(240, 'x'));
}
#endif

TEST(Abort, ModuleNameIsTheSameRoutine) {
  aborted = {};
  qxport_abort_("bad", 3);
  EXPECT_EQ(aborted.text, "abort: bad");
}

TEST(Termination, ErrorStateStays) {
  const int32_t status = 7;
  reset_error_state();
  exit_(&status);
  abort_("bad", 3);
  EXPECT_EQ(error_state(), untouched());
}
