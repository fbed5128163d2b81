// FINDFILEQQ: one file by its exact name, in its own directory or along a list.
#include "file_search.h"

#include <climits>
#include <cstdlib>
#include <filesystem>
#include <future>
#include <memory>
#include <thread>

namespace {

constexpr char LIST[] = "QXPORT_TEST_DIRECTORIES";

struct Answer {
  int32_t count;
  std::string path;
  ErrorState state;
  bool operator==(const Answer &) const = default;
};

std::ostream &operator<<(std::ostream &out, const Answer &answer) {
  return out << answer.count << " \"" << answer.path << "\" " << answer.state;
}

Answer find(const std::string &filename, size_t room = 1400, const char *variable = LIST) {
  const auto name = std::make_unique<Character>(filename);
  const auto varname = std::make_unique<Character>(padded(variable, 40));
  Character path(room);
  reset_error_state();
  const int32_t count = findfileqq_(name->data(), varname->data(), path.data(), name->length(),
                                    varname->length(), path.length());
  return {count, path.text(), error_state()};
}

Answer hit(const std::string &path, int error = 0) {
  return {static_cast<int32_t>(path.size()), padded(path, 1400), {error, SENTINEL, {}}};
}

Answer miss() {
  return {0, padded("", 1400), NOT_FOUND};
}

}  // namespace

class FindFile : public testing::Test {
protected:
  FindFile() : inside(directory.path()) {
    for (const char *name : {"one", "two", "three"})
      std::filesystem::create_directory(name);
    set_list("");
  }
  ~FindFile() override { unsetenv(LIST); }

  static void set_list(const std::string &value) { setenv(LIST, value.c_str(), 1); }

  TemporaryDirectory directory;
  WorkingDirectory inside;
};

// --- The directory of the file name

TEST_F(FindFile, InTheCurrentDirectoryIsDotSlash) {
  directory.file("prog");
  EXPECT_EQ(find("prog"), hit("./prog"));
  EXPECT_EQ(find("prog").count, 6);
}

TEST_F(FindFile, DirectoryPartIsKeptAsWritten) {
  directory.file("one/prog");
  for (const std::string path : {"one/prog", "./one/prog", "one//prog", "two/../one/prog"})
    EXPECT_EQ(find(path), hit(path));
  EXPECT_EQ(find(directory / "one/prog"), hit(directory / "one/prog"));
}

TEST_F(FindFile, TrailingBlanksOfTheNameDoNotCount) {
  directory.file("prog");
  directory.file("two words");
  EXPECT_EQ(find("prog   "), hit("./prog"));
  EXPECT_EQ(find("two words "), hit("./two words"));
}

TEST_F(FindFile, OwnDirectoryComesBeforeTheList) {
  directory.file("one/prog");
  directory.file("two/prog");
  set_list("two");
  EXPECT_EQ(find("one/prog"), hit("one/prog"));
}

TEST_F(FindFile, NamesAreComparedExactly) {
  directory.file("prog");
  for (const char *name : {"Prog", "pro", "prog1", "p*", "pro?", "*"})
    EXPECT_EQ(find(name), miss()) << name;
  directory.file("p*");
  EXPECT_EQ(find("p*"), hit("./p*"));
}

// The directory answers to the name, and yet does not list it.
TEST_F(FindFile, NameThatADirectoryDoesNotListIsNoHit) {
  std::promise<pid_t> told;
  std::promise<void> looked;
  std::thread second([&] {
    told.set_value(gettid());
    looked.get_future().wait();
  });
  const std::string id = std::to_string(told.get_future().get());
  EXPECT_TRUE(exists("/proc/" + id)) << "but it is there for who asks";
  EXPECT_EQ(find("/proc/" + id), miss());
  set_list("/proc");
  EXPECT_EQ(find(id), miss());
  set_list("/proc:two");
  directory.file("two/" + id);
  EXPECT_EQ(find(id), hit("two/" + id));
  looked.set_value();
  second.join();
  EXPECT_EQ(find("/proc/" + std::to_string(getpid())), hit("/proc/" + std::to_string(getpid())));
}

TEST_F(FindFile, EntriesOfEveryKindAreFound) {
  ASSERT_EQ(mkfifo("fifo", 0600), 0);
  std::filesystem::create_symlink("missing", "dangling");
  std::filesystem::create_symlink("dangling", "loop");
  directory.file("unreadable", "", 0);
  for (const std::string name : {"one", "fifo", "dangling", "loop", "unreadable"})
    EXPECT_EQ(find(name), hit("./" + name));
}

TEST_F(FindFile, DotAndDotDotAreEntries) {
  EXPECT_EQ(find("."), hit("./."));
  EXPECT_EQ(find(".."), hit("./.."));
  EXPECT_EQ(find("one/.."), hit("one/.."));
}

