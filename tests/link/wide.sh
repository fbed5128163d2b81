#!/usr/bin/env bash
# The modules for default integers of 8 bytes: every routine is in them, each value that fits no INTEGER(4) is refused, and
# the reference's examples are programs there too.
# shellcheck source=common.bash
source "$(dirname "$0")/common.bash"
: "${I8_MODULES:?}" "${EXAMPLES:?}"
fortran_flags=("-I$I8_MODULES")
wide=(-fdefault-integer-8)
libraries=("-L$QXPORT_LIB" "-L$QXCORE_LIB" -lqxportmt_i8 -lqxportmt -lqxcoremt_gnu)

modules_compile_as_the_standard_has_it() {
  mkdir modules
  "$FC" "${target_flags[@]}" -std=f2018 -Wall -Werror -fsyntax-only -J modules "$GENERATED/fortran/i8/qxport.f90" \
    "$GENERATED/fortran/i8/qxport_numbers.f90" >modules.log 2>&1 || fail 'the modules do not compile'
  cat modules.log
}

# What the ordinary modules have these have too, under the same names.
same_names_are_offered() {
  local file
  for file in qxport qxport_numbers; do
    sed -nE 's/^  public :: (\w+)$/\1/p; s/.* (parameter|public)[^:]* :: (\w+).*/\2/p; s/^(end )?module (\w+)$/\2/p' \
      "$GENERATED/fortran/$file.f90" | LC_ALL=C sort -u >ordinary
    sed -nE 's/^  public :: (\w+)$/\1/p; s/.* (parameter|public)[^:]* :: (\w+).*/\2/p; s/^(end )?module (\w+)$/\2/p' \
      "$GENERATED/fortran/i8/$file.f90" | LC_ALL=C sort -u >of_wide
    (($(wc -l <ordinary) > 100)) || fail "$file.f90 has hardly any name"
    expect_same "names of i8/$file.f90" ordinary of_wide
  done
}

# No argument or answer of the default kind is left with 4 bytes alone: where a procedure of the modules has one, another
# of the same name has 8 in its place, and no function without such arguments answers 4.
"$PYTHON" "$SOURCE_DIR/tests/link/wide_module.py" "$GENERATED/fortran/i8/qxport.f90" | expect_empty 'left with 4 bytes'

what_does_not_fit_is_refused() {
  local status=0
  "$PYTHON" "$SOURCE_DIR/tests/link/wide_calls.py" "$SOURCE_DIR/api" "$TARGET" >calls.f90
  compile_fortran calls "${wide[@]}" -w -O0 calls.f90 "${libraries[@]}" || return 0
  mkdir empty
  # What prints nothing but the number of its calls has refused them all.
  (cd empty && LD_LIBRARY_PATH="$QXPORT_LIB:$QXCORE_LIB" timeout 120 ../calls </dev/null >../calls.told 2>&1) || status=$?
  ((status == 0)) || fail "the calls end with status $status"
  tail -n 1 calls.told | grep -Eqx '[0-9]{3} calls' || fail 'there are hardly any calls'
  sed '$d' calls.told | expect_empty 'values of more than 4 bytes'
  (($(find empty | wc -l) == 1)) || fail 'a refused call has made a file'
}

examples_compile_and_link() {
  local example
  apigen --examples examples --target "$TARGET"
  mkdir wide_examples
  for example in examples/*.f90; do
    "$PYTHON" -B "$SOURCE_DIR/tests/fortran/wide_source.py" "$example" "wide_$example"
    # By value a handler's number keeps 4 bytes there.
    [[ $TARGET == 64 || $example != examples/signal*qq.f90 ]] || cp "$example" "wide_$example"
    "$FC" "${target_flags[@]}" "${fortran_flags[@]}" "${wide[@]}" -Wall -Wno-intrinsics-std -Wno-conversion -Werror \
      -c "wide_$example" -J wide_examples -o "wide_${example%.f90}.o" >example.log 2>&1 ||
      { fail "$example does not compile"; cat example.log; }
  done
  compile_fortran all_examples "${wide[@]}" -Wl,--allow-multiple-definition wide_examples/*.o "${libraries[@]}" || true
}

# A handler and a comparison are of the default kind too: another one is told by the compiler.
procedures_are_of_the_default_kind() {
  local kind
  for kind in integer 'integer(4)'; do
    printf '%s\n' 'subroutine order(values)' 'use qxport, only: qsort' 'implicit none' 'real(8) :: values(3)' \
      'call qsort(values, 3, 8, compar)' contains "$kind function compar(a, b)" 'real(8), intent(in) :: a, b' \
      'compar = merge(-1, 1, a < b)' 'end function' 'end subroutine' >qsort.f90
    if "$FC" "${target_flags[@]}" "${fortran_flags[@]}" "${wide[@]}" -fsyntax-only qsort.f90 >qsort.log 2>&1; then
      [[ $kind == integer ]] || fail "QSORT takes a comparison of $kind"
    else
      [[ $kind == 'integer(4)' ]] || { fail "QSORT does not take a comparison of $kind"; cat qsort.log; }
    fi
  done
}

modules_compile_as_the_standard_has_it
same_names_are_offered
what_does_not_fit_is_refused
examples_compile_and_link
procedures_are_of_the_default_kind
finish
