// Wildcards, against a matcher that takes every step by recursion.
#include "compat/pattern.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace {

bool recursive_match(const char *name, const char *pattern);

// Behind a star: each further wildcard takes one character, then every place of the next character is tried.
bool recursive_match_behind_star(const char *name, const char *pattern) {
  if (*pattern == '*' || *pattern == '?')
    return *name != '\0' && recursive_match_behind_star(name + 1, pattern + 1);
  if (*pattern == '\0')
    return true;
  for (; *name != '\0'; ++name)
    if (*name == *pattern && recursive_match(name, pattern))
      return true;
  return false;
}

bool recursive_match(const char *name, const char *pattern) {
  if (*pattern == '\0')
    return *name == '\0';
  if (*pattern == '*')
    return recursive_match_behind_star(name, pattern + 1);
  if (*name == '\0' || (*pattern != '?' && *pattern != *name))
    return false;
  return recursive_match(name + 1, pattern + 1);
}

bool matches(const std::string &name, const std::string &pattern) {
  const int answer = patternMatch(name.c_str(), pattern.c_str());
  EXPECT_TRUE(answer == 0 || answer == 1) << answer;
  return answer == 0;
}

// All texts of at most `length` characters of an alphabet.
std::vector<std::string> all_texts(const std::string &alphabet, size_t length) {
  std::vector<std::string> texts = {""};
  size_t begin = 0;
  for (size_t n = 1; n <= length; ++n) {
    const size_t end = texts.size();
    for (; begin < end; ++begin)
      for (const char c : alphabet)
        texts.push_back(texts[begin] + c);
  }
  return texts;
}

std::string random_text(std::mt19937 &random, const std::string &alphabet, size_t longest) {
  std::string text(random() % (longest + 1), ' ');
  for (char &c : text)
    c = alphabet[random() % alphabet.size()];
  return text;
}

std::string repeated(const std::string &text, size_t count) {
  std::string result;
  while (count-- > 0)
    result += text;
  return result;
}

}  // namespace

TEST(PatternMatch, AnswersZeroForAMatchAndOneOtherwise) {
  EXPECT_EQ(patternMatch("ab", "a?"), 0);
  EXPECT_EQ(patternMatch("ab", "b?"), 1);
}

TEST(PatternMatch, AgreesWithTheRecursionOnEveryShortNameAndPattern) {
  const std::vector<std::string> names = all_texts("ab", 6);
  size_t matched = 0;
  for (const std::string &pattern : all_texts("ab?*", 5))
    for (const std::string &name : names) {
      const bool expected = recursive_match(name.c_str(), pattern.c_str());
      matched += expected;
      ASSERT_EQ(matches(name, pattern), expected) << "\"" << name << "\" against \"" << pattern << "\"";
    }
  EXPECT_GT(matched, 10000u);
}

TEST(PatternMatch, AgreesWithTheRecursionOnRandomNamesAndPatterns) {
  std::mt19937 random(20240229);
  size_t matched = 0;
  for (int i = 0; i < 100000; ++i) {
    const std::string name = random_text(random, "aab.", 14);
    const std::string pattern = random_text(random, "ab.?**", 9);
    const bool expected = recursive_match(name.c_str(), pattern.c_str());
    matched += expected;
    ASSERT_EQ(matches(name, pattern), expected) << "\"" << name << "\" against \"" << pattern << "\"";
  }
  EXPECT_GT(matched, 5000u);
}

TEST(PatternMatch, PlainTextMatchesItselfOnly) {
  EXPECT_TRUE(matches("main.f90", "main.f90"));
  EXPECT_FALSE(matches("main.f90", "main.f9"));
  EXPECT_FALSE(matches("main.f9", "main.f90"));
  EXPECT_FALSE(matches("main.f90", "ain.f90"));
}

TEST(PatternMatch, CaseCounts) {
  EXPECT_FALSE(matches("Main.f90", "main.f90"));
  EXPECT_FALSE(matches("main.F90", "*.f90"));
}

TEST(PatternMatch, QuestionMarkIsExactlyOneCharacter) {
  EXPECT_TRUE(matches("ab", "a?"));
  EXPECT_FALSE(matches("a", "a?"));
  EXPECT_FALSE(matches("abc", "a?"));
  EXPECT_FALSE(matches("", "?"));
}

TEST(PatternMatch, StarIsAnyNumberOfCharacters) {
  EXPECT_TRUE(matches("a", "a*"));
  EXPECT_TRUE(matches("abc", "a*"));
  EXPECT_TRUE(matches("abc", "*c"));
  EXPECT_TRUE(matches("abc", "a*c"));
  EXPECT_TRUE(matches("ac", "a*c"));
  EXPECT_FALSE(matches("abcd", "a*c"));
  EXPECT_TRUE(matches("", "*"));
}

