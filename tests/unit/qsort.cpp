// QSORT and its twins: what is sorted, what is left alone, and comparisons that contradict themselves.
#include "outcome.h"

#include <algorithm>
#include <climits>
#include <random>
#include <sys/mman.h>
#include <unistd.h>

namespace {

using Comparison = int32_t (*)(const void *, const void *);
using Sort = void (*)(void *array, int64_t len, int64_t isize, Comparison compare);

void (*procedure(Comparison compare))() {
  return reinterpret_cast<void (*)()>(compare);
}

constexpr Sort SORTS[] = {[](void *array, int64_t len, int64_t isize, Comparison compare) {
                            qsort_(array, &len, &isize, procedure(compare));
                          },
                          [](void *array, int64_t len, int64_t isize, Comparison compare) {
                            const auto short_len = static_cast<int32_t>(len),
                                       short_size = static_cast<int32_t>(isize);
                            qsort_ii_(array, &short_len, &short_size, procedure(compare));
                          },
                          [](void *array, int64_t len, int64_t isize, Comparison compare) {
                            const auto short_len = static_cast<int32_t>(len);
                            qsort_il_(array, &short_len, &isize, procedure(compare));
                          }};

int32_t sign(int64_t number) {
  return number < 0 ? -1 : number > 0 ? 1 : 0;
}

template <typename Element>
int32_t ascending(const void *a, const void *b) {
  return sign(int64_t{*static_cast<const Element *>(a)} - *static_cast<const Element *>(b));
}

// Answers of any size, as a function of INTEGER(4) may give them.
int32_t descending_by_far(const void *a, const void *b) {
  const auto x = *static_cast<const int16_t *>(a), y = *static_cast<const int16_t *>(b);
  return x == y ? 0 : x < y ? INT_MAX : INT_MIN;
}

template <typename Element>
std::vector<Element> random_elements(size_t count) {
  std::mt19937 random(static_cast<unsigned>(count));
  std::vector<Element> elements(count);
  for (Element &element : elements)
    element = static_cast<Element>(random());
  return elements;
}

constexpr size_t COUNTS[] = {2, 3, 4, 5, 7, 8, 16, 100, 255, 256, 257, 1000, 20000};

template <typename Element>
void expect_sorted(Sort sort) {
  for (const size_t count : COUNTS) {
    // The last one is no part of the array.
    std::vector<Element> elements = random_elements<Element>(count + 1), expected = elements;
    std::sort(expected.begin(), expected.end() - 1);
    sort(elements.data(), static_cast<int64_t>(count), sizeof(Element), ascending<Element>);
    EXPECT_EQ(elements, expected) << count << " of " << sizeof(Element);
  }
}

TEST(Qsort, SortsElementsOfEverySize) {
  for (const Sort sort : SORTS) {
    expect_sorted<int8_t>(sort);
    expect_sorted<int16_t>(sort);
    expect_sorted<int32_t>(sort);
    expect_sorted<int64_t>(sort);
  }
}

int32_t by_first_three(const void *a, const void *b) {
  return memcmp(a, b, 3);
}

TEST(Qsort, MovesElementsAsAWhole) {
  for (const size_t size : {3U, 5U, 12U, 33U, 100U, 1000U}) {
    constexpr size_t COUNT = 200;
    std::vector<std::string> elements(COUNT);
    std::mt19937 random(7);
    std::string array;
    for (std::string &element : elements) {
      for (size_t i = 0; i < size; ++i)
        element += static_cast<char>('a' + random() % 26);
      array += element;
    }
    for (const Sort sort : SORTS) {
      std::string mine = array;
      sort(mine.data(), COUNT, static_cast<int64_t>(size), by_first_three);
      std::vector<std::string> found;
      for (size_t i = 0; i < COUNT; ++i)
        found.push_back(mine.substr(i * size, size));
      EXPECT_TRUE(std::is_sorted(found.begin(), found.end(), [](const auto &a, const auto &b) {
        return a.compare(0, 3, b, 0, 3) < 0;
      })) << size;
      std::sort(found.begin(), found.end());
      std::vector<std::string> all = elements;
      std::sort(all.begin(), all.end());
      EXPECT_EQ(found, all) << size;
    }
  }
}

TEST(Qsort, SignOfTheWholeAnswerCounts) {
  for (const Sort sort : SORTS) {
    std::vector<int16_t> elements = {3, -32768, 7, 32767, 0, 3};
    sort(elements.data(), 6, 2, descending_by_far);
    EXPECT_EQ(elements, (std::vector<int16_t>{32767, 7, 3, 3, 0, -32768}));
  }
}

int32_t never(const void *, const void *) {
  ADD_FAILURE() << "there is nothing to compare";
  return 0;
}

TEST(Qsort, NothingToSortIsLeftAlone) {
  const std::vector<int32_t> before = {3, 1, 2};
  for (const Sort sort : SORTS) {
    std::vector<int32_t> elements = before;
    for (const int64_t len : {0, 1, -1, -3, INT_MIN})
      sort(elements.data(), len, 4, never);
    for (const int64_t size : {0, -1, -4, INT_MIN})
      sort(elements.data(), 3, size, never);
    EXPECT_EQ(elements, before);
  }
  std::vector<int32_t> elements = before;
  for (const int64_t len : {INT64_MIN, INT64_MIN + 3, INT64_MAX, INT64_MAX / 4 + 1})
    SORTS[0](elements.data(), len, 4, never);
  for (const int64_t size : {INT64_MIN, INT64_MAX, INT64_MAX / 3 + 1})
    SORTS[2](elements.data(), 3, size, never);
  EXPECT_EQ(elements, before);
}

// An array with nothing readable before and behind it.
class Walled {
public:
  explicit Walled(size_t bytes) : page_(static_cast<size_t>(sysconf(_SC_PAGESIZE))), bytes_(bytes) {
    inner_ = (bytes + page_ - 1) / page_ * page_;
    map_ =
        static_cast<char *>(mmap(nullptr, inner_ + 2 * page_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    EXPECT_NE(map_, MAP_FAILED);
    EXPECT_EQ(mprotect(map_ + page_, inner_, PROT_READ | PROT_WRITE), 0);
  }
  ~Walled() { munmap(map_, inner_ + 2 * page_); }
  Walled(const Walled &) = delete;
  Walled &operator=(const Walled &) = delete;

  char *at_the_beginning() { return map_ + page_; }
  char *at_the_end() { return map_ + page_ + inner_ - bytes_; }

private:
  size_t page_, bytes_, inner_;
  char *map_;
};

std::minstd_rand answers;
constexpr Comparison CONTRADICTIONS[] = {
    [](const void *, const void *) { return -1; }, [](const void *, const void *) { return 1; },
    [](const void *, const void *) { return static_cast<int32_t>(answers() % 3) - 1; },
    [](const void *a, const void *b) { return a < b ? 1 : -1; }};

TEST(Qsort, ContradictionsStayInsideTheArray) {
  for (const size_t size : {1U, 4U, 8U, 12U, 40U}) {
    for (const size_t count : {2U, 5U, 100U, 3000U}) {
      Walled walled(size * count);
      for (char *array : {walled.at_the_beginning(), walled.at_the_end()}) {
        for (const Comparison compare : CONTRADICTIONS) {
          for (size_t i = 0; i < size * count; ++i)
            array[i] = static_cast<char>(i / size);
          std::vector<size_t> before(256), behind(256);
          for (size_t i = 0; i < count; ++i)
            ++before[static_cast<unsigned char>(array[i * size])];
          for (const Sort sort : SORTS)
            sort(array, static_cast<int64_t>(count), static_cast<int64_t>(size), compare);
          for (size_t i = 0; i < count; ++i)
            ++behind[static_cast<unsigned char>(array[i * size])];
          EXPECT_EQ(behind, before) << "elements are lost: " << count << " of " << size;
        }
      }
    }
  }
}

TEST(Qsort, TouchesNoErrorState) {
  std::vector<int32_t> elements = random_elements<int32_t>(5000);
  for (const Sort sort : SORTS) {
    EXPECT_EQ(state_after([&] { sort(elements.data(), 5000, 4, ascending<int32_t>); }), untouched());
    EXPECT_EQ(state_after([&] { sort(elements.data(), -1, -1, ascending<int32_t>); }), untouched());
  }
}

}  // namespace
