#!/usr/bin/env bash
# ALARM in programs without shared libraries, which have threads only where something asks for them.
# shellcheck source=common.bash
source "$(dirname "$0")/common.bash"
program=$SOURCE_DIR/tests/link/alarm_static.c
libraries=("-L$QXPORT_LIB" "-L$QXCORE_LIB" -lqxportmt -lqxcoremt_posix)

compile_c shared "$program" "${libraries[@]}" && run ./shared

# An instrumented program always has threads.
if [[ -z $SANITIZE ]]; then
  compile_c with_threads -static "$program" "${libraries[@]}" -Wl,-u,pthread_create && run ./with_threads
  compile_c without_threads -static "$program" "${libraries[@]}"
  status=0
  timeout 60 ./without_threads >out 2>err || status=$?
  [[ $status == 240 ]] || fail "a program without threads ends with $status"
  [[ ! -s out ]] || fail "a program without threads prints something"
  text="*** E - 1008 - Portability function 'ALARM' can't work without 'lpthread' library"
  [[ $(<err) == "$text" ]] || fail "a program without threads says $(<err)"
fi

finish
