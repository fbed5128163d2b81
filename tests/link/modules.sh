#!/usr/bin/env bash
# What a user reads and compiles against: the module, the example of every routine, the man pages, the HTML reference.
# shellcheck source=common.bash
source "$(dirname "$0")/common.bash"

module_compiles_as_the_standard_has_it() {
  mkdir modules
  "$FC" "${target_flags[@]}" -std=f2018 -Wall -Werror -fsyntax-only -J modules "$GENERATED/fortran/qxport.f90" \
    "$GENERATED/fortran/qxport_numbers.f90" >module.log 2>&1 || fail 'the module does not compile'
  cat module.log
  [[ -s modules/qxport.mod ]] || fail 'there is no qxport.mod'
}

# A program of the desktop family finds all of it in the family's module, wherever the library keeps it.
desktop_family_is_whole() {
  local name
  for name in "$QXPORT_LIB/libqxportmt.so" "$QXCORE_LIB/libqxcoremt_gnu.so"; do
    nm -D --defined-only "$name"
  done | awk '{ print $NF }' | sed -nE 's/@.*//; /^qxport_/d; s/^(\w*qq)_$/\1/p' | sort -u >desktop
  for name in findfileqq flushqq matherrqq; do
    grep -qx $name desktop || fail "$name is not in the libraries"
  done
  while read -r name; do
    printf 'use qxport_compat, only: %s\nend\n' "$name" >desktop.f90
    "$FC" "${target_flags[@]}" "${fortran_flags[@]}" -fsyntax-only desktop.f90 >desktop.log 2>&1 || echo "$name"
  done <desktop | expect_empty 'not in the module of the desktop family'
}

# Each is a whole program. That a name is an intrinsic of GNU Fortran too is no news: the module's is what it uses. One
# link tells of all what they miss; that each has a main program does not matter there.
examples_compile_and_link() {
  local example
  local -a sources
  apigen --examples examples --target "$TARGET"
  sources=(examples/*.f90)
  [[ -s ${sources[0]} ]] || fail 'there are no examples'
  for example in "${sources[@]}"; do
    "$FC" "${target_flags[@]}" "${fortran_flags[@]}" -std=f2018 -Wall -Wno-intrinsics-std -Werror -c "$example" \
      -o "${example%.f90}.o" >example.log 2>&1 || { fail "$example does not compile"; cat example.log; }
  done
  compile_fortran all_examples -Wl,--allow-multiple-definition examples/*.o "-L$QXPORT_LIB" "-L$QXCORE_LIB" \
    -lqxportmt -lqxcoremt_gnu || true
}

# All through the formatter, one as its readers call it. Minimal images put a script in the place of `man` that says that
# there are no pages.
man_pages_render_without_warnings() {
  local page
  local -a pages=("$GENERATED"/man/man*/*)
  if command -v groff >/dev/null; then
    groff -K utf8 -t -man -ww -z "${pages[@]}" 2>&1 | expect_empty 'groff warns of man pages'
    pages=("$GENERATED/man/man3/access.3f")
  fi
  if man --version 2>&1 | grep -q '^man [0-9]'; then
    for page in "${pages[@]}"; do
      env -u MANPAGER -u MANOPT MANROFFOPT= MANWIDTH=80 man -l --warnings=w -E UTF-8 "$page" 2>&1 >page.text |
        expect_empty "man warns of $(basename "$page")"
      grep -q '^NAME' page.text || fail "$(basename "$page") does not render"
    done
  else
    command -v groff >/dev/null || fail 'neither man nor groff is here to render the pages'
  fi
}

# Every public routine has its page, under the name by which a program calls it.
every_routine_has_a_page() {
  find examples -name '*.f90' -printf '%f\n' | sed 's/\.f90$/.3f/' | sort >wanted
  find "$GENERATED/man/man3" -name '*.3f' -printf '%f\n' | sort >made
  comm -23 wanted made | expect_empty 'routines without a man page'
  local page
  for page in index.html style.css; do
    [[ -s $GENERATED/html/$page ]] || fail "there is no html/$page"
  done
  sed 's/\.3f$//' made | while read -r page; do
    grep -qF "$page" "$GENERATED/html/index.html" || echo "$page"
  done | expect_empty 'not in the index of the HTML reference'
  "$PYTHON" "$SOURCE_DIR/tests/link/broken_links.py" "$GENERATED/html" |
    expect_empty 'links of the HTML reference that lead nowhere'
}

# The time of day as a text is another library's TIME; ours is a function, and the compiler says so.
time_is_no_subroutine() {
  cat >time.f90 <<'PROGRAM'
use qxport, only: time
implicit none
character(8) :: text
call time(text)
end
PROGRAM
  if "$FC" "${target_flags[@]}" "${fortran_flags[@]}" -fsyntax-only time.f90 >time.log 2>&1; then
    fail 'CALL TIME compiles through the module'
  fi
}

# An INTEGER(2) comparison has an upper half that nobody defines; other libraries want it so, QSORT cannot.
comparison_of_qsort_is_an_integer_4() {
  local function declared compiles
  while read -r compiles function declared; do
    case $function in
      contained)
        printf '%s\n' 'subroutine order(values)' 'use qxport, only: qsort' 'implicit none' 'real(8) :: values(3)' \
          'call qsort(values, 3, 8, compar)' contains "$declared function compar(a, b)" 'real(8), intent(in) :: a, b' \
          'compar = merge(-1, 1, a < b)' 'end function' 'end subroutine' >qsort.f90 ;;
      external)
        printf '%s\n' 'subroutine order(values)' 'use qxport, only: qsort' 'implicit none' 'real(8) :: values(3)' \
          "$declared, external :: compar" 'call qsort(values, 3_8, 8_8, compar)' 'end subroutine' >qsort.f90 ;;
    esac
    if LC_ALL=C "$FC" "${target_flags[@]}" "${fortran_flags[@]}" -fsyntax-only -fdiagnostics-plain-output qsort.f90 \
      >qsort.log 2>&1; then
      [[ $compiles == yes ]] || fail "QSORT takes a comparison ($function, $declared)"
    elif [[ $compiles == yes ]] || ! grep -q "There is no specific subroutine for the generic 'qsort'" qsort.log; then
      fail "what the compiler says of a comparison ($function, $declared)"
      cat qsort.log
    fi
  done <<'COMPARISONS'
yes contained integer(4)
yes external integer(4)
no contained integer(2)
no external integer(2)
no contained integer(8)
no external real(4)
COMPARISONS
}

module_compiles_as_the_standard_has_it
time_is_no_subroutine
comparison_of_qsort_is_an_integer_4
desktop_family_is_whole
examples_compile_and_link
man_pages_render_without_warnings
every_routine_has_a_page
finish
