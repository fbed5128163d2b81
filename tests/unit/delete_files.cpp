// DELFILESQQ: what is deleted, what stays, and the working directory behind it.
#include "file_search.h"
#include "paths.h"

#include <algorithm>
#include <filesystem>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/un.h>

namespace {

int changes_of_directory = 0;

}  // namespace

// The host's own, counted.
int chdir(const char *path) noexcept {
  ++changes_of_directory;
  return static_cast<int>(syscall(SYS_chdir, path));
}
int fchdir(int descriptor) noexcept {
  ++changes_of_directory;
  return static_cast<int>(syscall(SYS_fchdir, descriptor));
}

namespace {

using Names = std::vector<std::string>;

// Deletes, and sees that nothing is recorded and that the process is where it was, with no descriptor more.
int32_t delete_files(const std::string &files) {
  Character specification(files);
  const std::string before = working_directory();
  const size_t descriptors = open_descriptors();
  reset_error_state();
  const int32_t count = delfilesqq_(specification.data(), specification.length());
  EXPECT_EQ(recorded_statuses.size(), 0u) << files;
  EXPECT_EQ(portlib_local_errno, SENTINEL) << files;
  EXPECT_EQ(working_directory(), before) << files;
  EXPECT_EQ(open_descriptors(), descriptors) << files;
  return count;
}

Names names_in(const std::string &directory) {
  Names names;
  for (const std::string &name : entries_of(directory))
    if (name != "." && name != "..")
      names.push_back(name);
  std::sort(names.begin(), names.end());
  return names;
}

void make_socket() {
  const sockaddr_un address = {AF_UNIX, "socket"};
  const int descriptor = socket(AF_UNIX, SOCK_STREAM, 0);
  EXPECT_EQ(bind(descriptor, reinterpret_cast<const sockaddr *>(&address), sizeof(address)), 0);
  close(descriptor);
}

}  // namespace

class DeleteFiles : public testing::Test {
protected:
  DeleteFiles() : inside(directory.path()) {}

  void make(std::initializer_list<const char *> names) {
    for (const char *name : names)
      directory.file(name, name);
  }

  TemporaryDirectory directory;
  WorkingDirectory inside;
};

// --- What is deleted

TEST_F(DeleteFiles, StarDeletesTheRegularFilesOfTheCurrentDirectoryOnly) {
  std::filesystem::create_directory("sub");
  make({"a", "b", ".hidden", "sub/c"});
  EXPECT_EQ(delete_files("*"), 3);
  EXPECT_EQ(names_in("."), Names{"sub"});
  EXPECT_EQ(names_in("sub"), Names{"c"});
}

TEST_F(DeleteFiles, PatternSelects) {
  make({"a", "ab", "abc", "b", "main.f90", ".f90"});
  EXPECT_EQ(delete_files("a**"), 2);
  EXPECT_EQ(names_in("."), (Names{".f90", "a", "b", "main.f90"}));
  EXPECT_EQ(delete_files("*.f90  "), 2);
  EXPECT_EQ(delete_files("?"), 2);
  EXPECT_EQ(names_in("."), Names{});
}

TEST_F(DeleteFiles, DirectoryPartIsSearchedInsteadOfTheCurrentOne) {
  std::filesystem::create_directories("one/two");
  make({"a", "one/a", "one/two/a"});
  EXPECT_EQ(delete_files("one/a"), 1);
  EXPECT_EQ(delete_files(directory / "one/two/*"), 1);
  EXPECT_EQ(names_in("one"), Names{"two"});
  EXPECT_EQ(names_in("one/two"), Names{});
  EXPECT_EQ(names_in("."), (Names{"a", "one"}));
}

TEST_F(DeleteFiles, ReadOnlyFileIsDeleted) {
  directory.file("file", "", 0);
  EXPECT_EQ(delete_files("file"), 1);
  EXPECT_FALSE(exists("file"));
}

