#!/usr/bin/env bash
# Every routine is called by a Fortran test through the module, and by another one by its name alone.
# shellcheck source=common.bash
source "$(dirname "$0")/common.bash"
export LC_ALL=C

for library in qxport qxcore; do
  apigen --list-symbols "$library" --target "$TARGET"
done | grep '_$' | sort >exported
# What a Fortran compiler makes of a name of the program's.
grep '^[a-z]' exported | grep -v '^qxport_' >traditional
# The module binds to the alias where there is one. It leaves out what intrinsics of another meaning are named.
sed -nE 's/^    (function|subroutine) (\w+)\(.*/\2_/p' "$GENERATED/fortran/qxport.f90" | sort >bound_to
comm -23 bound_to exported | expect_empty 'bound to what no library exports'

# A program that is not built calls nothing.
for source in "$SOURCE_DIR"/tests/fortran/*.f90; do
  grep -qi '^ *program ' "$source" || continue # what the programs share
  program=$BUILD_DIR/tests/fortran_$(basename "$source" .f90)
  [[ -x $program ]] || printf '%s\n' "$program"
done | expect_empty 'Fortran tests that are not built'
((failures == 0)) || finish

called_by() {
  local program
  for program in "$@"; do
    [[ ! -f $program || ! -x $program ]] || nm -D --undefined-only "$program"
  done | awk '{ print $NF }' | sed 's/@.*//' | sort -u
}
shopt -s extglob
called_by "$BUILD_DIR"/tests/fortran_!(*_external) >by_module
called_by "$BUILD_DIR"/tests/fortran_*_external >by_name
[[ -s bound_to && -s by_module && -s by_name ]] || fail 'nothing is called'
comm -23 bound_to by_module | expect_empty 'routines that no Fortran test calls through the module'
comm -23 traditional by_name | expect_empty 'routines that no Fortran test calls by their names alone'
finish
