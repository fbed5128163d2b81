// Characters and positions of Fortran units.
#include "contract/services.h"
#include "frame/errors.h"
#include "frame/fortran.h"

using namespace qxport;

namespace {

constexpr int32_t STDIN_UNIT = 5;
constexpr int32_t STDOUT_UNIT = 6;
constexpr int32_t END = -1;

int32_t write_character(int32_t unit, const char *ch) {
  const int32_t answer = __msportlib_d_writechar(unit, static_cast<unsigned char>(*ch));
  return answer < 0 ? set_and_record_local(EINVAL) : 0;
}

// The number is told, and nothing is recorded in the run-time's status.
int64_t told(int64_t position) {
  if (position < 0)
    set_local(static_cast<int32_t>(-position));
  return position;
}

}  // namespace

// N = FGETC(LUNIT, CH)
int32_t fgetc_(const int32_t *lunit, char *ch, charlen) {
  const int32_t answer = __msportlib_d_readchar(*lunit);
  if (answer >= 0) {
    *ch = static_cast<char>(answer);
    return 0;
  }
  return answer == READ_END ? END : set_and_record_local(EINVAL);
}

// N = GETC(CH)
// What hinders it is no matter to loops that read as long as there is something: nothing is recorded.
int32_t getc_(char *ch, charlen) {
  const int32_t answer = __msportlib_d_readchar(STDIN_UNIT);
  if (answer < 0)
    return END;
  *ch = static_cast<char>(answer);
  return 0;
}

// N = FPUTC(LUNIT, CH)
int32_t fputc_(const int32_t *lunit, const char *ch, charlen) {
  return write_character(*lunit, ch);
}

// N = PUTC(CH)
int32_t putc_(const char *ch, charlen) {
  return write_character(STDOUT_UNIT, ch);
}

// N = FSEEK(LUNIT, IOFFSET, IFROM)
// A success is stored as well, so that IERRNO tells of the last seek.
int32_t fseek_(const int32_t *lunit, const int32_t *ioffset, const int32_t *ifrom) {
  return set_local(__msportlib_d_fseek(*lunit, *ioffset, *ifrom));
}

// N = FSEEKI8(LUNIT, IOFFSET, IFROM)
int32_t fseeki8_(const int32_t *lunit, const int64_t *ioffset, const int32_t *ifrom) {
  return set_local(__msportlib_d_fseek_i8(*lunit, *ioffset, *ifrom));
}

// N = FTELL(LUNIT)
// A position from 2 GiB on keeps its low 32 bits, which may look like a failure: FTELLI8 tells it whole.
int32_t ftell_(const int32_t *lunit) {
  return static_cast<int32_t>(told(__msportlib_d_curpos(*lunit)));
}

// N = FTELLI8(LUNIT)
int64_t ftelli8_(const int32_t *lunit) {
  return told(__msportlib_d_curpos_i8(*lunit));
}

// N = GETPOS(LUNIT)
int32_t getpos_(const int32_t *lunit) {
  return static_cast<int32_t>(__msportlib_d_curpos(*lunit));
}

// N = GETPOSI8(LUNIT)
int64_t getposi8_(const int32_t *lunit) {
  return __msportlib_d_curpos_i8(*lunit);
}

// CALL FLUSH(LUNIT)
void flush_(const int32_t *lunit) {
  flushqq_(lunit);
}

QXPORT_ALIAS(fgetc_)
QXPORT_ALIAS(getc_)
QXPORT_ALIAS(fputc_)
QXPORT_ALIAS(putc_)
QXPORT_ALIAS(fseek_)
QXPORT_ALIAS(fseeki8_)
QXPORT_ALIAS(ftell_)
QXPORT_ALIAS(ftelli8_)
QXPORT_ALIAS(getpos_)
QXPORT_ALIAS(getposi8_)
QXPORT_ALIAS(flush_)
