// The crossings between CHARACTER data and NUL-terminated strings.
#include "frame/strings.h"

#include "fenced_text.h"
#include "recorder.h"

#include <cstring>
#include <malloc.h>
#include <memory>
#include <string>

namespace {

struct Deallocate {
  void operator()(char *string) const { deallocCstr(string); }
};
using OwnedString = std::unique_ptr<char, Deallocate>;

OwnedString allocated(const std::string &text) {
  return OwnedString(allocCstr(text.data(), static_cast<qxport::charlen>(text.size())));
}

class AllocCstr : public testing::Test {
protected:
  void SetUp() override { reset_error_state(); }
};

// What CstrToFstr made of a source: the variable, the result and the error state behind it.
struct Stored {
  std::string text;
  size_t result;
  ErrorState state;
};

Stored stored(const char *source, size_t length, qxport::charlen source_limit) {
  Character variable(length);
  reset_error_state();
  const size_t result = CstrToFstr(variable.data(), source, variable.length(), source_limit);
  return {variable.text(), result, error_state()};
}

Stored stored(const std::string &source, size_t length) {
  return stored(source.c_str(), length, static_cast<qxport::charlen>(source.size()));
}

const ErrorState INVALID = {EINVAL, SENTINEL, {EINVAL}};

}  // namespace

TEST_F(AllocCstr, TrailingBlanksGo) {
  EXPECT_STREQ(allocated("ab  ").get(), "ab");
}

TEST_F(AllocCstr, LeadingAndInnerBlanksStay) {
  EXPECT_STREQ(allocated("  a b ").get(), "  a b");
}

TEST_F(AllocCstr, TextWithoutTrailingBlanksIsWhole) {
  EXPECT_STREQ(allocated("abc").get(), "abc");
}

TEST_F(AllocCstr, AllBlanksAreAnEmptyString) {
  EXPECT_STREQ(allocated("    ").get(), "");
}

TEST_F(AllocCstr, TabStays) {
  EXPECT_STREQ(allocated("a\tb ").get(), "a\tb");
  EXPECT_STREQ(allocated("a\t").get(), "a\t");
}

TEST_F(AllocCstr, OnlyTheBlankIsTrimmed) {
  for (const char other : {'\t', '\n', '\v', '\f', '\r', '\xa0', '\x01'}) {
    const std::string text = std::string("a") + other;
    EXPECT_STREQ(allocated(text + "  ").get(), text.c_str()) << "character " << int{other};
  }
}

TEST_F(AllocCstr, BlanksBeforeATrailingTabStay) {
  EXPECT_STREQ(allocated("a  \t  ").get(), "a  \t");
}

TEST_F(AllocCstr, LengthZeroIsAnEmptyString) {
  const OwnedString string(allocCstr("ab", 0));
  EXPECT_STREQ(string.get(), "");
}

TEST_F(AllocCstr, NegativeLengthIsAnEmptyString) {
  for (const qxport::charlen length : {qxport::charlen{-1}, qxport::charlen{INTPTR_MIN}}) {
    const OwnedString string(allocCstr("ab", length));
    EXPECT_STREQ(string.get(), "") << length;
  }
  EXPECT_EQ(error_state(), untouched());
}

TEST_F(AllocCstr, EmbeddedNulIsCopiedAndEndsTheStringEarly) {
  const OwnedString string = allocated(std::string("a\0bc  ", 6));
  EXPECT_STREQ(string.get(), "a");
  EXPECT_EQ(memcmp(string.get(), "a\0bc", 5), 0);
}

TEST_F(AllocCstr, TrailingNulIsNoBlank) {
  const OwnedString string = allocated(std::string("ab \0 ", 5));
  EXPECT_EQ(memcmp(string.get(), "ab \0", 5), 0);
}

TEST_F(AllocCstr, BytesOfNoCharacterSetPass) {
  std::string text;
  for (int byte = 1; byte < 256; ++byte)
    text += static_cast<char>(byte);
  EXPECT_STREQ(allocated(text).get(), text.c_str());
}

