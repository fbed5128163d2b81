// The records behind handles: made, found, copied and released.
#ifndef QXPORT_POSIX_RECORDS_H
#define QXPORT_POSIX_RECORDS_H

#include "posix/handles.h"

#include <qxport_records.h>

#include <cerrno>
#include <type_traits>

namespace qxport {

// The binding's own error numbers.
constexpr int32_t EARRAYLEN = 125;
constexpr int32_t ENONAME = 126;
constexpr int32_t ENOHANDLE = 127;
constexpr int32_t ETRUNC = 129;

// What stands at the head of every record.
struct Record {
  uint32_t kind;

  template <typename T>
  T &at(uint32_t offset) {
    return *reinterpret_cast<T *>(reinterpret_cast<char *>(this) + offset);
  }
};

// The record of a handle, or null.
inline Record *find_record(int32_t handle) {
  return static_cast<Record *>(get_address_from_handle(handle, AllocatableHandles));
}

// The description of a record's kind; null for what is registered and no record, a directory stream.
const RecordKind *description_of(const Record *record);

// An error that the binding detected itself: IERROR gets `number`, errno EINVAL.
inline void refuse(int32_t *ierror, int32_t number) {
  *ierror = number;
  errno = EINVAL;
}

// The record of a handle if it is of one kind, for the routines that fill or read it. Otherwise null, with
// ENOHANDLE or EINVAL reported.
Record *find_record_of_kind(int32_t handle, Kind kind, int32_t *ierror);

template <typename T>
T *find_record_as(int32_t handle, Kind kind, int32_t *ierror) {
  return reinterpret_cast<T *>(find_record_of_kind(handle, kind, ierror));
}

// Copies `count` characters into a new string with a NUL behind them; null when memory ran out.
char *new_string(const char *text, size_t count);

// Releases the strings that a component owns, and forgets them.
void release_strings(Record *record, const Component &component);

}  // namespace qxport

#endif
