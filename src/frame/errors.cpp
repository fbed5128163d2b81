#include "frame/errors.h"

#include "frame/fortran.h"

// The last failure of a Unix-style file or unit routine. No success resets it but that of a seek.
int32_t portlib_local_errno = 0;

// N = IERRNO()
int32_t ierrno_() {
  return std::atomic_ref(portlib_local_errno).load(std::memory_order_relaxed);
}

// N = GETLASTERROR()
int32_t getlasterror_() {
  return errno;
}

// N = GETLASTERRORQQ()
int32_t getlasterrorqq_() {
  return errno;
}

QXPORT_ALIAS(ierrno_)
QXPORT_ALIAS(getlasterror_)
