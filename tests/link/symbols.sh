#!/usr/bin/env bash
# The libraries export what the catalogue names, nothing else, and bind in the way that lets a program replace any of it.
# shellcheck source=common.bash
source "$(dirname "$0")/common.bash"

# The dynamic symbols that a shared library defines or wants, without their versions.
defined_symbols() {
  nm -D --defined-only "$1" | awk '$2 != "A" { print $3 }' | sed 's/@.*//' | LC_ALL=C sort -u
}
# The symbols of an archive's objects, each with its letter: "W access_".
archive_symbols() {
  nm --defined-only "$1" | awk 'NF == 3 { print $2, $3 }'
}

# Lists, sorted as comm wants them.
apigen --list-symbols qxport --target "$TARGET" | LC_ALL=C sort -u >qxport.symbols
apigen --list-symbols qxcore --target "$TARGET" | LC_ALL=C sort -u >qxcore.symbols
apigen --list-symbols qxport_i8 --target "$TARGET" | LC_ALL=C sort -u >qxport_i8.symbols
names() {
  "$PYTHON" "$SOURCE_DIR/tests/link/catalogue_names.py" "$SOURCE_DIR/api" "$1" | LC_ALL=C sort -u
}
names data >data.symbols
names service >service.symbols
grep -v '^qxport_' qxcore.symbols >core.symbols
export LC_ALL=C

exports_are_the_catalogue() {
  local library=$1 catalogue=$2
  defined_symbols "$library" >exported
  expect_same "exports of $(basename "$library")" "$catalogue" exported
}

# A program's own procedure, or one of its compiler's archive, replaces a weak definition; what the module binds to is
# strong and stays ours.
routines_are_weak_and_aliases_strong() {
  local archive=$1 catalogue=$2
  archive_symbols "$archive" | sort >kinds
  { grep -v '^qxport_' "$catalogue" || true; } | comm -23 - data.symbols | sed 's/^/W /' | sort >wanted
  comm -23 wanted kinds | expect_empty "not weak in $(basename "$archive")"
  grep '^qxport_' "$catalogue" | sed 's/^/T /' | sort >wanted
  comm -23 wanted kinds | expect_empty "not strong in $(basename "$archive")"
}

# What the objects share among themselves is hidden, so a shared library that a program's author makes from the archive
# exports none of it. The GNU provider's Fortran procedures cannot be hidden; their names say whose they are. An
# unoptimised build keeps inline functions of the C++ headers, and an instrumented one has marks of its own.
other_names_are_hidden() {
  local archive=$1 catalogue=$2
  local harmless='^(qxcore_gnu_|__qxcore_gnu_|_ZN?K?St|_ZN9__gnu_cxx|__odr_asan)'
  readelf -sW "$archive" |
    awk '$5 ~ /GLOBAL|WEAK/ && $6 == "DEFAULT" && $7 != "UND" { print $8 }' | sort -u >visible
  comm -23 visible "$catalogue" | grep -Ev "$harmless" |
    expect_empty "visible in $(basename "$archive") and not in the catalogue" || true
}

# A call through an exported name would be a call of the program's procedure of that name.
no_routine_calls_an_exported_name() {
  local archive=$1 catalogue=$2
  grep -v '^qxport_' "$catalogue" | comm -23 - data.symbols | comm -23 - service.symbols >public
  readelf -rW "$archive" |
    awk '/^Relocation section/ { code = $3 ~ /\.(text|data|rodata|init_array)/ } code && NF >= 5 { print $5 }' |
    sed 's/@.*//' | sort -u >referred
  comm -12 public referred | expect_empty "referred to by its exported name in $(basename "$archive")"
}

# Wanted of others: the C library's names (with their versions, where nothing is instrumented), and what a list has.
wants_only_libc_and() {
  local served=$1 library=$2 libc=$3 libm=$4
  nm -D --undefined-only "$library" | awk '$1 == "U" { print $2 }' | sort -u >undefined
  if [[ -n $SANITIZE ]]; then
    grep -Ev '^__(asan|ubsan|tsan|lsan|sanitizer)_' undefined >plain
    { defined_symbols "$libc"; defined_symbols "$libm"; } | sort -u >host
    sed 's/@.*//' plain | sort -u | comm -23 - host >foreign
  else
    grep -Ev '@GLIBC_[0-9.]+$' undefined | sed 's/@.*//' | sort -u >foreign || true
  fi
  comm -23 foreign "$served" | expect_empty "$(basename "$library") wants what neither libc nor the libraries below offer"
}

