// IEEE_FLAGS over services of the test's own: which of them each keyword calls, and how their words are told.
#include "fenced_text.h"
#include "ieee_calls.h"
#include "outcome.h"

#include <vector>

namespace {

struct Change {
  uint32_t value, mask;
};

std::vector<Change> changes;
int status_reads, clears, clears_before_change;
uint32_t service_control, service_status;

void forget_calls() {
  changes.clear();
  status_reads = clears = 0;
}

// What a call that sets nothing leaves behind.
void expect_nothing_set() {
  for (const Change &change : changes)
    EXPECT_EQ(change.mask, 0U);
  EXPECT_EQ(clears, 0);
  forget_calls();
}

constexpr size_t LONGEST = 9;

}  // namespace

uint32_t controlfp(uint32_t value, uint32_t mask) {
  clears_before_change = clears;
  changes.push_back({value, mask});
  service_control = (service_control & ~mask) | (value & mask);
  return service_control;
}

uint32_t statusfp() {
  ++status_reads;
  return service_status;
}

uint32_t clearfp() {
  ++clears;
  return service_status;
}

class IeeeFlags : public testing::Test {
protected:
  IeeeFlags() {
    service_control = 0x8001F;
    service_status = 0;
    forget_calls();
  }
};

TEST_F(IeeeFlags, GetDirection) {
  const char *const names[] = {"nearest", "negative", "positive", "tozero"};
  for (int32_t i = 0; i < 4; ++i) {
    service_control = 0xF001F | static_cast<uint32_t>(i) << 8;
    EXPECT_EQ(ieee_flags("get", "direction", "anything"), answered(i, names[i]));
  }
  expect_nothing_set();
}

TEST_F(IeeeFlags, GetPrecision) {
  const struct {
    uint32_t word;
    int32_t answer;
    const char *name;
  } table[] = {{0x20000, 0, "single"}, {0x10000, 2, "double"}, {0x00000, 3, "extended"}, {0x30000, 1, ""}};
  for (const auto &[word, answer, name] : table) {
    service_control = 0xC031F | word;
    EXPECT_EQ(ieee_flags("get", "precision", "anything"), answered(answer, name));
  }
  expect_nothing_set();
}

// Every set of raised flags, whatever is asked for.
TEST_F(IeeeFlags, GetException) {
  struct Named {
    const char *name;
    uint32_t flag;
    int32_t bit;
  };
  const Named in_order[] = {{"invalid", 0x10, 1},
                            {"overflow", 0x4, 8},
                            {"division", 0x8, 4},
                            {"underflow", 0x2, 16},
                            {"inexact", 0x1, 32}};
  for (uint32_t raised = 0; raised < 64; ++raised) {
    service_status = (raised & 0x1F) | (raised & 0x20) << 14;
    for (const std::string asked : {"invalid", "overflow", "division", "underflow", "inexact", "all",
                                    "common", "denormal", "", "inex"}) {
      int32_t bits = 0;
      std::string first, found;
      for (const Named &named : in_order) {
        if ((service_status & named.flag) == 0)
          continue;
        bits |= named.bit;
        if (first.empty())
          first = named.name;
        if (asked == named.name)
          found = named.name;
      }
      ASSERT_EQ(ieee_flags("get", "exception", asked), answered(bits, found.empty() ? first : found))
          << raised << ' ' << asked;
    }
  }
  expect_nothing_set();
}

TEST_F(IeeeFlags, OverflowAndUnderflow) {
  service_status = 0x6;
  EXPECT_EQ(ieee_flags("get", "exception", "underflow"), answered(24, "underflow"));
  EXPECT_EQ(ieee_flags("get", "exception", "UnderFlow"), answered(24, "underflow"));
  EXPECT_EQ(ieee_flags("get", "exception", "invalid"), answered(24, "overflow"));
}

TEST_F(IeeeFlags, GetAnythingElse) {
  for (const char *mode : {"", " ", "exceptions", "round", "directio", "all"})
    EXPECT_EQ(ieee_flags("get", mode, "all", 20), answered(1, "mode not available", 20)) << mode;
  EXPECT_EQ(ieee_flags("get", "x"), answered(1, "mode not "));
  EXPECT_TRUE(changes.empty());
  EXPECT_EQ(status_reads, 0);
}

