// What a routine of the binding answers in IERROR: 0, the host's number, or one of the binding's own.
#ifndef QXPORT_RECORDS_OUTCOME_H
#define QXPORT_RECORDS_OUTCOME_H

#include "frame/error_numbers.h"

#include <cerrno>
#include <cstdint>

namespace qxport {

// The outcome of a host call that answers -1 for a failure.
inline void report(int result, int32_t *ierror) {
  *ierror = result == -1 ? errno : 0;
}

// The low 32 bits of a host call's result, which are what it is judged by.
template <typename Result>
void deliver(Result result, int32_t *value, int32_t *ierror) {
  *value = static_cast<int32_t>(result);
  report(*value, ierror);
}

// An error that the binding detected itself: IERROR gets `number`, errno EINVAL.
inline void refuse(int32_t *ierror, int32_t number) {
  *ierror = number;
  errno = EINVAL;
}

}  // namespace qxport

#endif
