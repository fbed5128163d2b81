// What the library expects of a Fortran run-time. libqxportmt leaves these names undefined;
// libqxcoremt_<provider> supplies them as weak definitions, so that a program or a compiler's own run-time
// can take any of them over.
#ifndef QXPORT_CONTRACT_SERVICES_H
#define QXPORT_CONTRACT_SERVICES_H

#include <cstdint>

// Inside the companion library: weak and exported. Elsewhere: a plain reference.
#ifndef QXPORT_SERVICE_API
#define QXPORT_SERVICE_API
#endif
#ifndef QXPORT_CORE_API
#define QXPORT_CORE_API
#endif

// What the read of a character answers at the end of a file.
constexpr int32_t READ_END = -2;

// The elements of a saved state of the random generator.
constexpr intptr_t RANDOM_STATE_WORDS = 6;

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

// The next character of a unit, 0 to 255; READ_END at the end of the file, another negative number for a
// failure.
QXPORT_SERVICE_API int32_t __msportlib_d_readchar(intptr_t unit);

// Writes a character to a unit; negative for a failure.
QXPORT_SERVICE_API int32_t __msportlib_d_writechar(intptr_t unit, int32_t character);

// Moves a unit by SEEK_SET, SEEK_CUR or SEEK_END; 0, or minus an error number.
QXPORT_SERVICE_API int32_t __msportlib_d_fseek(intptr_t unit, int64_t offset, int32_t origin);
QXPORT_SERVICE_API int32_t __msportlib_d_fseek_i8(intptr_t unit, int64_t offset, int32_t origin);

// The position of a unit in bytes, or minus an error number.
QXPORT_SERVICE_API int64_t __msportlib_d_curpos(intptr_t unit);
QXPORT_SERVICE_API int64_t __msportlib_d_curpos_i8(intptr_t unit);

// Stores the POSIX input/output flag and answers the former one; at first 0.
QXPORT_SERVICE_API int32_t __msportlib_set_posix_io_flag(const int32_t *new_flag);

// Argument *m of the command line (0 is the program's name), blank-padded, and its full length; -1 for none.
QXPORT_SERVICE_API void for_getarg(const int32_t *m, char *value, int32_t *length, intptr_t value_length);

// The number of arguments, the program's name included.
QXPORT_SERVICE_API int32_t for_nargs(void);

// The instant at which the process started, in seconds since 1970-01-01 00:00:00 UTC.
QXPORT_SERVICE_API double for__process_start_time(void);

// The seconds that have passed since an instant.
QXPORT_SERVICE_API double for_since_epoch_t(const double *instant);

// The next value of the random generator: uniform in [0, 1), or of 31 bits.
QXPORT_SERVICE_API double __FFdrand();
QXPORT_SERVICE_API float __FFfrand();
QXPORT_SERVICE_API int32_t __FFirand();

// Restarts the generator's sequence from a seed, or from the one that it has at first.
QXPORT_SERVICE_API void __FFsetseed(int32_t seed);
QXPORT_SERVICE_API void __FFresetseed();

// The seed that the sequence was last started from.
QXPORT_SERVICE_API void __FFgetseed(int32_t *seed);

// The generator's whole state, RANDOM_STATE_WORDS elements: 0, or EINVAL for another count or for what is no
// state.
QXPORT_SERVICE_API int32_t __FFsavestate(int64_t *state, intptr_t count);
QXPORT_SERVICE_API int32_t __FFrestorestate(const int64_t *state, intptr_t count);

// Establishes a condition handler: non-zero, or 0 in a run-time that has none.
QXPORT_SERVICE_API int32_t for__intermediate_establish(void *handler, void *context, void *former,
                                                       void *former_context);

// Writes a unit's buffers out and commits the file to its device: 1, or 0 for a unit that cannot be.
QXPORT_CORE_API int32_t commitqq_(const int32_t *unit);

// Writes a unit's buffers out: 1, or 0 for a unit that cannot be.
QXPORT_CORE_API int32_t flushqq_(const int32_t *unit);

// Replaces the bits of this thread's floating-point control word that mask selects; the resulting word. The
// layout is that of contract/floating_point.h.
QXPORT_SERVICE_API uint32_t controlfp(uint32_t value, uint32_t mask);

// The exceptions that this thread's arithmetic has raised, in either unit of the processor.
QXPORT_SERVICE_API uint32_t statusfp();

// The same, and clears them.
QXPORT_SERVICE_API uint32_t clearfp();

}  // extern "C"

#endif
