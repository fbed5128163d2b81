// Processor time: ETIME since the process started, DTIME and DTIMER8 since the call before.
#include "frame/fortran.h"

#include <ctime>
#include <sys/resource.h>
#include <sys/times.h>
#include <type_traits>
#include <unistd.h>

using namespace qxport;

namespace {

// In seconds, as DTIME and DTIMER8 keep them.
struct Snapshot {
  double user, system;
};

// DTIME and DTIMER8 fill the two in turn; the flag tells which one comes next.
int32_t flag = 1;
Snapshot tarray_tmp0, tarray_tmp1;

// -1 while nobody has asked, or the host could not tell.
int32_t __ncpus = -1;

// Threads that ask at the same time get the same answer.
bool several_processors() {
  int32_t count = __atomic_load_n(&__ncpus, __ATOMIC_RELAXED);
  if (count == -1) {
    count = static_cast<int32_t>(sysconf(_SC_NPROCESSORS_ONLN));
    __atomic_store_n(&__ncpus, count, __ATOMIC_RELAXED);
  }
  return count > 1;
}

double seconds_of(clock_t ticks) {
  return static_cast<double>(static_cast<std::make_unsigned_t<clock_t>>(ticks)) /
         static_cast<double>(sysconf(_SC_CLK_TCK));
}

Snapshot times_now() {
  tms now = {};
  times(&now);
  return {seconds_of(now.tms_utime), seconds_of(now.tms_stime)};
}

// User and system time together.
double clock_now() {
  if constexpr (sizeof(clock_t) == sizeof(int64_t)) {
    return static_cast<double>(static_cast<uint64_t>(clock())) / CLOCKS_PER_SEC;
  } else {
    // The narrow counter of clock() comes round after 72 minutes.
    timespec now = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    const int64_t microseconds = now.tv_nsec / 1000;  // as fine as clock() is
    return static_cast<double>(now.tv_sec) + static_cast<double>(microseconds) / 1e6;
  }
}

double user_time_of_all_threads() {
  rusage usage = {};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_utime.tv_sec) + static_cast<double>(usage.ru_utime.tv_usec) / 1e6;
}

// On several processors every second call has its times from clock() and the others from times(): callers
// know the user and system times of such calls to be mixed.
template <typename Real>
Real time_since_last_call(Real *tarray) {
  Snapshot elapsed;
  if (flag != 0) {
    tarray_tmp1 = times_now();
    flag = 0;
    elapsed = {tarray_tmp1.user - tarray_tmp0.user, tarray_tmp1.system - tarray_tmp0.system};
  } else {
    tarray_tmp0 = several_processors() ? Snapshot{clock_now(), 0} : times_now();
    flag = 1;
    elapsed = {tarray_tmp0.user - tarray_tmp1.user, tarray_tmp0.system - tarray_tmp1.system};
  }
  tarray[0] = static_cast<Real>(elapsed.user);
  tarray[1] = static_cast<Real>(elapsed.system);
  return tarray[0] + tarray[1];
}

}  // namespace

// X = ETIME(TARRAY)
float etime_(float *tarray) {
  if (several_processors()) {
    tarray[0] = static_cast<float>(user_time_of_all_threads());
    tarray[1] = 0;
  } else {
    const Snapshot now = times_now();
    tarray[0] = static_cast<float>(now.user);
    tarray[1] = static_cast<float>(now.system);
  }
  return tarray[0] + tarray[1];
}

// X = DTIME(TARRAY)
float dtime_(float *tarray) {
  return time_since_last_call(tarray);
}

// X = DTIMER8(TARRAY)
double dtimer8_(double *tarray) {
  return time_since_last_call(tarray);
}

QXPORT_ALIAS(etime_)
QXPORT_ALIAS(dtime_)
QXPORT_ALIAS(dtimer8_)
