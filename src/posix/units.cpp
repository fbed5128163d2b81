// The bridge between Fortran units and descriptors, and single characters on units.
#include "contract/services.h"
#include "frame/fortran.h"
#include "records/records.h"

using namespace qxport;

namespace {

constexpr int32_t STDIN_UNIT = 5;
constexpr int32_t STDOUT_UNIT = 6;

void read_character(int32_t unit, char *ch, int32_t *ierror) {
  const int32_t answer = __msportlib_d_readchar(unit);
  if (answer >= 0) {
    *ch = static_cast<char>(answer);
    *ierror = 0;
  } else {
    *ierror = answer == READ_END ? EEND : answer;
  }
}

void write_character(int32_t unit, const char *ch, int32_t *ierror) {
  const int32_t answer = __msportlib_d_writechar(unit, static_cast<unsigned char>(*ch));
  *ierror = answer < 0 ? answer : 0;
}

}  // namespace

// CALL PXFPOSIXIO(NEW, IOLD, IERROR)
// The setting is stored either way; turning it off is reported as EINVAL, by which programs learn that the
// run-time's own input and output stay as they are.
void pxfposixio_(const int32_t *new_, int32_t *iold, int32_t *ierror) {
  *iold = __msportlib_set_posix_io_flag(new_);
  *ierror = *new_ == 0 ? EINVAL : 0;
}

// CALL PXFFILENO(IUNIT, IFILDES, IERROR)
void pxffileno_(const int32_t *iunit, int32_t *ifildes, int32_t *ierror) {
  int64_t scratch = 0;
  *ifildes = __msportlib_d_gethandle(*iunit, nullptr, &scratch);
  *ierror = *ifildes < 0 ? EBADF : 0;
}

// CALL PXFFDOPEN(IFILDES, IUNIT, ACCESS, IERROR)
void pxffdopen_(const int32_t *ifildes, const int32_t *iunit, const char *access, int32_t *ierror,
                charlen access_len) {
  *ierror = for_fdopen(*ifildes, *iunit, access, access_len);
}

// CALL PXFFFLUSH(IUNIT, IERROR)
void pxffflush_(const int32_t *iunit, int32_t *ierror) {
  *ierror = commitqq_(iunit) == 0 ? EBADF : 0;
}

// CALL PXFFSEEK(IUNIT, IOFFSET, IWHENCE, IERROR)
void pxffseek_(const int32_t *iunit, const int32_t *ioffset, const int32_t *iwhence, int32_t *ierror) {
  *ierror = __msportlib_d_fseek(*iunit, *ioffset, *iwhence) < 0 ? EINVAL : 0;
}

// CALL PXFFTELL(IUNIT, IOFFSET, IERROR)
void pxfftell_(const int32_t *iunit, int32_t *ioffset, int32_t *ierror) {
  const int64_t position = __msportlib_d_curpos(*iunit);
  if (position < 0) {
    *ierror = EINVAL;
    return;
  }
  *ioffset = static_cast<int32_t>(position);
  *ierror = 0;
}

// CALL PXFGETC(CH, IERROR)
void pxfgetc_(char *ch, int32_t *ierror, charlen) {
  read_character(STDIN_UNIT, ch, ierror);
}

// CALL PXFFGETC(IUNIT, CH, IERROR)
void pxffgetc_(const int32_t *iunit, char *ch, int32_t *ierror, charlen) {
  read_character(*iunit, ch, ierror);
}

// CALL PXFPUTC(CH, IERROR)
void pxfputc_(const char *ch, int32_t *ierror, charlen) {
  write_character(STDOUT_UNIT, ch, ierror);
}

// CALL PXFFPUTC(IUNIT, CH, IERROR)
void pxffputc_(const int32_t *iunit, const char *ch, int32_t *ierror, charlen) {
  write_character(*iunit, ch, ierror);
}