TEST_F(FindFile, NamesMayHoldAnyByte) {
  for (const std::string &name : {std::string("\xff\xfe"), std::string("a\nb"), std::string(255, 'n')}) {
    directory.file(name);
    EXPECT_EQ(find(name), hit("./" + name));
  }
}

TEST_F(FindFile, EmbeddedNulEndsTheName) {
  directory.file("prog");
  EXPECT_EQ(find(std::string("prog\0/gram", 10)), hit("./prog"));
}

// --- The list

TEST_F(FindFile, FirstDirectoryOfTheListThatHasItCounts) {
  directory.file("two/prog");
  directory.file("three/prog");
  set_list("one:two:three");
  EXPECT_EQ(find("prog"), hit("two/prog"));
  set_list("one:three:two");
  EXPECT_EQ(find("prog"), hit("three/prog"));
}

TEST_F(FindFile, ElementsOfTheListAreKeptAsWritten) {
  directory.file("two/prog");
  set_list("one:" + directory / "two");
  EXPECT_EQ(find("prog"), hit(directory / "two/prog"));
  set_list("one/../two/");
  EXPECT_EQ(find("prog"), hit("one/../two//prog"));
}

TEST_F(FindFile, DirectoryPartPlaysNoRoleInTheList) {
  directory.file("two/prog");
  set_list("two");
  EXPECT_EQ(find("one/prog"), hit("two/prog"));
  EXPECT_EQ(find(directory / "one/prog"), hit("two/prog"));
}

// An empty element is no current directory here.
TEST_F(FindFile, EmptyElementsAreSkipped) {
  directory.file("prog");
  set_list(":::");
  EXPECT_EQ(find("one/prog"), miss());
  directory.file("two/prog");
  set_list(":one:::two:");
  EXPECT_EQ(find("one/prog"), hit("two/prog"));
}

TEST_F(FindFile, ElementsThatCannotBeOpenedAreSkipped) {
  directory.file("file");
  directory.file("two/prog");
  set_list("missing:file:" + std::string(100000, 'd') + ":two");
  EXPECT_EQ(find("prog"), hit("two/prog", ENAMETOOLONG));
}

TEST_F(FindFile, BlanksInAnElementCount) {
  std::filesystem::create_directory(" a b ");
  directory.file(" a b /prog");
  set_list("one: a b ");
  EXPECT_EQ(find("prog"), hit(" a b /prog"));
}

TEST_F(FindFile, ListOfTenThousandDirectories) {
  directory.file("two/prog");
  std::string list;
  for (int i = 0; i < 10000; ++i)
    list += "one:";
  set_list(list + "two");
  EXPECT_EQ(find("prog"), hit("two/prog"));
}

TEST_F(FindFile, VariableIsLeftAsItWas) {
  set_list(":one::two:missing:");
  EXPECT_EQ(find("prog"), miss());
  EXPECT_STREQ(getenv(LIST), ":one::two:missing:");
}

// --- Nothing found

TEST_F(FindFile, NowhereRecordsEnoent) {
  set_list("one:two:three");
  EXPECT_EQ(find("prog"), miss());
  EXPECT_EQ(find("missing/prog"), miss());
}

TEST_F(FindFile, UnsetVariableRecordsEnoent) {
  unsetenv(LIST);
  EXPECT_EQ(find("prog"), miss());
  EXPECT_EQ(find("prog", 1400, ""), miss());
}

TEST_F(FindFile, ListWithoutAnElementRecordsEnoent) {
  for (const char *list : {"", ":", "::::"}) {
    set_list(list);
    EXPECT_EQ(find("prog"), miss());
  }
}

TEST_F(FindFile, EmptyNameIsNowhere) {
  directory.file("two/prog");
  set_list("one:two");
  for (const char *name : {"", "   ", "one/", "/", "./"})
    EXPECT_EQ(find(name), miss()) << name;
}

TEST_F(FindFile, NameOfMoreThan255CharactersIsNowhere) {
  directory.file(std::string(255, 'n'));
  set_list("one:.");
  for (const size_t length : {256, 1023, 100000})
    EXPECT_EQ(find(std::string(length, 'n')), miss()) << length;
}

TEST_F(FindFile, DirectoryOfAnyLengthIsNoTrouble) {
  set_list("one");
  EXPECT_EQ(find(std::string(100000, 'd') + "/prog"), miss());
}

