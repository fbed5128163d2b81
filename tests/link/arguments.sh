#!/usr/bin/env bash
# A program whose main is that of C or C++ gets its arguments, and its end, from each provider, shared and static.
# shellcheck source=common.bash
source "$(dirname "$0")/common.bash"
: "${CXX:?}"
c_source=$SOURCE_DIR/tests/link/arguments.c
cp "$c_source" arguments.cpp
directories=("-L$QXPORT_LIB" "-L$QXCORE_LIB")
include=("-I$GENERATED/include" -Wall -Wextra -Werror)

# try NAME COMPILER SOURCE LIBRARIES AND OPTIONS...
try() {
  local name=$1
  shift
  if ! "$1" "${target_flags[@]}" "${include[@]}" -o "$name" "${@:2}" >"$name.log" 2>&1; then
    fail "$name does not link"
    cat "$name.log"
  else
    run "./$name" one '' ' a b ' || true
  fi
}

for provider in posix gnu; do
  shared=("${directories[@]}" -lqxportmt "-lqxcoremt_$provider")
  archives=("${directories[@]}" "-Wl,-Bstatic" -lqxportmt "-lqxcoremt_$provider" "-Wl,-Bdynamic")
  if [[ $provider == gnu ]]; then
    run_time=$("$FC" "${width_flags[@]}" -print-file-name=libgfortran.so)
    shared+=("-L$(dirname "$run_time")" -lgfortran)
    archives+=("-L$(dirname "$run_time")" -lgfortran)
  fi
  try "c_$provider" "$CC" "$c_source" "${shared[@]}"
  try "cxx_$provider" "$CXX" arguments.cpp "${shared[@]}"
  try "c_archives_$provider" "$CC" "$c_source" "${archives[@]}"
  try "cxx_archives_$provider" "$CXX" arguments.cpp "${archives[@]}"
done

finish
