// CHDIR, UNLINK, RENAME and GETCWD on real directories.
#include "ordinary_user.h"
#include "outcome.h"
#include "paths.h"

#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

namespace {

Outcome outcome_with_name(int32_t (*routine)(const char *, qxport_charlen), const std::string &name) {
  Character argument(name);
  const Outcome outcome = outcome_of([&] { return routine(argument.data(), argument.length()); });
  EXPECT_EQ(argument.text(), name);
  return outcome;
}

Outcome chdir_of(const std::string &name) {
  return outcome_with_name(chdir_, name);
}

Outcome unlink_of(const std::string &name) {
  return outcome_with_name(unlink_, name);
}

Outcome rename_of(const std::string &from, const std::string &to) {
  Character from_argument(from);
  Character to_argument(to);
  const Outcome outcome = outcome_of([&] {
    return rename_(from_argument.data(), to_argument.data(), from_argument.length(), to_argument.length());
  });
  EXPECT_EQ(from_argument.text(), from);
  EXPECT_EQ(to_argument.text(), to);
  return outcome;
}

Outcome getcwd_of(Character &name) {
  return outcome_of([&] { return getcwd_(name.data(), name.length()); });
}

// A null name is an invalid argument to the conversion and lack of memory to the routine.
Outcome null_name() {
  return {ENOMEM, {EINVAL, ENOMEM, {EINVAL, ENOMEM}}};
}

std::string working_directory() {
  return std::filesystem::current_path();
}

bool exists(const std::string &path) {
  struct stat status;
  return lstat(path.c_str(), &status) == 0;
}

std::string contents_of(const std::string &path) {
  std::ifstream stream(path);
  return std::string(std::istreambuf_iterator<char>(stream), {});
}

void make_loop(const TemporaryDirectory &directory) {
  ASSERT_EQ(symlink("second", (directory / "first").c_str()), 0);
  ASSERT_EQ(symlink("first", (directory / "second").c_str()), 0);
}

TEST(Chdir, ChangesTheWorkingDirectory) {
  const TemporaryDirectory directory;
  const WorkingDirectory working("/");
  std::filesystem::create_directories(directory / " a b");
  EXPECT_EQ(chdir_of(directory.path()), succeeded());
  EXPECT_EQ(working_directory(), directory.path());
  EXPECT_EQ(chdir_of(padded(" a b", 300)), succeeded());
  EXPECT_EQ(working_directory(), directory / " a b");
  EXPECT_EQ(chdir_of(std::string("..\0below", 8)), succeeded());
  EXPECT_EQ(working_directory(), directory.path());
}

TEST(Chdir, LinkIsFollowed) {
  const TemporaryDirectory directory;
  const WorkingDirectory working("/");
  std::filesystem::create_directories(directory / "target");
  ASSERT_EQ(symlink("target", (directory / "link").c_str()), 0);
  EXPECT_EQ(chdir_of(directory / "link"), succeeded());
  EXPECT_EQ(working_directory(), directory / "target");
}

TEST(Chdir, NameMayBeLongAndNeedNotBeUtf8) {
  const TemporaryDirectory directory;
  const WorkingDirectory working("/");
  for (const std::string &path : {directory / std::string(255, 'n'), directory / "\xff\xfe\x80",
                                  path_of_length(directory.path(), 1023)}) {
    std::filesystem::create_directories(path);
    EXPECT_EQ(chdir_of(path), succeeded());
    EXPECT_EQ(working_directory(), path);
  }
}

TEST(Chdir, FailuresAreReportedAndChangeNothing) {
  const TemporaryDirectory directory;
  const WorkingDirectory working(directory.path());
  make_loop(directory);
  EXPECT_EQ(chdir_of("missing"), reported(ENOENT));
  EXPECT_EQ(chdir_of(""), reported(ENOENT));
  EXPECT_EQ(chdir_of("    "), reported(ENOENT));
  EXPECT_EQ(chdir_of(directory.file("file")), reported(ENOTDIR));
  EXPECT_EQ(chdir_of("first"), reported(ELOOP));
  EXPECT_EQ(chdir_of(std::string(256, 'n')), reported(ENAMETOOLONG));
  EXPECT_EQ(chdir_of(std::string(100000, 'n')), reported(ENAMETOOLONG));
  EXPECT_EQ(outcome_of([] { return chdir_("/", -1); }), reported(ENOENT));
  EXPECT_EQ(outcome_of([] { return chdir_(nullptr, 1); }), null_name());
  EXPECT_EQ(working_directory(), directory.path());
}

TEST(Chdir, DeniedSearchIsEacces) {
  const TemporaryDirectory directory;
  ASSERT_EQ(chmod(directory.path().c_str(), 0755), 0);
  ASSERT_EQ(mkdir((directory / "locked").c_str(), 0), 0);
  as_ordinary_user([&] { EXPECT_EQ(chdir_of(directory / "locked"), reported(EACCES)); });
  ASSERT_EQ(chmod((directory / "locked").c_str(), 0755), 0);
}

TEST(Unlink, RemovesAFile) {
  const TemporaryDirectory directory;
  const std::string file = directory.file(" a\xff b", "text", 0);
  EXPECT_EQ(unlink_of(padded(file, 400)), succeeded());
  EXPECT_FALSE(exists(file));
}

TEST(Unlink, NameEndsAtANul) {
  const TemporaryDirectory directory;
  const std::string file = directory.file("file");
  EXPECT_EQ(unlink_of(file + std::string("\0x", 2)), succeeded());
  EXPECT_FALSE(exists(file));
}

TEST(Unlink, RemovesALinkAndNotItsTarget) {
  const TemporaryDirectory directory;
  const std::string file = directory.file("file");
  ASSERT_EQ(symlink("file", (directory / "link").c_str()), 0);
  EXPECT_EQ(unlink_of(directory / "link"), succeeded());
  EXPECT_FALSE(exists(directory / "link"));
  EXPECT_TRUE(exists(file));
}

TEST(Unlink, FailuresAreReportedAndRemoveNothing) {
  const TemporaryDirectory directory;
  const WorkingDirectory working(directory.path());
  const std::string file = directory.file("file");
  EXPECT_EQ(unlink_of("missing"), reported(ENOENT));
  EXPECT_EQ(unlink_of(""), reported(ENOENT));
  EXPECT_EQ(unlink_of("   "), reported(ENOENT));
  EXPECT_EQ(unlink_of(directory.path()), reported(EISDIR));
  EXPECT_EQ(unlink_of("file/"), reported(ENOTDIR));
  EXPECT_EQ(unlink_of(std::string(100000, 'n')), reported(ENAMETOOLONG));
  EXPECT_EQ(outcome_of([] { return unlink_("file", -4); }), reported(ENOENT));
  EXPECT_EQ(outcome_of([] { return unlink_(nullptr, 4); }), null_name());
  EXPECT_TRUE(exists(file));
}

TEST(Unlink, DirectoryThatMayNotBeWrittenIsEacces) {
  const TemporaryDirectory directory;
  const std::string file = directory.file("file");
  ASSERT_EQ(chmod(directory.path().c_str(), 0555), 0);
  as_ordinary_user([&] { EXPECT_EQ(unlink_of(file), reported(EACCES)); });
  EXPECT_TRUE(exists(file));
  ASSERT_EQ(chmod(directory.path().c_str(), 0755), 0);
}

TEST(Rename, MovesAFileAndReplacesTheFormerOne) {
  const TemporaryDirectory directory;
  const std::string from = directory.file("from", "new");
  const std::string to = directory.file("to", "old");
  EXPECT_EQ(rename_of(padded(from, 300), padded(to, 400)), succeeded());
  EXPECT_FALSE(exists(from));
  EXPECT_EQ(contents_of(to), "new");
}

TEST(Rename, MovesBetweenDirectories) {
  const TemporaryDirectory directory;
  std::filesystem::create_directories(directory / "below");
  directory.file("from", "text");
  const WorkingDirectory working(directory.path());
  EXPECT_EQ(rename_of("from", "below/ to \xfe"), succeeded());
  EXPECT_EQ(contents_of(directory / "below/ to \xfe"), "text");
}

TEST(Rename, MovesALinkAndNotItsTarget) {
  const TemporaryDirectory directory;
  const std::string file = directory.file("file");
  ASSERT_EQ(symlink("file", (directory / "link").c_str()), 0);
  EXPECT_EQ(rename_of(directory / "link", directory / "moved"), succeeded());
  EXPECT_TRUE(std::filesystem::is_symlink(directory / "moved"));
  EXPECT_TRUE(exists(file));
}

TEST(Rename, SameNameIsNoError) {
  const TemporaryDirectory directory;
  const std::string file = directory.file("file", "text");
  EXPECT_EQ(rename_of(file, file + "  "), succeeded());
  EXPECT_EQ(contents_of(file), "text");
}

TEST(Rename, FailuresAreReportedAndChangeNothing) {
  const TemporaryDirectory directory;
  const WorkingDirectory working(directory.path());
  std::filesystem::create_directories("full/inner");
  std::filesystem::create_directories("empty");
  directory.file("file", "text");
  EXPECT_EQ(rename_of("missing", "to"), reported(ENOENT));
  EXPECT_EQ(rename_of("file", "missing/to"), reported(ENOENT));
  EXPECT_EQ(rename_of("", "to"), reported(ENOENT));
  EXPECT_EQ(rename_of("file", "   "), reported(ENOENT));
  EXPECT_EQ(rename_of("file", "empty"), reported(EISDIR));
  EXPECT_EQ(rename_of("empty", "file"), reported(ENOTDIR));
  EXPECT_EQ(rename_of("empty", "full"), reported(ENOTEMPTY));
  EXPECT_EQ(rename_of("full", "full/inner/deeper"), reported(EINVAL));
  EXPECT_EQ(rename_of("file", std::string(256, 'n')), reported(ENAMETOOLONG));
  EXPECT_EQ(rename_of(std::string(100000, 'n'), "to"), reported(ENAMETOOLONG));
  EXPECT_EQ(outcome_of([] { return rename_("file", "to", -4, 2); }), reported(ENOENT));
  EXPECT_EQ(outcome_of([] { return rename_("file", "to", 4, -2); }), reported(ENOENT));
  EXPECT_EQ(contents_of("file"), "text");
  EXPECT_FALSE(exists("to"));
}

TEST(Rename, NullNamesReportWhatTheConversionFound) {
  const TemporaryDirectory directory;
  const WorkingDirectory working(directory.path());
  directory.file("file");
  const Outcome null_argument = {EINVAL, {EINVAL, EINVAL, {EINVAL, EINVAL}}};
  EXPECT_EQ(outcome_of([] { return rename_(nullptr, "to", 4, 2); }), null_argument);
  EXPECT_EQ(outcome_of([] { return rename_("file", nullptr, 4, 2); }), null_argument);
  EXPECT_EQ(outcome_of([] { return rename_(nullptr, nullptr, 4, 2); }), null_argument);
  EXPECT_TRUE(exists("file"));
}

TEST(Rename, DirectoryThatMayNotBeWrittenIsEacces) {
  const TemporaryDirectory directory;
  const std::string file = directory.file("file");
  ASSERT_EQ(chmod(directory.path().c_str(), 0555), 0);
  as_ordinary_user([&] { EXPECT_EQ(rename_of(file, directory / "to"), reported(EACCES)); });
  EXPECT_TRUE(exists(file));
  ASSERT_EQ(chmod(directory.path().c_str(), 0755), 0);
}

TEST(Getcwd, PathIsBlankPadded) {
  const TemporaryDirectory directory;
  const WorkingDirectory working(directory.path());
  Character name(300);
  EXPECT_EQ(getcwd_of(name), succeeded());
  EXPECT_EQ(name.text(), padded(directory.path(), 300));
}

TEST(Getcwd, VariableOfExactlyThePathsLengthIsEnough) {
  const TemporaryDirectory directory;
  const WorkingDirectory working(directory.path());
  Character name(directory.path().size());
  EXPECT_EQ(getcwd_of(name), succeeded());
  EXPECT_EQ(name.text(), directory.path());
}

TEST(Getcwd, OneCharacterShorterIsErangeAndBlank) {
  const TemporaryDirectory directory;
  const WorkingDirectory working(directory.path());
  Character name(directory.path().size() - 1);
  EXPECT_EQ(getcwd_of(name), reported(ERANGE));
  EXPECT_EQ(name.text(), padded("", directory.path().size() - 1));
}

TEST(Getcwd, OneCharacterHoldsTheRoot) {
  Character name(1);
  {
    const WorkingDirectory working("/");
    EXPECT_EQ(getcwd_of(name), succeeded());
  }
  EXPECT_EQ(name.text(), "/");
  const WorkingDirectory working("/dev");
  EXPECT_EQ(getcwd_of(name), reported(ERANGE));
  EXPECT_EQ(name.text(), " ");
}

TEST(Getcwd, CharacterOfLengthZeroIs2InTheLibrarysCellOnly) {
  Character name(0);
  EXPECT_EQ(getcwd_of(name), (Outcome{ENOENT, {ERRNO_SENTINEL, ENOENT, {}}}));
}

TEST(Getcwd, NegativeLengthIs2AndStoresNothing) {
  Character name(4);
  for (const qxport_charlen length : {qxport_charlen{-1}, qxport_charlen{INTPTR_MIN}})
    EXPECT_EQ(outcome_of([&] { return getcwd_(name.data(), length); }),
              (Outcome{ENOENT, {ERRNO_SENTINEL, ENOENT, {}}}));
  EXPECT_EQ(name.text(), "####");
}

TEST(Getcwd, RemovedDirectoryIsEnoentAndBlank) {
  const TemporaryDirectory directory;
  ASSERT_EQ(mkdir((directory / "gone").c_str(), 0755), 0);
  const WorkingDirectory working(directory / "gone");
  ASSERT_EQ(rmdir((directory / "gone").c_str()), 0);
  Character name(500);
  EXPECT_EQ(getcwd_of(name), reported(ENOENT));
  EXPECT_EQ(name.text(), padded("", 500));
}

TEST(Getcwd, PathMayHoldAnyBytes) {
  const TemporaryDirectory directory;
  const std::string path = directory / "\xff\xfe \n";
  ASSERT_EQ(mkdir(path.c_str(), 0755), 0);
  const WorkingDirectory working(path);
  Character name(path.size() + 2);
  EXPECT_EQ(getcwd_of(name), succeeded());
  EXPECT_EQ(name.text(), path + "  ");
}

// Longer than the longest name that the host takes at once, so it is entered step by step.
std::string enter_deep_directory(const TemporaryDirectory &directory, size_t length) {
  std::string path = directory.path();
  while (path.size() < length) {
    const std::string component(std::min<size_t>(200, length - path.size()), 'd');
    EXPECT_EQ(mkdir(component.c_str(), 0755), 0);
    EXPECT_EQ(chdir(component.c_str()), 0);
    path += '/' + component;
  }
  return path;
}

// For paths that the C library puts together itself: it may leave any errno behind then.
Outcome without_errno(Outcome outcome) {
  outcome.state.error = 0;
  return outcome;
}

TEST(Getcwd, PathMayBeOfAnyLength) {
  for (const size_t length : {255u, 1023u, 4090u, 10000u}) {
    const TemporaryDirectory directory;
    const WorkingDirectory working(directory.path());
    const std::string path = enter_deep_directory(directory, length);
    Character exact(path.size());
    EXPECT_EQ(without_errno(getcwd_of(exact)), without_errno(succeeded())) << length;
    EXPECT_EQ(exact.text(), path);
    Character longer(100000);
    EXPECT_EQ(without_errno(getcwd_of(longer)), without_errno(succeeded())) << length;
    EXPECT_EQ(longer.text(), padded(path, 100000));
    Character shorter(path.size() - 1);
    EXPECT_EQ(getcwd_of(shorter), reported(ERANGE)) << length;
    EXPECT_EQ(shorter.text(), padded("", path.size() - 1));
  }
}

}  // namespace
