# shellcheck shell=bash
# preloaded LIBRARY COMMAND...: runs a program of the build with a library in front of all others.
# hindered COMMAND...: runs it on a host whose calls are interrupted and do little at a time.
: "${CC:?}" "${TARGET:?}"
hindered_width=()
[[ $TARGET != 32 ]] || hindered_width=(-m32)

# make_hindrance FILE
make_hindrance() {
  hindrance=$1
  "$CC" "${hindered_width[@]}" -shared -fPIC -o "$hindrance" "$(dirname "${BASH_SOURCE[0]}")/hindered.c" -ldl
}

# The loader takes a blank for the end of a name in LD_PRELOAD, and not in its search path. An instrumented program does
# not mind that its run-time is not the first that is loaded. Only the program itself is of the library's target.
preloaded() {
  timeout 60 env LD_LIBRARY_PATH="$(dirname "$1")" LD_PRELOAD="$(basename "$1")" \
    ASAN_OPTIONS=verify_asan_link_order=0:detect_leaks=0 "${@:2}"
}

hindered() {
  preloaded "$hindrance" "$@"
}
