// Constants by name, components by name, and the life of records, beside what a program would do without the
// library. Times are those of one name, one component or one record.
#include "../tests/support/constant_names.h"
#include "ratios.h"

#include <qxport/qxport.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <numeric>
#include <random>
#include <string>
#include <strings.h>
#include <vector>

namespace {

struct Name {
  std::string text;
  qxport_charlen length() const { return static_cast<qxport_charlen>(text.size()); }
};

const std::vector<HostConstant> &constants() {
  static const std::vector<HostConstant> all = [] {
    std::vector<HostConstant> list;
    for (const ConstantGroup &group : constant_groups())
      list.insert(list.end(), group.constants.begin(), group.constants.end());
    return list;
  }();
  return all;
}

// All names of the table, or as many that look like them and are unknown.
std::vector<Name> known_names() {
  std::vector<Name> names;
  for (const HostConstant &constant : constants())
    names.push_back({constant.name});
  return names;
}
std::vector<Name> absent_names() {
  std::vector<Name> names = known_names();
  for (Name &name : names)
    name.text.back() = '#';
  return names;
}

int32_t value_ours(const Name &name) {
  int32_t value, error;
  pxfconst_(name.text.data(), &value, &error, name.length());
  return value;
}

int32_t value_by_search(const Name &name) {
  for (const HostConstant &constant : constants())
    if (strcasecmp(constant.name, name.text.c_str()) == 0)
      return constant.value;
  return -1;
}

void look_up(benchmark::State &state, std::vector<Name> (*make_names)(), int32_t (*value)(const Name &)) {
  const std::vector<Name> names = make_names();
  for (auto _ : state)
    for (const Name &name : names)
      benchmark::DoNotOptimize(value(name));
  bench::count_entries(state, static_cast<int>(names.size()));
}
BENCHMARK_CAPTURE(look_up, known, known_names, value_ours)->Name("pxfconst/ours");
BENCHMARK_CAPTURE(look_up, known_search, known_names, value_by_search)->Name("pxfconst/strcasecmp");
BENCHMARK_CAPTURE(look_up, absent, absent_names, value_ours)->Name("pxfconst, absent/ours");
BENCHMARK_CAPTURE(look_up, absent_search, absent_names, value_by_search)->Name("pxfconst, absent/strcasecmp");

// Every component that is one number.
struct Numbers {
  const char *kind;
  std::vector<Name> names;
};
const std::vector<Numbers> &numbers() {
  static const std::vector<Numbers> all = {
      {"sigaction", {{"sa_handler"}, {"sa_mask"}, {"sa_flags"}}},
      {"tms", {{"tms_utime"}, {"tms_stime"}, {"tms_cutime"}, {"tms_cstime"}}},
      {"stat",
       {{"st_mode"},
        {"st_ino"},
        {"st_dev"},
        {"st_nlink"},
        {"st_uid"},
        {"st_gid"},
        {"st_size"},
        {"st_atime"},
        {"st_mtime"},
        {"st_ctime"}}},
      {"utimbuf", {{"actime"}, {"modtime"}}},
      {"flock", {{"l_type"}, {"l_whence"}, {"l_start"}, {"l_len"}, {"l_pid"}}},
      {"termios", {{"c_iflag"}, {"c_oflag"}, {"c_cflag"}, {"c_lflag"}}},
      {"group", {{"gr_gid"}}},
      {"passwd", {{"pw_uid"}, {"pw_gid"}}},
  };
  return all;
}

int32_t new_record(const char *kind) {
  int32_t handle = 0, error;
  pxfstructcreate_(kind, &handle, &error, static_cast<qxport_charlen>(strlen(kind)));
  return handle;
}
void free_record(int32_t handle) {
  int32_t error;
  pxfstructfree_(&handle, &error);
}

struct NumberOfRecord {
  int32_t record;
  const Name *name;
};

// A record of each kind, and its numbers.
class SomeNumbers {
public:
  SomeNumbers() {
    for (const Numbers &kind : numbers()) {
      records_.push_back(new_record(kind.kind));
      for (const Name &name : kind.names)
        all_.push_back({records_.back(), &name});
    }
  }
  ~SomeNumbers() {
    for (const int32_t record : records_)
      free_record(record);
  }
  const std::vector<NumberOfRecord> &all() const { return all_; }

private:
  std::vector<int32_t> records_;
  std::vector<NumberOfRecord> all_;
};

void get_numbers(benchmark::State &state) {
  const SomeNumbers some;
  int32_t value, error;
  for (auto _ : state) {
    for (const NumberOfRecord &number : some.all()) {
      pxfintget_(&number.record, number.name->text.data(), &value, &error, number.name->length());
      benchmark::DoNotOptimize(value);
    }
  }
  bench::count_entries(state, static_cast<int>(some.all().size()));
}
void set_numbers(benchmark::State &state) {
  const SomeNumbers some;
  const int32_t value = 7;
  int32_t error;
  for (auto _ : state) {
    for (const NumberOfRecord &number : some.all())
      pxfintset_(&number.record, number.name->text.data(), &value, &error, number.name->length());
    benchmark::ClobberMemory();
  }
  bench::count_entries(state, static_cast<int>(some.all().size()));
}
BENCHMARK(get_numbers)->Name("pxfintget/ours");
BENCHMARK(set_numbers)->Name("pxfintset/ours");

// The component that its record's table has last.
void last_number(benchmark::State &state) {
  const int32_t record = new_record("stat");
  int32_t value, error;
  for (auto _ : state) {
    pxfintget_(&record, "st_ctime", &value, &error, 8);
    benchmark::DoNotOptimize(value);
  }
  free_record(record);
}
BENCHMARK(last_number)->Name("pxfintget of st_ctime/ours");

// As large as a record of times is.
constexpr size_t BLOCK = 40;

// Makers of what is compared: records, and blocks of the same size.
struct Ours {
  using Thing = int32_t;
  static Thing make() { return new_record("tms"); }
  static void release(Thing thing) { free_record(thing); }
};
struct ByHand {
  using Thing = void *;
  static Thing make() {
    void *block = calloc(1, BLOCK);
    benchmark::DoNotOptimize(block);
    return block;
  }
  static void release(Thing thing) { free(thing); }
};

template <typename Maker>
std::vector<typename Maker::Thing> make_many(int count) {
  std::vector<typename Maker::Thing> things;
  for (int i = 0; i < count; ++i)
    things.push_back(Maker::make());
  return things;
}

template <typename Maker>
void release_all(const std::vector<typename Maker::Thing> &things) {
  for (const typename Maker::Thing thing : things)
    Maker::release(thing);
}

// One more is made and freed while so many are alive.
template <typename Maker>
void make_one_more(benchmark::State &state, int live) {
  const auto things = make_many<Maker>(live);
  for (auto _ : state)
    Maker::release(Maker::make());
  release_all<Maker>(things);
}

// Any of them is freed and another made in its place. Behind the caches the time is that of reaching a
// table's word and the record, one behind the other; the peer's blocks are reached all at once.
template <typename Maker>
void replace_any(benchmark::State &state, int live) {
  auto things = make_many<Maker>(live);
  std::minstd_rand random(1);
  for (auto _ : state) {
    auto &thing = things[random() % static_cast<unsigned>(live)];
    Maker::release(thing);
    thing = Maker::make();
  }
  release_all<Maker>(things);
}

enum class Order { AsMade, Reverse, Random };

std::vector<int> places(int count, Order order) {
  std::vector<int> all(static_cast<size_t>(count));
  std::iota(all.begin(), all.end(), 0);
  if (order == Order::Reverse)
    std::reverse(all.begin(), all.end());
  if (order == Order::Random)
    std::shuffle(all.begin(), all.end(), std::minstd_rand(1));
  return all;
}

// So many are made, and freed in an order.
template <typename Maker, Order ORDER>
void make_and_free_all(benchmark::State &state, int count) {
  const std::vector<int> order = places(count, ORDER);
  std::vector<typename Maker::Thing> things(static_cast<size_t>(count));
  for (auto _ : state) {
    for (typename Maker::Thing &thing : things)
      thing = Maker::make();
    for (const int i : order)
      Maker::release(things[static_cast<size_t>(i)]);
  }
  bench::count_entries(state, count);
}

using Benchmark = void (*)(benchmark::State &, int);

// Each number of records with its peer.
void register_all(const std::string &what, Benchmark ours, Benchmark by_hand,
                  const std::vector<int> &counts) {
  for (const int count : counts) {
    const std::string name = what + ", " + std::to_string(count);
    benchmark::RegisterBenchmark((name + "/ours").c_str(), ours, count);
    benchmark::RegisterBenchmark((name + "/calloc, free").c_str(), by_hand, count);
  }
}

}  // namespace

