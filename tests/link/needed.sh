#!/usr/bin/env bash
# What the loader brings in with each library, and the names by which programs remember them.
# shellcheck source=common.bash
source "$(dirname "$0")/common.bash"

dynamic_entries() {
  readelf -dW "$1" | sed -nE "s/.*\($2\).*\[(.*)\]/\1/p"
}

# An instrumented build needs the run-time of its instrumentation too, and nothing beyond that.
needs_only() {
  local library=$1 allowed=$2
  if [[ -n $SANITIZE ]]; then
    allowed+='|lib(a|ub|t|l)san\.so\.[0-9]+|libgcc_s\.so\.1|libpthread\.so\.0|libdl\.so\.2|librt\.so\.1'
  fi
  dynamic_entries "$library" NEEDED | grep -Evx "$allowed" |
    expect_empty "$(basename "$library") needs more than it may" || true
}

is_named() {
  local library=$1 soname=$2
  [[ $(dynamic_entries "$library" SONAME) == "$soname" ]] || fail "the SONAME of $(basename "$library") is not $soname"
  [[ $(dynamic_entries "$(dirname "$library")/$soname" SONAME) == "$soname" ]] || fail "there is no $soname"
  [[ $(readlink -f "$library") == "$(readlink -f "$(dirname "$library")/$soname")" ]] ||
    fail "$(basename "$library") and $soname are not the same file"
}

# The file that holds the whole version, which the other names are links to.
is_versioned() {
  local library=$1 version
  version=$(sed -n 's/^Version: //p' "$BUILD_DIR/qxport.pc")
  [[ $(basename "$(readlink -f "$library")") == "$(basename "$library").$version" ]] ||
    fail "$(basename "$library") is not $(basename "$library").$version"
}

# Nothing is brought in for which the library has no use. The loader tells; an instrumented library has its own needs.
uses_what_it_needs() {
  local library=$1
  [[ -n $SANITIZE ]] || ldd -u "$library" | sed '/^Unused direct dependencies/d; /^[[:space:]]*$/d' |
    expect_empty "$(basename "$library") needs what it does not use"
}

has_no_search_path() {
  local library=$1
  readelf -dW "$library" | grep -E 'RPATH|RUNPATH' | expect_empty "$(basename "$library") has a search path" || true
}

needs_only "$QXPORT_LIB/libqxportmt.so" 'libc\.so\.6|libm\.so\.6'
needs_only "$QXCORE_LIB/libqxcoremt_posix.so" 'libc\.so\.6'
# The GNU Fortran run-time brings these in itself.
needs_only "$QXCORE_LIB/libqxcoremt_gnu.so" 'libgfortran\.so\.[0-9]+|libquadmath\.so\.0|libgcc_s\.so\.1|lib[cm]\.so\.6'
dynamic_entries "$QXCORE_LIB/libqxcoremt_gnu.so" NEEDED | grep -q '^libgfortran\.' ||
  fail "libqxcoremt_gnu.so does not bring its run-time in"

needs_only "$QXPORT_LIB/libqxportmt_i8.so" 'libc\.so\.6'

is_named "$QXPORT_LIB/libqxportmt.so" libqxportmt.so.1
is_named "$QXPORT_LIB/libqxportmt_i8.so" libqxportmt_i8.so.1
for provider in gnu posix; do
  is_named "$QXCORE_LIB/libqxcoremt_$provider.so" "libqxcoremt_$provider.so.1"
done
for library in "$QXPORT_LIB"/libqxportmt{,_i8}.so "$QXCORE_LIB"/libqxcoremt_{gnu,posix}.so; do
  has_no_search_path "$library"
  is_versioned "$library"
  uses_what_it_needs "$library"
done

# Without the C++ run-time, hidden by default, with 64-bit files and times, and told nothing of the build's directory.
"$PYTHON" "$SOURCE_DIR/tests/link/options.py" "$BUILD_DIR" "$TARGET" | expect_empty 'compiled without what they need'

finish
