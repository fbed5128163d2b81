// The first blocks of the exported tables. On targets of 32-bit addresses they exist for programs that name
// them, and stay as they are here.
#include "records/handles.h"

#include <algorithm>

using namespace qxport;

uintptr_t AllocatableHandles[WORDS_PER_BLOCK];
uintptr_t StaticHandles[WORDS_PER_BLOCK] = {
    UINTPTR_MAX, UINTPTR_MAX, UINTPTR_MAX, UINTPTR_MAX, UINTPTR_MAX, UINTPTR_MAX, UINTPTR_MAX, UINTPTR_MAX,
    UINTPTR_MAX, UINTPTR_MAX, UINTPTR_MAX, UINTPTR_MAX, UINTPTR_MAX, UINTPTR_MAX, UINTPTR_MAX,
};

void qxport::clear_first_blocks() {
  std::fill_n(AllocatableHandles, WORDS_PER_BLOCK, uintptr_t{0});
  std::fill_n(StaticHandles, RESERVED_STATIC_SLOTS, UINTPTR_MAX);
  std::fill_n(StaticHandles + RESERVED_STATIC_SLOTS, WORDS_PER_BLOCK - RESERVED_STATIC_SLOTS, uintptr_t{0});
}
