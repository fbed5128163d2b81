// PXFEXECV, PXFEXECVE and PXFEXECVP with real programs: in most cases this one, which tells the vectors it
// got.
#include "captured_child.h"
#include "outcome.h"

#include <fcntl.h>
#include <fstream>
#include <functional>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

using Strings = std::vector<std::string>;

constexpr const char *TELL = "tell what you got";
constexpr const char *SELF = "/proc/self/exe";

// Writes the two vectors, each string with a NUL behind it, and ends.
[[noreturn]] void tell_vectors(char **argv) {
  std::string text;
  for (; *argv != nullptr; ++argv)
    text += std::string("A") + *argv + '\0';
  for (char **entry = environ; *entry != nullptr; ++entry)
    text += std::string("E") + *entry + '\0';
  for (size_t written = 0; written < text.size();) {
    const ssize_t count = write(STDOUT_FILENO, text.data() + written, text.size() - written);
    if (count <= 0)
      _exit(1);
    written += static_cast<size_t>(count);
  }
  _exit(0);
}

struct Vectors {
  Strings arguments, environment;
};

Vectors vectors_in(const ChildReport &child) {
  EXPECT_EQ(child.status, 0) << child.err;
  Vectors told;
  for (size_t start = 0; start < child.out.size();) {
    const size_t end = child.out.find('\0', start);
    (child.out[start] == 'A' ? told.arguments : told.environment)
        .push_back(child.out.substr(start + 1, end - start - 1));
    start = end + 1;
  }
  return told;
}

// A CHARACTER array and the lengths of its elements, all 0 at first.
struct Array {
  Array(size_t length, const Strings &elements)
      : element_length(static_cast<qxport_charlen>(length)), lengths(elements.size(), 0) {
    for (const std::string &element : elements) {
      EXPECT_LE(element.size(), length);
      text += padded(element, length);
    }
  }
  Array(size_t length, const Strings &elements, std::vector<int32_t> given_lengths)
      : Array(length, elements) {
    lengths = std::move(given_lengths);
  }

  int32_t count() const { return static_cast<int32_t>(lengths.size()); }

  qxport_charlen element_length;
  std::vector<int32_t> lengths;
  std::string text;
};

enum class Routine { Execv, Execve, Execvp };

std::ostream &operator<<(std::ostream &out, Routine routine) {
  return out << (routine == Routine::Execv ? "Execv" : routine == Routine::Execve ? "Execve" : "Execvp");
}

const Array NO_ENVIRONMENT(1, {});

int32_t execute(Routine routine, const std::string &path, int32_t lenpath, const Array &argv,
                const Array &env = NO_ENVIRONMENT) {
  const int32_t iargc = argv.count();
  const int32_t ienvc = env.count();
  const auto length = static_cast<qxport_charlen>(path.size());
  int32_t ierror = SENTINEL;
  switch (routine) {
  case Routine::Execv:
    pxfexecv_(path.data(), &lenpath, argv.text.data(), argv.lengths.data(), &iargc, &ierror, length,
              argv.element_length);
    break;
  case Routine::Execve:
    pxfexecve_(path.data(), &lenpath, argv.text.data(), argv.lengths.data(), &iargc, env.text.data(),
               env.lengths.data(), &ienvc, &ierror, length, argv.element_length, env.element_length);
    break;
  case Routine::Execvp:
    pxfexecvp_(path.data(), &lenpath, argv.text.data(), argv.lengths.data(), &iargc, &ierror, length,
               argv.element_length);
  }
  return ierror;
}

// A call that comes back, with all that it left.
Outcome failing(Routine routine, const std::string &path, int32_t lenpath, const Array &argv,
                const Array &env = NO_ENVIRONMENT) {
  return outcome_of([&] { return execute(routine, path, lenpath, argv, env); });
}

Outcome failed_with(int32_t ierror) {
  return {ierror, {ierror, SENTINEL, {}}};
}

Outcome not_executed_and_errno_stays(int32_t ierror) {
  return {ierror, untouched()};
}

class Exec : public testing::TestWithParam<Routine> {
protected:
  // What this program gets, started in a child through the routine.
  Vectors started(const Array &argv, const Array &env = NO_ENVIRONMENT, const std::string &path = SELF,
                  int32_t lenpath = 0) const {
    return vectors_in(run_in_child([&] { execute(GetParam(), path, lenpath, argv, env); }));
  }
  Strings arguments(const Array &argv) const { return started(argv).arguments; }
};

