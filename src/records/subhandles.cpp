// PXFGETSUBHANDLE and PXFCALLSUBHANDLE: procedures named by handle.
#include "records/records.h"

#include "frame/fortran.h"

using namespace qxport;

// CALL PXFGETSUBHANDLE(SUB, JHANDLE, IERROR)
void pxfgetsubhandle_(void (*sub)(), int32_t *jhandle, int32_t *ierror) {
  *jhandle = get_handle_from_static_address(reinterpret_cast<void *>(sub));
  if (*jhandle == 0)
    return refuse(ierror, ENOHANDLE);
  *ierror = 0;
}

namespace {

template <typename Integer>
Integer call(int32_t handle, Integer *value, int32_t *ierror) {
  void *address = find_procedure(handle);
  if (address == nullptr) {
    refuse(ierror, ENOHANDLE);
    return 0;
  }
  const auto procedure = reinterpret_cast<Integer (*)(Integer *)>(address);
  const Integer answer = procedure(value);
  *ierror = 0;
  return answer;
}

}  // namespace

// N = PXFCALLSUBHANDLE(JHANDLE, IVAL, IERROR)
int32_t pxfcallsubhandle_(const int32_t *jhandle, int32_t *ival, int32_t *ierror) {
  return call(*jhandle, ival, ierror);
}

// N = PXFCALLSUBHANDLEI8(JHANDLE, IVAL, IERROR)
int64_t pxfcallsubhandlei8_(const int32_t *jhandle, int64_t *ival, int32_t *ierror) {
  return call(*jhandle, ival, ierror);
}
