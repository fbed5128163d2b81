// FULLPATHQQ and SPLITPATHQQ.
#include "fenced_text.h"
#include "outcome.h"
#include "path_tree.h"

#include <ostream>

namespace {

const ErrorState CUT = {EINVAL, SENTINEL, {EINVAL}};

class Paths : public testing::Test {
protected:
  const PathTree tree;
  const WorkingDirectory inside{tree / "dir"};
};

Outcome full_path(const std::string &name, Character &path) {
  return outcome_of([&] {
    return fullpathqq_(name.data(), path.data(), static_cast<qxport_charlen>(name.size()), path.length());
  });
}

// Missing names of which the dots leave nothing.
constexpr const char *EMPTY_PATHS[] = {"/nosuch-x/../.", "/nosuch-x/y/../../."};

using FullPath = Paths;

TEST_F(FullPath, IsStoredWithBlanks) {
  const size_t size = tree.path().size() + 40;
  for (const auto &[name, path] : {std::pair<const char *, const char *>{"sub/deep", "@/dir/sub/deep"},
                                   {"sub/deep  ", "@/dir/sub/deep"},
                                   {"../link/", "@/dir/"},
                                   {"x", "@/dir/x"},
                                   {"x/../y", "@/dir/y"},
                                   {"~/..", "~"},
                                   {" x", "@/dir/ x"},
                                   {"", "@/dir/"},
                                   {"   ", "@/dir/"},
                                   {"/", "/"}}) {
    Character stored(size);
    const std::string expected = tree.filled_in(path);
    EXPECT_EQ(full_path(tree.filled_in(name), stored),
              (Outcome{static_cast<int32_t>(expected.size()), untouched()}))
        << name;
    EXPECT_EQ(stored.text(), padded(expected, size)) << name;
  }
}

TEST_F(FullPath, OfMissingFilesInTheSystem) {
  for (const auto &[name, path] : {std::pair<const char *, const char *>{"/usr/nosuch/../y", "/usr/y"},
                                   {"/usr/nosuch-x", "/usr/nosuch-x"},
                                   {"/nosuch-x/..", "/nosuch-x"},
                                   {"/nosuch-x", "/nosuch-x"}}) {
    Character stored(30);
    EXPECT_EQ(full_path(name, stored), (Outcome{static_cast<int32_t>(strlen(path)), untouched()}));
    EXPECT_EQ(stored.text(), padded(path, 30));
  }
}

TEST_F(FullPath, ThatIsEmptyIsNoFailure) {
  for (const char *name : EMPTY_PATHS) {
    Character stored(30);
    EXPECT_EQ(full_path(name, stored), (Outcome{0, untouched()})) << name;
    EXPECT_EQ(stored.text(), padded("", 30)) << name;
  }
}

TEST_F(FullPath, ThatFitsExactlyIsNoFailure) {
  const std::string path = tree / "dir/x";
  Character stored(path.size());
  EXPECT_EQ(full_path("x", stored), (Outcome{static_cast<int32_t>(path.size()), untouched()}));
  EXPECT_EQ(stored.text(), path);
}

TEST_F(FullPath, ThatDoesNotFitIsCut) {
  const std::string path = tree / "dir/x";
  for (const size_t size : {path.size() - 1, size_t{5}, size_t{1}, size_t{0}}) {
    Character stored(size);
    EXPECT_EQ(full_path("x", stored), (Outcome{static_cast<int32_t>(size), CUT}));
    EXPECT_EQ(stored.text(), path.substr(0, size));
  }
}

TEST_F(FullPath, OfALongNameIsCutAtItsLimit) {
  for (const size_t length : {1023, 1024, 5000}) {
    const std::string name = "/" + std::string(length - 1, 'n');
    const size_t kept = std::min<size_t>(length, 1024);
    Character stored(6000);
    EXPECT_EQ(full_path(name, stored), (Outcome{static_cast<int32_t>(kept), untouched()}));
    EXPECT_EQ(stored.text(), padded(name.substr(0, kept), 6000));
  }
}

TEST_F(FullPath, NullAddressIsRefused) {
  Character stored(20);
  EXPECT_EQ(outcome_of([&] { return fullpathqq_(nullptr, stored.data(), 3, stored.length()); }),
            (Outcome{0, CUT}));
  EXPECT_EQ(stored.text(), std::string(20, '#'));
  EXPECT_EQ(outcome_of([&] { return fullpathqq_("x", nullptr, 1, 20); }), (Outcome{0, CUT}));
}

TEST_F(FullPath, WithoutACurrentDirectoryIsNone) {
  const WorkingDirectory removed(tree / "other");
  std::filesystem::remove(tree / "other");
  Character stored(20);
  EXPECT_EQ(full_path("x", stored), (Outcome{0, {ENOENT, SENTINEL, {ENOENT}}}));
  EXPECT_EQ(stored.text(), std::string(20, ' '));
}

TEST_F(FullPath, NameIsReadNoFurther) {
  const FencedText name("sub");
  Character stored(200);
  const std::string expected = tree / "dir/sub";
  EXPECT_EQ(fullpathqq_(name.data(), stored.data(), name.length(), stored.length()),
            static_cast<int32_t>(expected.size()));
}

struct Parts {
  std::string drive, dir, name, ext;
  bool operator==(const Parts &) const = default;
};

std::ostream &operator<<(std::ostream &out, const Parts &parts) {
  return out << '"' << parts.drive << "\" \"" << parts.dir << "\" \"" << parts.name << "\" \"" << parts.ext
             << '"';
}

struct Split {
  Outcome outcome;
  Parts parts;
  bool operator==(const Split &) const = default;
};

std::ostream &operator<<(std::ostream &out, const Split &split) {
  return out << split.outcome << ' ' << split.parts;
}

struct Sizes {
  size_t drive, dir, name, ext;
};

Split split(const std::string &path, Sizes sizes) {
  Character drive(sizes.drive), dir(sizes.dir), name(sizes.name), ext(sizes.ext);
  const Outcome outcome = outcome_of([&] {
    return splitpathqq_(path.data(), drive.data(), dir.data(), name.data(), ext.data(),
                        static_cast<qxport_charlen>(path.size()), drive.length(), dir.length(), name.length(),
                        ext.length());
  });
  return {outcome, {drive.text(), dir.text(), name.text(), ext.text()}};
}

constexpr Sizes ROOMY = {3, 300, 300, 300};

Split expected_split(const std::string &dir, const std::string &name, const std::string &ext) {
  return {
      {static_cast<int32_t>(dir.size()), untouched()},
      {padded("", ROOMY.drive), padded(dir, ROOMY.dir), padded(name, ROOMY.name), padded(ext, ROOMY.ext)}};
}

using SplitPath = Paths;

TEST_F(SplitPath, Table) {
  struct Row {
    const char *path, *dir, *name, *ext;
  };
  for (const Row &row : {
           Row{"file.f90", "@/dir/", "file", ".f90"},
           Row{"file.f90  ", "@/dir/", "file", ".f90"},
           Row{"x.tar.gz", "@/dir/", "x.tar", ".gz"},
           Row{".profile", "@/dir/", ".profile", ""},
           Row{".profile.old", "@/dir/", ".profile", ".old"},
           Row{"a.", "@/dir/", "a.", ""},
           Row{"a..", "@/dir/", "a..", ""},
           Row{"a..b", "@/dir/", "a.", ".b"},
           Row{"..b", "@/dir/", ".", ".b"},
           Row{"x", "@/dir/", "x", ""},
           Row{"...", "@/dir/", "...", ""},
           Row{"a.b", "@/dir/", "a", ".b"},
           Row{"sub", "@/dir/", "sub", ""},
           Row{"sub/", "@/dir/sub/", "", ""},
           Row{"d.ot/name", "@/dir/d.ot/", "name", ""},
           Row{"../link/x.y", "@/dir/", "x", ".y"},
           Row{"../dangling.x/", "@/dangling.x/", "", ""},
           Row{".", "@/", "dir", ""},
           Row{"/usr/lib/qxport-none.a", "/usr/lib/", "qxport-none", ".a"},
           Row{"~", "/", "qxport-no-such", ""},
           Row{"~.x", "/", "qxport-no-such", ".x"},
           Row{"~/a.b", "~/", "a", ".b"},
           Row{"/", "/", "", ""},
           Row{"//", "/", "", ""},
       })
    EXPECT_EQ(split(tree.filled_in(row.path), ROOMY),
              expected_split(tree.filled_in(row.dir), row.name, row.ext))
        << row.path;
}

TEST_F(SplitPath, LibraryOfTheSystem) {
  const std::string lib = real_path("/usr/lib");
  EXPECT_EQ(split("/usr/lib/libnosuch.a", ROOMY), expected_split(lib + "/", "libnosuch", ".a"));
}

TEST_F(SplitPath, EmptyPathGivesBlanksAndNoLength) {
  for (const char *path : {"", "    ", EMPTY_PATHS[0], EMPTY_PATHS[1]})
    EXPECT_EQ(split(path, ROOMY), expected_split("", "", "")) << '"' << path << '"';
}

TEST_F(SplitPath, NullPathGivesBlanks) {
  Character drive(2), dir(2), name(2), ext(2);
  EXPECT_EQ(outcome_of([&] {
              return splitpathqq_(nullptr, drive.data(), dir.data(), name.data(), ext.data(), 3, 2, 2, 2, 2);
            }),
            (Outcome{0, CUT}));
  EXPECT_EQ(drive.text() + dir.text() + name.text() + ext.text(), "        ");
}

// The length of the directory is told also where it did not fit.
TEST_F(SplitPath, PartsThatDoNotFitAreCut) {
  const std::string dir = tree / "dir/";
  const auto length = static_cast<int32_t>(dir.size());
  const auto cut = [](std::vector<int32_t> recorded) { return ErrorState{EINVAL, SENTINEL, recorded}; };
  EXPECT_EQ(split("name.ext", {0, 300, 3, 9}),
            (Split{{length, cut({EINVAL})}, {"", padded(dir, 300), "nam", padded(".ext", 9)}}));
  EXPECT_EQ(split("name.ext", {1, 300, 4, 2}),
            (Split{{length, cut({EINVAL})}, {" ", padded(dir, 300), "name", ".e"}}));
  EXPECT_EQ(split("name.ext", {1, 5, 4, 4}),
            (Split{{length, cut({EINVAL})}, {" ", dir.substr(0, 5), "name", ".ext"}}));
  EXPECT_EQ(split("name.ext", {1, dir.size(), 4, 4}),
            (Split{{length, untouched()}, {" ", dir, "name", ".ext"}}));
  EXPECT_EQ(split("name.ext", {0, 0, 0, 0}),
            (Split{{length, cut({EINVAL, EINVAL, EINVAL})}, {"", "", "", ""}}));
  EXPECT_EQ(split("/", {0, 0, 0, 0}), (Split{{1, cut({EINVAL})}, {"", "", "", ""}}));
  EXPECT_EQ(split("/", {0, 1, 0, 0}), (Split{{1, untouched()}, {"", "/", "", ""}}));
}

TEST_F(SplitPath, LongPathIsCutAtItsLimit) {
  const std::string path = "/n/" + std::string(5000, 'm');
  Character dir(10), name(6000);
  EXPECT_EQ(outcome_of([&] {
              return splitpathqq_(path.data(), nullptr, dir.data(), name.data(), nullptr,
                                  static_cast<qxport_charlen>(path.size()), 0, dir.length(), name.length(),
                                  0);
            }),
            (Outcome{3, untouched()}));
  EXPECT_EQ(dir.text(), padded("/n/", 10));
  EXPECT_EQ(name.text(), padded(std::string(1021, 'm'), 6000));
}

TEST_F(SplitPath, WithoutACurrentDirectoryIsBlank) {
  const WorkingDirectory removed(tree / "other");
  std::filesystem::remove(tree / "other");
  Split expected = expected_split("", "", "");
  expected.outcome.state = {ENOENT, SENTINEL, {ENOENT}};
  EXPECT_EQ(split("x.y", ROOMY), expected);
}

}  // namespace
