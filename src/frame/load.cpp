// What runs when the library is loaded and unloaded: the handle tables, nothing else.
#include "posix/handles.h"

namespace {

// The earliest priority that is not reserved, so that a program's own constructors find the tables ready and
// never see their records wiped.
constexpr int FIRST_FREE_PRIORITY = 101;

__attribute__((constructor(FIRST_FREE_PRIORITY))) void on_load() {
  init_handle_table();
}
__attribute__((destructor(FIRST_FREE_PRIORITY))) void on_unload() {
  destroy_handle_table();
}

}  // namespace
