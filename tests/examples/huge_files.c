// A host on which each regular file claims 2**62 bytes, as files with holes do where the file system lets them. Preloaded.
#define _GNU_SOURCE
#ifdef __i386__ // as the library calls it there
#define _FILE_OFFSET_BITS 64
#define _TIME_BITS 64
#endif
#include <fcntl.h>
#include <stdint.h>
#include <sys/stat.h>

int lstat(const char *path, struct stat *status) {
  const int answer = fstatat(AT_FDCWD, path, status, AT_SYMLINK_NOFOLLOW);
  if (answer == 0 && S_ISREG(status->st_mode))
    status->st_size = INT64_C(1) << 62;
  return answer;
}
