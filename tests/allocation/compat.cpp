// The paths, commands, environment and file times of the qq family with each of their allocations failing in
// turn, and what they give back.
#include "environment.h"
#include "failing_allocations.h"
#include "outcome.h"

#include <cstdlib>
#include <filesystem>
#include <functional>

namespace {

// With so many allocations, and each failure answered and recorded in the same way.
struct Routine {
  const char *name;
  std::function<int32_t()> call;
  size_t allocations;
  int32_t failed;
  int32_t succeeded;
  std::vector<int32_t> recorded;
};

Character variable(40);

const std::vector<Routine> &routines() {
  // The first number is the conversion's, the second the routine's own.
  const std::vector<int32_t> once = {ENOMEM}, twice = {ENOMEM, ENOMEM};
  static const std::vector<Routine> all = {
      {"changedirqq", [] { return changedirqq_(".", 1); }, 1, 0, 1, twice},
      {"makedirqq", [] { return makedirqq_("file/x", 6); }, 1, 0, 0, once},
      {"deldirqq", [] { return deldirqq_("file", 4); }, 1, 0, 0, once},
      {"renamefileqq", [] { return renamefileqq_("file", "file", 4, 4); }, 2, 0, 1, twice},
      {"fullpathqq", [] { return fullpathqq_("/", variable.data(), 1, variable.length()); }, 1, 0, 1, once},
      {"splitpathqq",
       [] {
         return splitpathqq_("/", nullptr, variable.data(), nullptr, nullptr, 1, 0, variable.length(), 0, 0);
       },
       1, 0, 1, once},
      {"systemqq", [] { return systemqq_("exit 1", 6); }, 1, 0, 1, once},
      {"runqq", [] { return runqq_("true", "", 4, 0); }, 2, -1, 0, {}},
      {"getenvqq", [] { return getenvqq_("A", variable.data(), 1, variable.length()); }, 1, 0, 1, once},
      {"setenvqq", [] { return setenvqq_("A=1", 3); }, 1, 0, 1, once},
      {"setfiletimeqq",
       [] {
         const int32_t time = 0;
         return setfiletimeqq_("file", &time, 4);
       },
       1, 0, 1, once},
  };
  return all;
}

class CompatAllocation : public testing::Test {
protected:
  CompatAllocation() { directory.file("file"); }
  const TemporaryDirectory directory;
  const WorkingDirectory inside{directory.path()};
  const Environment environment{{"A=1", "PATH=/usr/bin:/bin"}};
};

TEST_F(CompatAllocation, EachFails) {
  for (const Routine &routine : routines()) {
    Outcome outcome = {};
    const size_t failures =
        fail_each_allocation([&] { outcome = outcome_of(routine.call); },
                             [&](size_t n) {
                               EXPECT_EQ(outcome.answer, routine.failed) << routine.name << n;
                               EXPECT_EQ(outcome.state.error, ENOMEM) << routine.name << n;
                               EXPECT_EQ(outcome.state.local, SENTINEL) << routine.name;
                               if (!routine.recorded.empty()) {
                                 EXPECT_EQ(outcome.state.recorded, routine.recorded) << routine.name << n;
                               }
                             });
    EXPECT_EQ(failures, routine.allocations) << routine.name;
    EXPECT_EQ(outcome.answer, routine.succeeded) << routine.name;
  }
}

// The name's failure is recorded by the conversion and by the routine, that of the command by the routine.
TEST_F(CompatAllocation, RunRecordsBoth) {
  std::vector<std::vector<int32_t>> recorded;
  Outcome outcome = {};
  fail_each_allocation([&] { outcome = outcome_of([] { return runqq_("true", "", 4, 0); }); },
                       [&](size_t) { recorded.push_back(outcome.state.recorded); });
  EXPECT_EQ(recorded, (std::vector<std::vector<int32_t>>{{ENOMEM, ENOMEM}, {ENOMEM}}));
}

TEST_F(CompatAllocation, OutputsOfFailuresStay) {
  Character stored(4);
  const FailingAllocation failing(1);
  fullpathqq_("/", stored.data(), 1, stored.length());
  EXPECT_EQ(stored.text(), "####");
  const FailingAllocation again(1);
  getenvqq_("A", stored.data(), 1, stored.length());
  EXPECT_EQ(stored.text(), "####");
}

TEST_F(CompatAllocation, PartsAreBlankBeforeThePathIsRead) {
  Character drive(2), dir(2), name(2), ext(2);
  const FailingAllocation failing(1);
  EXPECT_EQ(splitpathqq_("/x", drive.data(), dir.data(), name.data(), ext.data(), 2, 2, 2, 2, 2), 0);
  EXPECT_EQ(drive.text() + dir.text() + name.text() + ext.text(), "        ");
}

TEST_F(CompatAllocation, CurrentDirectoryIsBlankWithoutMemory) {
  for (const size_t size : {size_t{1}, size_t{100}, size_t{5000}}) {
    Character stored(padded(" #", size).substr(0, size));
    Outcome outcome = {};
    const FailingAllocation failing(1);
    outcome = outcome_of([&] { return getdrivedirqq_(stored.data(), stored.length()); });
    EXPECT_TRUE(failing.failed());
    EXPECT_EQ(outcome, (Outcome{0, {ENOMEM, SENTINEL, {ENOMEM}}}));
    EXPECT_EQ(stored.text(), padded("", size));
    EXPECT_EQ(failing.requested(1), std::min<size_t>(size + 1, 1024));
  }
}

// The text, the list, the entry.
TEST_F(CompatAllocation, NameWithAnEqualSignIsSetWholeOrNotAtAll) {
  Outcome outcome = {};
  int attempts = 0;
  const size_t failures = fail_each_allocation(
      [&] {
        ++attempts;
        outcome = outcome_of([] { return setenvqq_("B=C=D", 5); });
      },
      [&](size_t n) {
        EXPECT_EQ(outcome.answer, 0) << n;
        EXPECT_EQ(outcome.state.error, ENOMEM) << n;
        EXPECT_EQ(outcome.state.recorded, n == 1 ? std::vector<int32_t>{ENOMEM} : std::vector<int32_t>{})
            << n;
        EXPECT_EQ(getenv("B=C"), nullptr) << n;
        EXPECT_STREQ(getenv("A"), "1") << n;
      });
  EXPECT_EQ(failures, 3u);
  EXPECT_EQ(outcome, (Outcome{1, untouched()}));
  EXPECT_STREQ(getenv("B=C"), "D");
  {
    const FailingAllocation second(2);
    EXPECT_EQ(setenvqq_("B=C=E", 5), 0);
  }
  EXPECT_STREQ(getenv("B=C"), "D") << "as it was";
}

TEST_F(CompatAllocation, NothingIsKept) {
  for (const Routine &routine : routines()) {
    if (strcmp(routine.name, "setenvqq") == 0)
      continue;
    EXPECT_EQ(heap_growth([&] {
                reset_error_state();
                routine.call();
              }),
              0u)
        << routine.name;
  }
  EXPECT_EQ(heap_growth([] {
              variable.data()[0] = ' ';
              getdrivedirqq_(variable.data(), variable.length());
            }),
            0u);
  EXPECT_EQ(heap_growth([] {
              reset_error_state();
              setenvqq_("no sign", 7);
            }),
            0u);
  EXPECT_EQ(heap_growth([] { setenvqq_("X=Y=Z", 5); }), 0u) << "the value that is there already";
}

// The entries stay, and of the lists that held them the last one.
TEST_F(CompatAllocation, EnvironmentThatGrowsKeepsOneList) {
  constexpr size_t NAMES = 1000, ALL_LISTS = NAMES * NAMES / 2 * sizeof(char *);
  const size_t before = heap_in_use();
  for (size_t i = 0; i < NAMES; ++i) {
    const std::string text = "N=" + std::to_string(i) + "=1";
    ASSERT_EQ(setenvqq_(text.data(), static_cast<qxport_charlen>(text.size())), 1);
  }
  EXPECT_LT(heap_in_use() - before, ALL_LISTS / 4);
}

TEST_F(CompatAllocation, TimesAndSignalsNeedNone) {
  const FailingAllocation counting(0);
  int32_t time = 0;
  int16_t f[6];
  unpacktimeqq_(&time, &f[0], &f[1], &f[2], &f[3], &f[4], &f[5]);
  packtimeqq_(&time, &f[0], &f[1], &f[2], &f[3], &f[4], &f[5]);
  const int32_t w[6] = {2023, 7, 15, 12, 0, 0};
  packtimeqqi4_(&time, &w[0], &w[1], &w[2], &w[3], &w[4], &w[5]);
  const int32_t none = 0;
  raiseqq_(&none);
  signalqq_(&none, nullptr);
  sleepqq_(&none);
  EXPECT_EQ(counting.allocations(), 0u);
}

}  // namespace