TEST_F(DeleteFiles, LinkToARegularFileIsRemovedAndTheFileKept) {
  make({"file"});
  std::filesystem::create_symlink("file", "link");
  std::filesystem::create_symlink("link", "link_to_link");
  EXPECT_EQ(delete_files("link*"), 2);
  EXPECT_EQ(names_in("."), Names{"file"});
  EXPECT_EQ(std::filesystem::file_size("file"), 4u);
}

TEST_F(DeleteFiles, NamesMayHoldAnyByte) {
  const std::string longest(255, 'n');
  for (const std::string &name : {longest, std::string("\xff\xfe"), std::string("a\nb "), std::string("-f")})
    directory.file(name);
  EXPECT_EQ(delete_files(longest), 1);
  EXPECT_EQ(delete_files("\xff?"), 1);
  EXPECT_EQ(delete_files("a\n*"), 1);
  EXPECT_EQ(names_in("."), Names{"-f"});
}

TEST_F(DeleteFiles, EmbeddedNulEndsTheSpecification) {
  make({"a", "ab"});
  EXPECT_EQ(delete_files(std::string("a\0b/*", 5)), 1);
  EXPECT_EQ(names_in("."), Names{"ab"});
}

// --- What stays

TEST_F(DeleteFiles, OnlyRegularFilesAreDeleted) {
  std::filesystem::create_directory("directory");
  ASSERT_EQ(mkfifo("fifo", 0600), 0);
  make_socket();
  for (const char *target : {"directory", "fifo", "socket", "missing", "/dev/null"})
    std::filesystem::create_symlink(target, "link_to_" + std::filesystem::path(target).filename().string());
  const Names before = names_in(".");
  EXPECT_EQ(before.size(), 8u);
  EXPECT_EQ(delete_files("*"), 0);
  EXPECT_EQ(names_in("."), before);
}

TEST_F(DeleteFiles, NoMatchDeletesNothing) {
  std::filesystem::create_directory("sub");
  make({"a", "sub/a"});
  for (const char *files : {"b", "a?", "sub/b*", "sub/", "", "   ", "A", "[a]"})
    EXPECT_EQ(delete_files(files), 0) << files;
  EXPECT_EQ(delete_files(std::string(100000, '?')), 0);
  EXPECT_EQ(names_in("."), (Names{"a", "sub"}));
  EXPECT_EQ(names_in("sub"), Names{"a"});
}

TEST_F(DeleteFiles, DirectoryThatCannotBeEnteredDeletesNothing) {
  make({"a"});
  for (const char *files : {"missing/*", "a/*", "?/*"})
    EXPECT_EQ(delete_files(files), 0) << files;
  EXPECT_EQ(delete_files(std::string(100000, 'd') + "/*"), 0);
  EXPECT_EQ(names_in("."), Names{"a"});
}

// The name is one that no root directory has.
TEST_F(DeleteFiles, SpecificationInTheRootDirectoryDeletesNothing) {
  make({"qxport-test-file"});
  EXPECT_EQ(delete_files("/qxport-test-fil?"), 0);
  EXPECT_TRUE(exists("qxport-test-file"));
}

TEST_F(DeleteFiles, LengthOfZeroOrLessIsAnEmptySpecification) {
  make({"a"});
  EXPECT_EQ(delfilesqq_("*", 0), 0);
  EXPECT_EQ(delfilesqq_("*", -1), 0);
  EXPECT_EQ(names_in("."), Names{"a"});
}

TEST_F(DeleteFiles, NullSpecificationDeletesNothing) {
  make({"a"});
  reset_error_state();
  EXPECT_EQ(delfilesqq_(nullptr, 1), 0);
  EXPECT_EQ(error_state(), (ErrorState{EINVAL, SENTINEL, {EINVAL}})) << "as the conversion left it";
  EXPECT_EQ(names_in("."), Names{"a"});
}

// --- Permissions

