// The command line, which this program tells when a test starts it for that.
#include "captured_child.h"
#include "outcome.h"
#include "record_calls.h"

#include <cstdlib>
#include <sstream>
#include <unistd.h>

namespace {

constexpr const char *TELL = "--tell";

// What a program's own constructor learns.
const int32_t count_at_start = ipxfargc_();

struct Argument {
  std::string value;
  int32_t ilen;
  Outcome outcome;
  bool operator==(const Argument &) const = default;
};

std::ostream &operator<<(std::ostream &out, const Argument &argument) {
  return out << '"' << argument.value << "\" " << argument.ilen << ' ' << argument.outcome;
}

Argument argument(int32_t m, size_t length) {
  Character value(length);
  Guarded<int32_t> ilen(SENTINEL);
  const Outcome outcome =
      reported_by([&](int32_t *ierror) { pxfgetarg_(&m, value.data(), &ilen, ierror, value.length()); });
  return {value.text(), ilen, outcome};
}

// Tells the count, and each argument from the one before the program's name to the one behind the last, in a
// variable of the length that argument 2 names.
void tell_arguments(const char *length) {
  std::ostringstream told;
  told << ipxfargc_() << '\n';
  for (int32_t m = -1; m <= ipxfargc_() + 1; ++m)
    told << m << ' ' << argument(m, strtoul(length, nullptr, 10)) << '\n';
  const std::string text = told.str();
  _exit(write(STDOUT_FILENO, text.data(), text.size()) == static_cast<ssize_t>(text.size()) ? 0 : 1);
}

// What this program tells when it is started with these arguments behind the first three.
std::string told(size_t length, const std::vector<std::string> &arguments) {
  std::vector<std::string> all = {"name of the program", TELL, std::to_string(length)};
  all.insert(all.end(), arguments.begin(), arguments.end());
  const ChildReport child = run_in_child([&] {
    std::vector<char *> argv;
    for (std::string &text : all)
      argv.push_back(text.data());
    argv.push_back(nullptr);
    execv("/proc/self/exe", argv.data());
  });
  EXPECT_EQ(child.status, 0) << child.err;
  return child.out;
}

// What it is to tell.
std::string expected(size_t length, const std::vector<std::string> &arguments) {
  std::vector<std::string> all = {"name of the program", TELL, std::to_string(length)};
  all.insert(all.end(), arguments.begin(), arguments.end());
  const Argument none = {std::string(length, ' '), 0, refused(EINVAL)};
  std::ostringstream text;
  text << all.size() - 1 << "\n-1 " << none << '\n';
  for (size_t m = 0; m < all.size(); ++m) {
    const bool fits = all[m].size() <= length;
    text << m << ' '
         << Argument{padded(all[m].substr(0, length), length), static_cast<int32_t>(all[m].size()),
                     refused_silently(fits ? 0 : CUT)}
         << '\n';
  }
  text << all.size() << ' ' << none << '\n';
  return text.str();
}

TEST(CommandLine, IsToldArgumentByArgument) {
  const std::vector<std::string> arguments = {"first", "", " a b ", "\xff\xfe", "last"};
  for (const size_t length : {0u, 1u, 5u, 19u, 100u})
    EXPECT_EQ(told(length, arguments), expected(length, arguments)) << length;
}

TEST(CommandLine, WithoutArguments) {
  EXPECT_EQ(told(30, {}), expected(30, {}));
}

TEST(CommandLine, TenThousandArguments) {
  std::vector<std::string> arguments;
  for (int i = 0; i < 10000; ++i)
    arguments.push_back("argument " + std::to_string(i));
  EXPECT_EQ(told(20, arguments), expected(20, arguments));
}

TEST(CommandLine, ArgumentOfAHundredThousandCharacters) {
  const std::vector<std::string> arguments = {std::string(100000, 'x')};
  EXPECT_EQ(told(10, arguments), expected(10, arguments));
  EXPECT_EQ(told(100001, arguments), expected(100001, arguments));
}

TEST(CommandLine, IsThereForTheProgramsOwnConstructors) {
  EXPECT_GE(count_at_start, 0);
  EXPECT_EQ(count_at_start, ipxfargc_());
}

TEST(CommandLine, FarNumbersAreNoArguments) {
  for (const int32_t m : {INT32_MIN, -2, 100000, INT32_MAX})
    EXPECT_EQ(argument(m, 3), (Argument{"   ", 0, refused(EINVAL)})) << m;
}

// A program's main may shorten its argument list, as parsers of options do.
TEST(CommandLine, ShortenedByTheProgramIsNoCrash) {
  const ChildReport child =
      run_in_child([] { execl("/proc/self/exe", "name of the program", "--shorten", "a", "b", nullptr); });
  EXPECT_EQ(child.status, 0) << child.err;
}

}  // namespace

// For its tests this program only tells what it got.
int main(int argc, char **argv) {
  if (argc > 2 && strcmp(argv[1], TELL) == 0)
    tell_arguments(argv[2]);
  if (argc > 2 && strcmp(argv[1], "--shorten") == 0) {
    argv[argc - 1] = nullptr;
    return argument(argc - 1, 3) == Argument{"   ", 0, refused(EINVAL)} ? 0 : 1;
  }
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
