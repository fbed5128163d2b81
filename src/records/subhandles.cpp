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

// N = PXFCALLSUBHANDLE(JHANDLE, IVAL, IERROR)
int32_t pxfcallsubhandle_(const int32_t *jhandle, int32_t *ival, int32_t *ierror) {
  void *address = find_procedure(*jhandle);
  if (address == nullptr) {
    refuse(ierror, ENOHANDLE);
    return 0;
  }
  const auto procedure = reinterpret_cast<int32_t (*)(int32_t *)>(address);
  const int32_t answer = procedure(ival);
  *ierror = 0;
  return answer;
}
