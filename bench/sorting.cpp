// Sorting beside the Shell sort that fixes its order, and beside std::sort, on every tier that this processor
// has: the same arrays in the same run. An array of n elements is one of many, a million elements in all; the
// table has the time of one element, the best of several runs, which are interleaved so that what else the
// machine does falls on all alike.
#include "sorting/sorting.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <time.h>
#include <vector>

namespace {

using qxport::sorting::Element;
using qxport::sorting::Tier;

constexpr size_t TOTAL = 1'000'000;
constexpr int RUNS = 5;

template <size_t WIDTH>
struct String {
  char bytes[WIDTH];
  bool operator<(const String &other) const { return memcmp(bytes, other.bytes, WIDTH) < 0; }
  bool operator>(const String &other) const { return other < *this; }
};

template <typename T>
void shell_sort(T *array, size_t count) {
  size_t gap = 1;
  if (count >= 13) {
    while (gap < count)
      gap = 3 * gap + 1;
    gap = ((gap - 1) / 3 - 1) / 3;
  }
  for (;; gap = (gap - 1) / 3) {
    for (size_t i = gap; i < count; ++i) {
      const T key = array[i];
      size_t hole = i;
      for (; hole >= gap && array[hole - gap] > key; hole -= gap)
        array[hole] = array[hole - gap];
      array[hole] = key;
    }
    if (gap == 1)
      return;
  }
}

enum class Order { Random, Ascending, Descending, FewValues, OrganPipe, Nans, BothZeros };

template <typename T>
T random_value(std::mt19937_64 *random) {
  T value;
  if constexpr (std::is_floating_point_v<T>) {
    value = static_cast<T>(std::normal_distribution<double>()(*random));
  } else if constexpr (std::is_same_v<T, __float128>) {
    value = static_cast<T>(std::normal_distribution<double>()(*random));
  } else {
    for (size_t at = 0; at < sizeof(T); at += 8) {
      const uint64_t bits = (*random)();
      memcpy(reinterpret_cast<char *>(&value) + at, &bits, std::min<size_t>(8, sizeof(T) - at));
    }
  }
  return value;
}

template <typename T>
std::vector<T> make(size_t count, size_t arrays, Order order) {
  std::mt19937_64 random(1);
  std::vector<T> all(count * arrays);
  std::vector<T> few(8);
  for (T &value : few)
    value = random_value<T>(&random);
  for (size_t i = 0; i < all.size(); ++i)
    all[i] = order == Order::FewValues ? few[random() % few.size()] : random_value<T>(&random);
  for (size_t array = 0; array < arrays; ++array) {
    T *begin = all.data() + array * count, *end = begin + count;
    if (order == Order::Ascending || order == Order::Descending)
      std::sort(begin, end);
    if (order == Order::Descending)
      std::reverse(begin, end);
    if (order == Order::OrganPipe) {
      std::sort(begin, begin + count / 2);
      std::sort(begin + count / 2, end);
      std::reverse(begin + count / 2, end);
    }
    if constexpr (std::is_floating_point_v<T>)
      for (size_t i = 0; i < count; i += 1000) {
        if (order == Order::Nans)
          begin[i] = std::numeric_limits<T>::quiet_NaN();
        if (order == Order::BothZeros)
          begin[i] = i % 2000 == 0 ? T{0} : -T{0};
      }
  }
  return all;
}

// Processor time, so that what else the machine does matters little.
double nanoseconds() {
  timespec time;
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_nsec);
}

// ns an element.
template <typename T, typename Sort>
double time_of(const std::vector<T> &unsorted, std::vector<T> *work, size_t count, Sort sort) {
  *work = unsorted;
  const double begin = nanoseconds();
  for (size_t at = 0; at + count <= work->size(); at += count)
    sort(work->data() + at, count);
  return (nanoseconds() - begin) / static_cast<double>(work->size());
}

const Tier *const TIERS[] = {&qxport::sorting::PORTABLE_TIER, &qxport::sorting::AVX2_TIER,
                             &qxport::sorting::AVX512_TIER};

