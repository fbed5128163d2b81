// PXFCONST, IPXFCONST, PXFISCONST: every name with the value that the host's headers give it.
#include "constant_names.h"
#include "fenced_text.h"
#include "outcome.h"

#include <algorithm>
#include <cctype>
#include <set>
#include <strings.h>

namespace {

constexpr int32_t NO_SUCH_NAME = 126;

// What a caller gets, with the error state.
struct Found {
  Outcome outcome;
  int32_t ival;
  bool operator==(const Found &) const = default;
};
std::ostream &operator<<(std::ostream &out, const Found &found) {
  return out << found.outcome << ", value " << found.ival;
}

Found look_up(const char *name, qxport_charlen length) {
  int32_t ival[3] = {SENTINEL, SENTINEL, SENTINEL};
  int32_t ierror[3] = {SENTINEL, SENTINEL, SENTINEL};
  const Outcome outcome = outcome_of([&] {
    pxfconst_(name, &ival[1], &ierror[1], length);
    return ierror[1];
  });
  for (const int guard : {0, 2}) {
    EXPECT_EQ(ival[guard], SENTINEL);
    EXPECT_EQ(ierror[guard], SENTINEL);
  }
  return {outcome, ival[1]};
}
Found look_up(const std::string &name) {
  return look_up(name.data(), static_cast<qxport_charlen>(name.size()));
}

Found known(int32_t value) {
  return {succeeded(), value};
}
Found unknown() {
  return {{NO_SUCH_NAME, untouched()}, -1};
}

// All routines agree on a name.
void expect_found(const std::string &name, const Found &expected) {
  EXPECT_EQ(look_up(name), expected) << name;
  const qxport_charlen length = static_cast<qxport_charlen>(name.size());
  const bool is_known = expected.outcome.answer == 0;
  EXPECT_EQ(outcome_of([&] { return ipxfconst_(name.data(), length); }),
            (Outcome{expected.ival, untouched()}))
      << name;
  EXPECT_EQ(outcome_of([&] { return pxfisconst_(name.data(), length); }),
            (Outcome{is_known ? -1 : 0, untouched()}))
      << name << ": all bits are set";
  EXPECT_EQ(outcome_of([&] { return qxport_pxfisconst_(name.data(), length); }),
            (Outcome{is_known ? 1 : 0, untouched()}))
      << name << ": the module's truth";
  int32_t ival = SENTINEL;
  int32_t ierror = SENTINEL;
  pxfconst_(name.data(), &ival, &ierror, length);
  EXPECT_EQ(ival, expected.ival) << name;
  EXPECT_EQ(ierror, expected.outcome.answer) << name;
}

const std::set<std::string> &names_in_capitals() {
  static const std::set<std::string> names = [] {
    std::set<std::string> all;
    for (const ConstantGroup &group : constant_groups())
      for (const HostConstant &constant : group.constants)
        all.insert(constant.name);
    return all;
  }();
  return names;
}

// Of the name as it is taken: up to a blank or NUL.
bool is_listed(const std::string &name) {
  return std::any_of(names_in_capitals().begin(), names_in_capitals().end(), [&](const std::string &listed) {
    return strcasecmp(listed.c_str(), name.c_str()) == 0;
  });
}

class EachGroup : public testing::TestWithParam<ConstantGroup> {};
INSTANTIATE_TEST_SUITE_P(Constants, EachGroup, testing::ValuesIn(constant_groups()),
                         [](const auto &info) { return info.param.name; });

}  // namespace

// IERROR first, then IVAL; for a name that is not known the other way round.
TEST(Constants, OneVariableForBothHasTheValueOrEnoname) {
  int32_t both = SENTINEL;
  pxfconst_("SIGINT", &both, &both, 6);
  EXPECT_EQ(both, SIGINT);
  pxfconst_("SIG_ERR", &both, &both, 7);
  EXPECT_EQ(both, -1);
  pxfconst_("SIGNONE", &both, &both, 7);
  EXPECT_EQ(both, NO_SUCH_NAME);
}

TEST(Constants, AreTwoHundredAndSixtyEightAndAllDifferent) {
  size_t count = 0;
  for (const ConstantGroup &group : constant_groups())
    count += group.constants.size();
  EXPECT_EQ(count, 268u);
  EXPECT_EQ(names_in_capitals().size(), 268u);
}

TEST_P(EachGroup, HasItsNumberOfNames) {
  EXPECT_EQ(GetParam().constants.size(), GetParam().size);
}

TEST_P(EachGroup, HasTheHostsValues) {
  for (const HostConstant &constant : GetParam().constants)
    expect_found(constant.name, known(constant.value));
}

TEST_P(EachGroup, CaseDoesNotMatter) {
  for (const HostConstant &constant : GetParam().constants) {
    std::string lower = constant.name;
    std::string mixed = constant.name;
    for (size_t i = 0; i < lower.size(); ++i) {
      lower[i] = static_cast<char>(tolower(lower[i]));
      if (i % 2 == 1)
        mixed[i] = lower[i];
    }
    EXPECT_EQ(look_up(lower), known(constant.value)) << lower;
    EXPECT_EQ(look_up(mixed), known(constant.value)) << mixed;
  }
}

TEST_P(EachGroup, NameEndsAtItsFirstBlankOrNul) {
  for (const HostConstant &constant : GetParam().constants) {
    const std::string name = constant.name;
    for (const std::string &behind :
         {std::string(" "), std::string("   "), std::string(" X"), std::string(" SIGHUP"),
          std::string("\0X", 2), std::string(10'000, ' '), ' ' + std::string(10'000, 'X')})
      EXPECT_EQ(look_up(name + behind), known(constant.value)) << name + behind;
  }
}

