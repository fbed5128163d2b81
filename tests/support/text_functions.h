// A CHARACTER function's result in a variable of a length of the caller's, with what the call recorded.
#ifndef TESTS_SUPPORT_TEXT_FUNCTIONS_H
#define TESTS_SUPPORT_TEXT_FUNCTIONS_H

#include "recorder.h"

#include <ostream>
#include <string>

struct Answered {
  std::string text;
  ErrorState state;
  bool operator==(const Answered &) const = default;
};

inline std::ostream &operator<<(std::ostream &out, const Answered &answered) {
  return out << '"' << answered.text << "\", " << answered.state;
}

// TEXT = ROUTINE(ARGUMENTS...)
template <typename Routine, typename... Arguments>
Answered answered_by(Routine routine, size_t length, const Arguments &...arguments) {
  Character variable(length);
  reset_error_state();
  routine(variable.data(), variable.length(), &arguments...);
  return {variable.text(), error_state()};
}

inline Answered fits(const std::string &text) {
  return {text, untouched()};
}

inline Answered is_cut(const std::string &text) {
  return {text, {EINVAL, SENTINEL, {EINVAL}}};
}

// What a routine answers of a text in variables of every length.
template <typename Routine, typename... Arguments>
void expect_text_in_every_length(Routine routine, const std::string &text, const Arguments &...arguments) {
  for (size_t length = 0; length <= text.size() + 9; ++length)
    EXPECT_EQ(answered_by(routine, length, arguments...),
              length < text.size() ? is_cut(text.substr(0, length)) : fits(padded(text, length)))
        << length;
}

#endif
