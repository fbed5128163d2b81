# shellcheck shell=bash
# make_preloaded LIBRARY SOURCE: builds a library for the programs of the build.
# preloaded LIBRARY COMMAND...: runs a program of the build with a library in front of all others.
# hindered COMMAND...: runs it on a host whose calls are interrupted and do little at a time.
: "${CC:?}" "${TARGET:?}"
preloaded_width=()
[[ $TARGET != 32 ]] || preloaded_width=(-m32)
hindering=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)/hindered.c

make_preloaded() {
  "$CC" "${preloaded_width[@]}" -shared -fPIC -o "$1" "$2" -ldl
}

# make_hindrance LIBRARY
make_hindrance() {
  hindrance=$1
  make_preloaded "$1" "$hindering"
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
