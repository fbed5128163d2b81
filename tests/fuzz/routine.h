// How a routine and its arguments are described, so that calls of it can be made up.
#ifndef TESTS_FUZZ_ROUTINE_H
#define TESTS_FUZZ_ROUTINE_H

#include <qxport/qxport.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace fuzz {

enum class Base { Integer, Logical, Real, Character, Buffer, Procedure };
enum class Intent { In, Out, InOut };

struct Argument {
  std::string_view name;  // empty for the result of a CHARACTER function
  Base base;
  size_t size;  // of an element in bytes; 0 for a CHARACTER of any length
  Intent intent;
  int count;       // elements; -1 where the caller may choose, or another argument tells
  int counted_by;  // which one; -1 for none
  bool optional;
  bool by_value;
};

struct Routine {
  std::string_view symbol;
  std::string_view call;  // as a Fortran program writes it
  void (*thunk)(void *const *arguments, const qxport_charlen *lengths, void *result);
  std::span<const Argument> arguments;
};

extern const std::span<const Routine> ROUTINES;
extern const std::span<const char *const> WORDS;
extern const std::span<const int64_t> NUMBERS;

}  // namespace fuzz

#endif
