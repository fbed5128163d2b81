#!/usr/bin/env bash
# A program may have procedures and services of its own with the names of ours, in its objects or in an archive that it
# is linked with: it links, shared and static, its own are what it calls, and the module's are ours.
# shellcheck source=common.bash
source "$(dirname "$0")/common.bash"
sources=$SOURCE_DIR/tests/link
export QXPORT_TEST_WORD='a word'

# The libraries as a link line names them: "shared gnu" or "static posix".
shared() {
  printf '%s\n' "-L$QXPORT_LIB" "-L$QXCORE_LIB" -lqxportmt "-lqxcoremt_$1"
}
static() {
  printf '%s\n' "$QXPORT_LIB/libqxportmt.a" "$QXCORE_LIB/libqxcoremt_$1.a" -lm
}

"$FC" "${target_flags[@]}" -c "$sources/own_procedures.f90"
ar rc libown.a own_procedures.o

for linkage in shared static; do
  mapfile -t gnu < <($linkage gnu)
  mapfile -t posix < <($linkage posix)

  program_fortran "procedures_$linkage" "$sources/call_own_procedures.f90" own_procedures.o "${gnu[@]}"
  program_fortran "archive_before_$linkage" "$sources/call_own_procedures.f90" libown.a "${gnu[@]}"
  # As a compiler's run-time stands behind all else on its link line.
  program_fortran "archive_behind_$linkage" "$sources/call_own_procedures.f90" "${gnu[@]}" libown.a

  program_fortran "service_$linkage" "$sources/own_service.f90" "${gnu[@]}"
  program_c "service_c_$linkage" "$sources/own_service.c" "${posix[@]}"
done

names() {
  "$PYTHON" "$sources/catalogue_names.py" "$SOURCE_DIR/api" "$1"
}
mapfile -t routines < <(apigen --list-symbols qxport --target "$TARGET" | grep -vxF "$(names data)")
mapfile -t core < <(apigen --list-symbols qxcore --target "$TARGET" | grep -v '^qxport_')
"$PYTHON" "$sources/every_name.py" "${routines[@]}" >every_routine.c
# With all of the companion's names too a program needs none.
"$PYTHON" "$sources/every_name.py" "${routines[@]}" "${core[@]}" >every_routine_and_service.c

mapfile -t libraries < <(shared posix)
program_c every_routine_shared every_routine.c "${libraries[@]}"
program_c every_name_shared every_routine_and_service.c "-L$QXPORT_LIB" -lqxportmt
mapfile -t libraries < <(static posix)
program_c every_routine_static every_routine.c "${libraries[@]}"
program_c every_name_static every_routine_and_service.c "$QXPORT_LIB/libqxportmt.a" -lm

finish
