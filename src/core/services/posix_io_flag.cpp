#include "contract/services.h"

namespace {

int32_t posix_io_flag = 0;

}  // namespace

int32_t __msportlib_set_posix_io_flag(const int32_t *new_flag) {
  const int32_t former = posix_io_flag;
  posix_io_flag = *new_flag;
  return former;
}
