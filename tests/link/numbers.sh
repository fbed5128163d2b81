#!/usr/bin/env bash
# The module of the host's numbers: its parameters have the values of the host's headers, which the binding finds by their
# names, and they are in nobody's way who does not ask for them.
# shellcheck source=common.bash
source "$(dirname "$0")/common.bash"

"$PYTHON" "$SOURCE_DIR/tests/link/numbers.py" "$SOURCE_DIR/api"

# As the library is compiled: with offsets of 64 bits some commands of file control have other numbers.
parameters_are_the_hosts_numbers() {
  local -a as_the_library=(-D_GNU_SOURCE)
  if [[ $TARGET == 32 ]]; then
    as_the_library+=(-D_FILE_OFFSET_BITS=64 -D_TIME_BITS=64)
  fi
  compile_c host "${as_the_library[@]}" host.c || return 0
  compile_fortran parameters parameters.f90 "-L$QXPORT_LIB" "-L$QXCORE_LIB" -lqxportmt -lqxcoremt_gnu || return 0
  run ./host || return 0
  mv run.log wanted
  run ./parameters || return 0
  (($(wc -l <wanted) > 300)) || fail 'there are hardly any parameters'
  diff wanted run.log || fail 'parameters with other values'
}

# Old programs declare such names themselves.
they_are_not_in_the_umbrella() {
  "$FC" "${target_flags[@]}" "${fortran_flags[@]}" -fsyntax-only own.f90 >own.log 2>&1 ||
    { fail 'names of a program collide with the umbrella'; cat own.log; }
}

misspelt_name_does_not_compile() {
  printf '%s\n' 'use qxport_numbers' 'implicit none' 'print *, SIGINIT' 'end' >misspelt.f90
  if "$FC" "${target_flags[@]}" "${fortran_flags[@]}" -fsyntax-only misspelt.f90 >misspelt.log 2>&1; then
    fail 'a misspelt name compiles'
  fi
}

parameters_are_the_hosts_numbers
they_are_not_in_the_umbrella
misspelt_name_does_not_compile
finish
