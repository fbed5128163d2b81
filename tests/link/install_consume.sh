#!/usr/bin/env bash
# The installed tree is what its users expect: by path, by pkg-config, by find_package, and wherever it is moved to.
# shellcheck source=common.bash
source "$(dirname "$0")/common.bash"
sources=$SOURCE_DIR/tests/link

prefix=$work/prefix
"$CMAKE" --install "$BUILD_DIR" --prefix "$prefix" >install.log 2>&1 || { fail 'it does not install'; cat install.log; }

# Ten lines, as a stranger would write them.
cat >prog.f90 <<'PROGRAM'
program prog
  use qxport, only: access, getcwd, ierrno
  implicit none
  character(4096) :: directory
  if (getcwd(directory) /= 0) error stop 'no working directory'
  if (access(trim(directory), 'rx') /= 0) error stop 'the working directory cannot be read'
  if (access('/no/such/name', ' ') /= 22) error stop 'there is a name that should not be there'
  if (ierrno() /= 22) error stop 'the error was not kept'
  print '(a)', trim(directory)
end program
PROGRAM
cat >prog.c <<'PROGRAM'
#include <qxport/qxport.h>
#include <stdio.h>

int main(void) {
  char directory[4096];
  const int32_t answer = getcwd_(directory, sizeof(directory));
  printf("%.*s\n", (int)lnblnk_(directory, sizeof(directory)), directory);
  return answer;
}
PROGRAM

# Default integers of 8 bytes, in which a value stays whole or is refused.
cat >wide.f90 <<'PROGRAM'
program wide
  use qxport, only: getcwd, pxfgetpid, pxfopen, sleepqq
  use qxport_numbers, only: EOVERFLOW, O_RDONLY
  implicit none
  character(4096) :: directory
  integer :: descriptor = -2_8**40, error
  if (kind(error) /= 8) error stop 'default integers have not 8 bytes'
  call sleepqq(1)
  call pxfopen('.', 0, O_RDONLY, 0, descriptor, error)
  if (error /= 0 .or. descriptor < 0) error stop 'the working directory does not open'
  call pxfopen('.', 2**32, O_RDONLY, 0, descriptor, error)
  if (error /= EOVERFLOW) error stop 'a length that does not fit is not refused'
  if (getcwd(directory) /= 0) error stop 'no working directory'
  print '(a)', trim(directory)
end program
PROGRAM