TEST(DeleteFilesPermissions, DirectoryThatIsNotListedDeletesNothing) {
  in_directory_of_ordinary_user([](const TemporaryDirectory &directory) {
    ASSERT_EQ(mkdir("locked", 0700), 0);
    directory.file("locked/a");
    for (const mode_t mode : {0300, 0600, 0000}) {
      const Mode locked("locked", mode);
      EXPECT_EQ(delete_files("locked/*"), 0) << mode;
    }
    EXPECT_EQ(names_in("locked"), Names{"a"});
  });
}

TEST(DeleteFilesPermissions, FilesThatMayNotBeDeletedAreNotCounted) {
  in_directory_of_ordinary_user([](const TemporaryDirectory &directory) {
    ASSERT_EQ(mkdir("locked", 0700), 0);
    directory.file("locked/a");
    {
      const Mode locked("locked", 0500);
      EXPECT_EQ(delete_files("locked/*"), 0);
    }
    EXPECT_EQ(names_in("locked"), Names{"a"});
  });
}

// A process may stand where it cannot come back to by name: it is not sent away from there.
TEST(DeleteFilesPermissions, ProcessStaysWhereItCannotComeBackTo) {
  in_directory_of_ordinary_user([](const TemporaryDirectory &directory) {
    for (const char *name : {"locked", "locked/home", "other"})
      ASSERT_EQ(mkdir(name, 0700), 0);
    directory.file("locked/home/kept");
    directory.file("other/a");
    const WorkingDirectory inside("locked/home");
    {
      const Mode locked(directory / "locked", 0);
      EXPECT_EQ(delete_files(directory / "other/*"), 1);
      EXPECT_EQ(delete_files(directory / "other/*"), 0);
      EXPECT_TRUE(exists("kept"));
      EXPECT_EQ(delete_files("./no*"), 0);
    }
    EXPECT_EQ(names_in("."), Names{"kept"});
  });
}

// The current directory is searched by its name.
TEST(DeleteFilesPermissions, CurrentDirectoryOutOfReachDeletesNothing) {
  in_directory_of_ordinary_user([](const TemporaryDirectory &directory) {
    ASSERT_EQ(mkdir((directory / "sub").c_str(), 0700), 0);
    directory.file("sub/a");
    const WorkingDirectory inside(directory / "sub");
    {
      const Mode locked(directory.path(), 0);
      EXPECT_EQ(delete_files("*"), 0);
    }
    EXPECT_EQ(names_in("."), Names{"a"});
  });
}

// --- The working directory

// Another thread that looked, at any moment, would find the process where it was.
TEST_F(DeleteFiles, WorkingDirectoryIsNeverLeft) {
  std::filesystem::create_directory("sub");
  make({"a", "sub/a"});
  changes_of_directory = 0;
  EXPECT_EQ(delete_files("sub/*"), 1);
  EXPECT_EQ(delete_files(directory / "sub/*"), 0);
  EXPECT_EQ(delete_files("*"), 1);
  EXPECT_EQ(changes_of_directory, 0);
}

TEST_F(DeleteFiles, RemovedWorkingDirectoryDeletesNothing) {
  std::filesystem::create_directory("removed");
  make({"a"});
  const WorkingDirectory removed("removed");
  std::filesystem::remove(directory / "removed");
  EXPECT_EQ(delete_files("*"), 0);
  EXPECT_EQ(delete_files(directory / "*"), 0);
  EXPECT_TRUE(exists(directory / "a"));
}

TEST_F(DeleteFiles, WorkingDirectoryOfUpTo1023CharactersWillDo) {
  for (const size_t length : {1023, 1024, 1100}) {
    const std::string deep = path_of_length(std::filesystem::canonical(".").string() + "/d", length);
    std::filesystem::create_directories(deep);
    const WorkingDirectory inside_deep(deep);
    directory.file(deep.substr(directory.path().size() + 1) + "/a");
    ASSERT_EQ(working_directory().size(), length);
    EXPECT_EQ(delete_files("*"), length < 1024 ? 1 : 0);
    EXPECT_EQ(exists("a"), length >= 1024);
    EXPECT_EQ(delete_files("/tmp/qxport-no-such-file"), 0);
  }
}
