// The library's numbered messages.
#ifndef QXPORT_FRAME_MESSAGES_H
#define QXPORT_FRAME_MESSAGES_H

#include <cstdint>

extern "C" {

// Writes the warning line of a code of 1000 to 1009 to standard error; the number of characters written.
int32_t _zelta_lib_warn(int32_t code);

// Writes the error line and ends the process with the code as its exit status (its low eight bits).
[[noreturn]] void _zelta_lib_err(int32_t code);

}  // extern "C"

#endif
