// Units without a Fortran run-time: numbers with descriptors.
#ifndef QXPORT_CORE_POSIX_UNITS_H
#define QXPORT_CORE_POSIX_UNITS_H

#include "core/services/descriptor.h"

#include <cstdint>
#include <sys/types.h>

namespace qxcore {

struct Unit {
  // The program's descriptors are its own affair; a duplicate that a unit made of one is the unit's.
  enum class State { Free, Preconnected, Owned };

  State state;
  intptr_t number;
  int32_t descriptor;
  Action action;
  // The file of an owned descriptor. Another one means that the descriptor was closed and its number given
  // away.
  dev_t device;
  ino_t inode;
};

// The unit of a number; null for one that is not connected.
const Unit *connected_unit(intptr_t number);

}  // namespace qxcore

#endif
