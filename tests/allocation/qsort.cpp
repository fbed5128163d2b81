// QSORT without memory for a copy: it sorts all the same, and a comparison that contradicts itself does no
// harm.
#include "failing_allocations.h"
#include "recorder.h"

#include <algorithm>
#include <dlfcn.h>
#include <random>
#include <unistd.h>
#include <vector>

namespace {

// The machine's memory in pages, where it is not the host's.
long memory_in_pages;

}  // namespace

long sysconf(int name) noexcept {
  static const auto hosts = reinterpret_cast<long (*)(int)>(dlsym(RTLD_NEXT, "sysconf"));
  return name == _SC_PHYS_PAGES && memory_in_pages != 0 ? memory_in_pages : hosts(name);
}

namespace {

using Comparison = int32_t (*)(const void *, const void *);

void sort(std::vector<int32_t> *elements, size_t from, size_t count, Comparison compare) {
  const auto len = static_cast<int64_t>(count);
  const int64_t size = sizeof(int32_t);
  qsort_(elements->data() + from, &len, &size, reinterpret_cast<void (*)()>(compare));
}

int32_t ascending(const void *a, const void *b) {
  const auto x = *static_cast<const int32_t *>(a), y = *static_cast<const int32_t *>(b);
  return x < y ? -1 : x > y ? 1 : 0;
}

constexpr int32_t WALL = -77;

// Elements between two that are no part of the array.
std::vector<int32_t> walled(size_t count) {
  std::mt19937 random(5);
  std::vector<int32_t> elements(count + 2, WALL);
  for (size_t i = 1; i <= count; ++i)
    elements[i] = static_cast<int32_t>(random() % 1000);
  return elements;
}

constexpr size_t COUNTS[] = {256, 257, 1000, 4096, 10001};

}  // namespace

TEST(Qsort, SortsInPlaceWithoutMemory) {
  for (const size_t count : COUNTS) {
    std::vector<int32_t> elements = walled(count), expected = elements;
    std::sort(expected.begin() + 1, expected.end() - 1);
    reset_error_state();
    {
      const FailingAllocation failing(1);
      sort(&elements, 1, count, ascending);
      EXPECT_TRUE(failing.failed());
    }
    EXPECT_EQ(error_state(), untouched());
    EXPECT_EQ(elements, expected) << count;
  }
}

namespace {

std::minstd_rand answers;
const int32_t *first, *last;

// Looks that both are elements of the array.
void look_at(const void *a, const void *b) {
  for (const void *element : {a, b})
    if (element < first || element > last)
      ADD_FAILURE() << "an element outside of the array is compared";
}

constexpr Comparison CONTRADICTIONS[] = {
    [](const void *a, const void *b) { return look_at(a, b), -1; },
    [](const void *a, const void *b) { return look_at(a, b), 1; },
    [](const void *a, const void *b) { return look_at(a, b), static_cast<int32_t>(answers() % 3) - 1; },
    [](const void *a, const void *b) { return look_at(a, b), a < b ? 1 : -1; }};

}  // namespace

TEST(Qsort, ContradictionsStayInsideTheArrayWithoutMemory) {
  for (const size_t count : COUNTS) {
    for (const Comparison compare : CONTRADICTIONS) {
      std::vector<int32_t> elements = walled(count), expected = elements;
      first = &elements[1];
      last = &elements[count];
      {
        const FailingAllocation failing(1);
        sort(&elements, 1, count, compare);
      }
      EXPECT_EQ(elements.front(), WALL);
      EXPECT_EQ(elements.back(), WALL);
      std::sort(elements.begin() + 1, elements.end() - 1);
      std::sort(expected.begin() + 1, expected.end() - 1);
      EXPECT_EQ(elements, expected) << "elements are lost";
    }
  }
}

TEST(Qsort, GivesBackItsRoomAndAsksForNoneWhereItIsSmall) {
  std::vector<int32_t> elements = walled(5000);
  EXPECT_EQ(heap_growth([&] { sort(&elements, 1, 5000, ascending); }), 0U);
  {
    const FailingAllocation counting(0);
    sort(&elements, 1, 5000, ascending);
    EXPECT_EQ(counting.allocations(), 1U);
    EXPECT_EQ(counting.requested(1), 5000 * sizeof(int32_t));
  }
  const FailingAllocation counting(0);
  sort(&elements, 1, 255, ascending);
  EXPECT_EQ(counting.allocations(), 0U);
}

// A quarter of the machine's memory, in whole pages, is not asked for.
TEST(Qsort, LargePartOfTheMemoryIsSortedInPlace) {
  const auto of_a_page = static_cast<size_t>(sysconf(_SC_PAGESIZE)) / sizeof(int32_t);
  for (const bool is_large : {false, true}) {
    const size_t count = 2 * of_a_page - (is_large ? 0 : 1);
    std::vector<int32_t> elements = walled(count), expected = elements;
    std::sort(expected.begin() + 1, expected.end() - 1);
    const FailingAllocation counting(0);
    memory_in_pages = 8;
    sort(&elements, 1, count, ascending);
    memory_in_pages = 0;
    EXPECT_EQ(counting.requested(1), is_large ? 0 : count * sizeof(int32_t));
    EXPECT_EQ(elements, expected);
  }
}
