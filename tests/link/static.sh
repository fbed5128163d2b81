#!/usr/bin/env bash
# The ways to link: all static, with link-time optimisation, with a linker that drops what is not needed.
# shellcheck source=common.bash
source "$(dirname "$0")/common.bash"
program=$SOURCE_DIR/tests/link/works
static_libraries=("-L$QXPORT_LIB" "-L$QXCORE_LIB" '-Wl,-Bstatic' -lqxportmt)
shared_libraries=("-L$QXPORT_LIB" "-L$QXCORE_LIB" -lqxportmt)

# try_fortran NAME LIBRARIES AND OPTIONS...; try_c NAME ...
try_fortran() {
  program_fortran "$1" "$program.f90" "${@:2}"
}
try_c() {
  program_c "$1" "$program.c" "${@:2}"
}

try_fortran archives "${static_libraries[@]}" -lqxcoremt_gnu -Wl,-Bdynamic
try_c archives_c "${static_libraries[@]}" -lqxcoremt_posix -Wl,-Bdynamic
try_fortran collected "${static_libraries[@]}" -lqxcoremt_gnu -Wl,-Bdynamic -ffunction-sections -Wl,--gc-sections
try_fortran optimised -flto -O2 "${static_libraries[@]}" -lqxcoremt_gnu -Wl,-Bdynamic
try_c optimised_c -flto -O2 "${static_libraries[@]}" -lqxcoremt_posix -Wl,-Bdynamic
try_fortran optimised_shared -flto -O2 "${shared_libraries[@]}" -lqxcoremt_gnu
try_fortran as_needed -Wl,--as-needed "${shared_libraries[@]}" -lqxcoremt_gnu
try_c as_needed_c -Wl,--as-needed "${shared_libraries[@]}" -lqxcoremt_posix
try_fortran complete -Wl,--no-undefined -Wl,-z,now -Wl,-z,defs "${shared_libraries[@]}" -lqxcoremt_gnu
try_c fixed_address -no-pie -fno-pie "${static_libraries[@]}" -lqxcoremt_posix -Wl,-Bdynamic

# The companion comes in although the program itself calls nothing of it.
for library in libqxportmt.so.1 libqxcoremt_gnu.so.1; do
  readelf -dW as_needed | grep -qF "[$library]" || fail "the linker dropped $library"
done

# A program without any shared library; an instrumented one always has those of its instrumentation.
if [[ -z $SANITIZE ]]; then
  for pie in -static -static-pie; do
    # The C library warns of getlogin, which reads the user data base by modules.
    try_fortran "whole$pie" "$pie" "${shared_libraries[@]}" -lqxcoremt_gnu
    try_c "whole_c$pie" "$pie" "${shared_libraries[@]}" -lqxcoremt_posix
    for made in "whole$pie" "whole_c$pie"; do
      readelf -dW "$made" | grep NEEDED | expect_empty "$made needs shared libraries" || true
    done
  done
fi

finish
