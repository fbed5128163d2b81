// PXFGETENV, PXFSETENV and PXFCLEARENV.
#include "captured_child.h"
#include "environment.h"
#include "outcome.h"
#include "record_calls.h"

#include <cstdlib>
#include <unistd.h>

namespace {

class Variables : public testing::Test {
protected:
  struct Answer {
    std::string value;
    int32_t lenval;
    Outcome outcome;
    bool operator==(const Answer &) const = default;
    friend std::ostream &operator<<(std::ostream &out, const Answer &answer) {
      return out << '"' << answer.value << "\" " << answer.lenval << ' ' << answer.outcome;
    }
  };

  static Answer get(const std::string &name, int32_t lenname, size_t length) {
    Character name_argument(name), value(length);
    Guarded<int32_t> lenval(SENTINEL);
    const Outcome outcome = reported_by([&](int32_t *ierror) {
      pxfgetenv_(name_argument.data(), &lenname, value.data(), &lenval, ierror, name_argument.length(),
                 value.length());
    });
    EXPECT_EQ(name_argument.text(), name);
    return {value.text(), lenval, outcome};
  }
  // The value of a variable, in a CHARACTER variable that it fills.
  static std::string value_of(const std::string &name, int32_t lenname) {
    return get(name, lenname, 5).value;
  }

  // errno is 0 then.
  static Answer found(const std::string &value, size_t length) {
    return {padded(value, length), static_cast<int32_t>(value.size()), refused(0, 0)};
  }
  static Answer missing(size_t length) { return {std::string(length, ' '), SENTINEL, refused(EINVAL)}; }

  static Outcome set(const std::string &name, int32_t lenname, const std::string &value, int32_t lenval,
                     int32_t ioverwrite = 1) {
    Character name_argument(name), value_argument(value);
    const Outcome outcome = reported_by([&](int32_t *ierror) {
      pxfsetenv_(name_argument.data(), &lenname, value_argument.data(), &lenval, &ioverwrite, ierror,
                 name_argument.length(), value_argument.length());
    });
    EXPECT_EQ(name_argument.text(), name);
    EXPECT_EQ(value_argument.text(), value);
    return outcome;
  }

  static Outcome clear() {
    return reported_by([](int32_t *ierror) { pxfclearenv_(ierror); });
  }
};

using Getenv = Variables;

TEST_F(Getenv, NameWithBlanksAndLength0IsHome) {
  const Environment environment({"HOME=/root", "  HOME=wrong"});
  EXPECT_EQ(get("  HOME  ", 0, 8), found("/root", 8));
}

TEST_F(Getenv, NameWithBlanksAndLength8KeepsTheLeadingOnes) {
  const Environment environment({"HOME=wrong", "  HOME=/root"});
  EXPECT_EQ(get("  HOME  ", 8, 8), found("/root", 8));
}

TEST_F(Getenv, UnsetVariableIs22AndABlankValue) {
  const Environment environment({"HOME=/root", "OTHER"});
  for (const char *name : {"UNSET", "HOM", "HOME2", "OTHER"})
    EXPECT_EQ(get(name, 0, 8), missing(8)) << name;
  EXPECT_EQ(get("UNSET", 0, 0), missing(0));
}

TEST_F(Getenv, LengthCountsButNeverMoreThanTheVariable) {
  const Environment environment({"HOME=/root", "HO=short", "HOMELY=wrong"});
  EXPECT_EQ(value_of("HOMELY", 4), "/root");
  EXPECT_EQ(value_of("HOMELY", 2), "short");
  EXPECT_EQ(value_of("HOME", 100), "/root");
  EXPECT_EQ(value_of("HOME", INT32_MAX), "/root");
}

TEST_F(Getenv, TrailingWhiteSpaceIsDroppedWhateverTheLength) {
  const Environment environment({"HOME=/root", "HOME =wrong", "HOME\t=wrong"});
  EXPECT_EQ(value_of("HOME \t\n\v\f\r ", 0), "/root");
  EXPECT_EQ(value_of("HOME \t\n\v\f\r ", 5), "/root");
  EXPECT_EQ(value_of("HOME \t\n\v\f\r ", 11), "/root");
}

TEST_F(Getenv, LeadingWhiteSpaceIsSkippedForLength0Only) {
  const Environment environment({"HOME=/root", "\t HOME=other"});
  EXPECT_EQ(value_of("\t HOME", 0), "/root");
  EXPECT_EQ(value_of("\n\v\f\r HOME", 0), "/root");
  EXPECT_EQ(value_of("\t HOME", 6), "other");
}

TEST_F(Getenv, InnerWhiteSpaceStays) {
  const Environment environment({"A B=value", "A=wrong"});
  EXPECT_EQ(value_of(" A B ", 0), "value");
}

TEST_F(Getenv, NothingButWhiteSpaceIsNoName) {
  const Environment environment({"=wrong", " =wrong"});
  EXPECT_EQ(get("   ", 0, 8), missing(8));
  EXPECT_EQ(get("   ", 2, 8), missing(8));
  EXPECT_EQ(get("", 0, 8), missing(8));
  EXPECT_EQ(get("", 3, 8), missing(8));
}

TEST_F(Getenv, NegativeLengthIsNoName) {
  const Environment environment({"HOME=/root"});
  for (const int32_t length : {-1, INT32_MIN})
    EXPECT_EQ(get("HOME", length, 8), missing(8)) << length;
}

TEST_F(Getenv, ValueThatFits) {
  const Environment environment({"NAME=value", "EMPTY=", "ODD= a=\xff\t "});
  for (const size_t length : {5u, 6u, 1000u})
    EXPECT_EQ(get("NAME", 0, length), found("value", length));
  for (const size_t length : {0u, 3u})
    EXPECT_EQ(get("EMPTY", 0, length), found("", length));
  EXPECT_EQ(get("ODD", 0, 9), found(" a=\xff\t ", 9));
}

TEST_F(Getenv, CutValueIs129WithErrno129AndTheFullLength) {
  const Environment environment({"NAME=value"});
  for (const size_t length : {4u, 1u, 0u})
    EXPECT_EQ(get("NAME", 0, length), (Answer{std::string("value").substr(0, length), 5, refused(CUT, CUT)}));
}

TEST_F(Getenv, LongNamesAndValues) {
  const std::string name(100000, 'N'), value(100000, 'v');
  const Environment environment({name + "=" + value});
  EXPECT_EQ(get(name, 0, 100001), found(value, 100001));
  EXPECT_EQ(get(name + " ", 100001, 100000), found(value, 100000));
  EXPECT_EQ(get(name, 100000, 99999), (Answer{value.substr(1), 100000, refused(CUT, CUT)}));
}

TEST_F(Getenv, NoEnvironmentHoldsNothing) {
  const NoEnvironment none;
  EXPECT_EQ(get("HOME", 0, 8), missing(8));
}

// Each begins with an environment of one variable.
class Setenv : public Variables {
protected:
  void SetUp() override {
    clearenv();
    setenv("FORMER", "old", 1);
  }
  void TearDown() override { clearenv(); }