TEST_F(AllocCstr, LengthCountsNotANul) {
  EXPECT_STREQ(OwnedString(allocCstr("abcdef", 3)).get(), "abc");
}

TEST_F(AllocCstr, HundredThousandCharacters) {
  const std::string text(100000, 'x');
  EXPECT_EQ(allocated(text).get(), text);
  EXPECT_EQ(allocated(text + std::string(100000, ' ')).get(), text);
  EXPECT_STREQ(allocated(std::string(100000, ' ')).get(), "");
}

TEST_F(AllocCstr, ReadsNothingOutsideTheText) {
  for (const std::string text : {"abc", "abc  ", "     "}) {
    const FencedText ended(text);
    const FencedText begun(text, FencedText::Fence::Before);
    const OwnedString from_ended(allocCstr(ended.data(), ended.length()));
    const OwnedString from_begun(allocCstr(begun.data(), begun.length()));
    EXPECT_STREQ(from_ended.get(), allocated(text).get());
    EXPECT_STREQ(from_begun.get(), allocated(text).get());
  }
}

TEST_F(AllocCstr, SourceStays) {
  Character text("ab  ");
  const OwnedString string(allocCstr(text.data(), text.length()));
  string.get()[0] = 'X';
  EXPECT_EQ(text.text(), "ab  ");
}

// A string of n characters comes in n + 23 bytes, its NUL among them.
TEST_F(AllocCstr, TwentyTwoCharactersFitBehindTheText) {
  for (size_t count = 0; count <= 64; ++count) {
    const OwnedString string = allocated(std::string(count, 'x') + "   ");
    EXPECT_GE(malloc_usable_size(string.get()), count + 23);
    strcat(string.get(), "0123456789012345678901");
    EXPECT_EQ(strlen(string.get()), count + 22);
  }
}

TEST_F(AllocCstr, EachCallGivesAnotherBuffer) {
  const OwnedString first = allocated("ab");
  const OwnedString second = allocated("ab");
  EXPECT_NE(first.get(), second.get());
}

TEST_F(AllocCstr, SuccessTouchesNoErrorState) {
  allocated("ab  ");
  allocated("");
  EXPECT_EQ(error_state(), untouched());
}

TEST_F(AllocCstr, NullAddressIsInvalid) {
  for (const qxport::charlen length : {qxport::charlen{4}, qxport::charlen{0}, qxport::charlen{-1}}) {
    reset_error_state();
    EXPECT_EQ(allocCstr(nullptr, length), nullptr) << length;
    EXPECT_EQ(error_state(), INVALID) << length;
  }
}

TEST(DeallocCstr, NullAddressIsIgnored) {
  reset_error_state();
  deallocCstr(nullptr);
  EXPECT_EQ(error_state(), untouched());
}

TEST(DeallocCstr, ErrorStateStays) {
  reset_error_state();
  deallocCstr(allocCstr("ab", 2));
  EXPECT_EQ(error_state(), untouched());
}

TEST(CString, HoldsTheConvertedText) {
  const qxport::CString string("ab  ", 4);
  EXPECT_TRUE(string);
  EXPECT_STREQ(string.get(), "ab");
}

TEST(CString, NullAddressIsFalse) {
  reset_error_state();
  const qxport::CString string(nullptr, 4);
  EXPECT_FALSE(string);
  EXPECT_EQ(string.get(), nullptr);
  EXPECT_EQ(error_state(), INVALID);
}

TEST(CString, KeptStringOutlivesItsOwner) {
  OwnedString kept;
  {
    qxport::CString string("ab", 2);
    kept.reset(string.get());
    string.keep();
    EXPECT_FALSE(string);
  }
  EXPECT_STREQ(kept.get(), "ab");
}

TEST(CstrToFstr, ShortSourceIsBlankPadded) {
  const Stored answer = stored("abc", 5);
  EXPECT_EQ(answer.text, "abc  ");
  EXPECT_EQ(answer.result, 3U);
  EXPECT_EQ(answer.state, untouched());
}