TEST_P(EachGroup, LeadingBlankIsTheEmptyName) {
  for (const HostConstant &constant : GetParam().constants)
    EXPECT_EQ(look_up(' ' + std::string(constant.name)), unknown()) << constant.name;
}

TEST_P(EachGroup, OtherWhiteSpaceIsPartOfTheName) {
  for (const HostConstant &constant : GetParam().constants) {
    for (const char space : {'\t', '\n', '\v', '\f', '\r', '\xa0'}) {
      EXPECT_EQ(look_up(constant.name + std::string(1, space)), unknown()) << constant.name;
      EXPECT_EQ(look_up(space + std::string(constant.name)), unknown()) << constant.name;
    }
  }
}

TEST_P(EachGroup, PartsAndExtensionsAreOtherNames) {
  for (const HostConstant &constant : GetParam().constants) {
    const std::string name = constant.name;
    std::vector<std::string> others = {name.substr(1), name.substr(0, name.size() - 1), 'X' + name,
                                       '_' + name, name + '\x80'};
    for (size_t length = 1; length <= 40; ++length)
      others.push_back(name + std::string(length, 'X'));
    others.push_back(name + std::string(10'000, 'X'));
    for (const char last : {'0', '1', '2', '9', 'A', 'S', '_'})
      others.push_back(name + last);
    for (const std::string &other : others)
      if (!is_listed(other)) {
        EXPECT_EQ(look_up(other), unknown()) << other;
      }
  }
}

TEST_P(EachGroup, OneOtherCharacterMakesAnotherName) {
  for (const HostConstant &constant : GetParam().constants) {
    const std::string name = constant.name;
    for (size_t i = 0; i < name.size(); ++i) {
      for (const int bit : {1, 2, 4, 8, 16, 32, 64, 128}) {
        std::string other = name;
        other[i] = static_cast<char>(other[i] ^ bit);
        const std::string taken = other.substr(0, other.find(' '));
        if (!is_listed(taken)) {
          ASSERT_EQ(look_up(other), unknown()) << other;
        }
      }
    }
  }
}

TEST_P(EachGroup, NothingBehindTheNameIsRead) {
  for (const HostConstant &constant : GetParam().constants) {
    const FencedText name(constant.name);
    EXPECT_EQ(look_up(name.data(), name.length()), known(constant.value)) << constant.name;
  }
}

TEST(Constants, SigintInEveryCase) {
  for (const std::string name : {"sigint", "SIGINT", "SigInt", "SIGINT  ", "SIGINT X", "sIgInT"})
    expect_found(name, known(2));
}

TEST(Constants, MinusOneIsAKnownValueToo) {
  for (const std::string name : {"EEND", "SIG_ERR"})
    expect_found(name, known(-1));
}

TEST(Constants, SigrtminIsUnknown) {
  for (const std::string name : {"SIGRTMIN", "SIGRTMAX", "SIGPOLL", "SIGCLD", "SIGSTKFLT", "SIGPWR"})
    expect_found(name, unknown());
}

TEST(Constants, BindingsOwnNumbersAreTheSameEverywhere) {
  expect_found("ENONAME", known(126));
  expect_found("ENOHANDLE", known(127));
  expect_found("ETRUNC", known(129));
  expect_found("EARRAYLEN", known(125));
  expect_found("STDERR_UNIT", known(0));
  expect_found("STDIN_UNIT", known(5));
  expect_found("STDOUT_UNIT", known(6));
  expect_found("NSIG", known(32));
  expect_found("NCCS", known(20));
  expect_found("SYS_NMLN", known(256));
  expect_found("_SYS_NAMELEN", known(256));
}

TEST(Constants, EmptyNamesAreUnknown) {
  for (const std::string &name : {std::string(), std::string(" "), std::string("      "),
                                  std::string(1, '\0'), std::string("\0SIGINT", 7), std::string(" SIGINT")})
    expect_found(name, unknown());
  EXPECT_EQ(look_up(nullptr, 0), unknown());
}

TEST(Constants, NegativeHiddenLengthIsTheEmptyName) {
  EXPECT_EQ(look_up("SIGINT", -1), unknown());
  EXPECT_EQ(look_up("SIGINT", INTPTR_MIN), unknown());
}

TEST(Constants, NamesOf10000Characters) {
  for (const char fill : {'X', '_', 'S', '\x80', '\t'})
    expect_found(std::string(10'000, fill), unknown());
  expect_found("SIGINT" + std::string(9'994, 'X'), unknown());
  expect_found("SIGINT" + std::string(9'994, ' '), known(2));
}

TEST(Constants, RecordsAndComponentsAreNoConstants) {
  for (const std::string name : {"stat", "st_size", "sa_handler", "c_cc", "pxfconst", "0", "2", "-1"})
    expect_found(name, unknown());
}

#if UINTPTR_MAX > UINT32_MAX
TEST(Constants, LowHalfOfTheHiddenLengthCounts) {
  constexpr qxport_charlen FOUR_GIGABYTES = qxport_charlen{1} << 32;
  EXPECT_EQ(look_up("SIGINTX", FOUR_GIGABYTES + 6), known(2));
  EXPECT_EQ(look_up("SIGINT ", FOUR_GIGABYTES), unknown());
  EXPECT_EQ(look_up("SIGINT ", FOUR_GIGABYTES + 3), unknown());
  EXPECT_EQ(look_up("SIGINT ", FOUR_GIGABYTES - 1), unknown()) << "it has a sign";
}
#endif
