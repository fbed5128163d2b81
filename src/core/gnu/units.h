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

// Has the file of a descriptor positions? Asked by units.f90.
bool qxcore_gnu_has_positions(int32_t fd);

// How characters are moved on a unit.
enum class QxcoreWay : int32_t {
  Refused,  // it is not connected, or not for that direction
  Direct,   // by FGETC and FPUTC: a file that has positions, access sequential or direct
  Mended,   // likewise, access stream: its position is to be mended afterwards
  Records,  // by READ and by FPUTC: a pipe, a terminal
  Bytes,    // by READ and WRITE: unformatted, access stream
};
QxcoreWay qxcore_gnu_way_of_reading(int32_t unit);
QxcoreWay qxcore_gnu_way_of_writing(int32_t unit);

// The next character by each way; 0, or -1 at the end of the file, also for a failed read.
int32_t qxcore_gnu_get_character(int32_t unit, char *next);
int32_t qxcore_gnu_read_record(int32_t unit, char *next);
int32_t qxcore_gnu_read_byte(int32_t unit, char *next);

// Ends a record that WRITE began without advancing, without a line end.
void qxcore_gnu_end_record(int32_t unit);

// Writes a character; 0, or not.
int32_t qxcore_gnu_put_character(int32_t unit, char next);
int32_t qxcore_gnu_write_byte(int32_t unit, char next);

// Tells the run-time the position of a formatted unit of stream access.
void qxcore_gnu_mend_position(int32_t unit, int64_t position);

// In bytes; negative where there is none.
int64_t qxcore_gnu_file_size(int32_t unit);
int64_t qxcore_gnu_position(int32_t unit);

// Moves a unit that has positions to one of them, in bytes; 0, or not.
int32_t qxcore_gnu_seek(int32_t unit, int64_t position);

// Where a unit begins that nothing was read from or written to; 0, or not.
int32_t qxcore_gnu_begin_at(int32_t unit, int64_t position);

// 0, or not.
int32_t qxcore_gnu_flush(int32_t unit);

}  // extern "C"

#endif
