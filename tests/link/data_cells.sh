#!/usr/bin/env bash
# The exported data cells: a program at a fixed address gets copies of them, and the library must work on those copies.
# shellcheck source=common.bash
source "$(dirname "$0")/common.bash"

# A Fortran program reads the one that is a variable of the module.
cat >cell.f90 <<'PROGRAM'
use qxport, only: access, ierrno, portlib_local_errno
implicit none
integer :: answer
answer = access('/no/such/name', 'r')
if (portlib_local_errno /= 22) error stop 'the program does not see what the library stored'
portlib_local_errno = 7
if (ierrno() /= 7) error stop 'the library does not see what the program stored'
end
PROGRAM

for position in '-fno-pie -no-pie' '-fPIE -pie' '-fPIC'; do
  read -ra flags <<<"$position"
  program_c cells "${flags[@]}" "$SOURCE_DIR/tests/link/data_cells.c" "-L$QXPORT_LIB" "-L$QXCORE_LIB" \
    -lqxportmt -lqxcoremt_posix
  program_c cells "${flags[@]}" "$SOURCE_DIR/tests/link/data_cells.c" "$QXPORT_LIB/libqxportmt.a" \
    "$QXCORE_LIB/libqxcoremt_posix.a"
  program_fortran cell "${flags[@]}" cell.f90 "-L$QXPORT_LIB" "-L$QXCORE_LIB" -lqxportmt -lqxcoremt_gnu
done

finish