INSTANTIATE_TEST_SUITE_P(Routines, Exec, testing::Values(Routine::Execv, Routine::Execve, Routine::Execvp),
                         testing::PrintToStringParamName());

TEST(Execv, BinLsWithTwoArgumentsRunsLs) {
  const TemporaryDirectory directory;
  directory.file("a file", "four");
  const Array argv(4, {"ls  ", "-l  "});
  const ChildReport child = run_in_child([&] {
    if (chdir(directory.path().c_str()) == 0)
      execute(Routine::Execv, "/bin/ls", 0, argv);
  });
  EXPECT_EQ(child.status, 0) << child.err;
  EXPECT_EQ(child.out.substr(0, 5), "total");
  EXPECT_NE(child.out.find("a file\n"), std::string::npos);
  EXPECT_EQ(vectors_in(run_in_child([&] { execute(Routine::Execv, SELF, 0, argv); })).arguments,
            (Strings{"ls", "-l"}));
}

TEST_P(Exec, Length0DropsAnElementsOwnTrailingWhiteSpace) {
  EXPECT_EQ(arguments(Array(20, {TELL, "-l  ", " both ", "tabs\t \n\v\f\r", "in side"})),
            (Strings{TELL, "-l", " both", "tabs", "in side"}));
}

TEST_P(Exec, OtherLengthsCountExactly) {
  EXPECT_EQ(arguments(Array(17, {TELL, "abc", "abc", "a", "a", " b"}, {17, 3, 2, 17, 1, 1})),
            (Strings{TELL, "abc", "ab", padded("a", 17), "a", " "}));
}

TEST_P(Exec, BlankElementIsOneBlank) {
  EXPECT_EQ(arguments(Array(17, {TELL, "", "\t \t"}, {17, 0, 0})), (Strings{TELL, " ", "\t"}));
}

TEST_P(Exec, ElementsMayFillTheirVariables) {
  const std::string full(17, 'f');
  EXPECT_EQ(arguments(Array(17, {TELL, full, full}, {17, 0, 17})), (Strings{TELL, full, full}));
}

TEST_P(Exec, NulEndsAnElement) {
  EXPECT_EQ(arguments(Array(17, {TELL, std::string("a\0b", 3), std::string("\0b", 2)}, {17, 3, 0})),
            (Strings{TELL, "a", ""}));
}

// A host that wants a name at least gives the program an empty one.
TEST_P(Exec, NoArgumentsAreAnEmptyVector) {
  const Strings told = arguments(Array(17, {}));
  EXPECT_LE(told.size(), 1u);
  for (const std::string &argument : told)
    EXPECT_EQ(argument, "");
}

TEST(Execv, NegativeCountIsNone) {
  const Array argv(17, {TELL, "x"});
  const ChildReport child = run_in_child([&] {
    const int32_t lenpath = 0, iargc = -1;
    int32_t ierror;
    pxfexecv_(SELF, &lenpath, argv.text.data(), argv.lengths.data(), &iargc, &ierror, 14, 17);
  });
  EXPECT_LE(vectors_in(child).arguments.size(), 1u);
}

TEST_P(Exec, TenThousandElements) {
  Strings elements = {TELL};
  for (int i = 1; i < 10000; ++i)
    elements.push_back("argument" + std::to_string(i));
  EXPECT_EQ(arguments(Array(17, elements)), elements);
}

TEST_P(Exec, ElementsOfAHundredThousandCharacters) {
  const std::string text = std::string(99998, 'x') + " y";
  EXPECT_EQ(arguments(Array(100000, {TELL, text, "short", text}, {17, 100000, 0, 0})),
            (Strings{TELL, text, "short", text}));
}

TEST_P(Exec, StringBeyondTheHostsLimitIsE2big) {
  const std::string text(200000, 'x');
  EXPECT_EQ(failing(GetParam(), SELF, 0, Array(200000, {TELL, text})), failed_with(E2BIG));
}

TEST_P(Exec, PathIsTakenByTheRule) {
  const Array argv(17, {TELL});
  EXPECT_EQ(started(argv, NO_ENVIRONMENT, std::string(SELF) + " \t ", 0).arguments, Strings{TELL});
  EXPECT_EQ(started(argv, NO_ENVIRONMENT, std::string(SELF) + "/more", 14).arguments, Strings{TELL});
  EXPECT_EQ(failing(GetParam(), std::string(SELF) + "  ", 16, argv), failed_with(ENOENT));
}

