// GETENVQQ and SETENVQQ, and the one environment that all routines see.
#include "environment.h"
#include "outcome.h"

#include <cstdlib>

namespace {

Outcome set(const std::string &text) {
  return outcome_of([&] { return setenvqq_(text.data(), static_cast<qxport_charlen>(text.size())); });
}
Outcome yes() {
  return {1, untouched()};
}

struct Value {
  Outcome outcome;
  std::string text;
  bool operator==(const Value &) const = default;
};
std::ostream &operator<<(std::ostream &out, const Value &value) {
  return out << value.outcome << " \"" << value.text << '"';
}

Value get(const std::string &name, size_t size = 20) {
  Character value(size);
  const Outcome outcome = outcome_of([&] {
    return getenvqq_(name.data(), value.data(), static_cast<qxport_charlen>(name.size()), value.length());
  });
  return {outcome, value.text()};
}
Value found(const std::string &text, size_t size = 20) {
  return {{static_cast<int32_t>(text.size()), untouched()}, padded(text, size)};
}

std::vector<std::string> entries() {
  std::vector<std::string> all;
  for (char **entry = environ; *entry != nullptr; ++entry)
    all.push_back(*entry);
  return all;
}

TEST(CompatEnvironment, ValueIsStoredWithBlanks) {
  const Environment environment({"FULL=value", "EMPTY=", "BLANKS= a ", "FULLER=other", "odd", "=x", "A=B=C"});
  EXPECT_EQ(get("FULL"), found("value"));
  EXPECT_EQ(get("FULL    "), found("value"));
  EXPECT_EQ(get("FULLER"), found("other"));
  EXPECT_EQ(get("BLANKS"), found(" a "));
  EXPECT_EQ(get("A"), found("B=C"));
  EXPECT_EQ(get("A=B"), found("C"));
  for (const char *none : {"EMPTY", "NONE", "FUL", "full", " FULL", "odd", "  "})
    EXPECT_EQ(get(none), found("")) << none;
}

TEST(CompatEnvironment, ValueThatDoesNotFitIsCut) {
  const Environment environment({"NAME=value"});
  const ErrorState cut = {EINVAL, SENTINEL, {EINVAL}};
  EXPECT_EQ(get("NAME", 5), found("value", 5));
  EXPECT_EQ(get("NAME", 4), (Value{{4, cut}, "valu"}));
  EXPECT_EQ(get("NAME", 0), (Value{{0, cut}, ""}));
  EXPECT_EQ(get("NONE", 0), found("", 0));
}

TEST(CompatEnvironment, WithoutAnEnvironment) {
  const NoEnvironment none;
  EXPECT_EQ(get("NAME"), found(""));
}

TEST(CompatEnvironment, NullNameLeavesTheValueAlone) {
  Character value(5);
  EXPECT_EQ(outcome_of([&] { return getenvqq_(nullptr, value.data(), 4, value.length()); }),
            (Outcome{0, {EINVAL, SENTINEL, {EINVAL}}}));
  EXPECT_EQ(value.text(), "#####");
  EXPECT_EQ(outcome_of([] { return setenvqq_(nullptr, 4); }), (Outcome{0, {EINVAL, SENTINEL, {EINVAL}}}));
}

TEST(CompatEnvironment, SettingAndSettingAgain) {
  const Environment environment({"OTHER=kept", "NAME=first"});
  EXPECT_EQ(set("NAME=second   "), yes());
  EXPECT_EQ(get("NAME"), found("second"));
  EXPECT_EQ(set("NAME="), yes());
  EXPECT_STREQ(getenv("NAME"), "");
  EXPECT_EQ(set("NEW= b c"), yes());
  EXPECT_STREQ(getenv("NEW"), " b c");
  EXPECT_EQ(set(" NAME=blank"), yes());
  EXPECT_STREQ(getenv(" NAME"), "blank");
  EXPECT_STREQ(getenv("NAME"), "");
  EXPECT_STREQ(getenv("OTHER"), "kept");
  const std::string large(100'000, 'v');
  EXPECT_EQ(set("LARGE=" + large), yes());
  EXPECT_EQ(getenv("LARGE"), large);
}

TEST(CompatEnvironment, WhatCannotBeSet) {
  const Environment environment({"PATH=kept"});
  for (const char *text : {"PATH", "", "    ", "A B"})
    EXPECT_EQ(set(text), (Outcome{0, {EINVAL, SENTINEL, {EINVAL}}})) << text;
  for (const char *text : {"=value", "=", "=   "})
    EXPECT_EQ(set(text), (Outcome{0, {EINVAL, SENTINEL, {}}})) << text;
  EXPECT_EQ(entries(), std::vector<std::string>{"PATH=kept"});
}

// The last "=" ends the name.
TEST(CompatEnvironment, NamesWithEqualSigns) {
  const Environment environment({"A=1", "Z=2"});
  EXPECT_EQ(set("A=B=C"), yes());
  EXPECT_EQ(get("A=B"), found("C"));
  EXPECT_EQ(get("A"), found("1")) << "another variable";
  EXPECT_EQ(set("A=B=D"), yes());
  EXPECT_EQ(get("A=B"), found("D"));
  EXPECT_EQ(set("A=B=D"), yes()) << "as it is";
  EXPECT_EQ(set("A=B="), yes());
  EXPECT_STREQ(getenv("A=B"), "");
  EXPECT_EQ(set("A=B=C=D=E"), yes());
  EXPECT_EQ(get("A=B=C=D"), found("E"));
  EXPECT_EQ(set("=x=y"), yes());
  EXPECT_EQ(get("=x"), found("y"));
  EXPECT_EQ(set("==z"), yes());
  EXPECT_EQ(get("="), found("z"));
  EXPECT_EQ(entries(), (std::vector<std::string>{"A=1", "Z=2", "A=B=", "A=B=C=D=E", "=x=y", "==z"}));
}

// The host adds and takes away entries of the list that we made, and we of its own.
TEST(CompatEnvironment, HostGoesOnWithTheList) {
  const Environment environment({"A=1"});
  for (int i = 0; i < 50; ++i) {
    const std::string number = std::to_string(i);
    EXPECT_EQ(set("N=" + number + "=ours"), yes());
    EXPECT_EQ(setenv(("H" + number).c_str(), "theirs", 1), 0);
  }
  EXPECT_EQ(entries().size(), 101u);
  for (int i = 0; i < 50; ++i) {
    EXPECT_EQ(get("N=" + std::to_string(i)), found("ours"));
    EXPECT_EQ(get("H" + std::to_string(i)), found("theirs"));
  }
  EXPECT_EQ(unsetenv("N"), 0);
  EXPECT_EQ(entries().size(), 51u);
  EXPECT_EQ(set("N=1=again"), yes());
  EXPECT_EQ(get("N=1"), found("again"));
}

TEST(CompatEnvironment, FirstEntryOfAll) {
  const NoEnvironment none;
  EXPECT_EQ(set("A=B=C"), yes());
  EXPECT_EQ(get("A=B"), found("C"));
  EXPECT_EQ(set("X=Y"), yes());
  EXPECT_EQ(get("X"), found("Y"));
}

// Fortran's three families and C see what each of them sets.
TEST(CompatEnvironment, IsOne) {
  const Environment environment({"A=1"});
  const auto through_getenv = [](const char *name) {
    Character value(10);
    getenv_(name, value.data(), static_cast<qxport_charlen>(strlen(name)), value.length());
    return value.text();
  };
  const auto through_pxfgetenv = [](const char *name) {
    Character value(10);
    const int32_t name_length = 0;
    int32_t length, ierror;
    pxfgetenv_(name, &name_length, value.data(), &length, &ierror, static_cast<qxport_charlen>(strlen(name)),
               value.length());
    return value.text();
  };
  const auto expect_seen = [&](const char *name, const std::string &text) {
    EXPECT_EQ(get(name, 10), found(text, 10));
    EXPECT_EQ(through_getenv(name), padded(text, 10));
    EXPECT_EQ(through_pxfgetenv(name), padded(text, 10));
    EXPECT_EQ(getenv(name), text);
  };
  expect_seen("A", "1");
  EXPECT_EQ(set("B=2"), yes());
  expect_seen("B", "2");
  setenv("C", "3", 1);
  expect_seen("C", "3");
  const int32_t one = 1;
  int32_t ierror;
  pxfsetenv_("D", &one, "4", &one, &one, &ierror, 1, 1);
  EXPECT_EQ(ierror, 0);
  expect_seen("D", "4");
  EXPECT_EQ(set("A=5"), yes());
  expect_seen("A", "5");
  pxfclearenv_(&ierror);
  EXPECT_EQ(get("A"), found(""));
  EXPECT_EQ(set("E=F=6"), yes());
  expect_seen("E=F", "6");
  pxfclearenv_(&ierror);
  EXPECT_EQ(get("E=F"), found(""));
}

}  // namespace
