#include "contract/services.h"

#include "frame/fortran.h"

int32_t for_qxcore_version(char *string, intptr_t length) {
  constexpr char IDENTITY[] =
      "Zelta Fortran core services (" QXCORE_PROVIDER ")\t" QXPORT_VERSION_TEXT "\t" QXPORT_BUILD_DATE;
  qxport::store_padded(string, length, IDENTITY, sizeof(IDENTITY) - 1);
  return 2;
}
