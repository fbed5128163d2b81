// The bridge between the host's signals and Fortran procedures that know the desktop's signal numbers.
#ifndef QXPORT_COMPAT_DESKTOP_SIGNALS_H
#define QXPORT_COMPAT_DESKTOP_SIGNALS_H

#include <csignal>
#include <cstdint>

// What the host calls: it calls the Fortran procedure installed for the signal, and answers what that
// answers; 0 where there is none.
extern "C" int32_t portlib_signalQQhandler(int signal, siginfo_t *information, void *context);

#endif
