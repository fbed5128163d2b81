#!/usr/bin/env bash
# Loading costs a program nothing: one constructor, which makes no system call, and nothing that runs after the program's
# own constructors.
# shellcheck source=common.bash
source "$(dirname "$0")/common.bash"
sources=$SOURCE_DIR/tests/link
shared_libraries=("-L$QXPORT_LIB" "-L$QXCORE_LIB" -lqxportmt -lqxcoremt_posix)
# The leak check of an instrumented program works neither under ptrace nor for the search that load_keeps_records leaves.
export ASAN_OPTIONS=detect_leaks=0

"$CC" "${width_flags[@]}" -Wall -Wextra -Werror -o load_syscalls "$sources/load_syscalls.c"

makes_no_call() {
  run ./load_syscalls "$1" || true
}

# With the shared libraries, from before the first constructor to main. Instrumentation has constructors of its own that
# call the system, so there only what our constructor does is measured.
if [[ -z $SANITIZE ]]; then
  compile_c between "$sources/load_between.c" -Wl,--no-as-needed "${shared_libraries[@]}"
  makes_no_call ./between
  compile_c between_calls "$sources/load_between.c" -DCALLS_THE_SYSTEM "${shared_libraries[@]}"
  status=0
  LD_LIBRARY_PATH="$QXPORT_LIB:$QXCORE_LIB" timeout 60 ./load_syscalls ./between_calls >control.log 2>&1 || status=$?
  [[ $status == 1 && $(wc -l <control.log) == 1 ]] || fail 'a system call in a constructor is not noticed'
fi
compile_c again "$sources/load_again.c" "$QXPORT_LIB/libqxportmt.a" "$QXCORE_LIB/libqxcoremt_posix.a"
makes_no_call ./again

program_c keeps_records "$sources/load_keeps_records.c" -Wl,--whole-archive "$QXPORT_LIB/libqxportmt.a" \
  -Wl,--no-whole-archive "$QXCORE_LIB/libqxcoremt_posix.a" -lm

# constructors ARCHIVE: the objects that have something to run when they are loaded, each with its priority's section.
constructors() {
  readelf -SW "$1" | awk '/^File:/ { object = $0; sub(/.*\(/, "", object); sub(/\).*/, "", object) }
    match($0, / \.(init_array|ctors|preinit_array)[.0-9]* /) { print object, substr($0, RSTART + 1, RLENGTH - 2) }'
}
if [[ -z $SANITIZE ]]; then
  ours='handles_(table|address).cpp.o \.init_array\.0*101'
  constructors "$QXPORT_LIB/libqxportmt.a" | grep -Evx "$ours" |
    expect_empty 'constructors beside the one of the handle tables' || true
  constructors "$QXPORT_LIB/libqxportmt.a" | grep -Eqx "$ours" ||
    fail 'the handle tables have no constructor of the earliest priority'
  # The companion keeps the command line, which the host hands to constructors only, as early as the tables are ready.
  for provider in gnu posix; do
    constructors "$QXCORE_LIB/libqxcoremt_$provider.a" | grep -Evx 'arguments.cpp.o \.init_array\.0*101' |
      expect_empty "constructors of libqxcoremt_$provider" || true
  done
fi

finish
