// File names of the binding: a text with its length beside it.
#include "posix/file_name.h"

#include "fenced_text.h"
#include "recorder.h"

#include <climits>
#include <string>

namespace {

using qxport::CString;
using qxport::file_name;

std::string name(const std::string &text, int32_t ilen) {
  const CString converted = file_name(text.data(), ilen, static_cast<qxport::charlen>(text.size()));
  return converted ? converted.get() : "(none)";
}

}  // namespace

TEST(FileName, LengthZeroDropsTrailingWhiteSpace) {
  EXPECT_EQ(name("abc\t ", 0), "abc");
  EXPECT_EQ(name("abc \t\n\v\f\r ", 0), "abc");
  EXPECT_EQ(name(" a b ", 0), " a b");
}

TEST(FileName, LengthZeroOfAllBlanksIsOneBlank) {
  EXPECT_EQ(name("   ", 0), " ");
}

TEST(FileName, LengthZeroOfAllWhiteSpaceIsItsFirstCharacter) {
  EXPECT_EQ(name("\t  ", 0), "\t");
  EXPECT_EQ(name("\n", 0), "\n");
}

TEST(FileName, LengthZeroKeepsWhatIsNoWhiteSpace) {
  for (const char other : {'\b', '\x0e', '\x1f', '\x85', '\xa0'}) {
    const std::string text = std::string("a") + other;
    EXPECT_EQ(name(text + "  ", 0), text) << int{other};
  }
}

TEST(FileName, LengthZeroOfNoCharactersIsEmpty) {
  EXPECT_EQ(name("", 0), "");
  const CString negative = file_name("abc", 0, -1);
  EXPECT_STREQ(negative.get(), "");
}

TEST(FileName, OtherLengthIsExact) {
  EXPECT_EQ(name("abc  ", 5), "abc  ");
  EXPECT_EQ(name("abc  ", 4), "abc ");
  EXPECT_EQ(name("abcdef", 2), "ab");
  EXPECT_EQ(name("   ", 3), "   ");
}

TEST(FileName, LengthPassesTheHiddenOne) {
  const CString converted = file_name("abcdef", 6, 3);
  EXPECT_STREQ(converted.get(), "abcdef");
}

TEST(FileName, NulEndsTheName) {
  EXPECT_EQ(name(std::string("a\0b", 3), 3), "a");
  EXPECT_EQ(name(std::string("a\0b ", 4), 0), "a");
}

TEST(FileName, NegativeLengthIsEinval) {
  for (const int32_t ilen : {-1, INT32_MIN}) {
    reset_error_state();
    EXPECT_EQ(name("abc", ilen), "(none)");
    EXPECT_EQ(error_state(), (ErrorState{EINVAL, SENTINEL, {}})) << ilen;
  }
}

// The system refuses every such name, so what is cut off does not matter.
TEST(FileName, LongestNameIsCutWhereTheSystemRefusesIt) {
  EXPECT_EQ(name(std::string(PATH_MAX - 1, 'x'), 0), std::string(PATH_MAX - 1, 'x'));
  EXPECT_EQ(name(std::string(100000, 'x'), 0), std::string(PATH_MAX, 'x'));
  EXPECT_EQ(name(std::string(100000, 'x'), INT32_MAX), std::string(PATH_MAX, 'x'));
}

TEST(FileName, ReadsNothingOutsideTheText) {
  for (const std::string text : {"abc", "ab  ", "    "}) {
    const FencedText ended(text);
    const FencedText begun(text, FencedText::Fence::Before);
    for (const int32_t ilen : {0, static_cast<int32_t>(text.size())}) {
      const CString from_ended = file_name(ended.data(), ilen, ended.length());
      const CString from_begun = file_name(begun.data(), ilen, begun.length());
      EXPECT_EQ(from_ended.get(), name(text, ilen));
      EXPECT_EQ(from_begun.get(), name(text, ilen));
    }
  }
}

TEST(FileName, SuccessTouchesNoErrorState) {
  reset_error_state();
  name("abc  ", 0);
  name("abc  ", 4);
  EXPECT_EQ(error_state(), untouched());
}

#if UINTPTR_MAX > UINT32_MAX
TEST(FileName, LowHalfOfTheHiddenLengthCounts) {
  const CString converted = file_name("abc  ", 0, (qxport::charlen{1} << 32) + 5);
  EXPECT_STREQ(converted.get(), "abc");
  const CString negative = file_name("abc", 0, (qxport::charlen{1} << 32) - 1);
  EXPECT_STREQ(negative.get(), "");
}
#endif

// Blanks are dropped eight at a time: a tab before exactly seven of them goes too, and nothing else does.
TEST(FileName, LengthZeroDropsWhiteSpaceBeforeAnyNumberOfBlanks) {
  for (size_t blanks = 0; blanks < 20; ++blanks) {
    EXPECT_EQ(name("abc\t" + std::string(blanks, ' '), 0), "abc") << blanks;
    EXPECT_EQ(name("abc \t" + std::string(blanks, ' '), 0), "abc") << blanks;
    EXPECT_EQ(name("\t" + std::string(blanks, ' '), 0), "\t") << blanks;
    EXPECT_EQ(name("abc!" + std::string(blanks, ' '), 0), "abc!") << blanks;
  }
}
