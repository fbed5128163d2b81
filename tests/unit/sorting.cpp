// SORTQQ and BSEARCHQQ: what they refuse, what they report, and what they find.
#include "recorder.h"
#include "sorted_arrays.h"

#include <climits>
#include <limits>
#include <thread>

namespace {

const ErrorState REFUSED = {EINVAL, SENTINEL, {EINVAL}};

intptr_t address(const void *array) {
  return reinterpret_cast<intptr_t>(array);
}

struct Sorted {
  intptr_t count;
  ErrorState state;
  bool operator==(const Sorted &) const = default;
};

std::ostream &operator<<(std::ostream &out, const Sorted &sorted) {
  return out << "count " << sorted.count << ' ' << sorted.state;
}

Sorted sort(const void *array, intptr_t count, int32_t code) {
  const intptr_t adrarray = address(array);
  reset_error_state();
  sortqq_(&adrarray, &count, &code);
  EXPECT_EQ(adrarray, address(array));
  return {count, error_state()};
}

struct Found {
  int32_t index;
  ErrorState state;
  bool operator==(const Found &) const = default;
};

std::ostream &operator<<(std::ostream &out, const Found &found) {
  return out << "index " << found.index << ' ' << found.state;
}

Found search(const void *key, const void *array, intptr_t count, int32_t code) {
  const intptr_t adrkey = address(key), adrarray = address(array), former = count;
  reset_error_state();
  const int32_t index = bsearchqq_(&adrkey, &adrarray, &count, &code);
  EXPECT_EQ(count, former);
  return {index, error_state()};
}

Found at(int32_t index) {
  return {index, untouched()};
}

template <typename T>
Found search_in(const std::vector<T> &array, T key, int32_t code) {
  return search(&key, array.data(), static_cast<intptr_t>(array.size()), code);
}

// The textbook's bisection, for the index that is found and every element that is compared on the way.
int32_t bisected(const Bytes &array, const Bytes &key, const ElementKind &kind) {
  intptr_t low = 0, high = static_cast<intptr_t>(array.size() / kind.width) - 1;
  while (low <= high) {
    const intptr_t middle = (low + high) / 2;
    const char *const element = array.data() + static_cast<size_t>(middle) * kind.width;
    if (kind.greater(element, key.data(), kind.width))
      high = middle - 1;
    else if (kind.greater(key.data(), element, kind.width))
      low = middle + 1;
    else
      return static_cast<int32_t>(middle + 1);
  }
  return 0;
}

const int32_t INVALID_CODES[] = {0,       -1,      -4,      INT32_MIN, 32767,   32768,   65535,     65537,
                                 0x20001, 0x30001, 0x40001, 0x50001,   0x60001, 0x70000, 0x7FFFF,   0x80001,
                                 0x90000, 0xA0000, 0x8000,  0x100000,  0x10004, 0x50004, INT32_MAX, 99999};

constexpr int32_t INTEGER4 = 0x50000;

}  // namespace

TEST(Sortqq, TypeCodes) {
  EXPECT_EQ(QXPORT_SORT_REAL4, 65536);
  EXPECT_EQ(QXPORT_SORT_REAL8, 131072);
  EXPECT_EQ(QXPORT_SORT_INTEGER1, 196608);
  EXPECT_EQ(QXPORT_SORT_INTEGER2, 262144);
  EXPECT_EQ(QXPORT_SORT_INTEGER4, 327680);
  EXPECT_EQ(QXPORT_SORT_INTEGER8, 393216);
  EXPECT_EQ(QXPORT_SORT_REAL16, 524288);
}

TEST(Sortqq, EveryTypeIsSortedAndNothingIsRecorded) {
  Filler filler(1);
  for (const ElementKind &kind : all_kinds())
    for (const size_t count : {1, 2, 13, 14, 100, 1000}) {
      Bytes array = filler.fill(kind, count, Filling::Random);
      Bytes expected = array;
      shell_sort(&expected, kind);
      const intptr_t given = static_cast<intptr_t>(count);
      EXPECT_EQ(sort(array.data(), given, kind.code), (Sorted{given, untouched()})) << kind.name;
      EXPECT_EQ(array, expected) << kind.name;
    }
}