namespace {

struct Setting {
  const char *action, *mode, *in;
  Change change;
};

constexpr Setting SETTINGS[] = {
    {"set", "direction", "nearest", {0x000, 0x300}},
    {"set", "direction", "tozero", {0x300, 0x300}},
    {"set", "direction", "negative", {0x100, 0x300}},
    {"set", "direction", "positive", {0x200, 0x300}},
    {"set", "precision", "extended", {0x00000, 0x30000}},
    {"set", "precision", "double", {0x10000, 0x30000}},
    {"set", "precision", "single", {0x20000, 0x30000}},
    {"set", "exception", "inexact", {0, 0x1}},
    {"set", "exception", "division", {0, 0x8}},
    {"set", "exception", "underflow", {0, 0x2}},
    {"set", "exception", "overflow", {0, 0x4}},
    {"set", "exception", "invalid", {0, 0x10}},
    {"set", "exception", "all", {0, 0x8001F}},
    {"set", "exception", "common", {0, 0x1E}},
    {"clear", "direction", "", {0x000, 0x300}},
    {"clear", "direction", "tozero", {0x000, 0x300}},
    {"clear", "precision", "", {0x00000, 0x30000}},
    {"clear", "precision", "single", {0x00000, 0x30000}},
    {"clear", "exception", "inexact", {0x1, 0x1}},
    {"clear", "exception", "division", {0x8, 0x8}},
    {"clear", "exception", "underflow", {0x2, 0x2}},
    {"clear", "exception", "overflow", {0x4, 0x4}},
    {"clear", "exception", "invalid", {0x10, 0x10}},
    {"clear", "exception", "all", {0x8001F, 0x8001F}},
    {"clear", "exception", "common", {0x1E, 0x1E}},
};

std::string upper_case(std::string text) {
  for (char &c : text)
    c = static_cast<char>(toupper(c));
  return text;
}

}  // namespace

TEST_F(IeeeFlags, SetAndClear) {
  for (const Setting &setting : SETTINGS) {
    for (const bool upper : {false, true}) {
      forget_calls();
      const auto cased = [upper](const char *text) { return upper ? upper_case(text) : text; };
      EXPECT_EQ(ieee_flags(cased(setting.action), cased(setting.mode), cased(setting.in)), answered(0));
      ASSERT_EQ(changes.size(), 1U) << setting.action << setting.mode << setting.in;
      EXPECT_EQ(changes[0].value & changes[0].mask, setting.change.value);
      EXPECT_EQ(changes[0].mask, setting.change.mask) << setting.action << setting.mode << setting.in;
      EXPECT_EQ(clears, 0) << "flags stay";
    }
  }
}

TEST_F(IeeeFlags, ClearAll) {
  for (const char *rest : {"", "nonsense"}) {
    service_control = 0x40000 | 0x30300;
    forget_calls();
    EXPECT_EQ(ieee_flags("clearall", rest, rest), answered(0));
    EXPECT_EQ(clears, 1);
    EXPECT_EQ(clears_before_change, 1) << "the flags come first";
    EXPECT_EQ(status_reads, 0);
    EXPECT_EQ(service_control, 0x40000U | 0x8001F);
  }
}

TEST_F(IeeeFlags, UnknownWordsChangeNothing) {
  const std::string long_word(1000, 'x');
  const std::string unknown[] = {"",
                                 " ",
                                 " get",
                                 "ge",
                                 "gett",
                                 "clear all",
                                 "clearal",
                                 "reset",
                                 "get,set",
                                 "get\t",
                                 long_word,
                                 "getdirection",
                                 "setclear",
                                 std::string("get\0", 4),
                                 std::string(20, 'g'),
                                 std::string(21, 'g')};
  for (const std::string &action : unknown) {
    if (action == "clear all")  // ends at its blank: "clear", whose words are looked at below
      continue;
    for (const char *mode : {"direction", "precision", "exception"})
      EXPECT_EQ(ieee_flags(action, mode, "all"), answered(1)) << action;
  }
  for (const char *action : {"set", "clear"})
    for (const std::string mode : {"", " direction", "directions", "mode", "exceptio", "all"})
      EXPECT_EQ(ieee_flags(action, mode, "all"), answered(1)) << mode;
  for (const std::string &in :
       {std::string(), std::string("  "), std::string("near"), std::string("nearestt"),
        std::string(" nearest"), std::string("up"), std::string(20, 'n'), std::string(21, 'n'), long_word}) {
    EXPECT_EQ(ieee_flags("set", "direction", in), answered(1)) << in;
    EXPECT_EQ(ieee_flags("set", "precision", in), answered(1)) << in;
    EXPECT_EQ(ieee_flags("set", "exception", in), answered(1)) << in;
    EXPECT_EQ(ieee_flags("clear", "exception", in), answered(1)) << in;
  }
  // A word of one list is none of another.
  EXPECT_EQ(ieee_flags("set", "direction", "single"), answered(1));
  EXPECT_EQ(ieee_flags("set", "precision", "nearest"), answered(1));
  EXPECT_EQ(ieee_flags("set", "exception", "denormal"), answered(1));
  EXPECT_EQ(ieee_flags("clear", "exception", "extended"), answered(1));
  EXPECT_TRUE(changes.empty());
  EXPECT_EQ(status_reads, 0);
  EXPECT_EQ(clears, 0);
}

