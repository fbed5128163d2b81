// Signal sets and the process's mask.
#include "posix/signal_sets.h"

#include "posix/file_name.h"
#include "records/records.h"

using namespace qxport;

namespace {

SigsetRecord *find_sigset(int32_t handle, int32_t *ierror) {
  return find_record_as<SigsetRecord>(handle, Kind::Sigset, ierror);
}

// The record of a mask's receiver. An unknown handle leaves errno alone here, unlike elsewhere.
SigsetRecord *find_receiver(int32_t handle, int32_t *ierror) {
  if (find_record(handle) == nullptr) {
    *ierror = ENOHANDLE;
    return nullptr;
  }
  return find_sigset(handle, ierror);
}

void change_mask(int32_t how, int32_t jsigset, int32_t josigset, int32_t *ierror) {
  const SigsetRecord *record = find_sigset(jsigset, ierror);
  if (record == nullptr)
    return;
  SigsetRecord *receiver = nullptr;
  if (josigset != 0) {
    receiver = find_receiver(josigset, ierror);
    if (receiver == nullptr)
      return;
  }
  const sigset_t set = host_set(record->mask);
  sigset_t former;
  report(sigprocmask(how, &set, &former), ierror);
  if (*ierror == 0 && receiver != nullptr)
    receiver->mask = mask_of(former);
}

template <typename Change>
void change_set(int32_t jsignal, int32_t *ierror, Change change) {
  SigsetRecord *record = find_sigset(jsignal, ierror);
  if (record == nullptr)
    return;
  record->mask = change(record->mask);
  *ierror = 0;
}

}  // namespace

// CALL PXFSIGEMPTYSET(JSIGNAL, IERROR)
void pxfsigemptyset_(const int32_t *jsignal, int32_t *ierror) {
  change_set(*jsignal, ierror, [](uint32_t) { return 0U; });
}

// CALL PXFSIGFILLSET(JSIGNAL, IERROR)
void pxfsigfillset_(const int32_t *jsignal, int32_t *ierror) {
  change_set(*jsignal, ierror, [](uint32_t) { return UINT32_MAX; });
}

// CALL PXFSIGADDSET(JSIGNAL, ISIGNO, IERROR)
void pxfsigaddset_(const int32_t *jsignal, const int32_t *isigno, int32_t *ierror) {
  change_set(*jsignal, ierror, [&](uint32_t mask) { return mask | signal_bit(*isigno); });
}

// CALL PXFSIGDELSET(JSIGNAL, ISIGNO, IERROR)
void pxfsigdelset_(const int32_t *jsignal, const int32_t *isigno, int32_t *ierror) {
  change_set(*jsignal, ierror, [&](uint32_t mask) { return mask & ~signal_bit(*isigno); });
}

// CALL PXFSIGISMEMBER(JSIGNAL, ISIGNO, ISMEMBER, IERROR)
void pxfsigismember_(const int32_t *jsignal, const int32_t *isigno, int32_t *ismember, int32_t *ierror) {
  const SigsetRecord *record = find_sigset(*jsignal, ierror);
  if (record == nullptr)
    return;
  *ismember = (record->mask & signal_bit(*isigno)) != 0 ? 1 : 0;
  *ierror = 0;
}

// CALL PXFSIGPROCMASK(IHOW, JSIGSET, JOSIGSET, IERROR)
// Two names: the one that a Fortran call makes, and the one that programs linked before have in them.
void pxfsigprocmask_(const int32_t *ihow, const int32_t *jsigset, const int32_t *josigset, int32_t *ierror) {
  change_mask(*ihow, *jsigset, *josigset, ierror);
}

void fortran_pxfsigprocmask(const int32_t *ihow, const int32_t *jsigset, const int32_t *josigset,
                            int32_t *ierror) {
  change_mask(*ihow, *jsigset, *josigset, ierror);
}

// CALL PXFSIGPENDING(JSIGSET, IERROR)
void pxfsigpending_(const int32_t *jsigset, int32_t *ierror) {
  SigsetRecord *record = find_sigset(*jsigset, ierror);
  if (record == nullptr)
    return;
  sigset_t set;
  report(sigpending(&set), ierror);
  if (*ierror == 0)
    record->mask = mask_of(set);
}

// CALL PXFSIGSUSPEND(JSIGSET, IERROR)
// A record of another kind is an unknown handle here. It returns only when a signal was caught, so EINTR is
// the normal outcome.
void pxfsigsuspend_(const int32_t *jsigset, int32_t *ierror) {
  const Record *record = find_record(*jsigset);
  if (record == nullptr || record->kind != static_cast<uint32_t>(Kind::Sigset))
    return refuse(ierror, ENOHANDLE);
  const sigset_t set = host_set(reinterpret_cast<const SigsetRecord *>(record)->mask);
  report(sigsuspend(&set), ierror);
}