TEST(Sortqq, OneElementStaysAsItIs) {
  for (const ElementKind &kind : all_kinds()) {
    Bytes array(kind.width, '\xff');
    EXPECT_EQ(sort(array.data(), 1, kind.code), (Sorted{1, untouched()})) << kind.name;
    EXPECT_EQ(array, Bytes(kind.width, '\xff')) << kind.name;
  }
}

TEST(Sortqq, CountBelowOneIsRefused) {
  const int32_t unsorted[] = {3, 1, 2};
  int32_t array[] = {3, 1, 2};
  for (const intptr_t count : {intptr_t{0}, intptr_t{-1}, std::numeric_limits<intptr_t>::min()})
    for (const int32_t code : {INTEGER4, 0x10000, 0x80000, 4, 32766, 0x70000, 0})
      EXPECT_EQ(sort(array, count, code), (Sorted{0, REFUSED})) << count << ' ' << code;
  EXPECT_EQ(memcmp(array, unsorted, sizeof(array)), 0);
}

TEST(Sortqq, OtherCodesAreRefused) {
  const int32_t unsorted[] = {3, 1, 2};
  int32_t array[] = {3, 1, 2};
  for (const int32_t code : INVALID_CODES)
    EXPECT_EQ(sort(array, 3, code), (Sorted{0, REFUSED})) << code;
  EXPECT_EQ(memcmp(array, unsorted, sizeof(array)), 0);
}

TEST(Sortqq, WhatIsNoArrayIsRefused) {
  constexpr intptr_t HUGE_COUNT = std::numeric_limits<intptr_t>::max();
  int32_t array[] = {3, 1, 2};
  for (const int32_t code : {INTEGER4, 0x20000, 0x30000, 7}) {
    for (const intptr_t count : {intptr_t{1}, intptr_t{1000}, HUGE_COUNT})
      EXPECT_EQ(sort(nullptr, count, code), (Sorted{0, REFUSED})) << code << ' ' << count;
    const void *last = reinterpret_cast<const void *>(UINTPTR_MAX - 3);
    EXPECT_EQ(sort(last, 1 + 4, code), (Sorted{0, REFUSED})) << code;
  }
  EXPECT_EQ(sort(array, HUGE_COUNT, INTEGER4), (Sorted{0, REFUSED}));
  EXPECT_EQ(array[0], 3);
}

TEST(Sortqq, Integer1IsSigned) {
  int8_t array[] = {127, 0, -128, -1, 1};
  sort(array, 5, 0x30000);
  const int8_t expected[] = {-128, -1, 0, 1, 127};
  EXPECT_EQ(memcmp(array, expected, sizeof(array)), 0);
}

TEST(Sortqq, CharactersAreUnsignedBytes) {
  char words[] = "abcABCab ";
  EXPECT_EQ(sort(words, 3, 3), (Sorted{3, untouched()}));
  EXPECT_STREQ(words, "ABCab abc");
  char bytes[] = {'\xff', '\0', '\x7f', '\x80'};
  sort(bytes, 4, 1);
  EXPECT_EQ(memcmp(bytes, "\0\x7f\x80\xff", 4), 0);
}

TEST(Sortqq, LongestStrings) {
  const size_t width = 32766;
  Bytes array(3 * width, 'x');
  array[width - 1] = 'z';
  array[3 * width - 1] = 'a';
  Bytes expected(3 * width, 'x');
  expected[width - 1] = 'a';
  expected[3 * width - 1] = 'z';
  EXPECT_EQ(sort(array.data(), 3, 32766), (Sorted{3, untouched()}));
  EXPECT_EQ(array, expected);
}

