// CALL PXFSTRUCTCREATE, PXFSTRUCTCOPY, PXFSTRUCTFREE: the life of a record.
#include "records/records.h"

#include "frame/fortran.h"
#include "records/text_length.h"

#include <cstdlib>

using namespace qxport;

namespace {

const RecordKind *kind_named(const char *name, charlen length) {
  const FoldedName wanted(name, length_of(narrow_length(length)));
  for (const RecordKind &kind : RECORD_KINDS)
    if (kind.name == wanted)
      return &kind;
  return nullptr;
}

bool owns_strings(const Component &component) {
  return component.type == ComponentType::String || component.type == ComponentType::Strings;
}

// False when memory ran out: the destination then keeps its string.
bool copy_string(Record *source, Record *destination, const Component &component) {
  const OwnedString string = owned_string(source, component);
  return replace(owned_string(destination, component), string.start, string.length, Ending::Nul);
}

// False when memory ran out: the destination's list is gone by then.
bool copy_strings(Record *source, Record *destination, const Component &component) {
  release_strings(destination, component);
  const int32_t count = source->at<int32_t>(component.length_offset);
  if (count > 0) {
    char **copies = new_strings(source->at<char **>(component.offset), count);
    if (copies == nullptr)
      return false;
    destination->at<char **>(component.offset) = copies;
  }
  destination->at<int32_t>(component.length_offset) = count;
  return true;
}

// But for the counts, which go with their lists.
void copy_numbers(Record *source, Record *destination, const RecordKind &kind) {
  for (const Component &component : kind.components)
    if (component.type == ComponentType::Int32)
      destination->at<int32_t>(component.offset) = source->at<int32_t>(component.offset);
}

// Deep: the two records never share a string. A failure leaves what was reached: the numbers and the strings
// before the one that could not be had.
bool copy_owning(Record *source, Record *destination, const RecordKind &kind) {
  copy_numbers(source, destination, kind);
  for (const Component &component : kind.components) {
    if (component.type == ComponentType::String && !copy_string(source, destination, component))
      return false;
    if (component.type == ComponentType::Strings && !copy_strings(source, destination, component))
      return false;
  }
  return true;
}

}  // namespace

const RecordKind *qxport::description_of(const Record *record) {
  const uint32_t kind = record->kind;
  return kind >= 1 && kind <= std::size(RECORD_KINDS) ? &RECORD_KINDS[kind - 1] : nullptr;
}

Record *qxport::find_record_of_kind(int32_t handle, Kind kind, int32_t *ierror) {
  Record *record = find_record(handle);
  if (record == nullptr) {
    refuse(ierror, ENOHANDLE);
    return nullptr;
  }
  if (record->kind != static_cast<uint32_t>(kind)) {
    refuse(ierror, EINVAL);
    return nullptr;
  }
  return record;
}

void qxport::release_strings(Record *record, const Component &component) {
  if (component.type == ComponentType::Strings)
    release_strings(record->at<char **>(component.offset), record->at<int32_t>(component.length_offset));
  else
    release(owned_string(record, component));
}

// CALL PXFSTRUCTCREATE(STRUCTNAME, JHANDLE, IERROR)
void pxfstructcreate_(const char *structname, int32_t *jhandle, int32_t *ierror, charlen structname_len) {
  const RecordKind *kind = kind_named(structname, structname_len);
  if (kind == nullptr) {
    *ierror = ENONAME;
    return;
  }
  Record *record = static_cast<Record *>(calloc(1, kind->size));
  if (record == nullptr) {
    *ierror = ENOHANDLE;
    return;
  }
  record->kind = static_cast<uint32_t>(kind->kind);
  *jhandle = get_handle_from_alloc_address(record);
  if (*jhandle == 0) {
    free(record);
    *ierror = ENOHANDLE;
    return;
  }
  *ierror = 0;
}

// CALL PXFSTRUCTCOPY(STRUCTNAME, JHANDLE1, JHANDLE2, IERROR)
void pxfstructcopy_(const char *structname, const int32_t *jhandle1, const int32_t *jhandle2, int32_t *ierror,
                    charlen structname_len) {
  Record *source = find_record(*jhandle1);
  Record *destination = find_record(*jhandle2);
  if (source == nullptr || destination == nullptr)
    return refuse(ierror, ENOHANDLE);
  if (source->kind != destination->kind)
    return refuse(ierror, EINVAL);
  const RecordKind *kind = kind_named(structname, structname_len);
  if (kind == nullptr || static_cast<uint32_t>(kind->kind) != source->kind) {
    *ierror = ENONAME;
    return;
  }
  *ierror = 0;
  if (source == destination)
    return;
  if (std::none_of(kind->components.begin(), kind->components.end(), owns_strings))
    memcpy(destination, source, kind->size);
  else if (!copy_owning(source, destination, *kind))
    *ierror = errno;
}

// CALL PXFSTRUCTFREE(JHANDLE, IERROR)
void pxfstructfree_(int32_t *jhandle, int32_t *ierror) {
  Record *record = find_record(*jhandle);
  if (record == nullptr)
    return refuse(ierror, ENOHANDLE);
  const RecordKind *kind = description_of(record);
  if (kind == nullptr)
    return refuse(ierror, ENONAME);
  for (const Component &component : kind->components)
    if (owns_strings(component))
      release_strings(record, component);
  free_alloc_handle(*jhandle);
  free(record);
  *jhandle = 0;
  *ierror = 0;
}
