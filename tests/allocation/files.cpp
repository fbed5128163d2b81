// The file, process and environment routines with each of their allocations failing, and what they keep.
#include "failing_allocations.h"

#include "contract/services.h"
#include "environment.h"
#include "kept_on_purpose.h"
#include "outcome.h"
#include "status_array.h"

#include <filesystem>
#include <malloc.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// A routine's failing conversion of a name records as well.
const Outcome NO_MEMORY = {ENOMEM, {ENOMEM, ENOMEM, {ENOMEM, ENOMEM}}};
const Outcome NO_MEMORY_RECORDED_ONCE = {ENOMEM, {ENOMEM, ENOMEM, {ENOMEM}}};

// Calls a routine that makes this many allocations with each of them failing, then with none.
template <typename Call, typename Check>
void expect_failures(size_t allocations, const Outcome &expected, Call call, Check nothing_happened) {
  Outcome outcome;
  const size_t failed = fail_each_allocation([&] { outcome = outcome_of(call); },
                                             [&](size_t n) {
                                               EXPECT_EQ(outcome, expected) << "allocation " << n;
                                               nothing_happened();
                                             });
  EXPECT_EQ(failed, allocations);
  EXPECT_EQ(outcome, succeeded());
}

class FileRoutines : public testing::Test {
protected:
  bool exists(const std::string &name) const {
    struct stat status;
    return lstat(name.c_str(), &status) == 0;
  }

  unsigned mode() const {
    struct stat status = {};
    EXPECT_EQ(stat("file", &status), 0);
    return status.st_mode & 07777;
  }

  const TemporaryDirectory directory_;
  const std::string file_ = directory_.file("file", "text", 0640);
  const WorkingDirectory working_{directory_.path()};
};

TEST_F(FileRoutines, AccessIs12) {
  expect_failures(
      1, NO_MEMORY, [] { return access_("file", "rw", 4, 2); }, [] {});
}

TEST_F(FileRoutines, ChdirIs12AndStays) {
  ASSERT_EQ(mkdir("below", 0755), 0);
  expect_failures(
      1, NO_MEMORY, [] { return chdir_("below", 5); },
      [&] { EXPECT_EQ(std::filesystem::current_path(), directory_.path()); });
}

TEST_F(FileRoutines, UnlinkIs12AndRemovesNothing) {
  expect_failures(
      1, NO_MEMORY, [] { return unlink_("file", 4); }, [&] { EXPECT_TRUE(exists("file")); });
  EXPECT_FALSE(exists("file"));
}

TEST_F(FileRoutines, RenameIs12AndMovesNothing) {
  expect_failures(
      2, NO_MEMORY, [] { return rename_("file", "moved", 4, 5); },
      [&] {
        EXPECT_TRUE(exists("file"));
        EXPECT_FALSE(exists("moved"));
      });
  EXPECT_TRUE(exists("moved"));
}

TEST_F(FileRoutines, OctalChmodIs12AndChangesNothing) {
  expect_failures(
      2, NO_MEMORY_RECORDED_ONCE, [] { return chmod_("file", "600", 4, 3); },
      [&] { EXPECT_EQ(mode(), 0640u); });
  EXPECT_EQ(mode(), 0600u);
}

TEST_F(FileRoutines, SymbolicChmodIs12AndChangesNothing) {
  const KeptOnPurpose kept;
  expect_failures(
      2, NO_MEMORY_RECORDED_ONCE, [] { return chmod_("file", "u+x", 4, 3); },
      [&] { EXPECT_EQ(mode(), 0640u); });
  EXPECT_EQ(mode(), 0740u);
}

TEST_F(FileRoutines, GetcwdIs12AndStoresNothing) {
  Character name(PATH_MAX);
  expect_failures(
      1, NO_MEMORY_RECORDED_ONCE, [&] { return getcwd_(name.data(), name.length()); },
      [&] { EXPECT_EQ(name.text(), std::string(PATH_MAX, '#')); });
  EXPECT_EQ(name.text(), padded(directory_.path(), PATH_MAX));
}

TEST_F(FileRoutines, GetcwdReports12WhateverTheAllocatorLeft) {
  Character name(PATH_MAX);
  const FailingAllocation failing(1, EAGAIN);
  EXPECT_EQ(outcome_of([&] { return getcwd_(name.data(), name.length()); }), NO_MEMORY_RECORDED_ONCE);
}