// Thirteen elements are one chain, fourteen are sorted in chains of every fourth first. NaNs show which it
// was.
TEST(Sortqq, GapsByCount) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  for (const intptr_t count : {13, 14, 40, 41, 121, 122}) {
    std::vector<float> array(static_cast<size_t>(count));
    for (size_t i = 0; i < array.size(); ++i)
      array[i] = i % 5 == 3 ? nan : static_cast<float>(array.size() - i);
    // Straightforward, gap by gap: 13 has the gap 1 only, 14 to 40 have 4 and 1, 41 to 121 have 13, 4 and 1.
    std::vector<float> expected = array;
    for (const size_t gap : {size_t{40}, size_t{13}, size_t{4}, size_t{1}}) {
      if ((gap == 40 && count <= 121) || (gap == 13 && count <= 40) || (gap == 4 && count <= 13))
        continue;
      for (size_t i = gap; i < expected.size(); ++i)
        for (size_t j = i; j >= gap && expected[j - gap] > expected[j]; j -= gap)
          std::swap(expected[j], expected[j - gap]);
    }
    sort(array.data(), count, 0x10000);
    EXPECT_EQ(memcmp(array.data(), expected.data(), array.size() * sizeof(float)), 0) << count;
  }
}

// Nothing is shared: the processor's path, which the first call finds out, is the same for all.
TEST(Sortqq, SeveralThreadsSortArraysOfTheirOwn) {
  std::vector<std::thread> threads;
  for (uint32_t thread = 0; thread < 4; ++thread)
    threads.emplace_back([thread] {
      Filler filler(thread);
      for (const ElementKind &kind : all_kinds()) {
        Bytes array = filler.fill(kind, 500, Filling::Random);
        Bytes expected = array;
        shell_sort(&expected, kind);
        const intptr_t adrarray = address(array.data());
        intptr_t count = 500;
        sortqq_(&adrarray, &count, &kind.code);
        EXPECT_EQ(array, expected) << kind.name;
        const intptr_t adrkey = address(array.data() + 250 * kind.width);
        EXPECT_GT(bsearchqq_(&adrkey, &adrarray, &count, &kind.code), 0) << kind.name;
      }
    });
  for (std::thread &thread : threads)
    thread.join();
}

// --- The search

TEST(Bsearchqq, FindsAndMisses) {
  const std::vector<int32_t> array = {1, 3, 5, 7};
  EXPECT_EQ(search_in(array, 5, INTEGER4), at(3));
  EXPECT_EQ(search_in(array, 1, INTEGER4), at(1));
  EXPECT_EQ(search_in(array, 7, INTEGER4), at(4));
  for (const int32_t missing : {4, 0, 8, INT32_MIN, INT32_MAX})
    EXPECT_EQ(search_in(array, missing, INTEGER4), at(0)) << missing;
}

TEST(Bsearchqq, ProbesAreThoseOfBisectionForEveryType) {
  Filler filler(2);
  for (const ElementKind &kind : all_kinds())
    for (const Filling filling : {Filling::Random, Filling::FewValues, Filling::SomeNans, Filling::BothZeros})
      for (size_t count = 1; count < 70; ++count) {
        Bytes array = filler.fill(kind, count, filling);
        if (count % 3 != 0)
          shell_sort(&array, kind);
        for (size_t i = 0; i < 6; ++i) {
          // An element of the array, or one that it need not have.
          const size_t place = filler.random() % count * kind.width;
          const Bytes key = i % 2 == 0 ? Bytes(array.data() + place, array.data() + place + kind.width)
                                       : filler.fill(kind, 1, filling);
          ASSERT_EQ(search(key.data(), array.data(), static_cast<intptr_t>(count), kind.code),
                    at(bisected(array, key, kind)))
              << kind.name << ' ' << count;
        }
      }
}

TEST(Bsearchqq, NanIsFoundAtTheFirstProbe) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  for (int32_t count = 1; count <= 20; ++count) {
    std::vector<double> array(static_cast<size_t>(count));
    for (size_t i = 0; i < array.size(); ++i)
      array[i] = static_cast<double>(i);
    EXPECT_EQ(search_in(array, nan, 0x20000), at((count - 1) / 2 + 1));
    array[static_cast<size_t>((count - 1) / 2)] = nan;
    EXPECT_EQ(search_in(array, 1e9, 0x20000), at((count - 1) / 2 + 1));
  }
}

