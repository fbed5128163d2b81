// The path resolver on a tree of real directories, files and links.
#include "ordinary_user.h"
#include "outcome.h"
#include "path_tree.h"
#include "paths.h"
#include "resolution_cases.h"

#include <sys/stat.h>

using qxport::RESOLVED_LIMIT;

namespace {

class PathResolution : public testing::Test {
protected:
  const PathTree tree;
  const WorkingDirectory inside{tree / "dir"};
};

TEST_F(PathResolution, Table) {
  static_assert(std::size(RESOLUTION_CASES) >= 150);
  for (const ResolutionCase &row : RESOLUTION_CASES)
    EXPECT_EQ(resolved(tree.filled_in(row.name)), tree.filled_in(row.path)) << '"' << row.name << '"';
}

TEST_F(PathResolution, NothingIsRecordedAndErrnoIsLeftAlone) {
  for (const char *name : {"sub", "x", "x/y", "../one/x", "../dangling/../x", "~", "~/x", "file.f90/x", ""})
    EXPECT_EQ(state_after([&] { resolved(tree.filled_in(name)); }), untouched()) << name;
}

TEST(PathResolutionInRoot, MissingNameHasTwoSlashes) {
  const WorkingDirectory inside("/");
  EXPECT_EQ(resolved("usr"), real_path("/usr"));
  EXPECT_EQ(resolved("qxport-no-such"), "//qxport-no-such");
  EXPECT_EQ(resolved("qxport-no-such/x"), "//qxport-no-such/x");
  EXPECT_EQ(resolved("usr/qxport-no-such"), real_path("/usr") + NO_SUCH);
  EXPECT_EQ(resolved(""), "//");
}

class RemovedDirectory : public testing::Test {
protected:
  RemovedDirectory() { std::filesystem::remove(tree / "other"); }
  const PathTree tree;
  const WorkingDirectory inside{tree / "other"};
};

TEST_F(RemovedDirectory, RelativeNamesCannotBeResolved) {
  for (const char *name : {"x", "x/y", "", ".", "./x", "x/../y"})
    EXPECT_EQ(state_after([&] { EXPECT_EQ(resolved(name), "") << name; }), (ErrorState{ENOENT, SENTINEL, {}}))
        << name;
}

TEST_F(RemovedDirectory, AbsoluteNamesCan) {
  EXPECT_EQ(resolved(tree / "link/x"), tree / "dir/x");
  EXPECT_EQ(resolved(NO_SUCH + std::string("/x")), NO_SUCH + std::string("/x"));
  EXPECT_EQ(resolved("/"), "/");
}

// Directories below the tree whose path has this many characters.
std::string made_directory(const PathTree &tree, size_t length) {
  const std::string path = path_of_length(tree.path(), length);
  const WorkingDirectory restored("/");
  for (size_t end = tree.path().size(); end != std::string::npos;) {
    EXPECT_EQ(chdir(path.substr(0, end).c_str()), 0);
    const size_t next = path.find('/', end + 1);
    const std::string name = path.substr(end + 1, next == std::string::npos ? next : next - end - 1);
    EXPECT_TRUE(mkdir(name.c_str(), 0755) == 0 || errno == EEXIST) << name;
    end = next;
  }
  return path;
}

TEST_F(PathResolution, CurrentDirectoryWithTooLongAName) {
  const WorkingDirectory deep(made_directory(tree, RESOLVED_LIMIT));
  for (const char *name : {"x", "x/y", "", "."})
    EXPECT_EQ(state_after([&] { EXPECT_EQ(resolved(name), "") << name; }), (ErrorState{ERANGE, SENTINEL, {}}))
        << name;
  EXPECT_EQ(resolved(tree / "link"), tree / "dir");
}

TEST_F(PathResolution, CurrentDirectoryWithTheLongestName) {
  const std::string path = made_directory(tree, RESOLVED_LIMIT - 1);
  const WorkingDirectory deep(path);
  EXPECT_EQ(resolved("."), path);
  EXPECT_EQ(resolved("./"), path + "/");
  EXPECT_EQ(resolved("xyz"), path + "/");
}

TEST_F(PathResolution, ExistingPathsOfEachLengthNearTheLimit) {
  for (size_t length = RESOLVED_LIMIT - 3; length <= RESOLVED_LIMIT + 3; ++length) {
    const std::string path = made_directory(tree, length);
    EXPECT_EQ(resolved(path), path.substr(0, RESOLVED_LIMIT)) << length;
    EXPECT_EQ(resolved(path + "/"), (path + "/").substr(0, RESOLVED_LIMIT)) << length;
    EXPECT_EQ(resolved(path + "/x"), (path + "/x").substr(0, RESOLVED_LIMIT)) << length;
  }
}

// The longest leading part that is looked up has 1023 characters; a link at its end shows whether it was.
TEST_F(PathResolution, LinkAtTheEndOfALongLeadingPart) {
  const std::string path = path_of_length(tree.path(), RESOLVED_LIMIT - 1);
  const std::string directory = made_directory(tree, path.rfind('/'));
  ASSERT_EQ(directory + path.substr(directory.size()), path);
  const WorkingDirectory inside_it(directory);
  ASSERT_EQ(symlink((tree / "other").c_str(), path.substr(directory.size() + 1).c_str()), 0);
  EXPECT_EQ(resolved(path + "/x"), tree / "other/x");
}

TEST_F(PathResolution, MissingPathsOfAllLengths) {
  for (const size_t length : {1022, 1023, 1024, 1025, 4095, 4096, 5000}) {
    const std::string one = "/" + std::string(length - 1, 'n');
    EXPECT_EQ(resolved(one), one.substr(0, RESOLVED_LIMIT)) << length;
    const std::string several = path_of_length(NO_SUCH, length);
    EXPECT_EQ(resolved(several), several.substr(0, RESOLVED_LIMIT)) << length;
    const std::string below = path_of_length(tree / "link/x", length);
    const std::string expected = tree.path() + "/dir" + below.substr((tree / "link").size());
    EXPECT_EQ(resolved(below), expected.substr(0, RESOLVED_LIMIT)) << length;
    const std::string relative = path_of_length("x", length);
    EXPECT_EQ(resolved(relative), (tree / "dir/" + relative).substr(0, RESOLVED_LIMIT)) << length;
    const std::string dots = "/x" + std::string(length - 2, '.');
    EXPECT_EQ(resolved(dots), dots.substr(0, RESOLVED_LIMIT)) << length;
  }
}

TEST_F(PathResolution, SlashesOnly) {
  for (const size_t length : {1, 2, 3, 1023, 1024, 1025, 4000})
    EXPECT_EQ(resolved(std::string(length, '/')), "/") << length;
}

// A long way round that ends where a short one does.
TEST_F(PathResolution, ExistingNameMuchLongerThanItsPath) {
  std::string name = tree / "dir";
  while (name.size() < 2000)
    name += "/../dir";
  EXPECT_EQ(resolved(name), tree / "dir");
  EXPECT_EQ(resolved(name + "/"), tree / "dir/");
}

TEST_F(PathResolution, MissingNameMuchLongerThanItsPath) {
  std::string name = "x";
  while (name.size() < 800)
    name += "/../x";
  EXPECT_EQ(resolved(name), tree / "dir/x");
}

TEST(PathResolutionOfOrdinaryUser, DirectoryThatMayNotBeSearchedEndsWhatExists) {
  const WorkingDirectory open_to_everyone("/");
  as_ordinary_user([] {
    const PathTree tree;
    ASSERT_EQ(chmod((tree / "dir").c_str(), 0), 0);
    EXPECT_EQ(resolved(tree / "dir"), tree / "dir");
    EXPECT_EQ(resolved(tree / "link/sub"), tree / "dir/sub");
    EXPECT_EQ(resolved(tree / "link/sub/deep/../x"), tree / "dir/sub/x");
    EXPECT_EQ(resolved(tree / "link/../x"), tree / "x");
    ASSERT_EQ(chmod((tree / "dir").c_str(), 0700), 0);
  });
}

}  // namespace
