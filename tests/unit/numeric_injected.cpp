// What the routines ask of the host and of the run-time's generator: both are this program's own here.
#include "contract/services.h"
#include "outcome.h"

#include <climits>
#include <cmath>
#include <cstdlib>
#include <dlfcn.h>
#include <string>
#include <unistd.h>
#include <utility>

namespace {

using Calls = std::vector<std::pair<std::string, double>>;
Calls calls;

double called(const char *name, double argument, double answer) {
  calls.emplace_back(name, argument);
  return answer;
}

struct Sorted {
  void *array;
  size_t count, size;
  int (*compare)(const void *, const void *);
};
std::vector<Sorted> sorted;
long pages_of_machine;  // 0 for as many as there are

}  // namespace

long sysconf(int name) noexcept {
  static const auto host = reinterpret_cast<long (*)(int)>(dlsym(RTLD_NEXT, "sysconf"));
  return name == _SC_PHYS_PAGES && pages_of_machine != 0 ? pages_of_machine : host(name);
}

double j0(double x) noexcept {
  return called("j0", x, 10.25);
}
double j1(double x) noexcept {
  return called("j1", x, 11.25);
}
double jn(int n, double x) noexcept {
  return called("jn", n * 1000 + x, 12.25);
}
double y0(double x) noexcept {
  return called("y0", x, 20.25);
}
double y1(double x) noexcept {
  return called("y1", x, 21.25);
}
double yn(int n, double x) noexcept {
  return called("yn", n * 1000 + x, 22.25);
}
void srand(unsigned seed) noexcept {
  called("srand", seed, 0);
}
int rand() noexcept {
  return static_cast<int>(called("rand", 0, 2147483583));
}
void qsort(void *array, size_t count, size_t size, int (*compare)(const void *, const void *)) {
  sorted.push_back({array, count, size, compare});
}

double __FFdrand() {
  return called("drand", 0, 0.125);
}
float __FFfrand() {
  return static_cast<float>(called("frand", 0, 0.25));
}
int32_t __FFirand() {
  return static_cast<int32_t>(called("irand", 0, 32768 * 3 + 5));
}
void __FFsetseed(int32_t seed) {
  called("setseed", seed, 0);
}
void __FFresetseed() {
  called("resetseed", 0, 0);
}
void __FFgetseed(int32_t *seed) {
  *seed = 4711;
  called("getseed", 0, 0);
}