TEST(CstrToFstr, LongSourceIsCutWithEinval) {
  const Stored answer = stored("abcdef", 3);
  EXPECT_EQ(answer.text, "abc");
  EXPECT_EQ(answer.result, 3U);
  EXPECT_EQ(answer.state, INVALID);
}

TEST(CstrToFstr, OneCharacterTooManyIsCutWithEinval) {
  const Stored answer = stored("abcd", 3);
  EXPECT_EQ(answer.text, "abc");
  EXPECT_EQ(answer.result, 3U);
  EXPECT_EQ(answer.state, INVALID);
}

TEST(CstrToFstr, ExactFitIsNoError) {
  const Stored answer = stored("abc", 3);
  EXPECT_EQ(answer.text, "abc");
  EXPECT_EQ(answer.result, 3U);
  EXPECT_EQ(answer.state, untouched());
}

TEST(CstrToFstr, NullSourceIsAllBlank) {
  const Stored answer = stored(nullptr, 4, 4);
  EXPECT_EQ(answer.text, "    ");
  EXPECT_EQ(answer.result, 0U);
  EXPECT_EQ(answer.state, untouched());
}

TEST(CstrToFstr, EmptySourceIsAllBlank) {
  const Stored answer = stored("", 4, 1);
  EXPECT_EQ(answer.text, "    ");
  EXPECT_EQ(answer.result, 0U);
  EXPECT_EQ(answer.state, untouched());
}

TEST(CstrToFstr, LimitOfZeroOrLessIsAllBlank) {
  for (const qxport::charlen limit : {qxport::charlen{0}, qxport::charlen{-1}, qxport::charlen{INTPTR_MIN}}) {
    const Stored answer = stored("abcdef", 4, limit);
    EXPECT_EQ(answer.text, "    ") << limit;
    EXPECT_EQ(answer.result, 0U) << limit;
    EXPECT_EQ(answer.state, untouched()) << limit;
  }
}

TEST(CstrToFstr, LimitEndsTheCopyWithoutAnError) {
  const Stored answer = stored("abcdef", 5, 2);
  EXPECT_EQ(answer.text, "ab   ");
  EXPECT_EQ(answer.result, 2U);
  EXPECT_EQ(answer.state, untouched());
}

TEST(CstrToFstr, CharacterBehindTheLimitIsSeenWhereTheVariableIsFullToo) {
  const Stored cut = stored("abcdef", 3, 3);
  EXPECT_EQ(cut.text, "abc");
  EXPECT_EQ(cut.result, 3U);
  EXPECT_EQ(cut.state, INVALID);
  const Stored whole = stored("abc", 3, 3);
  EXPECT_EQ(whole.result, 3U);
  EXPECT_EQ(whole.state, untouched());
}

TEST(CstrToFstr, CharacterBehindTheLimitIsNotReadWhereRoomIsLeft) {
  const FencedText source("abc");
  const Stored answer = stored(source.data(), 5, source.length());
  EXPECT_EQ(answer.text, "abc  ");
  EXPECT_EQ(answer.result, 3U);
  EXPECT_EQ(answer.state, untouched());
}

TEST(CstrToFstr, LimitMayExceedTheString) {
  const FencedText source(std::string("abc\0", 4));
  const Stored answer = stored(source.data(), 5, 4096);
  EXPECT_EQ(answer.text, "abc  ");
  EXPECT_EQ(answer.result, 3U);
  EXPECT_EQ(answer.state, untouched());
}

TEST(CstrToFstr, NulEndsTheCopy) {
  const Stored answer = stored("ab\0cd", 4, 5);
  EXPECT_EQ(answer.text, "ab  ");
  EXPECT_EQ(answer.result, 2U);
  EXPECT_EQ(answer.state, untouched());
}