TEST_F(FileRoutines, GetcwdAsksForOneByteMoreThanTheVariable) {
  Character name(PATH_MAX);
  const FailingAllocation counting(0);
  getcwd_(name.data(), name.length());
  EXPECT_EQ(counting.allocations(), 1u);
  EXPECT_EQ(counting.requested(1), PATH_MAX + 1u);
}

TEST_F(FileRoutines, GetcwdNeedsNoHeapForAVariableOfUsualLength) {
  for (const size_t length : {directory_.path().size(), size_t{PATH_MAX - 1}}) {
    Character name(length);
    const FailingAllocation failing(1);
    EXPECT_EQ(getcwd_(name.data(), name.length()), 0);
    EXPECT_EQ(failing.allocations(), 0u);
    EXPECT_EQ(name.text(), padded(directory_.path(), length));
  }
}

template <typename Integer>
void expect_status_failure(int32_t (*routine)(const char *, Integer *, qxport_charlen)) {
  StatusArray<Integer> statb;
  expect_failures(
      1, NO_MEMORY, [&] { return routine("file", statb.data(), 4); },
      [&] { EXPECT_EQ(statb.elements(), StatusArray<Integer>::former()); });
  EXPECT_EQ(statb.elements()[7], 4);
}

TEST_F(FileRoutines, StatFamilyIs12AndStoresNothing) {
  expect_status_failure<int32_t>(stat_);
  expect_status_failure<int32_t>(lstat_);
  expect_status_failure<int64_t>(stati8_);
  expect_status_failure<int64_t>(lstati8_);
}

TEST_F(FileRoutines, SystemIsMinus1AndRunsNothing) {
  Outcome outcome;
  const size_t failed =
      fail_each_allocation([&] { outcome = outcome_of([] { return system_("rm file", 7); }); },
                           [&](size_t) {
                             EXPECT_EQ(outcome, (Outcome{-1, {ENOMEM, SENTINEL, {ENOMEM}}}));
                             EXPECT_TRUE(exists("file"));
                           });
  EXPECT_EQ(failed, 1u);
  EXPECT_EQ(outcome.answer, 0);
  EXPECT_FALSE(exists("file"));
}

TEST(Getenv, LongNameIsNotFoundWithoutMemory) {
  const std::string name(1000, 'N');
  const Environment environment({name + "=value"});
  Character value(8);
  ErrorState state;
  const size_t failed = fail_each_allocation(
      [&] { state = state_after([&] { getenv_(name.c_str(), value.data(), 1000, 8); }); },
      [&](size_t) {
        EXPECT_EQ(value.text(), "        ");
        EXPECT_EQ(state, (ErrorState{ENOMEM, SENTINEL, {}}));
      });
  EXPECT_EQ(failed, 1u);
  EXPECT_EQ(value.text(), "value   ");
  EXPECT_EQ(state, untouched());
}

TEST(Getenv, ShortNameNeedsNoHeap) {
  const Environment environment({"HOME=/root"});
  const std::string variable = padded("HOME", 511);
  Character value(8);
  const FailingAllocation failing(1);
  getenv_("HOME", value.data(), 4, 8);
  EXPECT_EQ(value.text(), "/root   ");
  getenv_(variable.c_str(), value.data(), 511, 8);
  EXPECT_EQ(value.text(), "/root   ");
  EXPECT_EQ(failing.allocations(), 0u);
}

TEST_F(FileRoutines, RefusedArgumentsNeedNoHeap) {
  Character name(8);
  const FailingAllocation failing(1);
  EXPECT_EQ(access_("file", "q", 4, 1), EINVAL);
  EXPECT_EQ(access_("file", "r", 0, 1), EINVAL);
  EXPECT_EQ(getcwd_(name.data(), 0), ENOENT);
  EXPECT_EQ(failing.allocations(), 0u);
}

TEST_F(FileRoutines, TheOthersNeedNoHeap) {
  Character name(8), value(8);
  StatusArray<int32_t> statb;
  StatusArray<int64_t> statb8;
  const int32_t unit = 6, unconnected = 99, pid = getpid(), test = 0, none = 0;
  const FailingAllocation failing(1);
  fstat_(&unit, statb.data());
  fstati8_(&unit, statb8.data());
  isatty_(&unit);
  isatty_(&unconnected);
  ttynam_(name.data(), &unit, name.length());
  hostnm_(name.data(), name.length());
  getlog_(name.data(), name.length());
  scanenv_("PATH", name.data(), value.data(), 4, name.length(), value.length());
  kill_(&pid, &test);
  sleep_(&none);
  getuid_();
  getgid_();
  getpid_();
  EXPECT_EQ(failing.allocations(), 0u);
}

