// The library's identity, and the way to the run-time's.
#include "contract/services.h"

#include "recorder.h"

#include <regex>
#include <string>

namespace {

// What the tests' own run-time was asked.
struct {
  char *string;
  intptr_t length;
  int calls;
} asked;

const std::string MARKER = "@(#)";

std::string identity() {
  return std::string(for__portlib_version_string).substr(MARKER.size());
}

std::string version_text(size_t length) {
  Character text(length);
  EXPECT_EQ(for_qxport_version_(text.data(), text.length()), 2);
  return text.text();
}

}  // namespace

// Takes the provider's place.
int32_t for_qxcore_version(char *string, intptr_t length) {
  asked = {string, length, asked.calls + 1};
  return 77;
}

TEST(VersionString, MarkerTitleVersionAndDate) {
  const std::regex form("@\\(#\\)Zelta Fortran portability library\tV[0-9]+\\.[0-9]+-[0-9]{3}\t"
                        "(Jan|Feb|Mar|Apr|May|Jun|Jul|Aug|Sep|Oct|Nov|Dec) ([ 12][0-9]|3[01]) [0-9]{4}");
  EXPECT_TRUE(std::regex_match(for__portlib_version_string, form)) << for__portlib_version_string;
}

TEST(VersionString, ThisVersion) {
  EXPECT_NE(identity().find("\tV1.0-001\t"), std::string::npos);
}

TEST(ForQxportVersion, FiveCharactersAreTheTitlesFirst) {
  EXPECT_EQ(version_text(5), "Zelta");
}

TEST(ForQxportVersion, HundredCharactersAreTheWholeTextAndBlanks) {
  EXPECT_EQ(version_text(100), padded(identity(), 100));
}

TEST(ForQxportVersion, EveryLength) {
  const std::string text = identity();
  for (size_t length = 0; length <= text.size() + 2; ++length)
    EXPECT_EQ(version_text(length), padded(text.substr(0, length), length));
}

TEST(ForQxportVersion, HundredThousandCharacters) {
  EXPECT_EQ(version_text(100000), padded(identity(), 100000));
}

TEST(ForQxportVersion, NegativeLengthWritesNothing) {
  Character text(8);
  EXPECT_EQ(for_qxport_version_(text.data(), -8), 2);
  EXPECT_EQ(text.text(), "########");
}

TEST(ForQxportVersion, ErrorStateStays) {
  reset_error_state();
  version_text(5);
  version_text(100);
  EXPECT_EQ(error_state(), untouched());
}

TEST(ForQxportVersion, ModuleNameIsTheSameRoutine) {
  Character text(5);
  EXPECT_EQ(qxport_for_qxport_version_(text.data(), text.length()), 2);
  EXPECT_EQ(text.text(), "Zelta");
}

class ForQxcoreVersion : public testing::TestWithParam<int32_t (*)(char *, qxport_charlen)> {};

INSTANTIATE_TEST_SUITE_P(Routines, ForQxcoreVersion,
                         testing::Values(&for_qxcore_version_, &qxport_for_qxcore_version_));

TEST_P(ForQxcoreVersion, HandsItsArgumentsOnAndTheAnswerBack) {
  for (const intptr_t length : {intptr_t{20}, intptr_t{0}, intptr_t{-3}, intptr_t{INTPTR_MAX}}) {
    Character text(20);
    asked = {};
    reset_error_state();
    EXPECT_EQ(GetParam()(text.data(), length), 77);
    EXPECT_EQ(asked.calls, 1);
    EXPECT_EQ(asked.string, text.data());
    EXPECT_EQ(asked.length, length);
    EXPECT_EQ(text.text(), std::string(20, '#')) << "written by another than the run-time";
    EXPECT_EQ(error_state(), untouched());
  }
}

TEST_P(ForQxcoreVersion, NullAddressIsHandedOn) {
  asked = {nullptr, -1, 0};
  EXPECT_EQ(GetParam()(nullptr, 5), 77);
  EXPECT_EQ(asked.calls, 1);
  EXPECT_EQ(asked.string, nullptr);
  EXPECT_EQ(asked.length, 5);
}
