// GETFILEINFOQQ and GETFILEINFOQQI8 above a host whose closing of a directory leaves an error number.
#include "file_search.h"

#include <dlfcn.h>
#include <optional>

namespace {

// What errno holds behind the next closing, or nothing for one that leaves it alone.
std::optional<int> left_by_closing;

}  // namespace

int closedir(DIR *stream) {
  static const auto host = reinterpret_cast<int (*)(DIR *)>(dlsym(RTLD_NEXT, "closedir"));
  const int before = errno;
  const int answer = host(stream);
  errno = left_by_closing.value_or(before);
  return answer;
}

template <typename Routine>
class EnumerationInjected : public testing::Test {
protected:
  ~EnumerationInjected() override { left_by_closing = std::nullopt; }

  // The end of a search that errno has that number before, and that one behind.
  void expect_end_between(int before, std::optional<int> behind, intptr_t handle) {
    Search<Routine> search(directory / "no such name");
    left_by_closing = behind;
    expect_end(search, handle, before);
  }

  const TemporaryDirectory directory;
};
TYPED_TEST_SUITE(EnumerationInjected, Routines, RoutineNames);

TYPED_TEST(EnumerationInjected, FailureToCloseShowsInTheHandle) {
  for (const int error : {EINTR, EBADF, EIO})
    this->expect_end_between(0, error, FAILED);
  this->expect_end_between(0, std::nullopt, END);
  this->expect_end_between(EIO, std::nullopt, FAILED);
}

// What counts is errno when the directory is closed, not when it ran out.
TYPED_TEST(EnumerationInjected, ErrnoIsLookedAtBehindTheClosing) {
  this->expect_end_between(EIO, 0, END);
  this->expect_end_between(EIO, ENOENT, END);
  this->expect_end_between(ENOENT, EIO, FAILED);
}

TYPED_TEST(EnumerationInjected, EntryThatCannotBeExaminedIsAFailureWhateverTheClosing) {
  ASSERT_EQ(symlink("missing", (this->directory / "dangling").c_str()), 0);
  left_by_closing = 0;
  Search<TypeParam> search(this->directory / "dangling");
  EXPECT_EQ(search.next(), 0);
  EXPECT_EQ(search.handle, FAILED);
  EXPECT_EQ(error_state(), NOT_FOUND);
}