loads_cleanly() {
  local library=$1 name
  name=$(basename "$library")
  readelf -lW "$library" | awk '$1 == "TLS"' | expect_empty "$name has a thread-local segment"
  readelf -sW "$library" | awk '$4 == "TLS"' | expect_empty "$name has thread-local symbols"
  readelf -dW "$library" | grep -E 'TEXTREL' | expect_empty "$name needs its code patched when it is loaded" || true
  readelf -lW "$library" | awk '($1 == "LOAD" || $1 == "GNU_STACK") && / RWE /' |
    expect_empty "$name has writable memory that is executable"
  readelf -lW "$library" | grep -q GNU_STACK || fail "$name asks for an executable stack"
}

libc=$("$CC" "${target_flags[@]}" -print-file-name=libc.so.6)
libm=$("$CC" "${target_flags[@]}" -print-file-name=libm.so.6)

exports_are_the_catalogue "$QXPORT_LIB/libqxportmt.so" qxport.symbols
wants_only_libc_and core.symbols "$QXPORT_LIB/libqxportmt.so" "$libc" "$libm"
loads_cleanly "$QXPORT_LIB/libqxportmt.so"
routines_are_weak_and_aliases_strong "$QXPORT_LIB/libqxportmt.a" qxport.symbols
other_names_are_hidden "$QXPORT_LIB/libqxportmt.a" qxport.symbols
no_routine_calls_an_exported_name "$QXPORT_LIB/libqxportmt.a" qxport.symbols

# The variants for default integers of 8 bytes: all of ours, and over the libraries for the others.
grep -v '^qxport_i8_' qxport_i8.symbols | expect_empty 'variants that do not say what they are' || true
exports_are_the_catalogue "$QXPORT_LIB/libqxportmt_i8.so" qxport_i8.symbols
sort -u qxport.symbols qxcore.symbols >below
wants_only_libc_and below "$QXPORT_LIB/libqxportmt_i8.so" "$libc" "$libm"
loads_cleanly "$QXPORT_LIB/libqxportmt_i8.so"
routines_are_weak_and_aliases_strong "$QXPORT_LIB/libqxportmt_i8.a" qxport_i8.symbols
other_names_are_hidden "$QXPORT_LIB/libqxportmt_i8.a" qxport_i8.symbols

for provider in gnu posix; do
  exports_are_the_catalogue "$QXCORE_LIB/libqxcoremt_$provider.so" qxcore.symbols
  loads_cleanly "$QXCORE_LIB/libqxcoremt_$provider.so"
  routines_are_weak_and_aliases_strong "$QXCORE_LIB/libqxcoremt_$provider.a" qxcore.symbols
  other_names_are_hidden "$QXCORE_LIB/libqxcoremt_$provider.a" qxcore.symbols
done
wants_only_libc_and core.symbols "$QXCORE_LIB/libqxcoremt_posix.so" "$libc" "$libm"

# The services that tests call by their C names are in the archive, and in the archive only.
internal=(allocCstr deallocCstr CstrToFstr patternMatch _zelta_lib_warn _zelta_lib_err init_handle_table
  destroy_handle_table get_handle_from_alloc_address get_handle_from_static_address get_address_from_handle
  free_alloc_handle)
archive_symbols "$QXPORT_LIB/libqxportmt.a" | awk '{ print $2 }' | sort -u >in_archive
nm -D "$QXPORT_LIB/libqxportmt.so" | awk '{ print $NF }' | sed 's/@.*//' | sort -u >dynamic
for name in "${internal[@]}"; do
  grep -qxF -- "$name" in_archive || fail "$name is not in libqxportmt.a"
  if grep -qxF -- "$name" dynamic; then
    fail "$name is a dynamic symbol of libqxportmt.so"
  fi
done

finish