TEST_F(FileRoutines, AllElseIsGivenBack) {
  const std::string long_name(1000, 'N');
  Character name(200);
  Character long_variable(PATH_MAX);
  StatusArray<int32_t> statb;
  StatusArray<int64_t> statb8;
  EXPECT_EQ(heap_growth([&] {
              access_("file", "r", 4, 1);
              access_("missing", "r", 7, 1);
              chdir_(".", 1);
              chdir_("missing", 7);
              unlink_("missing", 7);
              rename_("file", "file", 4, 4);
              rename_("missing", "file", 7, 4);
              rename_("file", nullptr, 4, 4);
              getcwd_(name.data(), name.length());
              getcwd_(long_variable.data(), long_variable.length());
              stat_("file", statb.data(), 4);
              stat_("missing", statb.data(), 7);
              lstat_("file", statb.data(), 4);
              stati8_("file", statb8.data(), 4);
              lstati8_("missing", statb8.data(), 7);
              getenv_(long_name.c_str(), name.data(), 1000, name.length());
              recorded_statuses.clear();
            }),
            0u);
}

TEST_F(FileRoutines, SystemGivesBackItsCommand) {
  EXPECT_EQ(heap_growth([] { system_("", 0); }), 0u);
}

// A valid name of the file that is long enough for its block to tell itself from any other.
std::string long_name() {
  std::string name;
  while (name.size() < 2000)
    name += "./";
  return name + "file";
}

int32_t chmod_of(const std::string &name, const std::string &mode) {
  const int32_t answer = chmod_(name.c_str(), mode.c_str(), static_cast<qxport_charlen>(name.size()),
                                static_cast<qxport_charlen>(mode.size()));
  recorded_statuses.clear();
  return answer;
}

TEST_F(FileRoutines, OctalChmodGivesBackBothStrings) {
  const std::string name = long_name();
  EXPECT_EQ(heap_growth([&] { EXPECT_EQ(chmod_of(name, "644"), 0); }), 0u);
  EXPECT_EQ(heap_growth([&] { EXPECT_EQ(chmod_of(name, "0"), EINVAL); }), 0u);
  EXPECT_EQ(heap_growth([&] { EXPECT_EQ(chmod_of("missing", "644"), ENOENT); }), 0u);
}

TEST_F(FileRoutines, WrongClauseGivesBackBothStrings) {
  const std::string name = long_name();
  for (const char *mode : {"u", "u+v", "u+r,g+w", "r", ""})
    EXPECT_EQ(heap_growth([&] { EXPECT_EQ(chmod_of(name, mode), EINVAL); }), 0u) << mode;
}

TEST_F(FileRoutines, ChmodWithoutMemoryForTheModeGivesBackTheName) {
  const std::string name = long_name();
  for (const char *mode : {"644", "u+x"})
    EXPECT_EQ(heap_growth([&] {
                const FailingAllocation failing(2);
                EXPECT_EQ(chmod_of(name, mode), ENOMEM);
              }),
              0u)
        << mode;
}

// The heaps of the sanitizers do not tell how much of them is in use.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

// What a block for so many bytes takes from the heap.
size_t block_size(size_t requested) {
  void *block = malloc(requested);
  const size_t size = malloc_usable_size(block) + sizeof(size_t);
  free(block);
  return size;
}

// The strings of a symbolic call stay allocated, whether the host changed the mode or not: two blocks a call.
void expect_two_blocks_kept(const std::string &name, const std::string &mode, int32_t answer) {
  const FailingAllocation counting(0);
  chmod_of(name, mode);
  ASSERT_EQ(counting.allocations(), 2u);
  const size_t a_call = block_size(counting.requested(1)) + block_size(counting.requested(2));
  const size_t growth = heap_growth([&] { EXPECT_EQ(chmod_of(name, mode), answer); });
  EXPECT_GE(growth, 100 * a_call) << mode;
  EXPECT_LT(growth, 101 * a_call) << mode;
}

TEST_F(FileRoutines, SymbolicChmodKeepsBothStrings) {
  const std::string permissions(2000, 'x');
  expect_two_blocks_kept(long_name(), "u+" + permissions, 0);
  expect_two_blocks_kept(long_name(), "u-" + permissions, 0);
  expect_two_blocks_kept(long_name(), "u=" + permissions, 0);
  expect_two_blocks_kept(long_name() + "/below", "u+" + permissions, ENOTDIR);
}

#endif

}  // namespace
