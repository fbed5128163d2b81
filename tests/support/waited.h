// What PXFWAIT and PXFWAITPID answer.
#ifndef TESTS_SUPPORT_WAITED_H
#define TESTS_SUPPORT_WAITED_H

#include "outcome.h"
#include "record_calls.h"

struct Waited {
  int32_t istat, iretpid;
  Outcome outcome;
  bool operator==(const Waited &) const = default;
};

inline std::ostream &operator<<(std::ostream &out, const Waited &waited) {
  return out << "istat " << waited.istat << ", iretpid " << waited.iretpid << ", " << waited.outcome;
}

inline Waited wait_for_any() {
  Guarded<int32_t> istat(SENTINEL), iretpid(SENTINEL);
  const Outcome outcome = reported_by([&](int32_t *ierror) { pxfwait_(&istat, &iretpid, ierror); });
  return {istat, iretpid, outcome};
}

inline Waited wait_for(int32_t ipid, int32_t ioptions = 0) {
  Guarded<int32_t> istat(SENTINEL), iretpid(SENTINEL);
  const Outcome outcome =
      reported_by([&](int32_t *ierror) { pxfwaitpid_(&ipid, &istat, &ioptions, &iretpid, ierror); });
  return {istat, iretpid, outcome};
}

#endif
