# shellcheck shell=bash
# What the scripts of this folder share: a directory of their own, compilers that build for the tree's target with its
# instrumentation, and a count of what failed.
set -euo pipefail
# The last part of a pipe runs in this shell, so that what it counts stays counted.
shopt -s lastpipe

: "${SOURCE_DIR:?}" "${BUILD_DIR:?}" "${TARGET:?}" "${CC:?}" "${FC:?}" "${PYTHON:?}" "${CMAKE:?}"
: "${QXPORT_LIB:?}" "${QXCORE_LIB:?}" "${MODULES:?}" "${GENERATED:?}"
SANITIZE=${SANITIZE-}

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
# The wording of the tools must not depend on who runs the test.
export LC_ALL=C.UTF-8
# The GNU Fortran run-time takes its locks of units in two orders, which is its own affair.
export TSAN_OPTIONS=detect_deadlocks=0

width_flags=()
if [[ $TARGET == 32 ]]; then
  width_flags+=(-m32)
fi
target_flags=("${width_flags[@]}")
if [[ -n $SANITIZE ]]; then
  target_flags+=("-fsanitize=$SANITIZE" -fno-sanitize-recover=all)
fi
c_flags=(-std=gnu11 -Wall -Wextra -Werror "-I$GENERATED/include")
fortran_flags=("-I$MODULES")

failures=0
fail() {
  printf 'FAILED: %s\n' "$*"
  failures=$((failures + 1))
}

# The last command of a script.
finish() {
  if ((failures > 0)); then
    printf '%d failed\n' "$failures"
    exit 1
  fi
}

# expect_empty WHAT: fails with the lines of standard input, if there are any.
expect_empty() {
  local lines
  lines=$(cat)
  if [[ -n $lines ]]; then
    fail "$1:"
    printf '%s\n' "$lines"
  fi
}

# expect_same WHAT EXPECTED_FILE ACTUAL_FILE: two sorted lists of names.
expect_same() {
  comm -23 "$2" "$3" | expect_empty "$1: missing"
  comm -13 "$2" "$3" | expect_empty "$1: unexpected"
}

# compile OUTPUT SOURCES AND OPTIONS...: a program, by the compiler of its language; what fails is told.
compile_c() {
  local output=$1
  shift
  "$CC" "${target_flags[@]}" "${c_flags[@]}" -o "$output" "$@" >"$output.log" 2>&1 ||
    { fail "$output does not link"; cat "$output.log"; return 1; }
}
compile_fortran() {
  local output=$1
  shift
  "$FC" "${target_flags[@]}" "${fortran_flags[@]}" -o "$output" "$@" >"$output.log" 2>&1 ||
    { fail "$output does not link"; cat "$output.log"; return 1; }
}

# run PROGRAM ARGUMENTS...: the shared libraries of the build are found; the status and what was printed are told when
# it fails.
run() {
  local status=0
  LD_LIBRARY_PATH="$QXPORT_LIB:$QXCORE_LIB" timeout 60 "$@" >"$work/run.log" 2>&1 </dev/null || status=$?
  if ((status != 0)); then
    fail "$(basename "$1") ended with status $status"
    cat "$work/run.log"
    return 1
  fi
}

# A program that must link and run well.
program_c() {
  if compile_c "$@"; then run "./$1" || true; fi
}
program_fortran() {
  if compile_fortran "$@"; then run "./$1" || true; fi
}

apigen() {
  "$PYTHON" "$SOURCE_DIR/tools/apigen.py" --api "$SOURCE_DIR/api" "$@"
}

# options_of WORD...: what pkg-config answers into `options`. Blanks of a prefix have a backslash before them.
options=()
options_of() { eval "options=($(pkg-config "$@"))"; }
