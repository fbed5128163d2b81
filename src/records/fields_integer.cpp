// PXFINTGET and its kin: integer components, arrays and their elements.
#include "records/fields.h"

using namespace qxport;

namespace {

bool is_scalar(const Component &component) {
  return component.type == ComponentType::Int32 || component.type == ComponentType::Int64 ||
         component.type == ComponentType::Count;
}
bool is_settable_scalar(const Component &component) {
  return is_scalar(component) && component.settable;
}
bool is_array(const Component &component) {
  return component.type == ComponentType::Int32Array;
}

template <typename Integer>
void set_scalar(const int32_t *jhandle, const char *compnam, const Integer *value, int32_t *ierror,
                charlen compnam_len) {
  const Field field = find_field(*jhandle, compnam, compnam_len, ierror, is_settable_scalar);
  if (!field)
    return;
  if (field.component->type == ComponentType::Int64)
    field.value<int64_t>() = *value;
  else
    field.value<int32_t>() = static_cast<int32_t>(*value);
}

// The elements of an array component; null with the error reported.
int32_t *find_array(const int32_t *jhandle, const char *compnam, charlen compnam_len, int32_t *ierror,
                    int32_t *capacity) {
  const Field field = find_field(*jhandle, compnam, compnam_len, ierror, is_array);
  if (!field)
    return nullptr;
  *capacity = static_cast<int32_t>(field.component->capacity);
  return &field.value<int32_t>();
}

template <typename Integer>
void get_array(const int32_t *jhandle, const char *compnam, Integer *value, int32_t *ialen, int32_t *ierror,
               charlen compnam_len) {
  int32_t capacity;
  const int32_t *elements = find_array(jhandle, compnam, compnam_len, ierror, &capacity);
  if (elements == nullptr)
    return;
  if (*ialen > capacity) {
    *ialen = capacity;
    *ierror = EARRAYLEN;
  }
  for (int32_t i = 0; i < *ialen; ++i)
    value[i] = elements[i];
}

// IALEN stays as the caller set it, unlike in a get.
template <typename Integer>
void set_array(const int32_t *jhandle, const char *compnam, const Integer *value, const int32_t *ialen,
               int32_t *ierror, charlen compnam_len) {
  int32_t capacity;
  int32_t *elements = find_array(jhandle, compnam, compnam_len, ierror, &capacity);
  if (elements == nullptr)
    return;
  if (*ialen > capacity)
    *ierror = EARRAYLEN;
  for (int32_t i = 0; i < std::min(*ialen, capacity); ++i)
    elements[i] = static_cast<int32_t>(value[i]);
}

// One element of an array component, counted from 1; null with the error reported.
int32_t *find_element(const int32_t *jhandle, const char *compnam, charlen compnam_len, int32_t index,
                      int32_t *ierror) {
  int32_t capacity;
  int32_t *elements = find_array(jhandle, compnam, compnam_len, ierror, &capacity);
  if (elements == nullptr)
    return nullptr;
  if (index < 1 || index > capacity) {
    *ierror = EARRAYLEN;
    return nullptr;
  }
  return &elements[index - 1];
}

}  // namespace

// CALL PXFINTGET(JHANDLE, COMPNAM, VALUE, IERROR)
void pxfintget_(const int32_t *jhandle, const char *compnam, int32_t *value, int32_t *ierror,
                charlen compnam_len) {
  const Field field = find_field(*jhandle, compnam, compnam_len, ierror, is_scalar);
  if (!field)
    return;
  if (field.component->type != ComponentType::Int64) {
    *value = field.value<int32_t>();
    return;
  }
  const int64_t wide = field.value<int64_t>();
  *value = static_cast<int32_t>(wide);
  if (field.component->checked && *value != wide) {
    *value = 0;
    *ierror = errno = ERANGE;
  }
}

// CALL PXFINTSET(JHANDLE, COMPNAM, VALUE, IERROR)
void pxfintset_(const int32_t *jhandle, const char *compnam, const int32_t *value, int32_t *ierror,
                charlen compnam_len) {
  set_scalar(jhandle, compnam, value, ierror, compnam_len);
}

// CALL PXFINT8GET(JHANDLE, COMPNAM, VALUE, IERROR)
// Only the low four bytes of VALUE are written, whatever the component's width: a caller that zeroes VALUE
// first gets the unsigned low 32 bits.
void pxfint8get_(const int32_t *jhandle, const char *compnam, int64_t *value, int32_t *ierror,
                 charlen compnam_len) {
  const Field field = find_field(*jhandle, compnam, compnam_len, ierror, is_scalar);
  // On this byte order the low half stands first in both.
  if (field)
    memcpy(value, &field.value<int32_t>(), sizeof(int32_t));
}

// CALL PXFINT8SET(JHANDLE, COMPNAM, VALUE, IERROR)
void pxfint8set_(const int32_t *jhandle, const char *compnam, const int64_t *value, int32_t *ierror,
                 charlen compnam_len) {
  set_scalar(jhandle, compnam, value, ierror, compnam_len);
}

// CALL PXFAINTGET(JHANDLE, COMPNAM, VALUE, IALEN, IERROR)
// The one routine that reads 32 bits of the name's length.
void pxfaintget_(const int32_t *jhandle, const char *compnam, int32_t *value, int32_t *ialen, int32_t *ierror,
                 charlen compnam_len) {
  get_array(jhandle, compnam, value, ialen, ierror, static_cast<int32_t>(compnam_len));
}

// CALL PXFAINTSET(JHANDLE, COMPNAM, VALUE, IALEN, IERROR)
void pxfaintset_(const int32_t *jhandle, const char *compnam, const int32_t *value, const int32_t *ialen,
                 int32_t *ierror, charlen compnam_len) {
  set_array(jhandle, compnam, value, ialen, ierror, compnam_len);
}

// CALL PXFAINT8GET(JHANDLE, COMPNAM, VALUE, IALEN, IERROR)
void pxfaint8get_(const int32_t *jhandle, const char *compnam, int64_t *value, int32_t *ialen,
                  int32_t *ierror, charlen compnam_len) {
  get_array(jhandle, compnam, value, ialen, ierror, compnam_len);
}

// CALL PXFAINT8SET(JHANDLE, COMPNAM, VALUE, IALEN, IERROR)
void pxfaint8set_(const int32_t *jhandle, const char *compnam, const int64_t *value, const int32_t *ialen,
                  int32_t *ierror, charlen compnam_len) {
  set_array(jhandle, compnam, value, ialen, ierror, compnam_len);
}

// CALL PXFEINTGET(JHANDLE, COMPNAM, INDEX, VALUE, IERROR)
void pxfeintget_(const int32_t *jhandle, const char *compnam, const int32_t *index, int32_t *value,
                 int32_t *ierror, charlen compnam_len) {
  const int32_t *element = find_element(jhandle, compnam, compnam_len, *index, ierror);
  if (element != nullptr)
    *value = *element;
}

// CALL PXFEINTSET(JHANDLE, COMPNAM, INDEX, VALUE, IERROR)
void pxfeintset_(const int32_t *jhandle, const char *compnam, const int32_t *index, const int32_t *value,
                 int32_t *ierror, charlen compnam_len) {
  int32_t *element = find_element(jhandle, compnam, compnam_len, *index, ierror);
  if (element != nullptr)
    *element = *value;
}
