// The records behind handles: made, found, copied and released.
#ifndef QXPORT_RECORDS_RECORDS_H
#define QXPORT_RECORDS_RECORDS_H

#include "records/handles.h"
#include "records/outcome.h"
#include "records/strings.h"

#include <qxport_records.h>

#include <type_traits>

namespace qxport {

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

// The record of a handle if it is of one kind, for the routines that fill or read it. Otherwise null, with
// ENOHANDLE or EINVAL reported.
Record *find_record_of_kind(int32_t handle, Kind kind, int32_t *ierror);

template <typename T>
T *find_record_as(int32_t handle, Kind kind, int32_t *ierror) {
  return reinterpret_cast<T *>(find_record_of_kind(handle, kind, ierror));
}

// The string of a component.
inline OwnedString owned_string(Record *record, const Component &component) {
  return {record->at<char *>(component.offset), record->at<size_t>(component.length_offset)};
}

// Releases the strings that a component owns, and forgets them.
void release_strings(Record *record, const Component &component);

}  // namespace qxport

#endif