template <typename T, typename Sort>
void compare(const char *type, const char *order_name, size_t count, Order order, Sort sort) {
  const std::vector<T> unsorted = make<T>(count, std::max<size_t>(1, TOTAL / count), order);
  std::vector<T> work;
  double shell = 1e99, standard = 1e99, ours[3] = {1e99, 1e99, 1e99};
  // std::sort needs an order, which NaNs have not.
  const bool comparable = order != Order::Nans;
  for (int run = 0; run < RUNS; ++run) {
    shell = std::min(shell, time_of(unsorted, &work, count, shell_sort<T>));
    if (comparable)
      standard = std::min(
          standard, time_of(unsorted, &work, count, [](T *array, size_t n) { std::sort(array, array + n); }));
    for (size_t tier = 0; tier < 3; ++tier)
      if (runs_here(*TIERS[tier]))
        ours[tier] = std::min(ours[tier], time_of(unsorted, &work, count,
                                                  [&](T *array, size_t n) { sort(*TIERS[tier], array, n); }));
  }
  printf("%-13s %-11s %8zu  Shell %7.2f  std::sort ", type, order_name, count, shell);
  printf(comparable ? "%7.2f" : "      -", standard);
  for (size_t tier = 0; tier < 3; ++tier)
    if (runs_here(*TIERS[tier])) {
      printf("  %s %6.2f = Shell/%-5.1f", TIERS[tier]->name, ours[tier], shell / ours[tier]);
      printf(comparable ? " std/%-5.1f" : "          ", standard / ours[tier]);
    }
  printf("\n");
  fflush(stdout);
}

template <typename T>
void compare_numbers(const char *type, Element element, std::initializer_list<size_t> counts) {
  const auto sort = [element](const Tier &tier, T *array, size_t count) {
    sort_numbers(tier, element, array, count);
  };
  for (const size_t count : counts)
    compare<T>(type, "random", count, Order::Random, sort);
}

template <typename T>
void compare_orders(const char *type, Element element) {
  const auto sort = [element](const Tier &tier, T *array, size_t count) {
    sort_numbers(tier, element, array, count);
  };
  for (const size_t count : {size_t{16}, TOTAL}) {
    compare<T>(type, "ascending", count, Order::Ascending, sort);
    compare<T>(type, "descending", count, Order::Descending, sort);
    compare<T>(type, "few values", count, Order::FewValues, sort);
    compare<T>(type, "organ pipe", count, Order::OrganPipe, sort);
  }
  if constexpr (std::is_floating_point_v<T>) {
    compare<T>(type, "NaNs", TOTAL, Order::Nans, sort);
    compare<T>(type, "both zeros", TOTAL, Order::BothZeros, sort);
  }
}

template <size_t WIDTH>
void compare_strings(const char *type) {
  const auto sort = [](const Tier &tier, String<WIDTH> *array, size_t count) {
    char scratch[WIDTH];
    sort_strings(tier, array, count, WIDTH, scratch);
  };
  for (const size_t count : {size_t{1000}, TOTAL})
    compare<String<WIDTH>>(type, "random", count, Order::Random, sort);
}

}  // namespace

int main() {
  printf("ns an element; Shell/35 is 35 times as fast as the Shell sort\n");
  compare_numbers<int8_t>("INTEGER(1)", Element::Integer1, {2, 8, 16, 100, 1000, TOTAL});
  compare_numbers<int16_t>("INTEGER(2)", Element::Integer2, {2, 8, 16, 100, 1000, 100'000, TOTAL});
  compare_numbers<int32_t>("INTEGER(4)", Element::Integer4, {2, 4, 8, 16, 100, 1000, 100'000, TOTAL});
  compare_numbers<int64_t>("INTEGER(8)", Element::Integer8, {2, 4, 8, 16, 100, 1000, 100'000, TOTAL});
  compare_numbers<float>("REAL(4)", Element::Real4, {2, 4, 8, 16, 100, 1000, 100'000, TOTAL});
  compare_numbers<double>("REAL(8)", Element::Real8, {2, 4, 8, 16, 100, 1000, 100'000, TOTAL});
  compare_numbers<__float128>("REAL(16)", Element::Real16, {1000, 100'000});
  compare_orders<int32_t>("INTEGER(4)", Element::Integer4);
  compare_orders<double>("REAL(8)", Element::Real8);
  compare_strings<3>("CHARACTER(3)");
  compare_strings<4>("CHARACTER(4)");
  compare_strings<8>("CHARACTER(8)");
  compare_strings<12>("CHARACTER(12)");
  compare_strings<16>("CHARACTER(16)");
  compare_strings<20>("CHARACTER(20)");
  compare_strings<32>("CHARACTER(32)");
  compare_strings<64>("CHARACTER(64)");
  return 0;
}
