#!/usr/bin/env bash
# Every routine is called by a Fortran test, through the module and by its name alone.
# shellcheck source=common.bash
source "$(dirname "$0")/common.bash"

for library in qxport qxcore; do
  apigen --list-symbols "$library" --target "$TARGET"
done | grep '_$' | sort >routines
for program in "$BUILD_DIR"/tests/fortran_*; do
  [[ ! -f $program || ! -x $program ]] || nm -D --undefined-only "$program"
done | awk '{ print $NF }' | sed 's/@.*//' | sort -u >called
[[ -s routines && -s called ]] || fail 'nothing is called'
comm -23 routines called | expect_empty 'routines that no Fortran test calls'
finish
