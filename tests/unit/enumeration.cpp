// GETFILEINFOQQ and GETFILEINFOQQI8: how a search begins, goes on and ends.
#include "file_search.h"

#include <algorithm>
#include <filesystem>
#include <random>

namespace {

std::vector<std::string> sorted(std::vector<std::string> names) {
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace

template <typename Routine>
class Enumeration : public testing::Test {
protected:
  // What a whole search of the directory yields, sorted.
  std::vector<std::string> found(const std::string &pattern) {
    Search<Routine> search(directory / pattern);
    const std::vector<std::string> names = rest(search);
    EXPECT_EQ(search.handle, END);
    return sorted(names);
  }
  // The length that the record holds, low word only.
  int32_t length(const Search<Routine> &search) {
    int32_t value;
    memcpy(&value, search.record.text().data() + 12, sizeof(value));
    return value;
  }

  TemporaryDirectory directory;
};
TYPED_TEST_SUITE(Enumeration, Routines, RoutineNames);

using Names = std::vector<std::string>;

// --- What is found

TYPED_TEST(Enumeration, StarYieldsAllInDirectoryOrder) {
  for (const char *name : {"b", "a", ".hidden", "c.f90", "..x"})
    this->directory.file(name);
  Search<TypeParam> search(this->directory / "*");
  const Names names = rest(search);
  EXPECT_EQ(names, entries_of(this->directory.path()));
  EXPECT_EQ(sorted(names), (Names{".", "..", "..x", ".hidden", "a", "b", "c.f90"}));
}

TYPED_TEST(Enumeration, PatternsSelect) {
  for (const char *name : {"a", "ab", "abc", "b", ".f90", "main.f90", "MAIN.F90"})
    this->directory.file(name);
  EXPECT_EQ(this->found("a*"), (Names{"a", "ab", "abc"}));
  EXPECT_EQ(this->found("a**"), (Names{"ab", "abc"}));
  EXPECT_EQ(this->found("a*?"), (Names{"ab", "abc"}));
  EXPECT_EQ(this->found("a?"), (Names{"ab"}));
  EXPECT_EQ(this->found("*.f90"), (Names{".f90", "main.f90"}));
  EXPECT_EQ(this->found("*b*"), (Names{"ab", "abc", "b"}));
  EXPECT_EQ(this->found("?"), (Names{".", "a", "b"}));
  EXPECT_EQ(this->found("abc"), (Names{"abc"}));
  EXPECT_EQ(this->found("nothing"), Names{});
}

TYPED_TEST(Enumeration, TrailingBlanksOfTheSpecificationDoNotCount) {
  this->directory.file("file");
  EXPECT_EQ(this->found("f*   "), Names{"file"});
}

TYPED_TEST(Enumeration, EmbeddedNulEndsTheSpecification) {
  this->directory.file("file");
  EXPECT_EQ(this->found(std::string("f*\0/x", 5)), Names{"file"});
}

TYPED_TEST(Enumeration, TrailingSlashMatchesNothing) {
  this->directory.file("file");
  Search<TypeParam> search(this->directory / "");
  expect_end(search, END);
}

TYPED_TEST(Enumeration, NoSlashSearchesTheCurrentDirectory) {
  this->directory.file("file", "123");
  const WorkingDirectory inside(this->directory.path());
  Search<TypeParam> search("f*");
  expect_entry(search, "file");
  EXPECT_EQ(this->length(search), 3);
  expect_end(search, END);
}

TYPED_TEST(Enumeration, EmptySpecificationMatchesNothing) {
  for (const qxport_charlen length : {0, 3, -1}) {
    Search<TypeParam> search("   ");
    reset_error_state();
    errno = 0;
    EXPECT_EQ(TypeParam::call(search.files.data(), search.record.data(), &search.handle, length), 0);
    EXPECT_EQ(search.handle, END) << length;
    EXPECT_EQ(error_state(), NOT_FOUND);
  }
}

// --- How it ends

TYPED_TEST(Enumeration, SpecificationInTheRootDirectoryFails) {
  for (const char *files : {"/tmp", "/x*", "/*", "/"}) {
    Search<TypeParam> search(files);
    expect_end(search, FAILED);
  }
}

TYPED_TEST(Enumeration, DirectoryThatCannotBeOpenedFailsWithEnoent) {
  this->directory.file("file");
  for (const char *files : {"missing/*", "file/*", "mis*ing/*"}) {
    Search<TypeParam> search(this->directory / files);
    expect_end(search, FAILED);
  }
  in_directory_of_ordinary_user([](const TemporaryDirectory &directory) {
    const Mode unreadable(directory.path(), 0300);
    Search<TypeParam> search(directory / "*");
    expect_end(search, FAILED);
  });
}

TYPED_TEST(Enumeration, ErrnoLeftBehindDecidesHowTheEndReads) {
  this->directory.file("file");
  for (const auto &[error, handle] : {std::pair(0, END), {ENOENT, END}, {EACCES, FAILED}, {ENOMEM, FAILED}}) {
    Search<TypeParam> search(this->directory / "file");
    expect_entry(search, "file");
    expect_end(search, handle, error);
  }
}

TYPED_TEST(Enumeration, ErrnoLeftBehindOutlastsAnEntry) {
  this->directory.file("file");
  Search<TypeParam> search(this->directory / "file");
  EXPECT_EQ(search.next(EACCES), 4);
  EXPECT_EQ(error_state(), (ErrorState{EACCES, SENTINEL, {}}));
  expect_end(search, FAILED, errno);
}

TYPED_TEST(Enumeration, FailureOfTheReadingFails) {
  this->directory.file("file");
  Search<TypeParam> search(this->directory / "file");
  expect_entry(search, "file");
  close(dirfd(reinterpret_cast<DIR *>(search.handle)));
  expect_end(search, FAILED);
}

TYPED_TEST(Enumeration, DanglingLinkFailsWithItsNameWritten) {
  std::filesystem::create_symlink("missing", this->directory / "link");
  Search<TypeParam> search(this->directory / "l*");
  const size_t descriptors = open_descriptors();
  const std::string expected = search.record.text().replace(TypeParam::NAME, 255, padded("link", 255));
  EXPECT_EQ(search.next(), 0);
  EXPECT_EQ(search.handle, FAILED);
  EXPECT_EQ(error_state(), NOT_FOUND);
  EXPECT_EQ(search.record.text(), expected);
  EXPECT_EQ(open_descriptors(), descriptors);
}

// Listed, but not searched.
TYPED_TEST(Enumeration, EntryOfAnUnsearchableDirectoryFails) {
  in_directory_of_ordinary_user([](const TemporaryDirectory &directory) {
    directory.file("file");
    const Mode readable(directory.path(), 0400);
    Search<TypeParam> search(directory / "f*");
    EXPECT_EQ(search.next(), 0);
    EXPECT_EQ(search.handle, FAILED);
    EXPECT_EQ(error_state(), NOT_FOUND);
    EXPECT_EQ(search.name_field(), padded("file", 255));
  });
}

TYPED_TEST(Enumeration, EveryEndClosesTheDirectory) {
  this->directory.file("file");
  const size_t descriptors = open_descriptors();
  Search<TypeParam> search(this->directory / "file");
  expect_entry(search, "file");
  EXPECT_EQ(open_descriptors(), descriptors + 1);
  expect_end(search, END);
  EXPECT_EQ(open_descriptors(), descriptors);
}

// --- Handles

TYPED_TEST(Enumeration, HandleStaysTheSameWhileTheSearchIsUnderWay) {
  Search<TypeParam> search(this->directory / "*");
  search.next();
  const intptr_t handle = search.handle;
  EXPECT_TRUE(under_way(search));
  search.next();
  EXPECT_EQ(search.handle, handle);
  expect_end(search, END);
}

TYPED_TEST(Enumeration, SpecificationIsReadAtTheBeginningOnly) {
  Search<TypeParam> search(this->directory / "*");
  search.next();
  EXPECT_GT(TypeParam::call(nullptr, search.record.data(), &search.handle, 5), 0);
  EXPECT_EQ(TypeParam::call(nullptr, search.record.data(), &search.handle, 5), 0);
}

TYPED_TEST(Enumeration, NullSpecificationFailsWithEnomem) {
  Search<TypeParam> search("");
  reset_error_state();
  EXPECT_EQ(TypeParam::call(nullptr, search.record.data(), &search.handle, 5), 0);
  EXPECT_EQ(search.handle, FAILED);
  EXPECT_EQ(error_state(), (ErrorState{ENOMEM, SENTINEL, {EINVAL, ENOMEM}}));
}

TYPED_TEST(Enumeration, HandlesOfNoSearchAreRefused) {
  Search<TypeParam> ended(this->directory / ".");
  expect_entry(ended, ".");
  const intptr_t closed = ended.handle;
  expect_end(ended, END);
  std::vector<intptr_t> handles = {0, 1, END, FAILED, closed, INTPTR_MIN, INTPTR_MAX};
  std::mt19937_64 random(1);
  for (int i = 0; i < 100; ++i)
    handles.push_back(static_cast<intptr_t>(random()));

  for (const intptr_t handle : handles) {
    Search<TypeParam> search(this->directory / "*");
    search.handle = handle;
    expect_end(search, FAILED);
  }
}

TYPED_TEST(Enumeration, RefusedHandleDisturbsNoSearchUnderWay) {
  Search<TypeParam> search(this->directory / "*");
  search.next();
  Search<TypeParam> refused(this->directory / "x");
  refused.handle = FAILED;
  expect_end(refused, FAILED);
  EXPECT_EQ(rest(search).size(), 1u);
  EXPECT_EQ(search.handle, END);
}

// --- Several searches

// Two directories with the names f1, f2 and f3, the files 1 byte long in one and 2 bytes long in the other.
template <typename Routine>
class TwoDirectories : public Enumeration<Routine> {
protected:
  TwoDirectories() {
    for (const char *name : {"f1", "f2", "f3"}) {
      one.file(name, "1");
      two.file(name, "22");
    }
  }
  TemporaryDirectory one, two;
};
TYPED_TEST_SUITE(TwoDirectories, Routines, RoutineNames);

TYPED_TEST(TwoDirectories, SecondSearchTakesTheDirectoryOfTheFirst) {
  Search<TypeParam> first(this->one / "f?");
  EXPECT_EQ(first.next(), 2);
  EXPECT_EQ(this->length(first), 1);
  Search<TypeParam> second(this->two / "f*");
  EXPECT_EQ(second.next(), 2);
  EXPECT_EQ(this->length(second), 2);
  EXPECT_NE(first.handle, second.handle);
  EXPECT_EQ(first.next(), 2);
  EXPECT_EQ(this->length(first), 2);
  EXPECT_EQ(rest(second).size(), 2u);
  // The end of the one took the pattern from the other.
  expect_end(first, END);
}

TYPED_TEST(TwoDirectories, SecondSearchTakesThePatternOfTheFirst) {
  Search<TypeParam> first(this->one / "f?");
  EXPECT_EQ(first.next(), 2);
  Search<TypeParam> second(this->two / "g*");
  expect_end(second, END);
  expect_end(first, END);
}

TYPED_TEST(TwoDirectories, EndOfTheFirstClosesItsOwnDirectory) {
  Search<TypeParam> first(this->one / "f?");
  EXPECT_EQ(first.next(), 2);
  Search<TypeParam> second(this->two / "f?");
  EXPECT_EQ(second.next(), 2);
  EXPECT_EQ(rest(first).size(), 2u);
  EXPECT_EQ(first.handle, END);
  // Without a pattern, but with its directory.
  expect_end(second, END);
}

TYPED_TEST(TwoDirectories, SearchThatFailsToBeginTakesThemToo) {
  Search<TypeParam> first(this->one / "f?");
  EXPECT_EQ(first.next(), 2);
  Search<TypeParam> second(this->two / "missing/f*");
  expect_end(second, FAILED);
  EXPECT_EQ(first.next(), 0);
  EXPECT_EQ(first.handle, FAILED);
}

TYPED_TEST(TwoDirectories, AbandonedSearchLeavesTheNextAlone) {
  Search<TypeParam> abandoned(this->one / "*");
  EXPECT_GT(abandoned.next(), 0);
  Search<TypeParam> search(this->two / "f?");
  EXPECT_EQ(sorted(rest(search)), (Names{"f1", "f2", "f3"}));
  EXPECT_EQ(search.handle, END);
  expect_end(abandoned, END);
}

TEST(EnumerationOfBothKinds, TheTwoRoutinesAreIndependent) {
  const TemporaryDirectory one, two;
  for (const char *name : {"a1", "a2"})
    one.file(name, "1");
  for (const char *name : {"b1", "b2"})
    two.file(name, "22");
  Search<Default> narrow(one / "a?");
  Search<Wide> wide(two / "b*");
  Names names;
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(narrow.next(), 2);
    names.push_back(narrow.name_field().substr(0, 2));
    EXPECT_EQ(wide.next(), 2);
    names.push_back(wide.name_field().substr(0, 2));
  }
  EXPECT_EQ(sorted(names), (Names{"a1", "a2", "b1", "b2"}));
  // A handle belongs to one routine.
  Search<Wide> foreign(two / "b*");
  foreign.handle = narrow.handle;
  expect_end(foreign, FAILED);
  expect_end(narrow, END);
  expect_end(wide, END);
}

// --- Long texts

TYPED_TEST(Enumeration, DirectoryOfAnyLengthIsOpened) {
  this->directory.file("file");
  for (const size_t length : {1023, 1024, 1025, 4000}) {
    Search<TypeParam> search(this->directory.path() +
                             std::string(length - this->directory.path().size(), '/') + "/file");
    expect_entry(search, "file");
    expect_end(search, END);
  }
  for (const size_t length : {5000, 100000}) {
    Search<TypeParam> search(std::string(length, 'd') + "/*");
    expect_end(search, FAILED);
  }
}

// The names come from the directory, their description from what its first 1024 characters denote.
TYPED_TEST(Enumeration, EntriesAreExaminedUnderTheFirst1024Characters) {
  std::filesystem::create_directory(this->directory / "sub");
  this->directory.file("sub/file");
  const auto specification = [&](size_t length) {
    return this->directory.path() + std::string(length - 3 - this->directory.path().size(), '/') + "sub/file";
  };
  Search<TypeParam> longest(specification(1024));
  expect_entry(longest, "file");
  expect_end(longest, END);
  Search<TypeParam> longer(specification(1025));
  EXPECT_EQ(longer.next(), 0);
  EXPECT_EQ(longer.handle, FAILED);
  EXPECT_EQ(error_state(), NOT_FOUND);
}

TYPED_TEST(Enumeration, PatternIsCutAfter255Characters) {
  const std::string name(255, 'n');
  this->directory.file(name);
  EXPECT_EQ(this->found(name), Names{name});
  EXPECT_EQ(this->found(name + "behind"), Names{name});
  EXPECT_EQ(this->found(std::string(100000, '?')), Names{name});
  EXPECT_EQ(this->found(name.substr(1) + "?"), Names{name});
  EXPECT_EQ(this->found(std::string(254, 'n') + "x"), Names{});
}

// --- A directory that changes

TYPED_TEST(Enumeration, FileRemovedMeanwhileFails) {
  for (const char *name : {"f1", "f2", "f3"})
    this->directory.file(name);
  Search<TypeParam> search(this->directory / "f?");
  EXPECT_EQ(search.next(), 2);
  for (const char *name : {"f1", "f2", "f3"})
    unlink((this->directory / name).c_str());
  EXPECT_EQ(search.next(), 0);
  EXPECT_EQ(search.handle, FAILED);
  EXPECT_EQ(error_state(), NOT_FOUND);
}

TYPED_TEST(Enumeration, DirectoryRemovedMeanwhileEnds) {
  std::filesystem::create_directory(this->directory / "sub");
  this->directory.file("sub/file");
  Search<TypeParam> search(this->directory / "sub/file");
  expect_entry(search, "file");
  std::filesystem::remove_all(this->directory / "sub");
  expect_end(search, END);
}

TYPED_TEST(Enumeration, RemovedWorkingDirectoryHoldsNothing) {
  std::filesystem::create_directory(this->directory / "sub");
  const WorkingDirectory removed(this->directory / "sub");
  std::filesystem::remove(this->directory / "sub");
  Search<TypeParam> search("*");
  expect_end(search, END);
}

TYPED_TEST(Enumeration, RelativeSearchFollowsTheWorkingDirectory) {
  this->directory.file("f1");
  this->directory.file("f2");
  const WorkingDirectory inside(this->directory.path());
  Search<TypeParam> search("f?");
  EXPECT_EQ(search.next(), 2);
  const WorkingDirectory elsewhere("/");
  EXPECT_EQ(search.next(), 0);
  EXPECT_EQ(search.handle, FAILED);
}

// Linear work: anything quadratic runs into the time limit.
TEST(EnumerationAtScale, HundredThousandFilesAreEnumeratedAndDeleted) {
  constexpr size_t COUNT = 100000;
  const TemporaryDirectory directory;
  const WorkingDirectory inside(directory.path());
  // Names of a few files, which are made much faster than files.
  for (size_t i = 0, file = 0; i < COUNT; ++i) {
    if (i % 10000 == 0)
      directory.file(std::to_string(file = i));
    else
      ASSERT_EQ(link(std::to_string(file).c_str(), std::to_string(i).c_str()), 0);
  }
  std::vector<bool> seen(COUNT);
  Search<Wide> search("*");
  size_t count = 0;
  while (search.next() > 0) {
    const std::string name = search.name_field();
    if (name[0] == '.')
      continue;
    ASSERT_FALSE(seen.at(std::stoul(name))) << name;
    seen[std::stoul(name)] = true;
    ++count;
  }
  EXPECT_EQ(search.handle, END);
  EXPECT_EQ(count, COUNT);
  EXPECT_EQ(delfilesqq_("*", 1), static_cast<int32_t>(COUNT));
  EXPECT_EQ(entries_of(".").size(), 2u);
}
