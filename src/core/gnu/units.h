// What units.f90 offers: the run-time's units, through the language itself.
#ifndef QXPORT_CORE_GNU_UNITS_H
#define QXPORT_CORE_GNU_UNITS_H

#include <cstdint>

extern "C" {

void qxcore_gnu_exit(int32_t status);

// The descriptor of a unit, or -1.
int32_t qxcore_gnu_descriptor(intptr_t unit);

// The name of the file that a unit is connected to, not terminated; its length.
int32_t qxcore_gnu_file_name(int32_t unit, char *name, int32_t capacity);

// Opens a unit on an existing file for the given action (0 read, 1 write, 2 both); 0, or not.
int32_t qxcore_gnu_open(int32_t unit, const char *path, int32_t path_length, int32_t action);

// Moves a unit to an absolute position in bytes; 0, or not.
int32_t qxcore_gnu_seek(int32_t unit, int64_t offset);

}  // extern "C"

#endif