TEST_F(IeeeFlags, WordsEndAtTheirFirstBlank) {
  service_control = 0x100;
  EXPECT_EQ(ieee_flags("GET and more", "Direction of it"), answered(1, "negative"));
  for (const size_t length : {19, 20, 21, 1000})
    EXPECT_EQ(ieee_flags(padded("get", length), padded("direction", length)), answered(1, "negative"));
  EXPECT_EQ(ieee_flags("set   ", "direction   ", "tozero x"), answered(0));
  EXPECT_EQ(service_control, 0x300U);
  EXPECT_EQ(ieee_flags("clear all", "direction"), answered(0));
  EXPECT_EQ(service_control, 0x000U);
  EXPECT_EQ(clears, 0);
}

TEST_F(IeeeFlags, OutOfAnyLength) {
  service_control = 0x100;
  const std::string name = "negative";
  for (const size_t length : {0U, 1U, 7U, 8U, 9U, 20U, 1000U})
    EXPECT_EQ(ieee_flags("get", "direction", "", length), answered(1, name, length));
  for (const size_t length : {0U, 1U, 18U, 100000U}) {
    EXPECT_EQ(ieee_flags("get", "", "", length), answered(1, "mode not available", length));
    EXPECT_EQ(ieee_flags("set", "direction", "tozero", length), answered(0, "", length));
    EXPECT_EQ(ieee_flags("nothing", "", "", length), answered(1, "", length));
    EXPECT_EQ(ieee_flags("clearall", "", "", length), answered(0, "", length));
  }
}

// One variable for two arguments.
TEST_F(IeeeFlags, OutMayBeAnotherArgument) {
  service_status = 0x7;
  Character word(padded("inexact", LONGEST));
  EXPECT_EQ(ieee_flags_("get", "exception", word.data(), word.data(), 3, 9, word.length(), word.length()),
            56);
  EXPECT_EQ(word.text(), "inexact  ");
  Character action(padded("get", LONGEST));
  EXPECT_EQ(
      ieee_flags_(action.data(), "direction", "", action.data(), action.length(), 9, 0, action.length()), 0);
  EXPECT_EQ(action.text(), "nearest  ");
  Character in(padded("tozero", LONGEST));
  EXPECT_EQ(ieee_flags_("set", "direction", in.data(), in.data(), 3, 9, in.length(), in.length()), 0);
  EXPECT_EQ(in.text(), std::string(LONGEST, ' '));
  EXPECT_EQ(service_control & 0x300, 0x300U);
}

TEST_F(IeeeFlags, AbsentAndNegativeLengths) {
  Character out(4);
  EXPECT_EQ(ieee_flags_(nullptr, nullptr, nullptr, nullptr, 0, 0, 0, 0), 1);
  EXPECT_EQ(ieee_flags_("get", "direction", nullptr, out.data(), 3, 9, -1, -5), 0);
  EXPECT_EQ(out.text(), "####");
  EXPECT_EQ(ieee_flags_("get", "direction", nullptr, out.data(), -3, 9, 0, 4), 1);
  EXPECT_EQ(out.text(), "    ");
}

TEST_F(IeeeFlags, ReadsNothingBehindItsWords) {
  for (const auto &[text, expected] :
       {std::pair<std::string, int32_t>("get", 0), {"ge", 1}, {"clearall", 0}}) {
    const FencedText action(text), mode("direction"), in("tozero");
    Character out(8);
    EXPECT_EQ(ieee_flags_(action.data(), mode.data(), in.data(), out.data(), action.length(), mode.length(),
                          in.length(), out.length()),
              expected);
  }
}

TEST_F(IeeeFlags, ModuleNameIsTheSameRoutine) {
  expect_same_routine(&ieee_flags_, &qxport_ieee_flags_);
}

TEST_F(IeeeFlags, ErrorStateStays) {
  EXPECT_EQ(state_after([] {
              ieee_flags("get", "direction");
              ieee_flags("set", "direction", "nothing");
              ieee_flags(std::string(100, 'x'), "", "");
              ieee_flags("clearall");
            }),
            untouched());
}
