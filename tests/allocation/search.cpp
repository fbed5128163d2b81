// The file search with each of its allocations failing in turn, and what it gives back.
#include "failing_allocations.h"
#include "file_search.h"

#include <cstdlib>
#include <filesystem>

template <typename Routine>
class SearchAllocation : public testing::Test {
protected:
  TemporaryDirectory directory;
};
TYPED_TEST_SUITE(SearchAllocation, Routines, RoutineNames);

// First the text of the search, then the place that remembers the search.
TYPED_TEST(SearchAllocation, BeginningFails) {
  this->directory.file("file");
  const size_t descriptors = open_descriptors();
  Search<TypeParam> search(this->directory / "f*");
  int32_t count = -1;
  const size_t failures = fail_each_allocation(
      [&] {
        search.handle = BEGIN;
        count = search.next();
      },
      [&](size_t n) {
        EXPECT_EQ(count, 0) << n;
        EXPECT_EQ(search.handle, FAILED) << n;
        const ErrorState no_memory = {ENOMEM, SENTINEL, {ENOMEM, ENOMEM}};
        EXPECT_EQ(error_state(), n == 1 ? no_memory : NOT_FOUND) << n;
        EXPECT_EQ(search.record.text(), std::string(TypeParam::SIZE, '#')) << n;
        EXPECT_EQ(open_descriptors(), descriptors) << n;
      });
  EXPECT_EQ(failures, 2u);
  EXPECT_EQ(count, 4);
  EXPECT_EQ(search.name_field(), padded("file", 255));
  expect_end(search, END);
  EXPECT_EQ(open_descriptors(), descriptors);
}

TYPED_TEST(SearchAllocation, GoingOnAndEndingAllocateNothing) {
  this->directory.file("file");
  Search<TypeParam> search(this->directory / "*");
  EXPECT_GT(search.next(), 0);
  const FailingAllocation counting(0);
  EXPECT_EQ(rest(search).size(), 2u);
  EXPECT_EQ(search.handle, END);
  EXPECT_EQ(counting.allocations(), 0u);
}

TYPED_TEST(SearchAllocation, FailedBeginningLeavesTheSearchUnderWayItsStream) {
  this->directory.file("file");
  Search<TypeParam> search(this->directory / "*");
  EXPECT_GT(search.next(), 0);
  {
    const FailingAllocation failing(1);
    Search<TypeParam> second(this->directory / "x");
    EXPECT_EQ(second.next(), 0);
    EXPECT_TRUE(failing.failed());
  }
  EXPECT_EQ(rest(search).size(), 2u);
  EXPECT_EQ(search.handle, END);
}

TYPED_TEST(SearchAllocation, NothingIsKept) {
  this->directory.file("file");
  Search<TypeParam> search(this->directory / "file");
  for (const size_t n : {0, 1, 2})
    EXPECT_EQ(heap_growth([&] {
                search.handle = BEGIN;
                const FailingAllocation failing(n);
                while (search.next() > 0) {
                }
              }),
              0u)
        << n;
  Search<TypeParam> missing(this->directory / "missing/file");
  EXPECT_EQ(heap_growth([&] {
              missing.handle = BEGIN;
              missing.next();
            }),
            0u);
}

class FindFileAllocation : public testing::Test {
protected:
  static constexpr char LIST[] = "QXPORT_TEST_DIRECTORIES";

  FindFileAllocation() : inside(directory.path()) {
    for (const char *name : {"one", "two"})
      std::filesystem::create_directory(name);
    setenv(LIST, "one:two", 1);
  }
  ~FindFileAllocation() override { unsetenv(LIST); }

  int32_t find(const char *name) {
    reset_error_state();
    return findfileqq_(name, LIST, path.data(), strlen(name), strlen(LIST), path.length());
  }

  TemporaryDirectory directory;
  WorkingDirectory inside;
  Character path{20};
};

// The name's failure is the conversion's alone; the variable's reads as a variable that is not set.
TEST_F(FindFileAllocation, EachConversionFails) {
  directory.file("two/prog");
  const size_t descriptors = open_descriptors();
  int32_t count = -1;
  const size_t failures =
      fail_each_allocation([&] { count = find("prog"); },
                           [&](size_t n) {
                             EXPECT_EQ(count, 0) << n;
                             EXPECT_EQ(path.text(), padded("", 20)) << n;
                             const ErrorState name = {ENOMEM, SENTINEL, {ENOMEM}};
                             const ErrorState variable = {ENOENT, SENTINEL, {ENOMEM, ENOENT}};
                             EXPECT_EQ(error_state(), n == 1 ? name : variable) << n;
                             EXPECT_EQ(open_descriptors(), descriptors) << n;
                           });
  EXPECT_EQ(failures, 2u);
  EXPECT_EQ(count, 8);
  EXPECT_EQ(path.text(), padded("two/prog", 20));
  EXPECT_EQ(error_state(), NOTHING);
  EXPECT_EQ(open_descriptors(), descriptors);
}

TEST_F(FindFileAllocation, FirstHitNeedsTheNameOnly) {
  directory.file("one/prog");
  int32_t count = -1;
  const size_t failures =
      fail_each_allocation([&] { count = find("one/prog"); }, [&](size_t) { EXPECT_EQ(count, 0); });
  EXPECT_EQ(failures, 1u);
  EXPECT_EQ(count, 8);
}

TEST_F(FindFileAllocation, NothingIsKept) {
  directory.file("two/prog");
  for (const size_t n : {0, 1, 2})
    EXPECT_EQ(heap_growth([&] {
                const FailingAllocation failing(n);
                find("prog");
                find("missing");
              }),
              0u)
        << n;
}

TEST(DeleteFilesAllocation, NothingIsKept) {
  for (const size_t n : {0, 1})
    EXPECT_EQ(heap_growth([&] {
                reset_error_state();
                const FailingAllocation failing(n);
                delfilesqq_("/tmp/qxport-no-such-file", 24);
              }),
              0u)
        << n;
}

TEST(DeleteFilesAllocation, ConversionFailsBeforeAnythingIsDeleted) {
  const TemporaryDirectory directory;
  const WorkingDirectory inside(directory.path());
  directory.file("a");
  directory.file("b");
  const size_t descriptors = open_descriptors();
  const std::string before = working_directory();
  int32_t count = -1;
  const size_t failures = fail_each_allocation(
      [&] {
        reset_error_state();
        count = delfilesqq_("*", 1);
      },
      [&](size_t n) {
        EXPECT_EQ(count, 0) << n;
        EXPECT_EQ(entries_of(".").size(), 4u) << n;
        EXPECT_EQ(error_state(), (ErrorState{ENOMEM, SENTINEL, {ENOMEM}})) << "as the conversion left it";
        EXPECT_EQ(working_directory(), before) << n;
      });
  EXPECT_EQ(failures, 1u);
  EXPECT_EQ(count, 2);
  EXPECT_EQ(entries_of(".").size(), 2u);
  EXPECT_EQ(open_descriptors(), descriptors);
}
