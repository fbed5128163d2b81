// FINDFILEQQ above directories that answer as a test wants: that may not be searched, that fold case, or that
// the host has no memory left to list.
#include "file_search.h"

#include <dlfcn.h>

namespace {

// What asking for one name answers: 0 for a file system that finds it, or an error number.
int answer_to_a_name;
bool listing_fails;

int32_t find(const std::string &name, Character &path) {
  reset_error_state();
  return findfileqq_(name.data(), "NO_SUCH_VARIABLE", path.data(), static_cast<qxport_charlen>(name.size()),
                     16, path.length());
}

void expect_missed(const std::string &name) {
  Character path(200);
  const size_t descriptors = open_descriptors();
  EXPECT_EQ(find(name, path), 0);
  EXPECT_EQ(error_state(), NOT_FOUND);
  EXPECT_EQ(path.text(), padded("", 200));
  EXPECT_EQ(open_descriptors(), descriptors);
}

}  // namespace

int fstatat(int, const char *, struct stat *, int) noexcept {
  if (answer_to_a_name == 0)
    return 0;
  errno = answer_to_a_name;
  return -1;
}

DIR *fdopendir(int descriptor) {
  static const auto host = reinterpret_cast<DIR *(*)(int)>(dlsym(RTLD_NEXT, "fdopendir"));
  if (!listing_fails)
    return host(descriptor);
  errno = ENOMEM;
  return nullptr;
}

class FindFileInjected : public testing::Test {
protected:
  FindFileInjected() {
    answer_to_a_name = 0;
    listing_fails = false;
  }
  // What the test has made is removed on the host as it is.
  ~FindFileInjected() override {
    answer_to_a_name = 0;
    listing_fails = false;
  }
  const TemporaryDirectory directory;
};

TEST_F(FindFileInjected, DirectoryThatCannotBeListedIsSkippedAndClosed) {
  const std::string name = directory.file("prog");
  listing_fails = true;
  for (const int answer : {0, EACCES}) {
    answer_to_a_name = answer;
    expect_missed(name);
  }
}

// A file system that folds case finds what the listing has under another name.
TEST_F(FindFileInjected, CaseCountsOnEveryFileSystem) {
  const std::string name = directory.file("prog");
  for (const std::string other : {"PROG", "Prog", "prog.", "missing"})
    expect_missed(directory / other);
  Character path(200);
  EXPECT_EQ(find(name, path), static_cast<int32_t>(name.size()));
  EXPECT_EQ(path.text(), padded(name, 200));
  EXPECT_EQ(error_state(), NOTHING);
}

// The quick way to say no: nothing is read, so nothing that the listing says counts.
TEST_F(FindFileInjected, NameThatIsNotThereIsNotLookedForInTheListing) {
  const std::string name = directory.file("prog");
  for (const int answer : {ENOENT, ENAMETOOLONG}) {
    answer_to_a_name = answer;
    expect_missed(name);
  }
}

TEST_F(FindFileInjected, OtherTroubleWithANameIsSettledByTheListing) {
  const std::string name = directory.file("prog");
  for (const int answer : {EACCES, EIO, ELOOP, ESTALE}) {
    answer_to_a_name = answer;
    Character path(200);
    EXPECT_EQ(find(name, path), static_cast<int32_t>(name.size())) << answer;
    EXPECT_EQ(error_state(), NOTHING);
    expect_missed(directory / "missing");
  }
}