TEST(Execv, BlankPathIsOneBlank) {
  const TemporaryDirectory directory;
  const WorkingDirectory working(directory.path());
  EXPECT_EQ(failing(Routine::Execv, "  ", 0, Array(17, {TELL})), failed_with(ENOENT));
  EXPECT_EQ(failing(Routine::Execve, "  ", 0, Array(17, {TELL})), failed_with(ENOENT));
  ASSERT_EQ(symlink(SELF, " "), 0);
  EXPECT_EQ(run_in_child([&] { execute(Routine::Execv, "  ", 0, Array(17, {TELL})); }).status, 0);
}

TEST_P(Exec, MissingFileIsEnoent) {
  EXPECT_EQ(failing(GetParam(), "/nowhere/at/all", 0, Array(17, {TELL})), failed_with(ENOENT));
}

TEST_P(Exec, FileThatIsNotExecutableIsEacces) {
  const TemporaryDirectory directory;
  EXPECT_EQ(failing(GetParam(), directory.file("data", "data"), 0, Array(17, {TELL})), failed_with(EACCES));
  EXPECT_EQ(failing(GetParam(), directory.path(), 0, Array(17, {TELL})), failed_with(EACCES));
}

TEST(Execv, FileOfNoKnownFormatIsEnoexec) {
  const TemporaryDirectory directory;
  const std::string script = directory.file("script", "exit 3\n", 0755);
  EXPECT_EQ(failing(Routine::Execv, script, 0, Array(17, {TELL})), failed_with(ENOEXEC));
  EXPECT_EQ(failing(Routine::Execve, script, 0, Array(17, {TELL})), failed_with(ENOEXEC));
}

TEST_P(Exec, ArgumentsStayAsTheyWere) {
  const Array argv(6, {"a  ", "", "\t"}, {0, 6, 0});
  const std::string before = argv.text;
  failing(GetParam(), "/nowhere", 0, argv);
  EXPECT_EQ(argv.text, before);
  EXPECT_EQ(argv.lengths, (std::vector<int32_t>{0, 6, 0}));
}

TEST_P(Exec, NegativePathLengthIs22) {
  for (const int32_t length : {-1, INT32_MIN})
    EXPECT_EQ(failing(GetParam(), SELF, length, Array(17, {TELL})), failed_with(EINVAL)) << length;
}

TEST(Execv, LengthsNegativeOrTooLargeAre22) {
  for (const int32_t length : {15, INT32_MAX, -1, INT32_MIN})
    EXPECT_EQ(failing(Routine::Execv, SELF, length, Array(17, {TELL})), failed_with(EINVAL)) << length;
  for (const int32_t length : {18, INT32_MAX, -1, INT32_MIN}) {
    EXPECT_EQ(failing(Routine::Execv, SELF, 0, Array(17, {TELL}, {length})), failed_with(EINVAL)) << length;
    EXPECT_EQ(failing(Routine::Execv, SELF, 0, Array(17, {TELL, "x"}, {0, length})), failed_with(EINVAL));
  }
}

TEST(Execve, PathLengthNegativeOrTooLargeIs22) {
  for (const int32_t length : {15, INT32_MAX, -1, INT32_MIN})
    EXPECT_EQ(failing(Routine::Execve, SELF, length, Array(17, {TELL})), failed_with(EINVAL)) << length;
}

TEST(Execve, ArgumentLengthNegativeOrTooLargeIsMinus1AndErrnoStays) {
  for (const int32_t length : {18, INT32_MAX, -1, INT32_MIN}) {
    EXPECT_EQ(failing(Routine::Execve, SELF, 0, Array(17, {TELL}, {length})),
              not_executed_and_errno_stays(-1));
    EXPECT_EQ(failing(Routine::Execve, SELF, 0, Array(17, {TELL, "x"}, {0, length})),
              not_executed_and_errno_stays(-1));
  }
}

TEST(Execve, EnvironmentLengthNegativeOrTooLargeIs22) {
  for (const int32_t length : {4, INT32_MAX, -1, INT32_MIN}) {
    EXPECT_EQ(failing(Routine::Execve, SELF, 0, Array(17, {TELL}), Array(3, {"A=B"}, {length})),
              failed_with(EINVAL));
    EXPECT_EQ(failing(Routine::Execve, SELF, 0, Array(17, {TELL}), Array(3, {"A=B", "C=D"}, {0, length})),
              failed_with(EINVAL));
  }
}

