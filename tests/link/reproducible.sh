#!/usr/bin/env bash
# The same sources give the same bytes, wherever they stand, and the identity says the date that SOURCE_DATE_EPOCH gives.
# shellcheck source=common.bash
source "$(dirname "$0")/common.bash"
# One instant, in a time zone where it is another day already.
export SOURCE_DATE_EPOCH=1699050000 TZ=Pacific/Auckland
date='Nov  3 2023'
targets=(qxport_shared qxport_static qxport_i8_shared qxport_i8_static qxcore_gnu_shared qxcore_gnu_static qxcore_posix_shared qxcore_posix_static)
libraries=(src/libqxportmt.{so,a} src/libqxportmt_i8.{so,a} src/core/libqxcoremt_{gnu,posix}.{so,a})

# configure SOURCE BUILD: optimised and with debugging information, as installed.
configure() {
  "$CMAKE" -S "$1" -B "$2" -G "$generator" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQXPORT_TESTS=OFF -DQXPORT_BENCH=OFF \
    "-DCMAKE_C_COMPILER=$CC" "-DCMAKE_CXX_COMPILER=$CXX" "-DCMAKE_Fortran_COMPILER=$FC" >configure.log 2>&1 ||
    { fail "$1 does not configure"; cat configure.log; finish; }
}

build() {
  "$CMAKE" --build "$1" --target "${targets[@]}" >build.log 2>&1 || { fail "$1 does not build"; cat build.log; finish; }
}

# copy_sources DIRECTORY: what a fresh clone has, without the builds.
copy_sources() {
  mkdir -p "$1"
  tar -C "$SOURCE_DIR" --exclude=./build --exclude=./.git -cf - . | tar -C "$1" -xf -
}

generator=$(sed -n 's/^CMAKE_GENERATOR:INTERNAL=//p' "$BUILD_DIR/CMakeCache.txt")

# prints_date BUILD PROVIDER: in the identity texts that programs get.
prints_date() {
  compile_c identity "$SOURCE_DIR/tests/link/identity.c" "-I$1/generated/include" "-L$1/src" "-L$1/src/core" \
    -lqxportmt "-lqxcoremt_$2" || return 0
  LD_LIBRARY_PATH=$1/src:$1/src/core timeout 60 ./identity >identity.text || fail "no identity with $2"
  printf '%s\tV1.0-001\t%s\n' 'Zelta Fortran portability library' "$date" "Zelta Fortran core services ($2)" "$date" |
    diff - identity.text || fail "the identities with $2 are others"
}

# Whatever the day is, in a language of the user's own too.
while read -r epoch wanted; do
  # shellcheck disable=SC2016 # a variable of CMake's
  printf 'include("%s")\nmessage("${QXPORT_BUILD_DATE}")\n' "$SOURCE_DIR/cmake/BuildDate.cmake" >date.cmake
  told=$(SOURCE_DATE_EPOCH=$epoch LC_ALL=de_DE.UTF-8 "$CMAKE" -P date.cmake 2>&1)
  [[ $told == "$wanted" ]] || fail "the date of $epoch is '$told', not '$wanted'"
done <<'DATES'
0 Jan  1 1970
951782399 Feb 28 2000
951782400 Feb 29 2000
1125446400 Aug 31 2005
1259625600 Dec  1 2009
1318204799 Oct  9 2011
1318204800 Oct 10 2011
1404172800 Jul  1 2014
1588291199 Apr 30 2020
4102444800 Jan  1 2100
DATES

if [[ $TARGET == 64 && -z $SANITIZE ]]; then
  # Once as ./dev builds, once outside of the sources.
  first=$work/a second="$work/another place"
  copy_sources "$first"
  copy_sources "$second"
  configure "$first" "$first/build/release"
  configure "$second" "$work/outside"
  build "$first/build/release"
  build "$work/outside"
  for library in "${libraries[@]}"; do
    cmp "$first/build/release/$library" "$work/outside/$library" || fail "$library differs"
    if grep -qF "$work" "$first/build/release/$library"; then
      fail "$library names the directory of its build"
    fi
  done
  prints_date "$work/outside" gnu
  prints_date "$work/outside" posix
else
  # The bytes are compared in the builds that are installed. Of the others the date is looked at, where the build is told.
  configure "$SOURCE_DIR" "$work/build"
  case $generator in
    Ninja*) rules=$work/build/build.ninja ;;
    *) rules=$work/build/src/CMakeFiles/qxport_objects.dir/build.make ;;
  esac
  grep -E 'QXPORT_BUILD_DATE' "$rules" | sed 's/\\//g' >dates || true
  grep -qF "$date" dates || { fail "the build is not told the date $date"; cat dates; }
fi

finish
