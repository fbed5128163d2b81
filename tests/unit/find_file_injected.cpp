// FINDFILEQQ where a directory is open and the host has no memory left to list it.
#include "file_search.h"

// A directory that may not be searched.
int fstatat(int, const char *, struct stat *, int) noexcept {
  errno = EACCES;
  return -1;
}

DIR *fdopendir(int) {
  errno = ENOMEM;
  return nullptr;
}

TEST(FindFileInjected, DirectoryThatCannotBeListedIsSkippedAndClosed) {
  const TemporaryDirectory directory;
  const std::string name = directory.file("prog");
  Character path(200);
  const size_t descriptors = open_descriptors();
  reset_error_state();
  const int32_t count = findfileqq_(name.data(), "NO_SUCH_VARIABLE", path.data(),
                                    static_cast<qxport_charlen>(name.size()), 16, 200);
  EXPECT_EQ(error_state(), NOT_FOUND);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(path.text(), padded("", 200));
  EXPECT_EQ(open_descriptors(), descriptors);
}
