// A routine's answer together with what its call left in the three places of the error convention, so that
// one comparison says all that a call may and may not touch.
#ifndef TESTS_SUPPORT_OUTCOME_H
#define TESTS_SUPPORT_OUTCOME_H

#include "recorder.h"

#include <ostream>

struct Outcome {
  int32_t answer;
  ErrorState state;
  bool operator==(const Outcome &) const = default;
};

inline std::ostream &operator<<(std::ostream &out, const Outcome &outcome) {
  return out << "answer " << outcome.answer << ", " << outcome.state;
}

template <typename Call>
Outcome outcome_of(Call call) {
  reset_error_state();
  const int32_t answer = call();
  return {answer, error_state()};
}

// The state behind a subroutine.
template <typename Call>
ErrorState state_after(Call call) {
  reset_error_state();
  call();
  return error_state();
}

inline Outcome succeeded() {
  return {0, untouched()};
}

// The same number as the answer and in all three places.
inline Outcome reported(int32_t number) {
  return {number, {number, number, {number}}};
}

#endif