namespace {

template <typename Routine>
Calls calls_of(Routine routine) {
  calls.clear();
  routine();
  return std::exchange(calls, {});
}

TEST(HostsMathLibrary, IsAskedOnce) {
  const float x = 0.5F;
  const double real = 0.1;
  const int32_t n = -3;
  EXPECT_EQ(calls_of([&] { EXPECT_EQ(besj0_(&x), 10.25F); }), (Calls{{"j0", 0.5}}));
  EXPECT_EQ(calls_of([&] { EXPECT_EQ(besj1_(&x), 11.25F); }), (Calls{{"j1", 0.5}}));
  EXPECT_EQ(calls_of([&] { EXPECT_EQ(besjn_(&n, &x), 12.25F); }), (Calls{{"jn", -2999.5}}));
  EXPECT_EQ(calls_of([&] { EXPECT_EQ(besy0_(&x), 20.25F); }), (Calls{{"y0", 0.5}}));
  EXPECT_EQ(calls_of([&] { EXPECT_EQ(besy1_(&x), 21.25F); }), (Calls{{"y1", 0.5}}));
  EXPECT_EQ(calls_of([&] { EXPECT_EQ(besyn_(&n, &x), 22.25F); }), (Calls{{"yn", -2999.5}}));
  EXPECT_EQ(calls_of([&] { EXPECT_EQ(dbesj0_(&real), 10.25); }), (Calls{{"j0", 0.1}}));
  EXPECT_EQ(calls_of([&] { EXPECT_EQ(dbesj1_(&real), 11.25); }), (Calls{{"j1", 0.1}}));
  EXPECT_EQ(calls_of([&] { EXPECT_EQ(dbesjn_(&n, &real), 12.25); }), (Calls{{"jn", -3000 + 0.1}}));
  EXPECT_EQ(calls_of([&] { EXPECT_EQ(dbesy0_(&real), 20.25); }), (Calls{{"y0", 0.1}}));
  EXPECT_EQ(calls_of([&] { EXPECT_EQ(dbesy1_(&real), 21.25); }), (Calls{{"y1", 0.1}}));
  EXPECT_EQ(calls_of([&] { EXPECT_EQ(dbesyn_(&n, &real), 22.25); }), (Calls{{"yn", -3000 + 0.1}}));
}

TEST(HostsMathLibrary, IsNotAskedForInfinitiesOfTheSecondKind) {
  const int32_t n = 2;
  for (const double x : {__builtin_inf(), -__builtin_inf()}) {
    const auto single = static_cast<float>(x);
    EXPECT_EQ(calls_of([&] {
                EXPECT_EQ(besy0_(&single) + besy1_(&single) + besyn_(&n, &single), 0);
                EXPECT_EQ(dbesy0_(&x) + dbesy1_(&x) + dbesyn_(&n, &x), 0);
              }),
              Calls{});
    EXPECT_EQ(calls_of([&] { dbesj0_(&x), dbesj1_(&x); }), (Calls{{"j0", x}, {"j1", x}}))
        << "of the first kind it is";
  }
}

TEST(HostsMathLibrary, IsAskedForTheLargestNumbersAndNaN) {
  const double most = 1.7976931348623157e308, least = -most, none = __builtin_nan("");
  const float single = 3.4028234664e38F;
  EXPECT_EQ(calls_of([&] { dbesy0_(&most), dbesy1_(&least), besy0_(&single); }),
            (Calls{{"y0", most}, {"y1", least}, {"y0", single}}));
  EXPECT_EQ(calls_of([&] { EXPECT_EQ(dbesy0_(&none), 20.25); }).size(), 1U);
}

TEST(SharedGenerator, IsTheOneOfTheRunTime) {
  const int32_t next = 0, over = 1, least = INT_MIN, two = 2, minus_one = -1;
  EXPECT_EQ(calls_of([&] { EXPECT_EQ(drand_(&next), 0.125); }), (Calls{{"drand", 0}}));
  EXPECT_EQ(calls_of([&] { EXPECT_EQ(drand_(&over), 0.125); }), (Calls{{"resetseed", 0}, {"drand", 0}}));
  EXPECT_EQ(calls_of([&] { drandm_(&least); }), (Calls{{"setseed", INT_MIN}, {"drand", 0}}));
  EXPECT_EQ(calls_of([&] { EXPECT_EQ(rand_(nullptr), 0.25F); }), (Calls{{"frand", 0}}));
  EXPECT_EQ(calls_of([&] { EXPECT_EQ(rand_(&next), 0.25F); }), (Calls{{"frand", 0}}));
  EXPECT_EQ(calls_of([&] { rand_(&over); }), (Calls{{"resetseed", 0}, {"frand", 0}}));
  EXPECT_EQ(calls_of([&] { $$msportlib$random_(&two); }), (Calls{{"setseed", 2}, {"frand", 0}}));
  EXPECT_EQ(calls_of([&] { EXPECT_EQ(irand_(nullptr), 5); }), (Calls{{"irand", 0}}));
  EXPECT_EQ(calls_of([&] { EXPECT_EQ(irand_(&next), 98309); }), (Calls{{"irand", 0}}));
  EXPECT_EQ(calls_of([&] { irandm_(&minus_one); }), (Calls{{"setseed", -1}, {"irand", 0}}));
  EXPECT_EQ(calls_of([&] { irandm_(&over); }), (Calls{{"resetseed", 0}, {"irand", 0}}));
}

TEST(SharedGenerator, SeedsAreHandedOn) {
  const int32_t one = 1, minus_two = -2, zero = 0;
  const float single = -3.9F;
  const double real = 1.0;
  int32_t seed = 0;
  // A seed is a seed here, also 0 and 1.
  EXPECT_EQ(calls_of([&] { srand_(&minus_two); }), (Calls{{"setseed", -2}, {"srand", 4294967294}}));
  EXPECT_EQ(calls_of([&] { iranset_(&one), iranset_(&zero); }), (Calls{{"setseed", 1}, {"setseed", 0}}));
  EXPECT_EQ(calls_of([&] { ranset_(&single), dranset_(&real); }), (Calls{{"setseed", -3}, {"setseed", 1}}));
  EXPECT_EQ(calls_of([&] { ranget_(&seed); }), (Calls{{"getseed", 0}}));
  EXPECT_EQ(seed, 4711);
  EXPECT_EQ(calls_of([&] { iranget_(&seed); }), (Calls{{"getseed", 0}}));
}

TEST(Ranf, IsTheHostsNumberNotScaled) {
  EXPECT_EQ(calls_of([&] { EXPECT_EQ(ranf_(), 2147483520.0F); }), (Calls{{"rand", 0}}));
}

void compare() {}

TEST(Qsort, HostSortsWhatHasAnOrder) {
  int32_t array[4] = {};
  const int32_t four = 4;
  const int64_t long_four = 4;
  sorted.clear();
  qsort_(array, &long_four, &long_four, compare);
  qsort_ii_(array, &four, &four, compare);
  qsort_il_(array, &four, &long_four, compare);
  ASSERT_EQ(sorted.size(), 3U);
  for (const Sorted &call : sorted) {
    EXPECT_EQ(call.array, array);
    EXPECT_EQ(call.count, 4U);
    EXPECT_EQ(call.size, 4U);
    EXPECT_EQ(reinterpret_cast<void (*)()>(call.compare), compare);
  }
}

TEST(Qsort, HostIsNotAskedToSortNothing) {
  int32_t array[4] = {};
  sorted.clear();
  for (const int64_t len : {int64_t{0}, int64_t{1}, int64_t{-1}, INT64_MIN, int64_t{INT_MIN}}) {
    const int64_t size = 4;
    const auto short_len = static_cast<int32_t>(len);
    qsort_(array, &len, &size, compare);
    qsort_il_(array, &short_len, &size, compare);
  }
  for (const int64_t size : {int64_t{0}, int64_t{-4}, INT64_MIN, INT64_MAX, INT64_MAX / 2}) {
    const int64_t len = 4;
    const int32_t short_len = 4;
    qsort_(array, &len, &size, compare);
    qsort_il_(array, &short_len, &size, compare);
  }
  const int32_t len = 4, zero = 0, minus = -4, least = INT_MIN;
  for (const int32_t *size : {&zero, &minus, &least})
    qsort_ii_(array, &len, size, compare);
  for (const int32_t *count : {&zero, &minus, &least})
    qsort_ii_(array, count, &len, compare);
  EXPECT_EQ(sorted.size(), 0U);
}

int32_t descending(const void *a, const void *b) {
  const int32_t x = *static_cast<const int32_t *>(a), y = *static_cast<const int32_t *>(b);
  return x < y ? 1 : x > y ? -1 : 0;
}

// Hosts sort in place then, and not all of them safely.
TEST(Qsort, LargePartOfTheMemoryIsNotTheHostsToSort) {
  const int64_t elements = 4 * sysconf(_SC_PAGESIZE) / 4, size = 4;  // four pages of them
  std::vector<int32_t> array(static_cast<size_t>(elements));
  const auto compare_elements = reinterpret_cast<void (*)()>(descending);
  for (const auto &[pages, calls_of_host] : {std::pair{17L, 0U}, {16L, 0U}, {19L, 0U}, {20L, 1U}, {0L, 1U}}) {
    for (size_t i = 0; i < array.size(); ++i)
      array[i] = static_cast<int32_t>(i);
    sorted.clear();
    pages_of_machine = pages;
    qsort_(array.data(), &elements, &size, compare_elements);
    pages_of_machine = 0;
    EXPECT_EQ(sorted.size(), calls_of_host) << pages;
    // The host's sort of this program does nothing.
    EXPECT_EQ(array.front(), calls_of_host == 0 ? elements - 1 : 0) << pages;
    EXPECT_EQ(array.back(), calls_of_host == 0 ? 0 : elements - 1) << pages;
  }
}

}  // namespace
