// PXFSTRGET, PXFSTRSET, PXFESTRGET: CHARACTER components.
#include "records/fields.h"
#include "records/text_length.h"

#include <cstdlib>

using namespace qxport;

namespace {

bool is_text(const Component &component) {
  return component.type == ComponentType::Text || component.type == ComponentType::String;
}
bool is_text_list(const Component &component) {
  return component.type == ComponentType::Strings;
}

struct Text {
  const char *start;
  size_t length;
};

// A text of full capacity runs into the component behind it, so it is read up to the record's end, not its
// own.
Text text_of(Record *record, const Component &component) {
  if (component.type == ComponentType::String) {
    const char *string = record->at<char *>(component.offset);
    return {string, string == nullptr ? 0 : record->at<size_t>(component.length_offset)};
  }
  const char *start = reinterpret_cast<const char *>(record) + component.offset;
  return {start, strnlen(start, description_of(record)->size - component.offset)};
}

// Hands a text to the caller: its full length, and as many of its characters as fit, blank-padded.
void deliver_text(const Text &text, char *value, charlen value_len, int32_t *ilen, int32_t *ierror) {
  *ilen = static_cast<int32_t>(text.length);
  if (store_padded(value, narrow_length(value_len), text.start, text.length) < text.length) {
    *ierror = ETRUNC;
    errno = ERANGE;
  }
}

// A text is stored with its NUL. One of 256 characters in `sysname` so ends on the first character of
// `nodename`.
void set_text(Record *record, const Component &component, const Text &text, int32_t *ierror) {
  const size_t stored = std::min<size_t>(text.length, component.capacity);
  if (stored < text.length) {
    *ierror = ETRUNC;
    errno = ERANGE;
  }
  char *start = reinterpret_cast<char *>(record) + component.offset;
  memcpy(start, text.start, stored);
  start[stored] = '\0';
}

// The old string is gone when memory for the new one runs out. A user's texts report ENOMEM then, a group's
// name what the host said.
void set_string(Record *record, const Component &component, const Text &text, int32_t *ierror) {
  release_strings(record, component);
  if (replace(owned_string(record, component), text.start, strnlen(text.start, text.length), Ending::Nul))
    return;
  if (record->kind != static_cast<uint32_t>(Kind::Group))
    errno = ENOMEM;
  *ierror = errno;
}

}  // namespace

// CALL PXFSTRGET(JHANDLE, COMPNAM, VALUE, ILEN, IERROR)
void pxfstrget_(const int32_t *jhandle, const char *compnam, char *value, int32_t *ilen, int32_t *ierror,
                charlen compnam_len, charlen value_len) {
  const Field field = find_field(*jhandle, compnam, compnam_len, ierror, is_text);
  if (field)
    deliver_text(text_of(field.record, *field.component), value, value_len, ilen, ierror);
}

// CALL PXFSTRSET(JHANDLE, COMPNAM, VALUE, ILEN, IERROR)
// The length is looked at before the handle; a negative one counts as huge. The low 32 bits of the variable's
// are compared without a sign.
void pxfstrset_(const int32_t *jhandle, const char *compnam, const char *value, const int32_t *ilen,
                int32_t *ierror, charlen compnam_len, charlen value_len) {
  if (exceeds(*ilen, unsigned_low_half(value_len)))
    return refuse(ierror, EINVAL);
  const Field field = find_field(*jhandle, compnam, compnam_len, ierror, is_text);
  if (!field)
    return;
  const Text text = {value, trimmed_length(value, *ilen)};
  if (field.component->type == ComponentType::String)
    set_string(field.record, *field.component, text, ierror);
  else
    set_text(field.record, *field.component, text, ierror);
}

// CALL PXFESTRGET(JHANDLE, COMPNAM, INDEX, VALUE, ILEN, IERROR)
// Only group records have a list, so the record's kind and the index are looked at before the name.
void pxfestrget_(const int32_t *jhandle, const char *compnam, const int32_t *index, char *value,
                 int32_t *ilen, int32_t *ierror, charlen compnam_len, charlen value_len) {
  Record *record = begin_access(*jhandle, ierror);
  if (record == nullptr)
    return;
  if (record->kind != static_cast<uint32_t>(Kind::Group))
    return refuse(ierror, EINVAL);
  const GroupRecord *group = reinterpret_cast<const GroupRecord *>(record);
  if (*index < 1 || *index > group->gr_nmem)
    return refuse(ierror, EARRAYLEN);
  if (find_component(record, compnam, compnam_len, ierror, is_text_list) == nullptr)
    return;
  const char *member = group->gr_mem == nullptr ? nullptr : group->gr_mem[*index - 1];
  deliver_text({member, member == nullptr ? 0 : strlen(member)}, value, value_len, ilen, ierror);
}