TEST(PatternMatch, RepeatedStarAsksForOneMoreCharacter) {
  for (const char *pattern : {"a**", "a*?"}) {
    EXPECT_FALSE(matches("a", pattern)) << pattern;
    EXPECT_TRUE(matches("ab", pattern)) << pattern;
    EXPECT_TRUE(matches("abc", pattern)) << pattern;
  }
}

TEST(PatternMatch, EachWildcardBehindAStarTakesOneCharacter) {
  for (const char *pattern : {"****", "*???", "*?*?", "**?*"}) {
    EXPECT_FALSE(matches("ab", pattern)) << pattern;
    EXPECT_TRUE(matches("abc", pattern)) << pattern;
    EXPECT_TRUE(matches("abcd", pattern)) << pattern;
  }
  EXPECT_FALSE(matches("ab", "a**b"));
  EXPECT_TRUE(matches("axb", "a**b"));
}

// Not so before a star: "?*" asks for one character, as everywhere.
TEST(PatternMatch, QuestionMarkBeforeAStarTakesOneCharacter) {
  EXPECT_TRUE(matches("a", "?*"));
  EXPECT_FALSE(matches("", "?*"));
}

TEST(PatternMatch, DotIsAnOrdinaryCharacter) {
  EXPECT_TRUE(matches(".f90", "*.f90"));
  EXPECT_TRUE(matches(".", "*"));
  EXPECT_TRUE(matches("..", "*"));
  EXPECT_TRUE(matches("..", "??"));
  EXPECT_FALSE(matches("Makefile", "*.*"));
  EXPECT_FALSE(matches("axb", "a.b"));
}

TEST(PatternMatch, NothingEscapesAndBracketsAreOrdinary) {
  EXPECT_FALSE(matches("a*", "a\\*"));
  EXPECT_TRUE(matches("a\\bc", "a\\*"));
  EXPECT_FALSE(matches("a", "[a]"));
  EXPECT_TRUE(matches("[a]", "[a]"));
}

TEST(PatternMatch, EmptyPatternMatchesTheEmptyNameOnly) {
  EXPECT_TRUE(matches("", ""));
  EXPECT_FALSE(matches("a", ""));
}

TEST(PatternMatch, BytesAreComparedAsTheyAre) {
  EXPECT_TRUE(matches("\xff\xfe", "\xff?"));
  EXPECT_FALSE(matches("\xc3\xa4", "?"));
  EXPECT_TRUE(matches("\xc3\xa4", "??"));
}

TEST(PatternMatch, LaterPlaceIsTriedWhereTheFirstFails) {
  EXPECT_TRUE(matches("aab", "*ab"));
  EXPECT_TRUE(matches("abcabd", "*ab?*d"));
  EXPECT_TRUE(matches("mississippi", "m*iss*ip*i"));
  EXPECT_FALSE(matches("mississippi", "m*iss*iss*iss*"));
}

TEST(PatternMatch, FourStarsAgainstALongName) {
  EXPECT_FALSE(matches(std::string(255, 'a'), "*a*a*a*a*b"));
  EXPECT_TRUE(matches(std::string(254, 'a') + "b", "*a*a*a*a*b"));
}

// Trying every place for every star would take 10^30 steps and more here; the test's time limit tells.
TEST(PatternMatch, WorkIsBoundedWhateverThePattern) {
  const std::string name(255, 'a');
  EXPECT_FALSE(matches(name, repeated("*a", 20) + "*b"));
  EXPECT_FALSE(matches(name, repeated("*a", 126) + "*b"));
  EXPECT_FALSE(matches(name, repeated("*aa?", 30) + "*b"));
  EXPECT_FALSE(matches(name, repeated("**a", 60) + "*b"));
  EXPECT_TRUE(matches(name + "b", repeated("*a", 126) + "*b"));
  EXPECT_TRUE(matches(name, repeated("*a", 255)));
  EXPECT_FALSE(matches(name, repeated("*a", 256)));
}

TEST(PatternMatch, LongNamesAndPatterns) {
  const std::string name(100000, 'a');
  EXPECT_TRUE(matches(name, "*a"));
  EXPECT_TRUE(matches(name, repeated("?", name.size())));
  EXPECT_FALSE(matches(name, repeated("?", name.size() + 1)));
  EXPECT_TRUE(matches(name, repeated("*", name.size() + 1)));
  EXPECT_FALSE(matches(name, repeated("*", name.size() + 2)));
}