int main(int argc, char **argv) {
  register_all("create and free", make_one_more<Ours>, make_one_more<ByHand>, {10, 1000, 100'000, 1'000'000});
  register_all("free any and create", replace_any<Ours>, replace_any<ByHand>, {10, 1000, 100'000});
  register_all("all, as made", make_and_free_all<Ours, Order::AsMade>,
               make_and_free_all<ByHand, Order::AsMade>, {10, 1000, 100'000});
  register_all("all, reverse", make_and_free_all<Ours, Order::Reverse>,
               make_and_free_all<ByHand, Order::Reverse>, {1000, 100'000});
  register_all("all, random", make_and_free_all<Ours, Order::Random>,
               make_and_free_all<ByHand, Order::Random>, {1000, 100'000});
  benchmark::RegisterBenchmark("create and free, 100000/1000 alive", make_one_more<Ours>, 1000);
  benchmark::RegisterBenchmark("all, as made, 100000/1000 of them", make_and_free_all<Ours, Order::AsMade>,
                               1000);
  benchmark::RegisterBenchmark("all, reverse, 100000/1000 of them", make_and_free_all<Ours, Order::Reverse>,
                               1000);
  benchmark::RegisterBenchmark("all, random, 100000/1000 of them", make_and_free_all<Ours, Order::Random>,
                               1000);
  return bench::run(argc, argv,
                    {{"pxfconst", "", 30},
                     {"pxfconst", "strcasecmp"},
                     {"pxfconst, absent", "", 30},
                     {"pxfconst, absent", "strcasecmp"},
                     {"pxfintget", "", 25},
                     {"pxfintget of st_ctime", "", 25},
                     {"pxfintset", "", 25},
                     {"create and free, 10", "calloc, free", bench::NO_LIMIT, 60},
                     {"create and free, 1000", "calloc, free", bench::NO_LIMIT, 60},
                     {"create and free, 100000", "calloc, free", bench::NO_LIMIT, 60},
                     {"create and free, 100000", "1000 alive", 2.5},
                     {"create and free, 1000000", "calloc, free", bench::NO_LIMIT, 60},
                     {"free any and create, 10", "calloc, free", bench::NO_LIMIT, 60},
                     {"free any and create, 1000", "calloc, free", bench::NO_LIMIT, 60},
                     {"free any and create, 100000", "calloc, free", bench::NO_LIMIT, 60},
                     {"all, as made, 10", "calloc, free", bench::NO_LIMIT, 60},
                     {"all, as made, 1000", "calloc, free", bench::NO_LIMIT, 60},
                     {"all, as made, 100000", "calloc, free", bench::NO_LIMIT, 60},
                     {"all, as made, 100000", "1000 of them", 2.5},
                     {"all, reverse, 1000", "calloc, free", bench::NO_LIMIT, 60},
                     {"all, reverse, 100000", "calloc, free", bench::NO_LIMIT, 60},
                     {"all, reverse, 100000", "1000 of them", 2.5},
                     {"all, random, 1000", "calloc, free", bench::NO_LIMIT, 60},
                     {"all, random, 100000", "calloc, free", bench::NO_LIMIT, 60},
                     {"all, random, 100000", "1000 of them", 2.5}});
}
