// SCANENV: one match a call.
#include "environment.h"
#include "outcome.h"

namespace {

struct Variable {
  std::string name, value;
  bool operator==(const Variable &) const = default;
};

std::ostream &operator<<(std::ostream &out, const Variable &variable) {
  return out << "'" << variable.name << "' = '" << variable.value << "'";
}

Variable scan(const std::string &text, size_t name_length = 8, size_t value_length = 8) {
  Character argument(text);
  Character name(name_length);
  Character value(value_length);
  EXPECT_EQ(state_after([&] {
              scanenv_(argument.data(), name.data(), value.data(), argument.length(), name.length(),
                       value.length());
            }),
            untouched());
  EXPECT_EQ(argument.text(), text);
  return {name.text(), value.text()};
}

// As the results hold them.
Variable variable(const std::string &name, const std::string &value) {
  return {padded(name, 8), padded(value, 8)};
}

Variable none() {
  return variable("", "");
}

// First of all tests, so that it sees the zeroed state of a process's first call also where all run in one
// process.
TEST(ScanenvFirstCall, StartsAtTheTop) {
  const Environment environment({"FIRST=1", "FIRST2=2"});
  EXPECT_EQ(scan("FIRST"), variable("FIRST", "1"));
  EXPECT_EQ(scan("FIRST"), variable("FIRST2", "2"));
}

class Scanenv : public testing::Test {
protected:
  // No variable begins so, and every other template is a change.
  Scanenv() { scan("="); }
};

TEST_F(Scanenv, PathReturnsEachVariableThatBeginsSoThenBlanks) {
  const Environment environment(
      {"A=1", "PATH=/bin", "HOME=/root", "PATHEXT=.exe", "XPATH=no", "path=no", "PAT=no"});
  EXPECT_EQ(scan("PATH"), variable("PATH", "/bin"));
  EXPECT_EQ(scan("PATH"), variable("PATHEXT", ".exe"));
  EXPECT_EQ(scan("PATH"), none());
  EXPECT_EQ(scan("PATH"), none());
}

TEST_F(Scanenv, FirstAndLastEntriesAreFound) {
  const Environment environment({"A1=1", "B=2", "A2=3"});
  EXPECT_EQ(scan("A"), variable("A1", "1"));
  EXPECT_EQ(scan("A"), variable("A2", "3"));
  EXPECT_EQ(scan("A"), none());
}

TEST_F(Scanenv, ChangedTemplateRestarts) {
  const Environment environment({"A1=1", "B1=2", "A2=3", "B2=4"});
  EXPECT_EQ(scan("A"), variable("A1", "1"));
  EXPECT_EQ(scan("A"), variable("A2", "3"));
  EXPECT_EQ(scan("B"), variable("B1", "2"));
  EXPECT_EQ(scan("A"), variable("A1", "1"));
}

TEST_F(Scanenv, LongerTemplateRestarts) {
  const Environment environment({"PATHX=1", "PATH=2", "PATHX2=3"});
  EXPECT_EQ(scan("PATH"), variable("PATHX", "1"));
  EXPECT_EQ(scan("PATH"), variable("PATH", "2"));
  EXPECT_EQ(scan("PATHX"), variable("PATHX", "1"));
}

TEST_F(Scanenv, SavedTemplateHoldsNothingOfALongerFormerOne) {
  const Environment environment({"XYC1=1", "XYC2=2"});
  EXPECT_EQ(scan("ABCDE"), none());
  EXPECT_EQ(scan("XY"), variable("XYC1", "1"));
  // Saved is XY, without what is left of ABCDE.
  EXPECT_EQ(scan("XYC"), variable("XYC1", "1"));
}

TEST_F(Scanenv, TemplateWithoutAMatchRestartsTheNext) {
  const Environment environment({"A1=1", "A2=2"});
  EXPECT_EQ(scan("A"), variable("A1", "1"));
  EXPECT_EQ(scan("MISSING"), none());
  EXPECT_EQ(scan("A"), variable("A1", "1"));
}

TEST_F(Scanenv, LeadingPartOfTheSavedTemplateGoesOn) {
  const Environment environment({"PATH0=0", "PATHX=1", "PATH1=2", "PATHX2=3"});
  EXPECT_EQ(scan("PATHX"), variable("PATHX", "1"));
  EXPECT_EQ(scan("PATH"), variable("PATH1", "2"));
  EXPECT_EQ(scan("PATH"), variable("PATHX2", "3"));
  EXPECT_EQ(scan("PATH"), none());
}

TEST_F(Scanenv, LeadingPartLeavesTheSavedTemplate) {
  const Environment environment({"PATHX1=1", "PATHX2=2", "PATHX3=3"});
  EXPECT_EQ(scan("PATHX"), variable("PATHX1", "1"));
  EXPECT_EQ(scan("PATH"), variable("PATHX2", "2"));
  // Had PATH been saved, PATHX would be a change and begin again.
  EXPECT_EQ(scan("PATHX"), variable("PATHX3", "3"));
}

TEST_F(Scanenv, SavedTemplateRestartsBehindAMatchOfItsLeadingPart) {
  const Environment environment({"PATHX1=1", "PATHA=2", "PATHX2=3"});
  EXPECT_EQ(scan("PATHX"), variable("PATHX1", "1"));
  EXPECT_EQ(scan("PATH"), variable("PATHA", "2"));
  // PATHA, the previous match, does not begin with PATHX.
  EXPECT_EQ(scan("PATHX"), variable("PATHX1", "1"));
}

TEST_F(Scanenv, BlankNameFillsBothWithBlanksAndLeavesTheScan) {
  const Environment environment({"A1=1", "A2=2", "A3=3"});
  EXPECT_EQ(scan("A"), variable("A1", "1"));
  EXPECT_EQ(scan(""), none());
  EXPECT_EQ(scan("    "), none());
  EXPECT_EQ(scan(std::string(4, '\0')), none());
  EXPECT_EQ(scan(std::string("  \0 \0", 5)), none());
  EXPECT_EQ(scan("A"), variable("A2", "2"));
  EXPECT_EQ(scan(std::string(100000, ' ')), none());
  EXPECT_EQ(scan("A"), variable("A3", "3"));
}

TEST_F(Scanenv, BlanksAndTrailingNulsOfTheNameDoNotCount) {
  const Environment environment({"A1=1", "A2=2", "A3=3", "A4=4", "A5=5"});
  EXPECT_EQ(scan("A   "), variable("A1", "1"));
  EXPECT_EQ(scan("   A"), variable("A2", "2"));
  EXPECT_EQ(scan(std::string("A\0\0", 3)), variable("A3", "3"));
  EXPECT_EQ(scan(std::string("  A \0 \0  ", 9)), variable("A4", "4"));
  EXPECT_EQ(scan("A" + std::string(100000, ' ')), variable("A5", "5"));
}

TEST_F(Scanenv, InnerBlanksOfTheNameCount) {
  const Environment environment({"AB=1", "A B=2", "A\tB=3"});
  EXPECT_EQ(scan("A B"), variable("A B", "2"));
  EXPECT_EQ(scan("A B"), none());
  EXPECT_EQ(scan("A\t"), variable("A\tB", "3"));
}

TEST_F(Scanenv, LeadingNulIsPartOfTheName) {
  const Environment environment({"A=1"});
  EXPECT_EQ(scan(std::string("\0A", 2)), none());
  EXPECT_EQ(scan(std::string("A\0B", 3)), none());
}

TEST_F(Scanenv, NameNeedNotBeUtf8) {
  const Environment environment({"A=1", "\xff\xfe\x80=2"});
  EXPECT_EQ(scan("\xff\xfe"), variable("\xff\xfe\x80", "2"));
}

TEST_F(Scanenv, NoCharacterIsAWildcard) {
  const Environment environment({"AB=1", "A*=2", "A?=3", "A.=4"});
  EXPECT_EQ(scan("A*"), variable("A*", "2"));
  EXPECT_EQ(scan("A?"), variable("A?", "3"));
  EXPECT_EQ(scan("A."), variable("A.", "4"));
}

TEST_F(Scanenv, CaseCounts) {
  const Environment environment({"path=1", "Path=2", "PATH=3"});
  EXPECT_EQ(scan("PATH"), variable("PATH", "3"));
}

TEST_F(Scanenv, TemplateReachesNoFurtherThanTheName) {
  const Environment environment({"PA=TH", "P=PATH", "AB=ABC"});
  EXPECT_EQ(scan("PA=T"), none());
  EXPECT_EQ(scan("PA="), none());
  EXPECT_EQ(scan("ABC"), none());
  EXPECT_EQ(scan("="), none());
}

TEST_F(Scanenv, ValueBeginsBehindTheFirstEqualsSign) {
  const Environment environment({"A=b=c", "AE=", "A==", "A= v "});
  EXPECT_EQ(scan("A"), variable("A", "b=c"));
  EXPECT_EQ(scan("A"), variable("AE", ""));
  EXPECT_EQ(scan("A"), variable("A", "="));
  EXPECT_EQ(scan("A"), variable("A", " v"));
}

TEST_F(Scanenv, EntryWithoutAnEqualsSignIsAName) {
  // What stands behind an entry is none of its value.
  const Environment environment({std::string("PATH\0behind", 11), "", "PAT", "=PATH", "PATHX"});
  EXPECT_EQ(scan("PATH"), variable("PATH", ""));
  EXPECT_EQ(scan("PATH"), variable("PATHX", ""));
  EXPECT_EQ(scan("PATH"), none());
}

TEST_F(Scanenv, ResultsAreCutAtTheirLengths) {
  const Environment environment({"NAME1=value1", "NAME2=value2", "NAME3=value3", "NAME4=value4"});
  EXPECT_EQ(scan("NAME", 3, 4), (Variable{"NAM", "valu"}));
  EXPECT_EQ(scan("NAME", 5, 6), (Variable{"NAME2", "value2"}));
  EXPECT_EQ(scan("NAME", 6, 7), (Variable{"NAME3 ", "value3 "}));
  EXPECT_EQ(scan("NAME", 0, 0), (Variable{"", ""}));
  EXPECT_EQ(scan("NAME", 2, 3), (Variable{"  ", "   "}));
}

TEST_F(Scanenv, NegativeLengthsCountAsZero) {
  const Environment environment({"NAME=value"});
  Character name(4), value(4);
  EXPECT_EQ(state_after([&] { scanenv_("NAME", name.data(), value.data(), 4, -1, -1); }), untouched());
  EXPECT_EQ(name.text() + value.text(), "########");
  EXPECT_EQ(state_after([&] { scanenv_("NAME", name.data(), value.data(), -4, 4, 4); }), untouched());
  EXPECT_EQ(name.text() + value.text(), "        ");
}

TEST_F(Scanenv, RemovedMatchRestarts) {
  Environment environment({"A1=1", "A2=2", "A3=3"});
  EXPECT_EQ(scan("A"), variable("A1", "1"));
  EXPECT_EQ(scan("A"), variable("A2", "2"));
  environment.set({"A1=1", "B=2", "A3=3"});
  EXPECT_EQ(scan("A"), variable("A1", "1"));
  EXPECT_EQ(scan("A"), variable("A3", "3"));
}

TEST_F(Scanenv, EnvironmentThatBecameTooShortRestarts) {
  Environment environment({"B=0", "A1=1", "A2=2"});
  EXPECT_EQ(scan("A"), variable("A1", "1"));
  EXPECT_EQ(scan("A"), variable("A2", "2"));
  environment.set({"A1=1", "A2=2"});
  EXPECT_EQ(scan("A"), variable("A1", "1"));
  environment.set({});
  EXPECT_EQ(scan("A"), none());
  environment.set({"A1=1", "A2=2"});
  EXPECT_EQ(scan("A"), variable("A1", "1"));
}

TEST_F(Scanenv, AnotherMatchInTheSamePlaceGoesOn) {
  Environment environment({"A1=1", "A2=2", "A3=3"});
  EXPECT_EQ(scan("A"), variable("A1", "1"));
  environment.set({"ANEW=9", "A2=2"});
  EXPECT_EQ(scan("A"), variable("A2", "2"));
}

TEST_F(Scanenv, EntryAddedBehindTheEndIsFoundAfterTheBlanks) {
  Environment environment({"A1=1"});
  EXPECT_EQ(scan("A"), variable("A1", "1"));
  EXPECT_EQ(scan("A"), none());
  environment.set({"A1=1", "B=2", "A2=3"});
  EXPECT_EQ(scan("A"), variable("A2", "3"));
}

TEST_F(Scanenv, ScanAfterItsEndRestartsWhenTheLastMatchWent) {
  Environment environment({"A1=1", "A2=2"});
  EXPECT_EQ(scan("A"), variable("A1", "1"));
  EXPECT_EQ(scan("A"), variable("A2", "2"));
  EXPECT_EQ(scan("A"), none());
  environment.set({"A1=1"});
  EXPECT_EQ(scan("A"), variable("A1", "1"));
}

TEST_F(Scanenv, EnvironmentOfTheHostIsScanned) {
  ASSERT_EQ(setenv("QXPORT_SCAN_1", "first", 1), 0);
  EXPECT_EQ(scan("QXPORT_SCAN_", 16), (Variable{padded("QXPORT_SCAN_1", 16), padded("first", 8)}));
  ASSERT_EQ(setenv("QXPORT_SCAN_2", "second", 1), 0);
  EXPECT_EQ(scan("QXPORT_SCAN_", 16), (Variable{padded("QXPORT_SCAN_2", 16), padded("second", 8)}));
  ASSERT_EQ(unsetenv("QXPORT_SCAN_2"), 0);
  EXPECT_EQ(scan("QXPORT_SCAN_", 16), (Variable{padded("QXPORT_SCAN_1", 16), padded("first", 8)}));
}

TEST_F(Scanenv, NoEnvironmentHoldsNothing) {
  {
    const Environment environment({"A1=1", "A2=2"});
    EXPECT_EQ(scan("A"), variable("A1", "1"));
  }
  {
    const NoEnvironment no_environment;
    EXPECT_EQ(scan("A"), none());
    EXPECT_EQ(scan("B"), none());
  }
  const Environment environment({"A1=1", "A2=2"});
  EXPECT_EQ(scan("A"), variable("A1", "1"));
}

TEST_F(Scanenv, At8192CharactersTheTemplateEnds) {
  const std::string longest(8192, 'L');
  const Environment environment(
      {longest.substr(1) + "=short", longest + "=exact", longest + "M=longer", longest + "N=last"});
  EXPECT_EQ(scan(longest, 2), (Variable{"LL", padded("exact", 8)}));
  // Cut at 8192 characters these three are the template saved, so the scan goes on.
  EXPECT_EQ(scan(longest + "N", 2), (Variable{"LL", padded("longer", 8)}));
  EXPECT_EQ(scan(longest + std::string(100000, 'X'), 2), (Variable{"LL", padded("last", 8)}));
  EXPECT_EQ(scan("  " + longest + "N  ", 2), (Variable{"  ", padded("", 8)}));
}

TEST_F(Scanenv, TemplatesOf255And1023And8191CharactersAreWhole) {
  for (const size_t length : {255u, 1023u, 8191u}) {
    const std::string name(length, 'L');
    const Environment environment({name.substr(1) + "=short", name.substr(1) + "X=other", name + "=exact"});
    EXPECT_EQ(scan(name, 2), (Variable{"LL", padded("exact", 8)})) << length;
    EXPECT_EQ(scan(name, 2), (Variable{"  ", padded("", 8)})) << length;
    scan("=");
  }
}

TEST_F(Scanenv, LongNamesAndValuesAreReturnedWhole) {
  const std::string name(100000, 'N'), value(100000, 'v');
  const Environment environment({name + "=" + value});
  EXPECT_EQ(scan("N", 100001, 100001), (Variable{name + " ", value + " "}));
}

TEST_F(Scanenv, TenThousandEntriesComeOneByOne) {
  std::vector<std::string> entries;
  for (int i = 0; i < 10000; ++i)
    entries.push_back((i % 2 == 0 ? "EVEN" : "ODD") + std::to_string(i) + "=" + std::to_string(i));
  const Environment environment(entries);
  for (int i = 0; i < 10000; i += 2)
    ASSERT_EQ(scan("EVEN"), variable("EVEN" + std::to_string(i), std::to_string(i)));
  EXPECT_EQ(scan("EVEN"), none());
  EXPECT_EQ(scan("ODD9999"), variable("ODD9999", "9999"));
  EXPECT_EQ(scan("MISSING"), none());
}

}  // namespace
