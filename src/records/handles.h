// Handles: the INTEGER(4) by which a Fortran program names a record or a procedure.
#ifndef QXPORT_RECORDS_HANDLES_H
#define QXPORT_RECORDS_HANDLES_H

#include <qxport/qxport.h>

#include <cstdint>

// The exported tables, AllocatableHandles and StaticHandles, are chains of blocks of 256 words: 255 slots, an
// address or 0 each, and the link to the next block. The first block of each is static storage. A handle is
// block * 256 + slot + 1. On a target of 32-bit addresses the handle is the address itself and nothing is
// entered in the tables.
namespace qxport {

constexpr int32_t WORDS_PER_BLOCK = 256;
constexpr int32_t SLOTS_PER_BLOCK = 255;
constexpr int32_t LINK = 255;

// The first slots of StaticHandles are never issued: their handles, and 0, are the values that a signal's
// disposition takes in the same field.
constexpr int32_t RESERVED_STATIC_SLOTS = 15;

// Puts both first blocks into the state in which they are loaded.
void clear_first_blocks();

}  // namespace qxport

extern "C" {

// All that runs when the library is loaded and unloaded. The priority is the earliest that is not reserved,
// so a program's own constructors find the tables ready and never see their records wiped. The attribute
// stands here, not on functions apart, so that a static link takes the two wherever it takes the tables.
#define QXPORT_FIRST_PRIORITY 101

// Prepares both first blocks; 0.
__attribute__((constructor(QXPORT_FIRST_PRIORITY))) int32_t init_handle_table();

// Releases the further blocks of both tables. Records that are still entered are not touched.
__attribute__((destructor(QXPORT_FIRST_PRIORITY))) void destroy_handle_table();

// A new handle, in the lowest free slot; 0 when memory ran out. An address entered twice gets two handles.
int32_t get_handle_from_alloc_address(void *address);

// The one handle of a procedure; 0 when memory ran out.
int32_t get_handle_from_static_address(void *address);

// The address, or null for a handle that names no occupied slot. The table is one of the two exported ones.
void *get_address_from_handle(int32_t handle, const uintptr_t *table);

// Frees the slot; 0, or -1 for a handle that names no slot.
int32_t free_alloc_handle(int32_t handle);

}  // extern "C"

namespace qxport {

// The procedure of a handle, or null. The reserved slots hold none.
inline void *find_procedure(int32_t handle) {
  void *address = get_address_from_handle(handle, StaticHandles);
  return reinterpret_cast<uintptr_t>(address) == UINTPTR_MAX ? nullptr : address;
}

}  // namespace qxport

#endif
