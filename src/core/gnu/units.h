// What units.f90 offers: the run-time's units, through the language itself.
#ifndef QXPORT_CORE_GNU_UNITS_H
#define QXPORT_CORE_GNU_UNITS_H

#include <cstdint>

extern "C" {

void qxcore_gnu_exit(int32_t status);

// Is the unit the program's and connected? Asked before anything else of a negative number.
bool qxcore_gnu_is_open(int32_t unit);

// The descriptor of a unit, or -1.
int32_t qxcore_gnu_descriptor(intptr_t unit);

// The name of the file that a unit is connected to, not terminated; its length.
int32_t qxcore_gnu_file_name(int32_t unit, char *name, int32_t capacity);

// Opens a unit on an existing file for the given action (0 read, 1 write, 2 both); 0, or not.
int32_t qxcore_gnu_open(int32_t unit, const char *path, int32_t path_length, int32_t action);

// 0 with the next character; -1 at the end of the file or for a unit that is not connected; or an error
// number.
int32_t qxcore_gnu_read_character(const int32_t *unit, char *next);

// Is the unit connected, and for writing?
bool qxcore_gnu_is_writable(int32_t unit);

// 0, or not.
int32_t qxcore_gnu_write_character(int32_t unit, int32_t character);

// In bytes; negative where there is none.
int64_t qxcore_gnu_file_size(int32_t unit);
int64_t qxcore_gnu_position(int32_t unit);

// Moves a unit to an absolute position in bytes, or to its beginning; 0, or not.
int32_t qxcore_gnu_seek(int32_t unit, int64_t offset);
int32_t qxcore_gnu_rewind(int32_t unit);

// 0, or not.
int32_t qxcore_gnu_flush(int32_t unit);

}  // extern "C"

#endif
