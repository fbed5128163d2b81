// IEEE_FLAGS: rounding, precision and exceptions by keywords.
#include "contract/floating_point.h"
#include "contract/services.h"
#include "frame/fortran.h"

#include <string_view>

using namespace qxport;

namespace {

constexpr int32_t NOT_DONE = 1;

struct Keyword {
  std::string_view word;
  uint32_t bits;  // of the control word
  int32_t shown;  // what "get" answers for it
};

constexpr Keyword DIRECTIONS[] = {
    {"nearest", FP_NEAREST, 0},
    {"negative", FP_DOWN, 1},
    {"positive", FP_UP, 2},
    {"tozero", FP_TOWARD_ZERO, 3},
};

constexpr Keyword PRECISIONS[] = {
    {"single", FP_24_BITS, 0},
    {"double", FP_53_BITS, 2},
    {"extended", FP_64_BITS, 3},
};

// In the order in which "get" looks for one that has been raised.
constexpr Keyword EXCEPTIONS[] = {
    {"invalid", FP_INVALID, 1},      {"overflow", FP_OVERFLOW, 8}, {"division", FP_ZERO_DIVIDE, 4},
    {"underflow", FP_UNDERFLOW, 16}, {"inexact", FP_INEXACT, 32},
};

constexpr Keyword EXCEPTION_GROUPS[] = {
    {"all", FP_ALL_EXCEPTIONS, 0},
    {"common", FP_COMMON_EXCEPTIONS, 0},
};

// The characters before the first blank.
std::string_view word_of(const char *text, charlen length) {
  const size_t count = length_of(length);
  const void *blank = count == 0 ? nullptr : memchr(text, ' ', count);
  return {text, blank == nullptr ? count : static_cast<size_t>(static_cast<const char *>(blank) - text)};
}

bool same(std::string_view word, std::string_view keyword) {
  return same_keyword(word.data(), word.size(), keyword.data());
}

template <size_t COUNT>
const Keyword *find(const Keyword (&keywords)[COUNT], std::string_view word) {
  for (const Keyword &keyword : keywords)
    if (same(word, keyword.word))
      return &keyword;
  return nullptr;
}

enum class Action { Get, Set, Clear, ClearAll, None };
enum class Mode { Direction, Precision, Exception, None };

constexpr std::string_view ACTIONS[] = {"get", "set", "clear", "clearall"};
constexpr std::string_view MODES[] = {"direction", "precision", "exception"};

// The place in the list, which is the enumeration's; behind the last one is None.
template <typename Enumeration, size_t COUNT>
Enumeration place_in(const std::string_view (&words)[COUNT], std::string_view word) {
  size_t place = 0;
  while (place < COUNT && !same(word, words[place]))
    ++place;
  return static_cast<Enumeration>(place);
}

// The text and the number of a "get".
struct Answer {
  std::string_view text;
  int32_t number;
};

template <size_t COUNT>
Answer field_shown(const Keyword (&keywords)[COUNT], uint32_t field) {
  const uint32_t bits = controlfp(0, 0) & field;
  for (const Keyword &keyword : keywords)
    if (keyword.bits == bits)
      return {keyword.word, keyword.shown};
  return {"", NOT_DONE};
}

// The exception that was asked for is named where it has been raised, else the first of those that have.
Answer exceptions_shown(const Keyword *asked) {
  const uint32_t raised = statusfp();
  Answer answer = {"", 0};
  for (const Keyword &exception : EXCEPTIONS) {
    if ((raised & exception.bits) == 0)
      continue;
    answer.number |= exception.shown;
    if (answer.text.empty() || &exception == asked)
      answer.text = exception.word;
  }
  return answer;
}

template <size_t COUNT>
int32_t set_field(const Keyword (&keywords)[COUNT], std::string_view word, uint32_t field) {
  const Keyword *found = find(keywords, word);
  if (found == nullptr)
    return NOT_DONE;
  controlfp(found->bits, field);
  return 0;
}

// The exceptions that a word stands for; 0 for one that is no keyword.
uint32_t exceptions_named(std::string_view word) {
  const Keyword *found = find(EXCEPTIONS, word);
  if (found == nullptr)
    found = find(EXCEPTION_GROUPS, word);
  return found == nullptr ? 0 : found->bits;
}

// An exception whose mask is clear traps.
int32_t set_masks(uint32_t value, std::string_view word) {
  const uint32_t exceptions = exceptions_named(word);
  if (exceptions == 0)
    return NOT_DONE;
  controlfp(value, exceptions);
  return 0;
}

Answer get(Mode mode, const Keyword *asked) {
  switch (mode) {
  case Mode::Direction:
    return field_shown(DIRECTIONS, FP_ROUNDING);
  case Mode::Precision:
    return field_shown(PRECISIONS, FP_PRECISION);
  case Mode::Exception:
    return exceptions_shown(asked);
  default:
    return {"mode not available", NOT_DONE};
  }
}

int32_t set(Mode mode, std::string_view word) {
  switch (mode) {
  case Mode::Direction:
    return set_field(DIRECTIONS, word, FP_ROUNDING);
  case Mode::Precision:
    return set_field(PRECISIONS, word, FP_PRECISION);
  case Mode::Exception:
    return set_masks(0, word);
  default:
    return NOT_DONE;
  }
}

int32_t clear(Mode mode, std::string_view word) {
  switch (mode) {
  case Mode::Direction:
    controlfp(FP_NEAREST, FP_ROUNDING);
    return 0;
  case Mode::Precision:
    controlfp(FP_64_BITS, FP_PRECISION);
    return 0;
  case Mode::Exception:
    return set_masks(FP_ALL_EXCEPTIONS, word);
  default:
    return NOT_DONE;
  }
}

int32_t clear_all() {
  clearfp();
  controlfp(FP_NEAREST | FP_64_BITS | FP_ALL_EXCEPTIONS, FP_ROUNDING | FP_PRECISION | FP_ALL_EXCEPTIONS);
  return 0;
}

Answer answer_to(std::string_view action, std::string_view mode_word, std::string_view in) {
  const auto mode = place_in<Mode>(MODES, mode_word);
  switch (place_in<Action>(ACTIONS, action)) {
  case Action::Get:
    return get(mode, find(EXCEPTIONS, in));
  case Action::Set:
    return {"", set(mode, in)};
  case Action::Clear:
    return {"", clear(mode, in)};
  case Action::ClearAll:
    return {"", clear_all()};
  default:
    return {"", NOT_DONE};
  }
}

}  // namespace

// N = IEEE_FLAGS(ACTION, MODE, IN, OUT)
int32_t ieee_flags_(const char *action, const char *mode, const char *in, char *out, charlen action_len,
                    charlen mode_len, charlen in_len, charlen out_len) {
  // OUT is written last: it may be the variable of another argument.
  const Answer answer = answer_to(word_of(action, action_len), word_of(mode, mode_len), word_of(in, in_len));
  store_padded(out, out_len, answer.text.data(), answer.text.size());
  return answer.number;
}

QXPORT_ALIAS(ieee_flags_)