TEST_F(FindFile, VariableOfAnyNameIsNoTrouble) {
  directory.file("two/prog");
  Character name("prog"), path(10);
  for (const std::string &variable : {std::string(100000, 'V'), std::string("\0V", 2), std::string("A=B")}) {
    Character varname(variable);
    reset_error_state();
    EXPECT_EQ(findfileqq_(name.data(), varname.data(), path.data(), 4, varname.length(), 10), 0);
    EXPECT_EQ(error_state(), NOT_FOUND);
  }
  const std::string longest(100000, 'V');
  setenv(longest.c_str(), "two", 1);
  Character varname(longest + "  ");
  EXPECT_EQ(findfileqq_(name.data(), varname.data(), path.data(), 4, varname.length(), 10), 8);
  EXPECT_EQ(path.text(), "two/prog  ");
  unsetenv(longest.c_str());
}

TEST_F(FindFile, RemovedWorkingDirectoryHoldsNothing) {
  directory.file("two/prog");
  set_list(directory / "two");
  std::filesystem::create_directory("removed");
  const WorkingDirectory removed("removed");
  std::filesystem::remove(directory / "removed");
  EXPECT_EQ(find("prog"), hit(directory / "two/prog"));
  EXPECT_EQ(find("missing"), miss());
}

// The root directory cannot be named; the list is searched all the same.
TEST_F(FindFile, NameInTheRootDirectoryIsNotFoundThere) {
  EXPECT_EQ(find("/tmp"), miss());
  directory.file("two/tmp");
  set_list("two");
  EXPECT_EQ(find("/tmp"), hit("two/tmp", ENOENT));
}

// --- The room for the path

TEST_F(FindFile, ShorterPathbufTruncatesAndRecordsEinval) {
  directory.file("prog");
  EXPECT_EQ(find("prog", 5), (Answer{5, "./pro", {EINVAL, SENTINEL, {EINVAL}}}));
  directory.file("two/gram");
  set_list("two");
  EXPECT_EQ(find("gram", 7), (Answer{7, "two/gra", {EINVAL, SENTINEL, {EINVAL}}}));
}

TEST_F(FindFile, PathThatJustFitsIsNoError) {
  directory.file("prog");
  EXPECT_EQ(find("prog", 6), (Answer{6, "./prog", NOTHING}));
  EXPECT_EQ(find("prog", 7), (Answer{6, "./prog ", NOTHING}));
}

// Found, and yet nothing stored: both are recorded, and no other directory is asked.
TEST_F(FindFile, EmptyPathbufRecordsEinvalAndEnoent) {
  directory.file("prog");
  directory.file("two/gram");
  set_list("two");
  const Answer expected = {0, "", {ENOENT, SENTINEL, {EINVAL, ENOENT}}};
  EXPECT_EQ(find("prog", 0), expected);
  EXPECT_EQ(find("gram", 0), expected);
}

TEST_F(FindFile, NegativeLengthOfPathbufCountsAsNone) {
  directory.file("prog");
  Character name("prog"), path(10);
  reset_error_state();
  EXPECT_EQ(findfileqq_(name.data(), name.data(), path.data(), 4, 4, -1), 0);
  EXPECT_EQ(path.text(), "##########");
  EXPECT_EQ(error_state(), (ErrorState{ENOENT, SENTINEL, {EINVAL, ENOENT}}));
}

// Slashes of a directory name, until the directory and the longest name have the length.
TEST_F(FindFile, AtMost1279CharactersOfThePathAreStored) {
  const std::string name(255, 'n');
  directory.file("one/" + name);
  const auto path_of_length = [&](size_t length) {
    return "one" + std::string(length - 3 - name.size(), '/') + name;
  };
  EXPECT_EQ(find(path_of_length(1278)), hit(path_of_length(1278)));
  EXPECT_EQ(find(path_of_length(1279)), hit(path_of_length(1279)));
  EXPECT_EQ(find(path_of_length(1280)), hit(path_of_length(1280).substr(0, 1279)));
  EXPECT_EQ(find(path_of_length(3000)), hit(path_of_length(1280).substr(0, 1279)));
  // The character behind a full variable is looked at, even so.
  EXPECT_EQ(find(path_of_length(1279), 1279), (Answer{1279, path_of_length(1279), NOTHING}));
  EXPECT_EQ(find(path_of_length(1280), 1279),
            (Answer{1279, path_of_length(1280).substr(0, 1279), {EINVAL, SENTINEL, {EINVAL}}}));
}

TEST_F(FindFile, AtMost1024CharactersOfTheDirectoryAreStored) {
  directory.file("one/prog");
  const std::string element = "one" + std::string(1021, '/');
  EXPECT_EQ(find(element + "/prog"), hit(element + "/prog"));
  EXPECT_EQ(find(element + "////prog"), hit(element + "/prog"));
  directory.file("two/gram");
  set_list("two" + std::string(3000, '/'));
  EXPECT_EQ(find("gram"), hit("two" + std::string(1022, '/') + "gram"));
}

