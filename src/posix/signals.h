// The bridge between the host's signal delivery, which hands a handler the signal number by value, and
// Fortran procedures, which take every argument by reference.
#ifndef QXPORT_POSIX_SIGNALS_H
#define QXPORT_POSIX_SIGNALS_H

#include <cstdint>

extern "C" {

// What the host calls: it calls the Fortran procedure installed for the signal.
void posixlib_signal_handler(int signal);

// What Fortran calls: it calls the native handler that was found installed for the signal.
void posixlib_fortran_wrapper(const int32_t *signal);

}  // extern "C"

#endif