TEST(Execve, PathIsCheckedBeforeArgumentsAndThoseBeforeTheEnvironment) {
  const Array wrong_argv(17, {TELL}, {18});
  const Array wrong_env(3, {"A=B"}, {4});
  EXPECT_EQ(failing(Routine::Execve, SELF, 15, wrong_argv, wrong_env), failed_with(EINVAL));
  EXPECT_EQ(failing(Routine::Execve, SELF, 0, wrong_argv, wrong_env), not_executed_and_errno_stays(-1));
}

TEST(Execvp, LengthsBeyondTheVariablesAreTaken) {
  const std::string path = std::string("/proc/self/exeXX");
  const std::string argument = std::string(TELL) + "XX";
  const ChildReport child = run_in_child([&] {
    const int32_t lenfile = 14, lenargv = 17, iargc = 1;
    int32_t ierror;
    pxfexecvp_(path.data(), &lenfile, argument.data(), &lenargv, &iargc, &ierror, 3, 4);
  });
  EXPECT_EQ(vectors_in(child).arguments, Strings{TELL});
}

TEST(Execvp, NegativeArgumentLengthIs22) {
  EXPECT_EQ(failing(Routine::Execvp, SELF, 0, Array(17, {TELL}, {-1})), failed_with(EINVAL));
}

TEST(Execve, EnvironmentIsTheGivenOneOnly) {
  const auto environment = [](const Array &env) {
    return vectors_in(run_in_child([&] {
             setenv("OF_THE_CALLER", "1", 1);
             execute(Routine::Execve, SELF, 0, Array(17, {TELL}), env);
           }))
        .environment;
  };
  EXPECT_EQ(environment(Array(10, {"A=1  ", " B= 2 ", "no value", "", "C=3"}, {0, 0, 0, 0, 5})),
            (Strings{"A=1", " B= 2", "no value", " ", "C=3  "}));
  EXPECT_EQ(environment(NO_ENVIRONMENT), Strings{});
  Strings many;
  for (int i = 0; i < 10000; ++i)
    many.push_back("N" + std::to_string(i) + "=v");
  EXPECT_EQ(environment(Array(10, many)), many);
  const std::string text = "L=" + std::string(99998, 'x');
  EXPECT_EQ(environment(Array(100000, {text})), Strings{text});
}

TEST(Execv, EnvironmentIsTheCallers) {
  for (const Routine routine : {Routine::Execv, Routine::Execvp}) {
    const Strings told = vectors_in(run_in_child([&] {
                           setenv("OF_THE_CALLER", "1", 1);
                           execute(routine, SELF, 0, Array(17, {TELL}));
                         })).environment;
    EXPECT_NE(std::find(told.begin(), told.end(), "OF_THE_CALLER=1"), told.end());
  }
}

TEST(Execvp, SearchesThePath) {
  const TemporaryDirectory first, second;
  first.file("program", "not executable");
  second.file("program", "#!/bin/sh\necho \"$0 $1\"\n", 0755);
  const ChildReport child = run_in_child([&] {
    setenv("PATH", (first.path() + ":" + second.path()).c_str(), 1);
    execute(Routine::Execvp, "program  ", 0, Array(8, {"any name", "argument"}));
  });
  EXPECT_EQ(child.status, 0) << child.err;
  EXPECT_EQ(child.out, second / "program" + " argument\n");
  const ChildReport missing = run_in_child([&] {
    setenv("PATH", first.path().c_str(), 1);
    _exit(execute(Routine::Execvp, "absent", 0, Array(8, {"absent"})) == ENOENT ? 0 : 1);
  });
  EXPECT_EQ(missing.status, 0);
}

TEST(Execvp, FileOfNoKnownFormatIsAScript) {
  const TemporaryDirectory directory;
  const std::string script = directory.file("script", "exit 3\n", 0755);
  EXPECT_EQ(run_in_child([&] { execute(Routine::Execvp, script, 0, Array(4, {"name"})); }).exit_code(), 3);
}

TEST(Execv, SiblingsDoNotSearch) {
  EXPECT_EQ(failing(Routine::Execv, "ls", 0, Array(2, {"ls"})), failed_with(ENOENT));
  EXPECT_EQ(failing(Routine::Execve, "ls", 0, Array(2, {"ls"})), failed_with(ENOENT));
}

}  // namespace

// Under a name without a slash, or none, a test has started this program to tell what it got.
int main(int argc, char **argv) {
  if (argc == 0 || strchr(argv[0], '/') == nullptr)
    tell_vectors(argv);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
