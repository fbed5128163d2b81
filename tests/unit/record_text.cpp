// PXFSTRGET and PXFSTRSET: the texts of a record.
#include "fenced_text.h"
#include "record_calls.h"

namespace {

using qxport::PasswdRecord;

struct TextOfKind {
  std::string kind;
  KnownComponent component;
};
std::ostream &operator<<(std::ostream &out, const TextOfKind &of_kind) {
  return out << of_kind.kind << ' ' << of_kind.component.name;
}

std::vector<TextOfKind> texts() {
  std::vector<TextOfKind> texts;
  for (const KnownKind &kind : known_kinds())
    for (const KnownComponent &component : kind.components)
      if (component.form == Form::Text || component.form == Form::String)
        texts.push_back({kind.name, component});
  return texts;
}

// What PXFSTRGET gives into a variable of this length.
struct Given {
  Outcome outcome;
  std::string value;
  int32_t ilen;
  bool operator==(const Given &) const = default;
};

std::ostream &operator<<(std::ostream &out, const Given &given) {
  return out << given.outcome << ", \"" << given.value << "\", length " << given.ilen;
}

Given get(int32_t handle, const std::string &name, size_t length) {
  Character value(length);
  Guarded<int32_t> ilen(SENTINEL);
  const Outcome outcome = strget(handle, name, value, &ilen);
  return {outcome, value.text(), ilen};
}

Given whole(const std::string &text, size_t length) {
  return {succeeded(), padded(text, length), static_cast<int32_t>(text.size())};
}
Given cut(const std::string &text, size_t length) {
  return {refused(CUT, ERANGE), text.substr(0, length), static_cast<int32_t>(text.size())};
}

class TextComponent : public testing::TestWithParam<TextOfKind> {
protected:
  const std::string &name() const { return GetParam().component.name; }
  size_t capacity() const { return GetParam().component.capacity; }

  void expect_holds(const std::string &text) {
    const Given expected = whole(text, text.size() + 10);
    EXPECT_EQ(get(record, name(), text.size() + 10), expected);
    EXPECT_EQ(get(record, name(), text.size()), whole(text, text.size()));
  }

  // Sets the text and reads it back; all other components are as before.
  void expect_set(const std::string &value, int32_t ilen, const std::string &text) {
    Contents before = contents_of(record);
    EXPECT_EQ(strset(record, name(), value, ilen), succeeded());
    expect_holds(text);
    Contents after = contents_of(record);
    before.erase(name());
    after.erase(name());
    EXPECT_EQ(after, before);
  }

  const OwnedRecord record{GetParam().kind};
};

INSTANTIATE_TEST_SUITE_P(Text, TextComponent, testing::ValuesIn(texts()),
                         [](const auto &info) { return info.param.component.name; });

}  // namespace

TEST_P(TextComponent, IsEmptyAtFirst) {
  expect_holds("");
  EXPECT_EQ(get(record, name(), 0), whole("", 0));
}

TEST_P(TextComponent, IsGivenWholeOrCut) {
  EXPECT_EQ(strset(record, name(), "Darwin"), succeeded());
  EXPECT_EQ(get(record, name(), 10), whole("Darwin", 10));
  EXPECT_EQ(get(record, name(), 7), whole("Darwin", 7));
  EXPECT_EQ(get(record, name(), 6), whole("Darwin", 6));
  EXPECT_EQ(get(record, name(), 5), cut("Darwin", 5));
  EXPECT_EQ(get(record, name(), 3), cut("Darwin", 3));
  EXPECT_EQ(get(record, name(), 0), cut("Darwin", 0));
}

TEST_P(TextComponent, VariableOfNegativeLengthIsNotWritten) {
  EXPECT_EQ(strset(record, name(), "Darwin"), succeeded());
  const int32_t handle = record;
  int32_t ilen = SENTINEL;
  Character value(4);
  EXPECT_EQ(reported_by([&](int32_t *ierror) {
              pxfstrget_(&handle, name().data(), value.data(), &ilen, ierror, length_of_name(name()), -1);
            }),
            refused(CUT, ERANGE));
  EXPECT_EQ(value.text(), "####");
  EXPECT_EQ(ilen, 6);
}

TEST_P(TextComponent, SetReplaces) {
  fill_record(record);
  expect_set("first", 5, "first");
  expect_set("a longer second text", 20, "a longer second text");
  expect_set("3", 1, "3");
  expect_set("", 0, "");
  expect_set("again", 5, "again");
}

TEST_P(TextComponent, OnlyIlenCharactersAreTaken) {
  expect_set("abcdef", 3, "abc");
  expect_set("abcdef", 6, "abcdef");
  expect_set("abcdef", 0, "");
  expect_set("ab  ef", 4, "ab");
}

