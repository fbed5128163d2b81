// Signal actions whose handlers are Fortran procedures, and the sending of and waiting for signals.
#include "posix/signals.h"

#include "posix/file_name.h"
#include "posix/signal_sets.h"
#include "records/records.h"

#include <unistd.h>

using namespace qxport;

namespace {

using FortranHandler = void (*)(int32_t *);
using NativeHandler = void (*)(int);

// By signal number: the Fortran procedure installed, and the native handler that was found installed and
// handed out. Read while a signal is handled, so each is one machine word; an entry is overwritten and never
// cleared.
void *volatile fortran_signal_handlers[LAST_SIGNAL + 1];
void *volatile fortran_old_handlers[LAST_SIGNAL + 1];

// The host's C library sets this bit in the actions it installs; it is none of the caller's.
constexpr int RESTORER_FLAG = 0x04000000;

bool is_disposition(int64_t handler) {
  return handler == 0 || handler == 1;
}

// Reads a set's mask through the handle in an action's `sa_mask`; 0 stands for no set.
bool read_mask(int32_t handle, uint32_t *mask, int32_t *ierror) {
  *mask = 0;
  if (handle == 0)
    return true;
  const SigsetRecord *record = find_record_as<SigsetRecord>(handle, Kind::Sigset, ierror);
  if (record != nullptr)
    *mask = record->mask;
  return record != nullptr;
}

// The host's action of a record, and the Fortran procedure that it installs, if any.
bool host_action(const SigactionRecord &record, struct sigaction *action, void **procedure, int32_t *ierror) {
  if (is_disposition(record.sa_handler_)) {
    action->sa_handler = record.sa_handler_ == 0 ? SIG_DFL : SIG_IGN;
  } else {
    *procedure = find_procedure(static_cast<int32_t>(record.sa_handler_));
    if (*procedure == nullptr) {
      refuse(ierror, ENOHANDLE);
      return false;
    }
    action->sa_handler = posixlib_signal_handler;
  }
  uint32_t mask;
  if (!read_mask(record.sa_mask, &mask, ierror))
    return false;
  action->sa_mask = host_set(mask);
  action->sa_flags = record.sa_flags;
  return true;
}

// What the record's `sa_handler` says of an old handler; false with the error reported.
bool describe_handler(int32_t signal, NativeHandler handler, int64_t *described, int32_t *ierror) {
  if (handler == SIG_DFL || handler == SIG_IGN) {
    *described = handler == SIG_DFL ? 0 : 1;
    return true;
  }
  const bool fortran = handler == posixlib_signal_handler;
  void *procedure =
      fortran ? fortran_signal_handlers[signal] : reinterpret_cast<void *>(posixlib_fortran_wrapper);
  const int32_t handle = procedure == nullptr ? 0 : get_handle_from_static_address(procedure);
  if (procedure != nullptr && handle == 0) {
    *ierror = ENOHANDLE;
    if (fortran)
      errno = ENOMEM;
    return false;
  }
  if (!fortran)
    fortran_old_handlers[signal] = reinterpret_cast<void *>(handler);
  *described = handle;
  return true;
}

// The handle of a procedure, widened so that one of 32-bit addresses stays positive.
int64_t widened(int64_t handle) {
  return static_cast<uint32_t>(handle);
}

bool fill(SigactionRecord *record, int32_t signal, const struct sigaction &action, int32_t *ierror) {
  record->sa_flags = action.sa_flags & ~RESTORER_FLAG;
  if (record->sa_mask != 0) {
    SigsetRecord *set = find_record_as<SigsetRecord>(record->sa_mask, Kind::Sigset, ierror);
    if (set == nullptr)
      return false;
    set->mask = mask_of(action.sa_mask);
  }
  int64_t described;
  if (!describe_handler(signal, action.sa_handler, &described, ierror))
    return false;
  record->sa_handler_ = widened(described);
  return true;
}

}  // namespace

void posixlib_signal_handler(int signal) {
  if (signal < 1 || signal > LAST_SIGNAL)
    return;
  const auto procedure = reinterpret_cast<FortranHandler>(fortran_signal_handlers[signal]);
  if (procedure == nullptr)
    return;
  // What the handler does must not change what the interrupted code reads in errno.
  const int before = errno;
  AnyKind number(signal);
  procedure(number);
  errno = before;
}

void posixlib_fortran_wrapper(const int32_t *signal) {
  const int32_t number = *signal;
  if (number < 1 || number > LAST_SIGNAL)
    return;
  const auto handler = reinterpret_cast<NativeHandler>(fortran_old_handlers[number]);
  if (handler != nullptr)
    handler(number);
}

// CALL PXFSIGACTION(ISIG, JSIGACT, JOSIGACT, IERROR)
// All handles are checked before the host's call; a set in the old action's record only behind it, with the
// new action installed by then.
void pxfsigaction_(const int32_t *isig, const int32_t *jsigact, const int32_t *josigact, int32_t *ierror) {
  const int32_t signal = *isig;
  if (signal < 0 || signal > LAST_SIGNAL)
    return refuse(ierror, EINVAL);

  struct sigaction action = {};
  void *procedure = nullptr;
  if (*jsigact != 0) {
    const SigactionRecord *record = find_record_as<SigactionRecord>(*jsigact, Kind::Sigaction, ierror);
    if (record == nullptr || !host_action(*record, &action, &procedure, ierror))
      return;
  }
  SigactionRecord *old_record = nullptr;
  if (*josigact != 0) {
    old_record = find_record_as<SigactionRecord>(*josigact, Kind::Sigaction, ierror);
    if (old_record == nullptr)
      return;
  }

  struct sigaction old_action = {};
  if (sigaction(signal, *jsigact != 0 ? &action : nullptr, old_record != nullptr ? &old_action : nullptr) !=
      0) {
    *ierror = errno;
    return;
  }
  if (old_record != nullptr && !fill(old_record, signal, old_action, ierror))
    return;
  // Behind the old action, which so reports the procedure before.
  if (procedure != nullptr)
    fortran_signal_handlers[signal] = procedure;
  *ierror = 0;
}

// CALL PXFKILL(IPID, ISIG, IERROR)
void pxfkill_(const int32_t *ipid, const int32_t *isig, int32_t *ierror) {
  report(kill(*ipid, *isig), ierror);
}

// CALL PXFALARM(ISECONDS, ISECLEFT, IERROR)
void pxfalarm_(const int32_t *iseconds, int32_t *isecleft, int32_t *ierror) {
  *isecleft = static_cast<int32_t>(alarm(static_cast<unsigned>(*iseconds)));
  *ierror = 0;
}

// CALL PXFPAUSE(IERROR)
void pxfpause_(int32_t *ierror) {
  report(pause(), ierror);
}

// CALL PXFSLEEP(ISECONDS, ISECLEFT, IERROR)
void pxfsleep_(const int32_t *iseconds, int32_t *isecleft, int32_t *ierror) {
  *isecleft = static_cast<int32_t>(sleep(static_cast<unsigned>(*iseconds)));
  *ierror = 0;
}
