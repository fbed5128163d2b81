// The string helpers and those who convert through them: what they ask of the heap, and what they do without
// it.
#include "frame/strings.h"
#include "failing_allocations.h"
#include "recorder.h"

#include <gtest/gtest.h>

#include <iterator>
#include <string>

namespace {

constexpr size_t SLACK = 23;
constexpr size_t RINDEX_SPARE = 2;

const ErrorState OUT_OF_MEMORY = {ENOMEM, SENTINEL, {ENOMEM}};

size_t bytes_asked_for(const std::string &text) {
  const FailingAllocation counting(0);
  deallocCstr(allocCstr(text.data(), static_cast<qxport::charlen>(text.size())));
  EXPECT_EQ(counting.allocations(), 1U);
  return counting.requested(1);
}

int32_t rindex(const std::string &text, const std::string &sub) {
  return rindex_(text.data(), sub.data(), static_cast<qxport_charlen>(text.size()),
                 static_cast<qxport_charlen>(sub.size()));
}

}  // namespace

TEST(AllocCstr, AsksForTheTrimmedTextAndTwentyThreeBytes) {
  EXPECT_EQ(bytes_asked_for("ab  "), 2 + SLACK);
  EXPECT_EQ(bytes_asked_for("a\tb "), 3 + SLACK);
  EXPECT_EQ(bytes_asked_for(""), SLACK);
  EXPECT_EQ(bytes_asked_for("    "), SLACK);
  EXPECT_EQ(bytes_asked_for(std::string("a\0b", 3)), 3 + SLACK);
  EXPECT_EQ(bytes_asked_for(std::string(100000, 'x')), 100000 + SLACK);
}

TEST(AllocCstr, NegativeLengthAsksForTheSlackAlone) {
  const FailingAllocation counting(0);
  deallocCstr(allocCstr("ab", -1));
  EXPECT_EQ(counting.requested(1), SLACK);
}

TEST(AllocCstr, NullAddressAsksForNothing) {
  const FailingAllocation counting(0);
  EXPECT_EQ(allocCstr(nullptr, 4), nullptr);
  EXPECT_EQ(counting.allocations(), 0U);
}

TEST(AllocCstr, NoMemoryIsEnomem) {
  reset_error_state();
  const FailingAllocation failing(1);
  EXPECT_EQ(allocCstr("ab", 2), nullptr);
  EXPECT_TRUE(failing.failed());
  EXPECT_EQ(error_state(), OUT_OF_MEMORY);
}

TEST(AllocCstr, NoMemoryIsEnomemWhateverTheHeapSays) {
  reset_error_state();
  const FailingAllocation failing(1, EAGAIN);
  EXPECT_EQ(allocCstr("ab", 2), nullptr);
  EXPECT_EQ(error_state(), OUT_OF_MEMORY);
}

TEST(AllocCstr, GivenBackWhole) {
  EXPECT_EQ(heap_growth([] { deallocCstr(allocCstr("abcdef  ", 8)); }), 0U);
  EXPECT_EQ(heap_growth([] { const qxport::CString string("abcdef  ", 8); }), 0U);
}

#if UINTPTR_MAX > UINT32_MAX
// The allocation fails, so that only the text's end is read.
TEST(AllocCstr, LengthIsAWholeMachineWord) {
  const FailingAllocation failing(1);
  const char end[] = {' ', ' ', ' ', ' ', ' ', ' ', ' ', 'x'};
  const qxport::charlen length = (qxport::charlen{1} << 32) + 4;
  const uintptr_t begin = reinterpret_cast<uintptr_t>(std::end(end)) - static_cast<uintptr_t>(length);
  EXPECT_EQ(allocCstr(reinterpret_cast<const char *>(begin), length), nullptr);
  EXPECT_EQ(failing.requested(1), static_cast<size_t>(length) + SLACK);
}
#endif

TEST(CstrToFstr, NeedsNoHeap) {
  const FailingAllocation counting(0);
  char variable[5];
  CstrToFstr(variable, "abc", 5, 3);
  CstrToFstr(variable, "abcdef", 5, 6);
  EXPECT_EQ(counting.allocations(), 0U);
}

TEST(Rindex, AsksForBothTextsAndTwoBytesEach) {
  const FailingAllocation counting(0);
  EXPECT_EQ(rindex("abcabc", "bc"), 5);
  EXPECT_EQ(counting.allocations(), 2U);
  EXPECT_EQ(counting.requested(1), 6 + RINDEX_SPARE);
  EXPECT_EQ(counting.requested(2), 2 + RINDEX_SPARE);
}

TEST(Rindex, LongerSubstringAsksForNothing) {
  const FailingAllocation counting(0);
  EXPECT_EQ(rindex("ab", "abc"), 0);
  EXPECT_EQ(counting.allocations(), 0U);
}

TEST(Rindex, NoMemoryIs0AndRecorded) {
  int32_t answer = SENTINEL;
  const size_t failures = fail_each_allocation(
      [&] {
        reset_error_state();
        answer = rindex("abcabc", "bc");
      },
      [&](size_t n) {
        EXPECT_EQ(answer, 0) << "allocation " << n;
        EXPECT_EQ(error_state(), OUT_OF_MEMORY) << "allocation " << n;
      });
  EXPECT_EQ(failures, 2U);
  EXPECT_EQ(answer, 5);
  EXPECT_EQ(error_state(), untouched());
}

TEST(Rindex, TheSystemsNumberIsRecorded) {
  for (const size_t n : {1, 2}) {
    reset_error_state();
    const FailingAllocation failing(n, EAGAIN);
    EXPECT_EQ(rindex("abcabc", "bc"), 0);
    EXPECT_EQ(error_state(), (ErrorState{EAGAIN, SENTINEL, {EAGAIN}})) << "allocation " << n;
  }
}

TEST(Rindex, GivesBackWhatItObtained) {
  EXPECT_EQ(heap_growth([] { rindex("abcabc", "bc"); }), 0U);
  EXPECT_EQ(heap_growth([] { rindex("abcabc", "x"); }), 0U);
  for (const size_t n : {1, 2})
    EXPECT_EQ(heap_growth([n] {
                reset_error_state();  // lest the list of recordings grow
                const FailingAllocation failing(n);
                rindex("abcabc", "bc");
              }),
              0U)
        << "allocation " << n;
}

TEST(Matherrqq, NoMemoryPrintsNothing) {
  const int16_t length = 3;
  int32_t type = 7;
  int16_t answer[3] = {0x1234, 0x1234, 0x1234};
  reset_error_state();
  testing::internal::CaptureStdout();
  {
    const FailingAllocation failing(1);
    matherrqq_("EXP", &length, &type, &answer[1], 3);
  }
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(error_state(), OUT_OF_MEMORY);
  EXPECT_EQ(type, 7) << "a type that was not looked at";
  EXPECT_EQ(answer[0], 0x1234);
  EXPECT_EQ(answer[1], 0);
  EXPECT_EQ(answer[2], 0x1234);
}

TEST(Matherrqq, GivesBackTheName) {
  const int16_t length = 3;
  testing::internal::CaptureStdout();
  EXPECT_EQ(heap_growth([&] {
              int32_t type = 1;
              int16_t answer;
              matherrqq_("EXP", &length, &type, &answer, 3);
            }),
            0U);
  testing::internal::GetCapturedStdout();
}