TEST_P(TextComponent, TrailingBlanksAreDroppedAndNothingElse) {
  expect_set("abc   ", 6, "abc");
  expect_set("  abc ", 6, "  abc");
  expect_set("a b c ", 6, "a b c");
  expect_set("      ", 6, "");
  expect_set("ab\t", 3, "ab\t");
  expect_set("ab\t  ", 5, "ab\t");
  expect_set("ab \n", 4, "ab \n");
  expect_set("\xff\x80 ", 3, "\xff\x80");
}

TEST_P(TextComponent, EndsAtANul) {
  const std::string value("ab\0cd", 5);
  EXPECT_EQ(strset(record, name(), value), succeeded());
  expect_holds("ab");
  EXPECT_EQ(strset(record, name(), std::string("\0cd", 3)), succeeded());
  expect_holds("");
  // A NUL is no blank: the blanks in front of it are not trailing.
  EXPECT_EQ(strset(record, name(), std::string("ab  \0  ", 7)), succeeded());
  expect_holds("ab  ");
}

TEST_P(TextComponent, IlenAboveTheVariablesLengthIsRefused) {
  EXPECT_EQ(strset(record, name(), "before"), succeeded());
  const Contents before = contents_of(record);
  for (const int32_t ilen : {4, 5, 1000, INT32_MAX, -1, -3, -1000, INT32_MIN})
    EXPECT_EQ(strset(record, name(), "abc", ilen), refused(EINVAL)) << ilen;
  for (const int32_t ilen : {1, -1})
    EXPECT_EQ(strset(record, name(), "", ilen), refused(EINVAL)) << ilen;
  EXPECT_EQ(contents_of(record), before);
}

TEST_P(TextComponent, NegativeHiddenLengthIsNoCharacters) {
  const int32_t handle = record;
  for (const int32_t ilen : {0, 1, -1}) {
    EXPECT_EQ(reported_by([&](int32_t *ierror) {
                pxfstrset_(&handle, name().data(), "abc", &ilen, ierror, length_of_name(name()), -1);
              }),
              ilen == 0 ? succeeded() : refused(EINVAL))
        << ilen;
  }
}

TEST_P(TextComponent, NothingBehindTheValueIsRead) {
  const FencedText value("fenced");
  const int32_t handle = record;
  const int32_t ilen = 6;
  EXPECT_EQ(reported_by([&](int32_t *ierror) {
              pxfstrset_(&handle, name().data(), value.data(), &ilen, ierror, length_of_name(name()),
                         value.length());
            }),
            succeeded());
  expect_holds("fenced");
}

TEST_P(TextComponent, LongestText) {
  const size_t longest = capacity() == 0 ? 100'000 : capacity();
  fill_record(record);
  const Contents before = contents_of(record);
  EXPECT_EQ(strset(record, name(), std::string(longest, 'x')), succeeded());
  expect_holds(std::string(longest, 'x'));
  Contents after = contents_of(record);
  after[name()] = before.at(name());
  if (name() == "sysname") {
    EXPECT_EQ(after["nodename"], '\0' + before.at("nodename").substr(1)) << "holds the NUL";
    after["nodename"] = before.at("nodename");
  }
  EXPECT_EQ(after, before);
}

