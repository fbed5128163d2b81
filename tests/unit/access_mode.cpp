// ACCESS on real files.
#include "ordinary_user.h"
#include "outcome.h"
#include "paths.h"

#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace {

Outcome access_of(const std::string &name, const std::string &mode) {
  Character name_argument(name);
  Character mode_argument(mode);
  const Outcome outcome = outcome_of([&] {
    return access_(name_argument.data(), mode_argument.data(), name_argument.length(),
                   mode_argument.length());
  });
  EXPECT_EQ(name_argument.text(), name);
  EXPECT_EQ(mode_argument.text(), mode);
  return outcome;
}

// The host's reason stays in errno; what is answered and recorded is another number.
Outcome remapped(int32_t answer, int host_error) {
  return {answer, {host_error, answer, {answer}}};
}

TEST(Access, ReadableAndWritableFileIsPermittedWithABlankInTheMode) {
  const TemporaryDirectory directory;
  EXPECT_EQ(access_of(directory.file("both"), "rw "), succeeded());
}

TEST(Access, BlankModeAsksForExistence) {
  const TemporaryDirectory directory;
  const std::string file = directory.file("closed", "", 0);
  EXPECT_EQ(access_of(file, " "), succeeded());
  EXPECT_EQ(access_of(file, std::string(100, ' ')), succeeded());
  EXPECT_EQ(access_of(directory / "missing", " "), remapped(EINVAL, ENOENT));
}

TEST(Access, DirectoryExists) {
  const TemporaryDirectory directory;
  EXPECT_EQ(access_of(directory.path(), "rwx"), succeeded());
}

TEST(Access, ModeOfLengthZeroIs22) {
  const TemporaryDirectory directory;
  EXPECT_EQ(access_of(directory.file("file"), ""), reported(EINVAL));
}

TEST(Access, NameOfLengthZeroIs22) {
  EXPECT_EQ(access_of("", "r"), reported(EINVAL));
}

TEST(Access, NegativeLengthsAre22) {
  const TemporaryDirectory directory;
  const std::string file = directory.file("file");
  EXPECT_EQ(outcome_of([&] { return access_(file.c_str(), "r", -1, 1); }), reported(EINVAL));
  EXPECT_EQ(outcome_of([&] { return access_(file.c_str(), "r", INTPTR_MIN, 1); }), reported(EINVAL));
  EXPECT_EQ(outcome_of([&] { return access_(file.c_str(), "r", 4, -1); }), reported(EINVAL));
}

TEST(Access, ModeQIs22) {
  const TemporaryDirectory directory;
  EXPECT_EQ(access_of(directory.file("file"), "q"), reported(EINVAL));
}

TEST(Access, EveryOtherCharacterOfTheModeIs22) {
  const TemporaryDirectory directory;
  const std::string file = directory.file("file", "", 0755);
  for (int c = 0; c < 256; ++c) {
    const char character = static_cast<char>(c);
    const bool letter = c != 0 && strchr("rRwWxX ", c) != nullptr;
    const Outcome expected = letter ? succeeded() : reported(EINVAL);
    EXPECT_EQ(access_of(file, std::string(1, character)), expected) << "character " << c;
    EXPECT_EQ(access_of(file, std::string("rw ") + character), expected) << "character " << c;
    EXPECT_EQ(access_of(file, character + std::string(" wr")), expected) << "character " << c;
  }
}

TEST(Access, EveryCharacterOfALongModeCounts) {
  const TemporaryDirectory directory;
  const std::string file = directory.file("file");
  const std::string blanks(100000, ' ');
  EXPECT_EQ(access_of(file, blanks + "r"), succeeded());
  EXPECT_EQ(access_of(file, blanks + "q"), reported(EINVAL));
}

TEST(Access, WrongModeIsFoundBeforeTheNameIsLookedAt) {
  EXPECT_EQ(outcome_of([] { return access_(nullptr, "q", 4, 1); }), reported(EINVAL));
  EXPECT_EQ(access_of("/nowhere/at/all", "z"), reported(EINVAL));
}

TEST(Access, NullNameIs12) {
  EXPECT_EQ(outcome_of([] { return access_(nullptr, "r", 4, 1); }),
            (Outcome{ENOMEM, {EINVAL, ENOMEM, {EINVAL, ENOMEM}}}));
}

TEST(Access, NullNameOfLengthZeroIs22) {
  EXPECT_EQ(outcome_of([] { return access_(nullptr, "r", 0, 1); }), reported(EINVAL));
}

TEST(Access, MissingFileIs22NotEnoent) {
  const TemporaryDirectory directory;
  EXPECT_EQ(access_of(directory / "missing", "r"), remapped(EINVAL, ENOENT));
}

TEST(Access, DanglingLinkIs22) {
  const TemporaryDirectory directory;
  ASSERT_EQ(symlink("nowhere", (directory / "link").c_str()), 0);
  EXPECT_EQ(access_of(directory / "link", " "), remapped(EINVAL, ENOENT));
}

TEST(Access, PathThroughAFileIs22) {
  const TemporaryDirectory directory;
  EXPECT_EQ(access_of(directory.file("file") + "/below", "r"), remapped(EINVAL, ENOTDIR));
}

TEST(Access, LoopOfLinksIs22) {
  const TemporaryDirectory directory;
  ASSERT_EQ(symlink("second", (directory / "first").c_str()), 0);
  ASSERT_EQ(symlink("first", (directory / "second").c_str()), 0);
  EXPECT_EQ(access_of(directory / "first", "r"), remapped(EINVAL, ELOOP));
}

