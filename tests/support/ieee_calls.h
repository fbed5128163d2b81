// IEEE_FLAGS and IEEE_HANDLER as a caller with texts of any length sees them.
#ifndef TESTS_SUPPORT_IEEE_CALLS_H
#define TESTS_SUPPORT_IEEE_CALLS_H

#include "recorder.h"

#include <qxport/qxport.h>

#include <ostream>
#include <string>

struct Flags {
  int32_t answer;
  std::string out;
  bool operator==(const Flags &) const = default;
};

inline std::ostream &operator<<(std::ostream &stream, const Flags &flags) {
  return stream << flags.answer << " '" << flags.out << "'";
}

inline qxport_charlen length_in_fortran(const std::string &text) {
  return static_cast<qxport_charlen>(text.size());
}

// With an OUT of the given length, which is full of something else before.
inline Flags ieee_flags(const std::string &action, const std::string &mode = "", const std::string &in = "",
                        size_t out_length = 9) {
  Character out(out_length);
  const int32_t answer =
      ieee_flags_(action.data(), mode.data(), in.data(), out.data(), length_in_fortran(action),
                  length_in_fortran(mode), length_in_fortran(in), out.length());
  return {answer, out.text()};
}

inline Flags answered(int32_t answer, const std::string &out = "", size_t out_length = 9) {
  return {answer, padded(out, out_length)};
}

inline intptr_t ieee_handler(const std::string &action, const std::string &exception,
                             void (*handler)(int32_t *, const int32_t *) = nullptr) {
  return ieee_handler_(action.data(), exception.data(), reinterpret_cast<void (*)()>(handler),
                       length_in_fortran(action), length_in_fortran(exception));
}

#endif