TEST(CstrToFstr, BlanksOfTheSourceCount) {
  const Stored answer = stored("a ", 4);
  EXPECT_EQ(answer.text, "a   ");
  EXPECT_EQ(answer.result, 2U);
}

TEST(CstrToFstr, VariableOfLengthZeroCutsEveryText) {
  const Stored cut = stored("abc", 0);
  EXPECT_EQ(cut.result, 0U);
  EXPECT_EQ(cut.state, INVALID);
}

TEST(CstrToFstr, VariableOfLengthZeroHoldsAnEmptyText) {
  EXPECT_EQ(stored("", 0, 1).state, untouched());
  EXPECT_EQ(stored("abc", 0, 0).state, untouched());
  EXPECT_EQ(stored(nullptr, 0, 3).state, untouched());
}

TEST(CstrToFstr, NegativeLengthWritesNothing) {
  Character variable(8);
  reset_error_state();
  EXPECT_EQ(CstrToFstr(variable.data(), "abc", -8, 3), 0U);
  EXPECT_EQ(variable.text(), "########");
}

TEST(CstrToFstr, NullDestinationIsInvalid) {
  for (const char *source : {"abc", static_cast<const char *>(nullptr)}) {
    reset_error_state();
    EXPECT_EQ(CstrToFstr(nullptr, source, 5, 3), 0U);
    EXPECT_EQ(error_state(), INVALID);
  }
  reset_error_state();
  EXPECT_EQ(CstrToFstr(nullptr, "abc", 0, 0), 0U);
  EXPECT_EQ(error_state(), INVALID);
}

TEST(CstrToFstr, HundredThousandCharacters) {
  const std::string text(100000, 'x');
  const Stored whole = stored(text, 100000);
  EXPECT_EQ(whole.text, text);
  EXPECT_EQ(whole.result, 100000U);
  EXPECT_EQ(whole.state, untouched());
  const Stored wide = stored(text, 100003);
  EXPECT_EQ(wide.text, text + "   ");
  EXPECT_EQ(wide.result, 100000U);
  const Stored cut = stored(text, 99999);
  EXPECT_EQ(cut.text, text.substr(1));
  EXPECT_EQ(cut.result, 99999U);
  EXPECT_EQ(cut.state, INVALID);
}

TEST(CstrToFstr, EverySizeAroundTheText) {
  const std::string text = "0123456789";
  for (size_t length = 0; length <= 20; ++length) {
    const Stored answer = stored(text, length);
    EXPECT_EQ(answer.text, padded(text.substr(0, length), length));
    EXPECT_EQ(answer.result, std::min(length, text.size()));
    EXPECT_EQ(answer.state, length < text.size() ? INVALID : untouched()) << length;
  }
}

#if UINTPTR_MAX > UINT32_MAX
TEST(CstrToFstr, LimitIsAWholeMachineWord) {
  const Stored answer = stored("abc", 5, qxport::charlen{1} << 32);
  EXPECT_EQ(answer.text, "abc  ");
  EXPECT_EQ(answer.result, 3U);
}
#endif

// Blanks are taken eight at a time, and what stands in front of them must not be taken with them.
TEST_F(AllocCstr, KeepsWhatStandsBeforeAnyNumberOfBlanks) {
  for (const char last : {'\t', '\n', '\0', '!', '\xa0', 'x'}) {
    for (size_t length = 0; length < 20; ++length) {
      for (size_t blanks = 0; blanks < 20; ++blanks) {
        const std::string text = std::string(length, 'a') + last;
        Character argument(text + std::string(blanks, ' '));
        char *copy = allocCstr(argument.data(), argument.length());
        EXPECT_EQ(std::string(copy, text.size() + 1), text + '\0')
            << int{last} << ' ' << length << ' ' << blanks;
        deallocCstr(copy);
        EXPECT_EQ(lnblnk_(argument.data(), argument.length()), static_cast<int32_t>(text.size()));
        EXPECT_EQ(ipxflentrim_(argument.data(), argument.length()), static_cast<int32_t>(text.size()));
      }
    }
  }
}