// What is opened is the whole name, also where not all of it can be stored.
TEST_F(FindFile, DirectoryIsOpenedWithItsWholeName) {
  directory.file("two/prog");
  std::string longest;
  while (longest.size() < PATH_MAX - 1 - strlen("two"))
    longest += "./";
  const Answer expected = hit(longest.substr(0, 1024) + "/prog");
  EXPECT_EQ(find(longest + "two/prog"), expected);
  set_list(longest + "two");
  EXPECT_EQ(find("prog"), expected);
  set_list(longest + "./two:two");
  EXPECT_EQ(find("prog"), hit("two/prog", ENAMETOOLONG));
}

// --- Arguments that cannot be converted

TEST_F(FindFile, NullNameStoresBlanksAndRecordsNothingOfItsOwn) {
  Character variable(LIST), path(10);
  reset_error_state();
  EXPECT_EQ(findfileqq_(nullptr, variable.data(), path.data(), 4, variable.length(), 10), 0);
  EXPECT_EQ(path.text(), padded("", 10));
  EXPECT_EQ(error_state(), (ErrorState{EINVAL, SENTINEL, {EINVAL}})) << "as the conversion left it";
}

TEST_F(FindFile, NullVariableRecordsEnoent) {
  directory.file("prog");
  Character name("prog"), other("gram"), path(10);
  reset_error_state();
  EXPECT_EQ(findfileqq_(name.data(), nullptr, path.data(), 4, 4, 10), 6) << "not needed for a first hit";
  EXPECT_EQ(error_state(), NOTHING);
  EXPECT_EQ(findfileqq_(other.data(), nullptr, path.data(), 4, 4, 10), 0);
  EXPECT_EQ(path.text(), padded("", 10));
  EXPECT_EQ(error_state(), (ErrorState{ENOENT, SENTINEL, {EINVAL, ENOENT}}));
}

// --- errno at the end

TEST_F(FindFile, ErrnoOfAFailedOpeningStaysOnALaterHit) {
  directory.file("file");
  directory.file("two/prog");
  set_list("two");
  EXPECT_EQ(find("one/prog"), hit("two/prog", 0));
  EXPECT_EQ(find("file/prog"), hit("two/prog", ENOTDIR));
  EXPECT_EQ(find("missing/prog"), hit("two/prog", ENOENT));
  set_list("missing:one:two");
  EXPECT_EQ(find("file/prog"), hit("two/prog", ENOENT));
  set_list("missing:file:two");
  EXPECT_EQ(find("prog"), hit("two/prog", ENOTDIR));
}

TEST_F(FindFile, EveryEndClosesTheDirectories) {
  directory.file("prog");
  directory.file("two/gram");
  set_list("one:two:three");
  const size_t descriptors = open_descriptors();
  for (const char *name : {"prog", "gram", "missing", "one/missing"})
    find(name);
  find("prog", 0);
  EXPECT_EQ(open_descriptors(), descriptors);
}

// --- Permissions

class FindFilePermissions : public testing::Test {
protected:
  // Runs the check in a directory with two/prog and one/prog, the directory one having the mode.
  template <typename Check>
  void with_mode_of_one(mode_t mode, Check check) {
    in_directory_of_ordinary_user([&](const TemporaryDirectory &directory) {
      for (const char *name : {"one", "two"})
        std::filesystem::create_directory(name);
      directory.file("one/prog");
      directory.file("two/prog");
      const Mode locked("one", mode);
      check();
    });
  }
};

TEST_F(FindFilePermissions, DirectoryThatIsListedButNotSearchedIsRead) {
  with_mode_of_one(0400, [] {
    setenv(LIST, "one", 1);
    EXPECT_EQ(find("one/prog"), hit("one/prog"));
    EXPECT_EQ(find("prog"), hit("one/prog"));
    EXPECT_EQ(find("one/.."), hit("one/.."));
    const size_t descriptors = open_descriptors();
    EXPECT_EQ(find("one/missing"), miss());
    EXPECT_EQ(find("one/"), miss());
    EXPECT_EQ(open_descriptors(), descriptors);
    setenv(LIST, "one:two", 1);
    EXPECT_EQ(find("one/prog"), hit("one/prog"));
  });
}

// The trouble that is met inside leaves no errno behind, as a reading meets none.
TEST_F(FindFilePermissions, ReadingADirectoryLeavesErrnoAlone) {
  with_mode_of_one(0400, [] {
    setenv(LIST, "one:two", 1);
    std::filesystem::rename("two/prog", "two/gram");
    EXPECT_EQ(find("gram"), hit("two/gram", 0));
  });
}

TEST_F(FindFilePermissions, DirectoryThatIsSearchedButNotListedIsSkipped) {
  with_mode_of_one(0100, [] {
    setenv(LIST, "one", 1);
    EXPECT_EQ(find("one/prog"), miss());
    setenv(LIST, "one:two", 1);
    EXPECT_EQ(find("prog"), hit("two/prog", EACCES));
  });
}
