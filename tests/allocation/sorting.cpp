// What SORTQQ asks of the heap: one string's room, or nothing.
#include "failing_allocations.h"
#include "recorder.h"
#include "sorted_arrays.h"

namespace {

void sort(Bytes *array, const ElementKind &kind, intptr_t *count) {
  const intptr_t adrarray = reinterpret_cast<intptr_t>(array->data());
  sortqq_(&adrarray, count, &kind.code);
}

bool is_string(const ElementKind &kind) {
  return kind.code <= 32766;
}

}  // namespace

TEST(Sortqq, AsksForOneStringOrNothing) {
  Filler filler(3);
  for (const ElementKind &kind : all_kinds())
    for (const size_t elements : {1, 20, 5000}) {
      Bytes array = filler.fill(kind, elements, Filling::Random);
      intptr_t count = static_cast<intptr_t>(elements);
      const FailingAllocation counting(0);
      sort(&array, kind, &count);
      EXPECT_EQ(counting.allocations(), is_string(kind) ? 1U : 0U) << kind.name;
      EXPECT_EQ(counting.requested(1), is_string(kind) ? kind.width : 0U) << kind.name;
    }
}

TEST(Sortqq, NoMemoryLeavesTheStringsAsTheyAre) {
  Filler filler(4);
  for (const ElementKind &kind : all_kinds()) {
    if (!is_string(kind))
      continue;
    Bytes array = filler.fill(kind, 100, Filling::Random);
    const Bytes unsorted = array;
    intptr_t count = 100;
    reset_error_state();
    {
      const FailingAllocation failing(1, EAGAIN);
      sort(&array, kind, &count);
      EXPECT_TRUE(failing.failed());
    }
    EXPECT_EQ(count, 0);
    EXPECT_EQ(error_state(), (ErrorState{ENOMEM, SENTINEL, {ENOMEM}}));
    EXPECT_EQ(array, unsorted);
  }
}

TEST(Sortqq, RefusalsAskForNothing) {
  const FailingAllocation counting(0);
  Bytes array(4);
  for (const int32_t code : {0, -5, 32767, 0x70000}) {
    intptr_t count = 1;
    sort(&array, {"", code, 4, nullptr, nullptr}, &count);
  }
  intptr_t count = 0;
  sort(&array, string_kind(4), &count);
  EXPECT_EQ(counting.allocations(), 0U);
}

TEST(Sortqq, GivesBackItsRoom) {
  Bytes array(300, 'x');
  array[200] = 'a';
  EXPECT_EQ(heap_growth([&] {
              intptr_t count = 3;
              sort(&array, string_kind(100), &count);
            }),
            0U);
}

TEST(Bsearchqq, AsksForNothing) {
  const FailingAllocation counting(0);
  const char array[] = "abcabdabe";
  const int32_t code = 3;
  const intptr_t adrkey = reinterpret_cast<intptr_t>(array + 6), adrarray = reinterpret_cast<intptr_t>(array),
                 count = 3;
  EXPECT_EQ(bsearchqq_(&adrkey, &adrarray, &count, &code), 3);
  EXPECT_EQ(counting.allocations(), 0U);
}
