// GETENV: the name's end, and a value in variables of every length.
#include "environment.h"

#include "outcome.h"

namespace {

std::string getenv_of(const std::string &name, size_t length) {
  Character name_argument(name);
  Character value(length);
  EXPECT_EQ(state_after(
                [&] { getenv_(name_argument.data(), value.data(), name_argument.length(), value.length()); }),
            untouched());
  EXPECT_EQ(name_argument.text(), name);
  return value.text();
}

TEST(Getenv, ValueIsBlankPadded) {
  const Environment environment({"NAME=value"});
  EXPECT_EQ(getenv_of("NAME", 6), "value ");
  EXPECT_EQ(getenv_of("NAME", 1000), padded("value", 1000));
}

TEST(Getenv, ExactLengthIsEnough) {
  const Environment environment({"NAME=value"});
  EXPECT_EQ(getenv_of("NAME", 5), "value");
}

TEST(Getenv, LongerValueIsCut) {
  const Environment environment({"NAME=value"});
  EXPECT_EQ(getenv_of("NAME", 4), "valu");
  EXPECT_EQ(getenv_of("NAME", 1), "v");
  EXPECT_EQ(getenv_of("NAME", 0), "");
}

TEST(Getenv, EmptyValueIsBlank) {
  const Environment environment({"NAME="});
  EXPECT_EQ(getenv_of("NAME", 3), "   ");
  EXPECT_EQ(getenv_of("NAME", 0), "");
}

TEST(Getenv, ValueIsTakenAsItIs) {
  const Environment environment({"NAME= a=\xff\t "});
  EXPECT_EQ(getenv_of("NAME", 8), " a=\xff\t   ");
}

TEST(Getenv, MissingVariableIsBlank) {
  const Environment environment({"NAME=value", "OTHER", "NAME2=second"});
  EXPECT_EQ(getenv_of("NAM", 5), "     ");
  EXPECT_EQ(getenv_of("name", 5), "     ");
  EXPECT_EQ(getenv_of("OTHER", 5), "     ");
  EXPECT_EQ(getenv_of("MISSING", 0), "");
  EXPECT_EQ(getenv_of("NAME2", 8), "second  ");
}

TEST(Getenv, HomeFollowedByABlankAndMoreTextIsHome) {
  const Environment environment({"HOME=/root", "HOME directory=/wrong"});
  EXPECT_EQ(getenv_of("HOME directory", 8), "/root   ");
  EXPECT_EQ(getenv_of("HOME    ", 5), "/root");
}

TEST(Getenv, NameWithALeadingBlankIsEmpty) {
  const Environment environment({"HOME=/root", " HOME=/wrong", "=/empty"});
  EXPECT_EQ(getenv_of(" HOME", 8), padded("", 8));
  EXPECT_EQ(getenv_of("    ", 8), padded("", 8));
  EXPECT_EQ(getenv_of("", 8), padded("", 8));
}

TEST(Getenv, NameEndsAtANul) {
  const Environment environment({"HOME=/root"});
  EXPECT_EQ(getenv_of(std::string("HOME\0", 5), 5), "/root");
  EXPECT_EQ(getenv_of(std::string("HOME\0X", 6), 5), "/root");
  EXPECT_EQ(getenv_of(std::string("\0HOME", 5), 5), "     ");
}

TEST(Getenv, OnlyTheBlankEndsAName) {
  const Environment environment({"A\tB=tab", "A\xff=foreign"});
  EXPECT_EQ(getenv_of("A\tB ", 7), "tab    ");
  EXPECT_EQ(getenv_of("A\xff", 7), "foreign");
}

TEST(Getenv, NegativeLengthsCountAsZero) {
  const Environment environment({"NAME=value"});
  Character value(5);
  EXPECT_EQ(state_after([&] { getenv_("NAME", value.data(), 4, -5); }), untouched());
  EXPECT_EQ(value.text(), "#####");
  EXPECT_EQ(state_after([&] { getenv_("NAME", value.data(), -4, 5); }), untouched());
  EXPECT_EQ(value.text(), "     ");
}

TEST(Getenv, NamesOfEveryLengthAreFound) {
  for (const size_t length : {1u, 2u, 255u, 509u, 510u, 511u, 512u, 513u, 1023u, 100000u}) {
    const std::string name(length, 'N');
    const Environment environment({name + "x=longer", name + "=value"});
    EXPECT_EQ(getenv_of(name, 6), "value ") << length;
    EXPECT_EQ(getenv_of(name + " x", 6), "value ") << length;
    EXPECT_EQ(getenv_of(name + "x", 6), "longer") << length;
    EXPECT_EQ(getenv_of(name + "y", 6), "      ") << length;
  }
}

TEST(Getenv, ShortNameInALongVariableIsFound) {
  const Environment environment({"NAME=value"});
  EXPECT_EQ(getenv_of(padded("NAME", 100000), 5), "value");
}

TEST(Getenv, LongValueIsFound) {
  const std::string value(100000, 'v');
  const Environment environment({"NAME=" + value});
  EXPECT_EQ(getenv_of("NAME", 100001), value + " ");
  EXPECT_EQ(getenv_of("NAME", 99999), value.substr(1));
}

TEST(Getenv, TenThousandEntriesAreSearched) {
  std::vector<std::string> entries;
  for (int i = 0; i < 10000; ++i)
    entries.push_back("NAME" + std::to_string(i) + "=value" + std::to_string(i));
  const Environment environment(entries);
  EXPECT_EQ(getenv_of("NAME0", 10), "value0    ");
  EXPECT_EQ(getenv_of("NAME9999", 10), "value9999 ");
  EXPECT_EQ(getenv_of("NAME10000", 10), "          ");
}

TEST(Getenv, NoEnvironmentHoldsNothing) {
  const NoEnvironment none;
  EXPECT_EQ(getenv_of("HOME", 5), "     ");
}

}  // namespace
