// The routines for types that no component of any structure has. Programs written for the whole standard call
// them and get ENONAME.
#include "records/fields.h"

using namespace qxport;

// IERROR stands behind VALUE; behind an array's length or an element's index; behind both and a length.
#define SCALAR(routine, Value, ...)                                                                          \
  void routine(const int32_t *, const char *, Value, int32_t *ierror, __VA_ARGS__) {                         \
    refuse(ierror, ENONAME);                                                                                 \
  }
#define ARRAY(routine, Value, ...)                                                                           \
  void routine(const int32_t *, const char *, Value, const int32_t *, int32_t *ierror, __VA_ARGS__) {        \
    refuse(ierror, ENONAME);                                                                                 \
  }
#define ELEMENT(routine, Value, ...)                                                                         \
  void routine(const int32_t *, const char *, const int32_t *, Value, int32_t *ierror, __VA_ARGS__) {        \
    refuse(ierror, ENONAME);                                                                                 \
  }

SCALAR(pxfrealget_, float *, charlen)
SCALAR(pxfrealset_, const float *, charlen)
SCALAR(pxfdblget_, double *, charlen)
SCALAR(pxfdblset_, const double *, charlen)
SCALAR(pxflgclget_, int32_t *, charlen)
SCALAR(pxflgclset_, const int32_t *, charlen)
SCALAR(pxfcharget_, char *, charlen, charlen)
SCALAR(pxfcharset_, const char *, charlen, charlen)

ARRAY(pxfarealget_, float *, charlen)
ARRAY(pxfarealset_, const float *, charlen)
ARRAY(pxfadblget_, double *, charlen)
ARRAY(pxfadblset_, const double *, charlen)
ARRAY(pxfalgclget_, int32_t *, charlen)
ARRAY(pxfalgclset_, const int32_t *, charlen)
ARRAY(pxfacharget_, char *, charlen, charlen)
ARRAY(pxfacharset_, const char *, charlen, charlen)

ELEMENT(pxferealget_, float *, charlen)
ELEMENT(pxferealset_, const float *, charlen)
ELEMENT(pxfedblget_, double *, charlen)
ELEMENT(pxfedblset_, const double *, charlen)
ELEMENT(pxfeint8get_, int64_t *, charlen)
ELEMENT(pxfeint8set_, const int64_t *, charlen)
ELEMENT(pxfelgclget_, int32_t *, charlen)
ELEMENT(pxfelgclset_, const int32_t *, charlen)
ELEMENT(pxfecharget_, char *, charlen, charlen)
ELEMENT(pxfecharset_, const char *, charlen, charlen)

// CALL PXFASTRGET(JHANDLE, COMPNAM, VALUE, IALEN, ILEN, IERROR)
void pxfastrget_(const int32_t *, const char *, char *, const int32_t *, int32_t *, int32_t *ierror, charlen,
                 charlen) {
  refuse(ierror, ENONAME);
}

// CALL PXFASTRSET(JHANDLE, COMPNAM, VALUE, IALEN, ILEN, IERROR)
void pxfastrset_(const int32_t *, const char *, const char *, const int32_t *, const int32_t *,
                 int32_t *ierror, charlen, charlen) {
  refuse(ierror, ENONAME);
}

// CALL PXFESTRSET(JHANDLE, COMPNAM, INDEX, VALUE, ILEN, IERROR)
void pxfestrset_(const int32_t *, const char *, const int32_t *, const char *, const int32_t *,
                 int32_t *ierror, charlen, charlen) {
  refuse(ierror, ENONAME);
}
