#!/usr/bin/env bash
# What the module binds to: a plain name is one that no compiler takes for another procedure, and of a wrong call of it
# the compiler says which argument is wrong.
# shellcheck source=common.bash
source "$(dirname "$0")/common.bash"

nm -D --defined-only "$QXPORT_LIB/libqxportmt.so" "$QXCORE_LIB/libqxcoremt_gnu.so" |
  awk '{ print $NF }' | sed 's/@.*//' | sort -u >exported
grep '^qxport_.*_$' exported >aliases

# Plain names: what the module's source says, less what stands behind a generic name.
sed -nE 's/^    (function|subroutine) (\w+)\(.*/\2/p' "$GENERATED/fortran/qxport.f90" | grep -v '^qxport_' | sort >plain
[[ -s plain ]] || fail 'no name is plain'

plain_names_are_exported_and_have_no_alias() {
  sed 's/$/_/' plain | LC_ALL=C sort | LC_ALL=C comm -23 - <(LC_ALL=C sort exported) |
    expect_empty 'plain names that no library defines'
  sed 's/.*/qxport_&_/' plain | grep -xFf - aliases | expect_empty 'plain names with an alias' || true
}

# not_intrinsics FILE: those of the names that the compiler does not know.
not_intrinsics() {
  local name
  while read -r name; do
    printf 'subroutine s_%s\n  intrinsic :: %s\nend\n' "$name" "$name"
  done <"$1" >intrinsic.f90
  LC_ALL=C "$FC" -std=gnu -fsyntax-only -fmax-errors=0 -fdiagnostics-plain-output intrinsic.f90 2>&1 |
    sed -nE "s/.*'(\w+)' declared INTRINSIC at .* does not exist.*/\1/p" | sort -u || true
}

no_compiler_knows_a_plain_name() {
  not_intrinsics plain >unknown
  comm -23 plain unknown | expect_empty 'plain names of an intrinsic'
}

no_archive_has_a_plain_name() {
  local archive
  for archive in libgfortran.a libcaf_single.a libquadmath.a libgomp.a libc.a libm.a; do
    archive=$("$FC" "${target_flags[@]}" "-print-file-name=$archive")
    nm --defined-only "$archive" 2>/dev/null || true  # one that is not here, or is a script of the linker's
  done | awk 'NF == 3 { print $3 }' | sort -u >archived
  [[ -s archived ]] || fail 'there are no archives'
  sed 's/$/_/' plain | grep -xFf - archived | expect_empty 'plain names in an archive of the compiler' || true
}

# Of names that it knows itself the compiler may take its own procedure without a word: their pages say so.
names_of_intrinsics_are_told() {
  local name
  sed -nE 's/^  public :: (\w+)$/\1/p' "$GENERATED/fortran/qxport.f90" | sort -u >offered
  [[ -s offered ]] || fail 'the module offers nothing'
  not_intrinsics offered >unknown
  comm -23 offered unknown >intrinsics
  grep -qx stat intrinsics || fail 'the compiler knows no STAT'
  while read -r name; do
    grep -rlE "^GNU Fortran has an intrinsic procedure .fB$name.fP of its own" "$GENERATED/man/man3" | grep -q . ||
      echo "$name"
  done <intrinsics | expect_empty 'names of intrinsics whose pages do not say so'
}

# What the pages promise for compilers that are kept to a standard.
standard_keeps_intrinsics_out() {
  local call
  while read -r call; do
    printf '%s\n' 'use qxport' 'integer(2) :: status' 'integer(8) :: unit' 'character(9) :: name' 'logical :: answer' \
      'status = 0; unit = 0' "$call" end >call.f90
    "$FC" "${target_flags[@]}" "${fortran_flags[@]}" -fsyntax-only call.f90 >call.log 2>&1 ||
      { fail "$call is not taken for an intrinsic"; cat call.log; }
    if "$FC" "${target_flags[@]}" "${fortran_flags[@]}" -std=f2018 -fsyntax-only call.f90 >call.log 2>&1; then
      fail "$call compiles by the standard"
    fi
  done <<'CALLS'
answer = isatty(unit)
print *, kill(unit, 0_8)
call exit(unit)
call sleep(status)
call ttynam(6, name)
CALLS
}

# What is a function through the module is none of the intrinsic subroutines of the same name.
subroutines_are_refused() {
  local call
  while read -r call; do
    printf '%s\n' 'use qxport' 'character(1) :: ch' 'integer :: status' "$call" end >call.f90
    if "$FC" "${target_flags[@]}" "${fortran_flags[@]}" -fsyntax-only call.f90 >call.log 2>&1; then
      fail "$call is taken for an intrinsic"
    fi
  done <<'CALLS'
call fgetc(5, ch)
call fgetc(5, ch, status)
call fputc(6, 'x')
call fputc(6, 'x', status)
call fseek(6, 0, 0)
call fseek(6, 0, 0, status)
call ftell(6, status)
CALLS
}

wrong_argument_is_named() {
  "$PYTHON" "$SOURCE_DIR/tests/link/wrong_calls.py" "$SOURCE_DIR/api" aliases "$FC" "${target_flags[@]}" \
    "${fortran_flags[@]}" | expect_empty 'wrong calls'
}

plain_names_are_exported_and_have_no_alias
no_compiler_knows_a_plain_name
no_archive_has_a_plain_name
wrong_argument_is_named
names_of_intrinsics_are_told
standard_keeps_intrinsics_out
subroutines_are_refused
finish
