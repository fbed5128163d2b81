// Where an error number goes: errno, the Fortran run-time's status, and the library's own cell.
#ifndef QXPORT_FRAME_ERRORS_H
#define QXPORT_FRAME_ERRORS_H

#include "contract/services.h"

#include <qxport/qxport.h>

#include <atomic>
#include <cerrno>
#include <cstdint>

namespace qxport {

// In the cell that IERRNO reads. The last of several threads wins.
inline int32_t set_local(int32_t number) {
  std::atomic_ref(portlib_local_errno).store(number, std::memory_order_relaxed);
  return number;
}

// In the run-time's status only.
inline void record_status(int32_t number) {
  for_errsns_load(0, number, 0, 0, 0);
}

// An error that the library detected itself, in errno and in the run-time's status.
inline void set_and_record_status(int32_t number) {
  errno = number;
  record_status(number);
}

// The Unix-style routines' report: the status, the cell that IERRNO reads, and the routine's result.
inline int32_t record_local(int32_t number) {
  set_local(number);
  record_status(number);
  return number;
}

// The same for an error that the library detected itself.
inline int32_t set_and_record_local(int32_t number) {
  errno = number;
  return record_local(number);
}

}  // namespace qxport

#endif
