// The command line, whatever language the program's main is in: the host's start-up code hands it to
// constructors. The priority is the earliest that is not reserved, so a program's own constructors get it
// too.
#include "contract/services.h"
#include "frame/fortran.h"

namespace {

int argument_count;
char **arguments;

__attribute__((constructor(101))) void keep_arguments(int count, char **values) {
  argument_count = count;
  arguments = values;
}

}  // namespace

void for_getarg(const int32_t *m, char *value, int32_t *length, intptr_t value_length) {
  // A main that shortened its vector left a null in it.
  if (*m < 0 || *m >= argument_count || arguments[*m] == nullptr) {
    qxport::blank_fill(value, value_length);
    *length = -1;
    return;
  }
  const size_t full = strlen(arguments[*m]);
  qxport::store_padded(value, value_length, arguments[*m], full);
  *length = static_cast<int32_t>(full);
}

int32_t for_nargs() {
  return argument_count;
}
