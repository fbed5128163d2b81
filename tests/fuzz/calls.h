// Made-up calls: type-correct arguments between guard bytes, and what must hold behind each call.
#ifndef TESTS_FUZZ_CALLS_H
#define TESTS_FUZZ_CALLS_H

#include "fuzz/choices.h"
#include "fuzz/routine.h"

#include <string>

namespace fuzz {

// A directory of the driver's own with files of every kind in it, the working directory from now on; where it
// may be and the process may, its root as well.
void enter_own_directory(const char *directory, bool may_be_root);

// Removes it with all that calls have made in it, whatever permissions they have taken away.
void remove_own_directory(const std::string &directory);

// The standard streams are files of the directory from now on, and reports go where the standard error went.
void keep_reports_apart();

// From now on a signal comes every millisecond.
void start_signals();

// From now on the host calls are guarded.
void raise_guards();

// Makes up one call and makes it; those whose work is to end the process only `with_ends`. Ends the process
// with a report when a guard byte, an input or a missing IERROR tells that something is wrong.
void make_call(Choices &choices, bool with_ends);

// Of this process or a child of it: may it end in the routine that was called last, how many calls were made,
// and what was called last with which arguments?
bool may_end();
uint32_t calls_made();
const char *last_call();

// A line where reports go.
void tell(const char *line);

}  // namespace fuzz

// Of the provider at hand: units of every kind, connected within the working directory, and what a program
// does with its units in between. Answers how many numbers it stored.
extern "C" int32_t fuzz_open_units(int32_t *numbers, int32_t room);
extern "C" void fuzz_use_unit(const int32_t *number, const int32_t *what);

#endif
