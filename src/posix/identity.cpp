// Who and where the process is: ids, groups, sessions, login and terminal names.
#include "posix/file_name.h"
#include "posix/returned_text.h"

#include <cstdio>
#include <unistd.h>

using namespace qxport;

namespace {

void deliver_id(uint32_t value, int32_t *id, int32_t *ierror) {
  *id = static_cast<int32_t>(value);
  *ierror = 0;
}

}  // namespace

// CALL PXFGETPID(IPID, IERROR), and its kin: these cannot fail.
void pxfgetpid_(int32_t *ipid, int32_t *ierror) {
  deliver_id(static_cast<uint32_t>(getpid()), ipid, ierror);
}
void pxfgetppid_(int32_t *ipid, int32_t *ierror) {
  deliver_id(static_cast<uint32_t>(getppid()), ipid, ierror);
}
void pxfgetuid_(int32_t *iuid, int32_t *ierror) {
  deliver_id(getuid(), iuid, ierror);
}
void pxfgeteuid_(int32_t *ieuid, int32_t *ierror) {
  deliver_id(geteuid(), ieuid, ierror);
}
void pxfgetgid_(int32_t *igid, int32_t *ierror) {
  deliver_id(getgid(), igid, ierror);
}
void pxfgetegid_(int32_t *iegid, int32_t *ierror) {
  deliver_id(getegid(), iegid, ierror);
}

// CALL PXFSETUID(IUID, IERROR)
void pxfsetuid_(const int32_t *iuid, int32_t *ierror) {
  report(setuid(static_cast<uid_t>(*iuid)), ierror);
}

// CALL PXFSETGID(IGID, IERROR)
void pxfsetgid_(const int32_t *igid, int32_t *ierror) {
  report(setgid(static_cast<gid_t>(*igid)), ierror);
}

// CALL PXFGETGROUPS(IGIDSETSIZE, IGROUPLIST, NGROUPS, IERROR)
void pxfgetgroups_(const int32_t *igidsetsize, int32_t *igrouplist, int32_t *ngroups, int32_t *ierror) {
  static_assert(sizeof(gid_t) == sizeof(int32_t));
  deliver(getgroups(*igidsetsize, reinterpret_cast<gid_t *>(igrouplist)), ngroups, ierror);
}

// CALL PXFGETPGRP(IPGRP, IERROR)
void pxfgetpgrp_(int32_t *ipgrp, int32_t *ierror) {
  deliver(getpgrp(), ipgrp, ierror);
}

// CALL PXFSETSID(ISID, IERROR)
void pxfsetsid_(int32_t *isid, int32_t *ierror) {
  deliver(setsid(), isid, ierror);
}

// CALL PXFSETPGID(IPID, IPGID, IERROR)
void pxfsetpgid_(const int32_t *ipid, const int32_t *ipgid, int32_t *ierror) {
  report(setpgid(*ipid, *ipgid), ierror);
}

// CALL PXFISATTY(IFILDES, ISATTY, IERROR)
void pxfisatty_(const int32_t *ifildes, int32_t *isatty_, int32_t *ierror) {
  *isatty_ = isatty(*ifildes);
  *ierror = 0;
}

// CALL PXFGETLOGIN(S, ILEN, IERROR)
void pxfgetlogin_(char *s, int32_t *ilen, int32_t *ierror, charlen s_len) {
  const char *login = getlogin();
  if (login == nullptr) {
    *ierror = errno;
    blank_fill(s, narrow_length(s_len));
    return;
  }
  errno = deliver_text(login, s, s_len, ilen, ierror) ? 0 : ETRUNC;
}

// CALL PXFCTERMID(S, ILEN, IERROR)
void pxfctermid_(char *s, int32_t *ilen, int32_t *ierror, charlen s_len) {
  if (!deliver_text(ctermid(nullptr), s, s_len, ilen, ierror))
    errno = ERANGE;
}

// CALL PXFTTYNAME(IFILDES, S, ILEN, IERROR)
void pxfttyname_(const int32_t *ifildes, char *s, int32_t *ilen, int32_t *ierror, charlen s_len) {
  const char *name = ttyname(*ifildes);
  if (name == nullptr)
    *ierror = errno;
  else if (!deliver_text(name, s, s_len, ilen, ierror))
    errno = ERANGE;
}
