// The common start of every routine that reads or writes a component.
#ifndef QXPORT_RECORDS_FIELDS_H
#define QXPORT_RECORDS_FIELDS_H

#include "frame/fortran.h"
#include "records/records.h"

#include <algorithm>

namespace qxport {

// The record of a handle, with IERROR set to 0; or null, with ENOHANDLE reported.
inline Record *begin_access(int32_t handle, int32_t *ierror) {
  Record *record = find_record(handle);
  if (record == nullptr)
    refuse(ierror, ENOHANDLE);
  else
    *ierror = 0;
  return record;
}

// The named component of a record if the routine's kind of access (`allowed`) fits it; or null, with ENONAME
// reported. Of a component's name the whole hidden length counts, of the binding's other texts its low half.
template <typename Predicate>
const Component *find_component(const Record *record, const char *compnam, charlen length, int32_t *ierror,
                                Predicate allowed) {
  const RecordKind *kind = description_of(record);
  if (kind != nullptr) {
    const FoldedName wanted(compnam, length_of(length));
    for (const Component &component : kind->components)
      if (component.name == wanted && allowed(component))
        return &component;
  }
  refuse(ierror, ENONAME);
  return nullptr;
}

// A component of a record; none with the error reported.
struct Field {
  Record *record;
  const Component *component;

  explicit operator bool() const { return component != nullptr; }
  template <typename T>
  T &value() const {
    return record->at<T>(component->offset);
  }
};

template <typename Predicate>
Field find_field(int32_t handle, const char *compnam, charlen length, int32_t *ierror, Predicate allowed) {
  Record *record = begin_access(handle, ierror);
  return {record, record == nullptr ? nullptr : find_component(record, compnam, length, ierror, allowed)};
}

}  // namespace qxport

#endif
