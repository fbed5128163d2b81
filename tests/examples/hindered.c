// A host on which calls do less than they were asked for: every second read and write is interrupted by a signal, the
// others move a few bytes. A write moves fewer than a read, so that what was read takes more than one. Preloaded.
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <unistd.h>

enum { FEW_READ = 1000, FEW_WRITTEN = 300 };

static int interrupted(void) {
  static int calls;
  errno = EINTR;
  return ++calls % 2;
}

ssize_t read(int descriptor, void *bytes, size_t count) {
  ssize_t (*host)(int, void *, size_t) = (ssize_t(*)(int, void *, size_t))dlsym(RTLD_NEXT, "read");
  return interrupted() ? -1 : host(descriptor, bytes, count < FEW_READ ? count : FEW_READ);
}

ssize_t write(int descriptor, const void *bytes, size_t count) {
  ssize_t (*host)(int, const void *, size_t) = (ssize_t(*)(int, const void *, size_t))dlsym(RTLD_NEXT, "write");
  return interrupted() ? -1 : host(descriptor, bytes, count < FEW_WRITTEN ? count : FEW_WRITTEN);
}
