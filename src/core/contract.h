// What the library expects of a Fortran run-time. libqxportmt leaves these names undefined;
// libqxcoremt_<provider> supplies them as weak definitions, so that a program or a compiler's own run-time
// can take any of them over.
#ifndef QXPORT_CORE_CONTRACT_H
#define QXPORT_CORE_CONTRACT_H

#include <cstdint>

// Inside the companion library: weak and exported. Elsewhere: a plain reference.
#ifndef QXPORT_SERVICE_API
#define QXPORT_SERVICE_API
#endif

extern "C" {

// Records an error in the run-time's status. The library always calls it as (0, number, 0, 0, 0).
QXPORT_SERVICE_API void for_errsns_load(int32_t io, int32_t number, int32_t status, int32_t unit,
                                        int32_t condition);

// Closes the program's units and ends the process; a null address exits with 0.
QXPORT_SERVICE_API void for_exit(const int32_t *status);

// Prints the text on standard error and leaves by SIGABRT.
QXPORT_SERVICE_API void for_abort(const char *text, int32_t length);

// The run-time's identity, blank-padded into string; answers 2.
QXPORT_SERVICE_API int32_t for_qxcore_version(char *string, intptr_t length);

// The descriptor connected to a unit, or -1. With a name buffer also the unit's file name, not terminated:
// *name_length is the buffer's capacity on entry and the stored name's length on return.
QXPORT_SERVICE_API int32_t __msportlib_d_gethandle(intptr_t unit, char *name, int64_t *name_length);

// Connects a descriptor to a unit, sharing its file offset; 0, or an error number.
QXPORT_SERVICE_API int32_t for_fdopen(int32_t fd, int32_t unit, const char *access, intptr_t access_length);

}  // extern "C"

#endif