  static std::vector<std::string> entries() {
    std::vector<std::string> all;
    for (char **entry = environ; entry != nullptr && *entry != nullptr; ++entry)
      if (strcmp(*entry, "FORMER=old") != 0)
        all.emplace_back(*entry);
    return all;
  }
  // The one entry that a call makes.
  static std::string made(const std::string &name, int32_t lenname, const std::string &value,
                          int32_t lenval) {
    clearenv();
    EXPECT_EQ(set(name, lenname, value, lenval), succeeded());
    const std::vector<std::string> all = entries();
    EXPECT_EQ(all.size(), 1u);
    return all.size() == 1 ? all[0] : "";
  }
};

TEST_F(Setenv, NameWithLength0LosesWhiteSpaceOnBothSides) {
  EXPECT_EQ(made("  NAME  ", 0, "v", 0), "NAME=v");
  EXPECT_EQ(made("\t\nA B\v\f\r", 0, "v", 0), "A B=v");
}

TEST_F(Setenv, NameWithALengthKeepsItsLeadingWhiteSpace) {
  EXPECT_EQ(made("  NAME  ", 8, "v", 0), "  NAME=v");
  EXPECT_EQ(made("  NAME  ", 4, "v", 0), "  NA=v");
  EXPECT_EQ(made("NAME  MORE", 6, "v", 0), "NAME=v");
}

TEST_F(Setenv, ValueWithLength0LosesWhiteSpaceOnBothSides) {
  EXPECT_EQ(made("N", 0, " \t a b \n ", 0), "N=a b");
  EXPECT_EQ(made("N", 0, "   ", 0), "N=");
  EXPECT_EQ(made("N", 0, "", 0), "N=");
}

TEST_F(Setenv, ValueWithALengthKeepsItsLeadingWhiteSpace) {
  EXPECT_EQ(made("N", 0, "  a b  more", 7), "N=  a b");
  EXPECT_EQ(made("N", 0, "  a b  more", 3), "N=  a");
  EXPECT_EQ(made("N", 0, "   ", 3), "N=");
  EXPECT_EQ(made("N", 0, "value", 5), "N=value");
}

TEST_F(Setenv, OverwriteReplacesAndWithoutItTheVariableStays) {
  EXPECT_EQ(set("FORMER", 0, "new", 0, 0), succeeded());
  EXPECT_STREQ(getenv("FORMER"), "old");
  EXPECT_EQ(set("FRESH", 0, "new", 0, 0), succeeded());
  EXPECT_STREQ(getenv("FRESH"), "new");
  for (const int32_t ioverwrite : {1, -1, 256, INT32_MIN}) {
    const std::string value = "value" + std::to_string(ioverwrite);
    EXPECT_EQ(set("FORMER", 0, value, 0, ioverwrite), succeeded());
    EXPECT_EQ(getenv("FORMER"), value);
  }
}

TEST_F(Setenv, LengthsNegativeOrTooLargeAre22AndNothingIsSet) {
  for (const int32_t length : {5, INT32_MAX, -1, INT32_MIN}) {
    EXPECT_EQ(set("NAME", length, "value", 0), refused(EINVAL)) << length;
    EXPECT_EQ(set("NAME", 0, "valu", length), refused(EINVAL)) << length;
  }
  EXPECT_EQ(entries(), std::vector<std::string>{});
  EXPECT_STREQ(getenv("FORMER"), "old");
}

TEST_F(Setenv, NameThatTheHostRejectsIsItsError) {
  EXPECT_EQ(set("   ", 0, "value", 0), refused(EINVAL));
  EXPECT_EQ(set("", 0, "value", 0), refused(EINVAL));
  EXPECT_EQ(set("A=B", 0, "value", 0), refused(EINVAL));
  EXPECT_EQ(entries(), std::vector<std::string>{});
}

TEST_F(Setenv, LongNameAndValue) {
  const std::string name(100000, 'N'), value(100000, 'v');
  EXPECT_EQ(made(name, 0, value, 0), name + "=" + value);
  EXPECT_EQ(made(name, 100000, value, 100000), name + "=" + value);
}

class Clearenv : public Variables {
protected:
  // errno is not of the contract: an entry that the host rejects may leave its error there.
  static void expect_cleared() {
    Guarded<int32_t> ierror(SENTINEL);
    reset_error_state();
    pxfclearenv_(&ierror);
    EXPECT_EQ(ierror, 0);
    EXPECT_EQ(portlib_local_errno, SENTINEL);
    EXPECT_EQ(recorded_statuses.size(), 0u);
    EXPECT_TRUE(environ == nullptr || *environ == nullptr) << *environ;
  }
};

TEST_F(Clearenv, LeavesAnEmptyEnvironmentAnd0) {
  const Environment environment({"A=1", "BB=2", "HOME=/root"});
  EXPECT_EQ(clear(), succeeded());
  EXPECT_EQ(*environ, nullptr);
  EXPECT_EQ(getenv("HOME"), nullptr);
}

TEST_F(Clearenv, EntriesOfAnyForm) {
  const Environment environment(
      {"=x", "A=1", "no equals sign", "=", "", "=y=z", "A=1", "A=2", "A", "B=", "last"});
  expect_cleared();
}

TEST_F(Clearenv, EachFormAlone) {
  for (const char *entry : {"=x", "=", "", "no equals sign", "A=", "A=B=C", " A=1"}) {
    const Environment environment({entry});
    expect_cleared();
    const Environment twice({entry, entry});
    expect_cleared();
  }
}

TEST_F(Clearenv, SameEntryManyTimes) {
  const Environment environment(std::vector<std::string>(1000, "=x"));
  expect_cleared();
  const Environment others(std::vector<std::string>(1000, "A=x"));
  expect_cleared();
}

TEST_F(Clearenv, TenThousandEntries) {
  std::vector<std::string> entries;
  for (int i = 0; i < 10000; ++i)
    entries.push_back("NAME" + std::to_string(i) + "=value");
  const Environment environment(entries);
  expect_cleared();
}

TEST_F(Clearenv, NamesOfEveryLengthAroundTheScratchBuffers) {
  std::vector<std::string> entries;
  for (const size_t length : {1u, 99u, 100u, 101u, 102u, 100u, 300u, 299u, 100000u, 5u, 100001u})
    entries.push_back(std::string(length, 'N') + "=value");
  entries.push_back(std::string(100002, 'W'));
  const Environment environment(entries);
  expect_cleared();
}

TEST_F(Clearenv, NoEnvironmentIsEmpty) {
  const NoEnvironment none;
  EXPECT_EQ(clear(), succeeded());
}

TEST_F(Clearenv, VariablesMayBeSetAgain) {
  const ChildReport child = run_in_child([] {
    int32_t ierror;
    pxfclearenv_(&ierror);
    setenv("AGAIN", "value", 1);
    pxfclearenv_(&ierror);
    setenv("AGAIN", "value", 1);
    execl("/usr/bin/env", "env", nullptr);
  });
  EXPECT_EQ(child.out, "AGAIN=value\n") << child.err;
}

}  // namespace
