// Writes the generator's 64-bit values to standard output until nobody reads them any more, for batteries of
// tests:
//   random_bytes [SEED]
#include "core/services/random_generator.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>

int main(int count, char **arguments) {
  if (count > 2) {
    fputs("usage: random_bytes [SEED]\n", stderr);
    return 2;
  }
  char *end = nullptr;
  const long seed = count == 2 ? strtol(arguments[1], &end, 10) : 1;
  if (count == 2 && (*end != '\0' || end == arguments[1] || seed != static_cast<int32_t>(seed))) {
    fprintf(stderr, "random_bytes: '%s' is not an INTEGER(4)\n", arguments[1]);
    return 2;
  }
  signal(SIGPIPE, SIG_IGN);
  qxcore::RandomState state = qxcore::seeded(static_cast<int32_t>(seed));
  static uint64_t block[8192];
  do {
    for (uint64_t &value : block)
      value = next(state);
  } while (fwrite(block, sizeof(block), 1, stdout) == 1);
}
