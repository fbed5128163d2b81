// Units of the provider without a Fortran run-time: descriptors connected to numbers, and nothing in between.
#include "contract/services.h"
#include "fuzz/calls.h"

#include <algorithm>
#include <fcntl.h>
#include <unistd.h>

int32_t fuzz_open_units(int32_t *numbers, int32_t room) {
  const int flags[] = {O_RDWR, O_RDONLY, O_WRONLY, O_RDWR | O_APPEND};
  const int32_t opened = std::min<int32_t>(room, 4);
  for (int32_t i = 0; i < opened; ++i) {
    numbers[i] = 10 + i;
    for_fdopen(open("file", flags[i]), numbers[i], "", 0);
  }
  return opened;
}

void fuzz_use_unit(const int32_t *, const int32_t *) {}
