// What both providers need to know of a descriptor that is, or becomes, a unit.
#ifndef QXPORT_CORE_DESCRIPTOR_H
#define QXPORT_CORE_DESCRIPTOR_H

#include <cstdint>

namespace qxcore {

enum class Action : int32_t { Read, Write, ReadWrite };

// How for_fdopen's ACCESS text ("r", "w", "a", with "+", or "READ", "WRITE", "READWRITE", "APPEND", in any
// case; blank for all that the descriptor allows) connects the descriptor. 0, or EBADF for no descriptor, or
// EISDIR for that of a directory, or EINVAL for an unknown text or one that asks for more than the descriptor
// allows.
int32_t action_of(int32_t fd, const char *access, intptr_t access_length, Action *action);

// Stores the name of a descriptor's unit as __msportlib_d_gethandle answers it: the device of a terminal,
// else the name that the run-time knows, cut at the capacity.
void store_unit_name(int32_t fd, const char *known, int64_t known_length, char *name, int64_t *name_length);

// Commits a descriptor's file to its device. What has none, a pipe or a terminal, is as committed as it can
// be.
bool commit(int32_t fd);

}  // namespace qxcore

#endif
