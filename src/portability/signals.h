// The one native handler behind all procedures of SIGNAL.
#ifndef QXPORT_PORTABILITY_SIGNALS_H
#define QXPORT_PORTABILITY_SIGNALS_H

extern "C" {

// What the host calls: it calls the Fortran procedure registered for the signal.
void portlib_handler(int signal);

}  // extern "C"

#endif