TEST(Bsearchqq, ZerosOfBothSignsAreEqual) {
  EXPECT_EQ(search_in<float>({-1, -0.0f, 1}, 0.0f, 0x10000), at(2));
  EXPECT_EQ(search_in<float>({-1, 0.0f, 1}, -0.0f, 0x10000), at(2));
}

TEST(Bsearchqq, BadArgumentsAreRefused) {
  const int32_t array[] = {1, 2, 3};
  const Found refused = {0, REFUSED};
  for (const intptr_t count : {intptr_t{0}, intptr_t{-1}, std::numeric_limits<intptr_t>::min()})
    for (const int32_t code : {INTEGER4, 4})
      EXPECT_EQ(search(array, array, count, code), refused) << count;
  for (const int32_t code : INVALID_CODES)
    EXPECT_EQ(search(array, array, 3, code), refused) << code;
  for (const intptr_t count : {intptr_t{1}, std::numeric_limits<intptr_t>::max()}) {
    EXPECT_EQ(search(nullptr, array, count, INTEGER4), refused);
    EXPECT_EQ(search(array, nullptr, count, INTEGER4), refused);
  }
  EXPECT_EQ(search(array, array, std::numeric_limits<intptr_t>::max(), INTEGER4), refused);
}

#if UINTPTR_MAX > UINT32_MAX
#define OTHER_SORT sortqqi4_
#define OTHER_SEARCH bsearchqqi4_
using OtherCount = int32_t;
#else
#define OTHER_SORT sortqqi8_
#define OTHER_SEARCH bsearchqqi8_
using OtherCount = int64_t;
#endif

// Neighbours of the count stay as they are: it has its own width.
TEST(OtherCountKind, SortsAndReports) {
  int32_t array[] = {3, 1, 2};
  const intptr_t adrarray = address(array);
  OtherCount counts[] = {-7, 3, -7};
  reset_error_state();
  OTHER_SORT(&adrarray, &counts[1], &INTEGER4);
  EXPECT_EQ(error_state(), untouched());
  EXPECT_EQ(counts[1], 3);
  EXPECT_EQ(array[0], 1);
  for (const OtherCount bad : {OtherCount{0}, OtherCount{-1}, std::numeric_limits<OtherCount>::min()}) {
    counts[1] = bad;
    reset_error_state();
    OTHER_SORT(&adrarray, &counts[1], &INTEGER4);
    EXPECT_EQ(error_state(), REFUSED);
    EXPECT_EQ(counts[1], 0);
  }
  EXPECT_EQ(counts[0], -7);
  EXPECT_EQ(counts[2], -7);
}

TEST(OtherCountKind, CountBeyondAnAddressIsRefused) {
  int8_t array[] = {3, 1, 2};
  const intptr_t adrarray = address(array);
  const int32_t code = 0x50000;
  OtherCount count = std::numeric_limits<OtherCount>::max();
  const intptr_t last = static_cast<intptr_t>(UINTPTR_MAX - 7);
  reset_error_state();
  OTHER_SORT(sizeof(count) > sizeof(intptr_t) ? &adrarray : &last, &count, &code);
  EXPECT_EQ(error_state(), REFUSED);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(array[0], 3);
}

TEST(OtherCountKind, Searches) {
  const int32_t array[] = {1, 3, 5, 7}, key = 5, code = INTEGER4;
  const intptr_t adrkey = address(&key), adrarray = address(array);
  OtherCount count = 4;
  reset_error_state();
  EXPECT_EQ(OTHER_SEARCH(&adrkey, &adrarray, &count, &code), 3);
  EXPECT_EQ(error_state(), untouched());
  count = 0;
  EXPECT_EQ(OTHER_SEARCH(&adrkey, &adrarray, &count, &code), 0);
  EXPECT_EQ(error_state(), REFUSED);
}

TEST(SortingAliases, AreTheRoutines) {
  expect_same_routine(sortqq_, qxport_sortqq_);
  expect_same_routine(bsearchqq_, qxport_bsearchqq_);
}
