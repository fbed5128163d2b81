#include "contract/services.h"

#include <cstdlib>
#include <unistd.h>

// The text goes out unbuffered, and no unit is flushed: an abort within an I/O statement or a signal handler
// would wait for a unit that this very thread holds.
void for_abort(const char *text, int32_t length) {
  if (length > 0) [[maybe_unused]]
    const ssize_t written = write(STDERR_FILENO, text, static_cast<size_t>(length));
  [[maybe_unused]] const ssize_t ended = write(STDERR_FILENO, "\n", 1);
  abort();
}
