#!/usr/bin/env bash
# Rounding, flags and traps hold whatever the compiler makes of a program: not optimised, optimised, and on the 32-bit
# target with the arithmetic of either unit.
# shellcheck source=common.bash
source "$(dirname "$0")/common.bash"
fortran=$SOURCE_DIR/tests/fortran

units=('')
if [[ $TARGET == 32 ]]; then
  units=(-mfpmath=387 '-msse2 -mfpmath=sse')
fi
for level in -O0 -O2; do
  for unit in "${units[@]}"; do
    read -ra options <<<"$level $unit"
    for program in fpwords ieee; do
      name=$program${level}${unit// /}
      if compile_fortran "$name" "${options[@]}" "-I$fortran" "$fortran/checks.f90" "$fortran/scratch.f90" \
        "$fortran/$program.f90" "-L$QXPORT_LIB" "-L$QXCORE_LIB" -lqxportmt -lqxcoremt_gnu; then
        run "./$name" || true
      fi
    done
    name=arithmetic${level}${unit// /}
    program_c "$name" "${options[@]}" "$SOURCE_DIR/tests/link/fp_arithmetic.c" "-L$QXPORT_LIB" "-L$QXCORE_LIB" \
      -lqxportmt -lqxcoremt_posix
  done
done
finish