TEST_P(TextComponent, LongerTextIsCutToTheCapacity) {
  if (capacity() == 0)
    return expect_set(std::string(10'000, 'x'), 10'000, std::string(10'000, 'x'));
  fill_record(record);
  const Contents before = contents_of(record);
  for (const size_t length : {capacity() + 1, capacity() + 2, size_t{512}, size_t{10'000}}) {
    const std::string value = std::string(capacity(), 'x') + std::string(length - capacity(), 'y');
    EXPECT_EQ(strset(record, name(), value), refused(CUT, ERANGE)) << length;
    expect_holds(std::string(capacity(), 'x'));
  }
  Contents after = contents_of(record);
  after[name()] = before.at(name());
  if (name() == "sysname")
    after["nodename"] = before.at("nodename");
  EXPECT_EQ(after, before);
}

TEST_P(TextComponent, TrailingBlanksDoNotCountForTheCapacity) {
  const std::string text(capacity() == 0 ? 300 : capacity(), 'x');
  expect_set(text + std::string(500, ' '), static_cast<int32_t>(text.size()) + 500, text);
}

#if UINTPTR_MAX > UINT32_MAX
TEST_P(TextComponent, LowHalfOfTheValuesHiddenLengthCounts) {
  constexpr qxport_charlen FOUR_GIGABYTES = qxport_charlen{1} << 32;
  const int32_t handle = record;
  const auto set_with = [&](qxport_charlen length) {
    const int32_t ilen = 3;
    return reported_by([&](int32_t *ierror) {
      pxfstrset_(&handle, name().data(), "abc", &ilen, ierror, length_of_name(name()), length);
    });
  };
  EXPECT_EQ(set_with(FOUR_GIGABYTES + 2), refused(EINVAL));
  EXPECT_EQ(set_with(FOUR_GIGABYTES + 3), succeeded());
  EXPECT_EQ(set_with(FOUR_GIGABYTES - 1), succeeded()) << "compared without a sign";
  expect_holds("abc");

  Character value(2);
  int32_t ilen = SENTINEL;
  EXPECT_EQ(reported_by([&](int32_t *ierror) {
              pxfstrget_(&handle, name().data(), value.data(), &ilen, ierror, length_of_name(name()),
                         FOUR_GIGABYTES + 2);
            }),
            refused(CUT, ERANGE));
  EXPECT_EQ(value.text(), "ab");
  EXPECT_EQ(ilen, 3);
}
#endif

TEST(StrSet, IlenIsLookedAtBeforeTheHandle) {
  for (const int32_t handle : {0, 256, INT32_MAX}) {
    for (const int32_t ilen : {4, -1, INT32_MIN})
      EXPECT_EQ(strset(handle, "sysname", "abc", ilen), refused(EINVAL)) << handle << ' ' << ilen;
    EXPECT_EQ(strset(handle, "sysname", "abc", 3), refused(NO_SUCH_HANDLE));
  }
}

TEST(StrSet, IlenIsLookedAtBeforeTheName) {
  const OwnedRecord record("stat");
  EXPECT_EQ(strset(record, "nothing", "abc", 4), refused(EINVAL));
  EXPECT_EQ(strset(record, "nothing", "abc", 3), refused(NO_SUCH_NAME));
}

TEST(Sysname, Of256CharactersEndsOnTheFirstOfNodename) {
  const OwnedRecord record("utsname");
  EXPECT_EQ(strset(record, "nodename", "node"), succeeded());
  EXPECT_EQ(strset(record, "sysname", std::string(256, 's')), succeeded());
  EXPECT_EQ(get(record, "nodename", 5), whole("", 5));
  EXPECT_EQ(contents_of(record).at("nodename"), held(std::string("\0ode", 4)));
  EXPECT_EQ(get(record, "sysname", 256), whole(std::string(256, 's'), 256));
  EXPECT_EQ(get(record, "sysname", 255), cut(std::string(256, 's'), 255));
}

TEST(Sysname, Of255CharactersLeavesNodename) {
  const OwnedRecord record("utsname");
  EXPECT_EQ(strset(record, "nodename", "node"), succeeded());
  EXPECT_EQ(strset(record, "sysname", std::string(255, 's')), succeeded());
  EXPECT_EQ(get(record, "nodename", 5), whole("node", 5));
}

// A text is what stands up to its NUL, wherever that is.
TEST(Sysname, RunsOnIntoANodenameSetLater) {
  const OwnedRecord record("utsname");
  EXPECT_EQ(strset(record, "sysname", std::string(256, 's')), succeeded());
  EXPECT_EQ(strset(record, "nodename", "node"), succeeded());
  EXPECT_EQ(get(record, "nodename", 5), whole("node", 5));
  EXPECT_EQ(get(record, "sysname", 270), whole(std::string(256, 's') + "node", 270));
}

TEST(PasswdText, WithoutANulIsReadByItsLength) {
  const OwnedRecord record("passwd");
  PasswdRecord &user = record_as<PasswdRecord>(record);
  user.pw_name = allocated_without_nul("root");
  user.pw_name_length = 4;
  user.pw_dir = allocated_without_nul("/root");
  user.pw_dir_length = 5;
  user.pw_shell = allocated_without_nul("");
  user.pw_shell_length = 0;
  EXPECT_EQ(get(record, "pw_name", 8), whole("root", 8));
  EXPECT_EQ(get(record, "pw_name", 3), cut("root", 3));
  EXPECT_EQ(get(record, "pw_dir", 5), whole("/root", 5));
  EXPECT_EQ(get(record, "pw_shell", 5), whole("", 5));
}

TEST(PasswdText, SetTakesTheLengthAlong) {
  const OwnedRecord record("passwd");
  PasswdRecord &user = record_as<PasswdRecord>(record);
  user.pw_name = allocated_without_nul("a long user name");
  user.pw_name_length = 16;
  EXPECT_EQ(strset(record, "pw_name", "ann"), succeeded());
  EXPECT_EQ(get(record, "pw_name", 16), whole("ann", 16));
  EXPECT_EQ(strset(record, "pw_name", "a longer user name"), succeeded());
  EXPECT_EQ(get(record, "pw_name", 20), whole("a longer user name", 20));
}