promised_files_are_there() {
  local file
  for file in lib/libqxportmt{,_i8}.{so,a} lib/libqxportmt{,_i8}.so.1 lib/libqxcoremt_{gnu,posix}.{so,a} \
    lib/libqxcoremt_{gnu,posix}.so.1 include/qxport/qxport.{h,mod,f90} include/qxport/{,i8/}qxport_numbers.{mod,f90} include/qxport/i8/qxport.{mod,f90} lib/pkgconfig/qxport{,-i8}.pc \
    lib/cmake/qxport/qxportConfig{,Version}.cmake share/man/man3/access.3f share/doc/qxport/html/index.html \
    share/doc/qxport/LICENSE bin/qxport share/qxport/{catalogue.json,catalogue.schema.json,doctor.schema.json,README.md} \
    share/man/man1/qxport.1; do
    [[ -s $prefix/$file ]] || fail "$file is not installed"
  done
  # Every page and example, and the texts, as they are.
  for file in man:share/man html:share/doc/qxport/html; do
    diff -r "$GENERATED/${file%%:*}" "$prefix/${file#*:}" | expect_empty "${file%%:*} is installed otherwise" || true
  done
  (cd "$SOURCE_DIR" && ls LICENSE README.md examples/*.f90 examples/README.md) | while read -r file; do
    cmp "$SOURCE_DIR/$file" "$prefix/share/doc/qxport/$file" || fail "$file is not installed"
  done
  diff "$GENERATED/include/qxport/qxport.h" "$prefix/include/qxport/qxport.h" >&2 || fail 'another header is installed'
  (cd "$MODULES" && ls ./*.mod) | while read -r file; do
    cmp "$MODULES/$file" "$prefix/include/qxport/$file" || fail "$file is not installed"
  done
  (cd "$I8_MODULES" && ls ./*.mod) | while read -r file; do
    cmp "$I8_MODULES/$file" "$prefix/include/qxport/i8/$file" || fail "i8/$file is not installed"
  done
  "$PYTHON" "$SOURCE_DIR/tests/link/broken_links.py" "$prefix/share/doc/qxport/html" |
    expect_empty 'links of the installed reference that lead nowhere'
  for file in libqxportmt{,_i8} libqxcoremt_{gnu,posix}; do
    [[ -L $prefix/lib/$file.so && -L $prefix/lib/$file.so.1 && -f $(readlink -f "$prefix/lib/$file.so.1") ]] ||
      fail "$file.so is not installed under the names that linkers and loaders look for"
  done
  # For those who link statically by hand.
  grep -q '^Libs.private:.* -lm$' "$prefix/lib/pkgconfig/qxport.pc" || fail 'pkg-config does not name the mathematics library'
  sed -n '/add_library(qxport::static_library /,/^)/p' "$prefix/lib/cmake/qxport/qxportTargets.cmake" |
    grep -q 'INTERFACE_LINK_LIBRARIES.*m' || fail 'the static target does not name the mathematics library'
  # What users read of it must not lead to this machine's directories.
  grep -rIlF -e "$BUILD_DIR" -e "$SOURCE_DIR" -e "$prefix" "$prefix/lib/pkgconfig" "$prefix/lib/cmake" \
    "$prefix/include" "$prefix/share" | expect_empty 'files that name a directory of the build' || true
}

# Compared with what the libraries export, not with what the generator says that it made.
exported_names_are_described() {
  local library
  for library in "$prefix"/lib/libqx*.so; do
    nm -D --defined-only "$library"
  done | awk '$2 != "A" { print $NF }' | sed 's/@.*//' | grep -v '^qxport_' | sort -u >exported
  (($(wc -l <exported) > 200)) || fail 'the installed libraries export hardly anything'
  "$PYTHON" "$sources/installed_names.py" "$prefix/share" <exported | expect_empty 'exported and not described'
}

header_is_that_of_both_languages() {
  echo '#include <qxport/qxport.h>' >alone.c
  "$CC" "${target_flags[@]}" -std=c11 -Wall -Wextra -Werror "-I$prefix/include" -fsyntax-only alone.c ||
    fail 'the header does not compile as C'
  "$CXX" "${target_flags[@]}" -std=c++17 -Wall -Wextra -Werror "-I$prefix/include" -fsyntax-only -x c++ alone.c ||
    fail 'the header does not compile as C++'
  # A weak declaration in a consumer would turn a library that is missing into a call of address 0.
  grep -E '__attribute__.*weak' "$prefix/include/qxport/qxport.h" | expect_empty 'the header declares weakly' || true
}

# runs_installed PREFIX PROGRAM: it prints the working directory.
runs_installed() {
  local printed
  if printed=$(LD_LIBRARY_PATH=$1/lib timeout 60 "$2" 2>&1) && [[ $printed == "$PWD" ]]; then
    return
  fi
  fail "$2 does not run: $printed"
}

# serves_pkg_config PREFIX: the command lines that the README gives.
serves_pkg_config() {
  local installed=$1
  local -x PKG_CONFIG_PATH=$installed/lib/pkgconfig
  [[ $(pkg-config --modversion qxport) == 1.* ]] || fail 'pkg-config does not know the version'

  options_of --cflags --libs qxport
  "$FC" "${target_flags[@]}" -o by_pc prog.f90 "${options[@]}" ||
    fail "no Fortran program by pkg-config from $installed"
  runs_installed "$installed" ./by_pc
  readelf -dW by_pc | grep -qF '[libqxportmt.so.1]' || fail 'pkg-config did not give the shared library'
  options_of --cflags --libs qxport-i8
  "$FC" "${target_flags[@]}" -fdefault-integer-8 -o wide_by_pc wide.f90 "${options[@]}" ||
    fail "no program of wide integers by pkg-config from $installed"
  runs_installed "$installed" ./wide_by_pc
  readelf -dW wide_by_pc | grep -qF '[libqxportmt_i8.so.1]' || fail 'pkg-config did not give the library of variants'
  options_of --cflags --libs qxport-posix
  "$CC" "${target_flags[@]}" -o by_pc_c prog.c "${options[@]}" ||
    fail "no C program by pkg-config from $installed"
  runs_installed "$installed" ./by_pc_c

  # An instrumented program is never all static.
  if [[ -z $SANITIZE ]]; then
    options_of --static --cflags --libs qxport
    "$FC" "${target_flags[@]}" -o static_by_pc -static prog.f90 "${options[@]}" ||
      fail "no static Fortran program by pkg-config from $installed"
    runs_installed /nowhere ./static_by_pc
    options_of --static --cflags --libs qxport-i8
    "$FC" "${target_flags[@]}" -fdefault-integer-8 -o static_wide_by_pc -static wide.f90 "${options[@]}" ||
      fail "no static program of wide integers by pkg-config from $installed"
    runs_installed /nowhere ./static_wide_by_pc
    options_of --static --cflags --libs qxport-posix
    "$CC" "${target_flags[@]}" -o static_by_pc_c -static prog.c "${options[@]}" ||
      fail "no static C program by pkg-config from $installed"
    runs_installed /nowhere ./static_by_pc_c
  fi
  rm -f by_pc by_pc_c static_by_pc static_by_pc_c wide_by_pc static_wide_by_pc
}

# serves_ported PREFIX: a program that uses a module of another name, with names of its own; the command writes nothing
# into the tree.
serves_ported() {
  local installed=$1 before
  before=$(find "$installed" | sort)
  printf '%s\n' 'directory_of = getcwd' >names.txt
  cat >ported.f90 <<'PROGRAM'
use old_names, only: directory_of
character(4096) :: directory
if (directory_of(directory) /= 0) error stop 'no working directory'
print '(a)', trim(directory)
end
PROGRAM
  rm -rf ported_modules
  "$installed/bin/qxport" module old_names --of none --names names.txt --output ported_modules \
    --compiler "$FC ${width_flags[*]}" --quiet || fail "no module by the command of $installed"
  "$FC" "${target_flags[@]}" -Iported_modules -o ported ported.f90 "-L$installed/lib" -lqxportmt -lqxcoremt_gnu ||
    fail "no program with a module made from $installed"
  runs_installed "$installed" ./ported
  "$installed/bin/qxport" doctor --names names.txt "$FC" "${target_flags[@]}" -- ported.f90 >doctor.log && fail 'no module is missing'
  grep -q 'old_names: no source makes this module' doctor.log || fail "the doctor of $installed does not see what is missing"
  [[ $(find "$installed" | sort) == "$before" ]] || fail "the command wrote into $installed"
}

# serves_cmake PREFIX LANGUAGE
serves_cmake() {
  local installed=$1 language=$2 project=project_$2 compiler=$FC source=prog.f90 linkage
  if [[ $language == C ]]; then
    compiler=$CC source=prog.c
  fi
  rm -rf "$project"
  mkdir "$project"
  cp "$sources/consumer_$language.cmake" "$project/CMakeLists.txt"
  cp "$source" wide.f90 ported.f90 names.txt "$project/"
  if ! { "$CMAKE" -S "$project" -B "$project/build" -G "$generator" "-DCMAKE_PREFIX_PATH=$installed" \
    "-DCMAKE_${language}_COMPILER=$compiler" "-DCMAKE_${language}_FLAGS=${target_flags[*]}" \
    -DCMAKE_BUILD_TYPE=Release && "$CMAKE" --build "$project/build"; } >project.log 2>&1; then
    fail "no $language project by find_package from $installed"
    cat project.log
    return
  fi
  if [[ $language == Fortran ]]; then
    runs_installed /nowhere "$project/build/ported"
    runs_installed /nowhere "$project/build/wide_with_shared"
    runs_installed /nowhere "$project/build/wide_with_static"
  fi
  for linkage in shared static; do
    # Without a search path of ours: CMake's own suffices.
    runs_installed /nowhere "$project/build/with_$linkage"
  done
  readelf -dW "$project/build/with_shared" | grep -qF '[libqxportmt.so.1]' ||
    fail 'qxport::qxport is not the shared library'
  readelf -dW "$project/build/with_static" | grep -E 'libqx' | expect_empty 'qxport::qxport_static needs' || true
}

# accepts VERSION: whether find_package finds the package when it asks for a version.
accepts() {
  mkdir -p version
  printf '%s\n' 'cmake_minimum_required(VERSION 3.25)' 'project(version LANGUAGES C)' "find_package(qxport $1 REQUIRED)" \
    >version/CMakeLists.txt
  "$CMAKE" -S version -B version/build -G "$generator" "-DCMAKE_PREFIX_PATH=$prefix" "-DCMAKE_C_COMPILER=$CC" \
    "-DCMAKE_C_FLAGS=${target_flags[*]}" >version.log 2>&1
}
versions_are_told_apart() {
  local version
  for version in '' 1 1.0 1.0.1 '1.0.1 EXACT'; do
    accepts "$version" || { fail "CMake does not find version $version"; cat version.log; }
    rm -rf version
  done
  for version in 0.9 1.0.2 1.1 2 '1.0.0 EXACT'; do
    ! accepts "$version" || fail "CMake takes this for version $version"
    rm -rf version
  done
}

promised_files_are_there
exported_names_are_described
header_is_that_of_both_languages

generator=$(sed -n 's/^CMAKE_GENERATOR:INTERNAL=//p' "$BUILD_DIR/CMakeCache.txt")
versions_are_told_apart
serves_pkg_config "$prefix"
serves_ported "$prefix"
serves_cmake "$prefix" Fortran
serves_cmake "$prefix" C

# The tree is moved as a whole; CMake also follows it to a place with blanks in its name.
mv "$prefix" "$work/moved"
serves_pkg_config "$work/moved"
mkdir "$work/a place"
mv "$work/moved" "$work/a place/with blanks"
serves_ported "$work/a place/with blanks"
serves_cmake "$work/a place/with blanks" Fortran
serves_cmake "$work/a place/with blanks" C

finish