TEST(Access, TooLongANameIs22) {
  const TemporaryDirectory directory;
  EXPECT_EQ(access_of(directory / std::string(256, 'n'), "r"), remapped(EINVAL, ENAMETOOLONG));
  EXPECT_EQ(access_of(path_of_length(directory.path(), 5000), "r"), remapped(EINVAL, ENAMETOOLONG));
  EXPECT_EQ(access_of(std::string(100000, 'n'), "r"), remapped(EINVAL, ENAMETOOLONG));
}

TEST(Access, DeniedPermissionIs13) {
  const TemporaryDirectory directory;
  ASSERT_EQ(chmod(directory.path().c_str(), 0755), 0);
  const std::string closed = directory.file("closed", "", 0);
  as_ordinary_user([&] {
    EXPECT_EQ(access_of(closed, " "), succeeded());
    EXPECT_EQ(access_of(closed, "r"), remapped(EACCES, EACCES));
    EXPECT_EQ(access_of(closed, "w"), remapped(EACCES, EACCES));
    EXPECT_EQ(access_of(closed, "x"), remapped(EACCES, EACCES));
  });
}

TEST(Access, DeniedSearchOfADirectoryIs13) {
  const TemporaryDirectory directory;
  ASSERT_EQ(chmod(directory.path().c_str(), 0755), 0);
  const std::string locked = directory / "locked";
  ASSERT_EQ(mkdir(locked.c_str(), 0), 0);
  as_ordinary_user([&] { EXPECT_EQ(access_of(locked + "/file", " "), remapped(EACCES, EACCES)); });
  ASSERT_EQ(chmod(locked.c_str(), 0755), 0);
}

TEST(Access, EachLetterAsksForItsOwnPermission) {
  const TemporaryDirectory directory;
  ASSERT_EQ(chmod(directory.path().c_str(), 0755), 0);
  std::vector<std::string> files;
  for (unsigned bits = 0; bits < 8; ++bits)
    files.push_back(directory.file("bits" + std::to_string(bits), "", bits * 0111));
  as_ordinary_user([&] {
    for (unsigned bits = 0; bits < 8; ++bits)
      for (unsigned wanted = 1; wanted < 8; ++wanted) {
        std::string mode = "   ";
        for (unsigned i = 0; i < 3; ++i)
          if ((wanted & (4 >> i)) != 0)
            mode[i] = "rwx"[i];
        const bool permitted = (wanted & ~bits) == 0;
        EXPECT_EQ(access_of(files[bits], mode), permitted ? succeeded() : remapped(EACCES, EACCES))
            << "mode '" << mode << "' of a file with " << bits;
      }
  });
}

TEST(Access, TrailingBlanksOfTheNameDoNotCount) {
  const TemporaryDirectory directory;
  EXPECT_EQ(access_of(padded(directory.file("file"), 300), "r"), succeeded());
}

TEST(Access, OtherBlanksOfTheNameCount) {
  const TemporaryDirectory directory;
  const WorkingDirectory working(directory.path());
  directory.file(" a b");
  directory.file("tab\t");
  EXPECT_EQ(access_of(" a b ", "r"), succeeded());
  EXPECT_EQ(access_of("a b", "r"), remapped(EINVAL, ENOENT));
  EXPECT_EQ(access_of("tab\t ", "r"), succeeded());
  EXPECT_EQ(access_of("tab", "r"), remapped(EINVAL, ENOENT));
}

TEST(Access, BlankNameIs22) {
  EXPECT_EQ(access_of("    ", " "), remapped(EINVAL, ENOENT));
}

TEST(Access, NameEndsAtANul) {
  const TemporaryDirectory directory;
  EXPECT_EQ(access_of(directory.file("file") + std::string("\0below", 6), "r"), succeeded());
}

TEST(Access, NameNeedNotBeUtf8) {
  const TemporaryDirectory directory;
  EXPECT_EQ(access_of(directory.file("\xff\xfe\x80\xc3"), "r"), succeeded());
}

TEST(Access, LongNamesAreTaken) {
  const TemporaryDirectory directory;
  EXPECT_EQ(access_of(directory.file(std::string(255, 'n')), "r"), succeeded());
  const std::string path = path_of_length(directory.path(), 1023);
  std::filesystem::create_directories(path);
  EXPECT_EQ(access_of(path, "rx"), succeeded());
}

TEST(Access, RemovedWorkingDirectoryIs22) {
  const TemporaryDirectory directory;
  ASSERT_EQ(mkdir((directory / "gone").c_str(), 0755), 0);
  const WorkingDirectory working(directory / "gone");
  ASSERT_EQ(rmdir((directory / "gone").c_str()), 0);
  EXPECT_EQ(access_of("file", " "), remapped(EINVAL, ENOENT));
}

TEST(Access, SuccessLeavesTheFormerFailureRecorded) {
  const TemporaryDirectory directory;
  const std::string file = directory.file("file");
  reset_error_state();
  access_((directory / "missing").c_str(), "r", static_cast<qxport_charlen>((directory / "missing").size()),
          1);
  EXPECT_EQ(access_(file.c_str(), "r", static_cast<qxport_charlen>(file.size()), 1), 0);
  EXPECT_EQ(ierrno_(), EINVAL);
}

}  // namespace
