// Processes: made, waited for, ended; what a wait status says.
#include "contract/services.h"
#include "posix/file_name.h"

#include <sys/wait.h>
#include <unistd.h>

using namespace qxport;

// CALL PXFFORK(IPID, IERROR)
void pxffork_(int32_t *ipid, int32_t *ierror) {
  *ipid = fork();
  report(*ipid, ierror);
}

// CALL PXFWAIT(ISTAT, IRETPID, IERROR)
void pxfwait_(int32_t *istat, int32_t *iretpid, int32_t *ierror) {
  *iretpid = wait(istat);
  report(*iretpid, ierror);
}

// CALL PXFWAITPID(IPID, ISTAT, IOPTIONS, IRETPID, IERROR)
void pxfwaitpid_(const int32_t *ipid, int32_t *istat, const int32_t *ioptions, int32_t *iretpid,
                 int32_t *ierror) {
  *iretpid = waitpid(*ipid, istat, *ioptions);
  report(*iretpid, ierror);
}

// CALL PXFEXIT(ISTATUS)
void pxfexit_(const int32_t *istatus) {
  for_exit(istatus);
}

// CALL PXFFASTEXIT(ISTATUS)
void pxffastexit_(const int32_t *istatus) {
  _exit(*istatus);
}

// L = PXFWIFEXITED(ISTAT)
int32_t pxfwifexited_(const int32_t *istat) {
  return WIFEXITED(*istat) ? 1 : 0;
}

// N = IPXFWEXITSTATUS(ISTAT)
int32_t ipxfwexitstatus_(const int32_t *istat) {
  return WEXITSTATUS(*istat);
}

// L = PXFWIFSIGNALED(ISTAT)
int32_t pxfwifsignaled_(const int32_t *istat) {
  return WIFSIGNALED(*istat) ? 1 : 0;
}

// N = IPXFWTERMSIG(ISTAT)
int32_t ipxfwtermsig_(const int32_t *istat) {
  return WTERMSIG(*istat);
}

// L = PXFWIFSTOPPED(ISTAT)
int32_t pxfwifstopped_(const int32_t *istat) {
  return WIFSTOPPED(*istat) ? 1 : 0;
}

// N = IPXFWSTOPSIG(ISTAT)
// All the bits above the low eight, with sign: tracers find an event number above the signal's.
int32_t ipxfwstopsig_(const int32_t *istat) {
  return *istat >> 8;
}

QXPORT_ALIAS(pxfwifexited_)
QXPORT_ALIAS(pxfwifsignaled_)
QXPORT_ALIAS(pxfwifstopped_)
