#!/usr/bin/env bash
# The ways into other people's builds: below a project's own sources, and installed where a distribution puts libraries,
# found by each build system there, by an ordinary user, in a directory whose name has a blank.
# shellcheck source=common.bash
source "$(dirname "$0")/common.bash"
libdir=lib/x86_64-linux-gnu

cat >sub.f90 <<'PROGRAM'
subroutine tell(answer) bind(C)
  use, intrinsic :: iso_c_binding, only: c_int
  use qxport, only: error_text, pxffileno
  implicit none
  integer(c_int), intent(out) :: answer
  integer :: unit, descriptor
  open (newunit=unit, status='scratch')
  call pxffileno(unit, descriptor, answer)
  if (answer == 0 .and. error_text(32) /= 'Broken pipe') answer = 1
end subroutine
PROGRAM
cat >main.cpp <<'PROGRAM'
#include <qxport/qxport.h>
#include <cstdio>
extern "C" void tell(int *answer);
int main() {
  int answer = -1;
  tell(&answer);  // the unit is one of the Fortran run-time's
  std::printf("answer %d, process %d\n", answer, getpid_() > 0);
  return answer;
}
PROGRAM
cat >prog.f90 <<'PROGRAM'
program prog
  use qxport, only: error_text
  implicit none
  print '(a)', trim(error_text(32))
end program
PROGRAM
cat >prog.c <<'PROGRAM'
#include <qxport/qxport.h>
#include <stdio.h>
int main(void) {
  const int32_t number = 32;
  char text[11];
  get_error_text_(&number, text, sizeof(text));
  printf("%.11s\n", text);
  return 0;
}
PROGRAM

# prints EXPECTED COMMAND...
prints() {
  local expected=$1 output status=0
  shift
  output=$("$@" 2>&1) || status=$?
  [[ $status == 0 && $output == "$expected" ]] || fail "$* ended with $status and printed $output"
}

# A project whose sources are a neighbour's: a directory below, or content that CMake fetches from a place of this machine.
below_a_project() {
  local way
  mkdir -p 'fetched project' 'sub project'
  cat >'fetched project/CMakeLists.txt' <<'PROJECT'
cmake_minimum_required(VERSION 3.25)
project(consumer LANGUAGES CXX Fortran)
include(FetchContent)
FetchContent_Declare(qxport SOURCE_DIR "$ENV{SOURCE_DIR}")
set(QXPORT_INSTALL ON)
FetchContent_MakeAvailable(qxport)
PROJECT
  cat >'sub project/CMakeLists.txt' <<'PROJECT'
cmake_minimum_required(VERSION 3.25)
project(consumer LANGUAGES CXX Fortran)
add_subdirectory("$ENV{SOURCE_DIR}" qxport)
PROJECT
  for way in fetched sub; do
    cat >>"$way project/CMakeLists.txt" <<'PROJECT'
add_executable(with_shared prog.f90)
target_link_libraries(with_shared PRIVATE qxport::qxport)
add_executable(mixed_static main.cpp sub.f90)
target_link_libraries(mixed_static PRIVATE qxport::qxport_static)
if(TEST test_support OR TARGET ls OR TARGET bench_sorting)
  message(FATAL_ERROR "more than the libraries is built")
endif()
PROJECT
    cp prog.f90 main.cpp sub.f90 "$way project/"
    if ! { "$CMAKE" -S "$way project" -B "$way project/build" -G Ninja -DCMAKE_BUILD_TYPE=Release \
      "-DCMAKE_INSTALL_LIBDIR=$libdir" "-DCMAKE_CXX_COMPILER=$CXX" "-DCMAKE_Fortran_COMPILER=$FC" &&
      "$CMAKE" --build "$way project/build" -j 2; } >project.log 2>&1; then
      fail "no project with the $way sources"
      tail -n 30 project.log
      return
    fi
    prints 'Broken pipe' "$way project/build/with_shared"
    prints 'answer 0, process 1' "$way project/build/mixed_static"
  done
  [[ -z $(find 'sub project/build' -name cmake_install.cmake -exec grep -l libqxportmt {} +) ]] ||
    fail 'a project that did not ask for it installs the library'
}

prefix="$work/an installed place"
install_by_components() {
  local component
  for component in runtime development documentation; do
    "$CMAKE" --install 'fetched project/build' --prefix "$prefix" --component $component >install.log 2>&1 ||
      { fail "component $component does not install"; cat install.log; }
    (cd "$prefix" && find . -type f -o -type l | sort) >"$component.files"
  done
  expect_empty 'the runtime component has more than the shared libraries' \
    < <(grep -Ev "^\./$libdir/libqx(portmt(_i8)?|coremt_(gnu|posix))\.so\.1" runtime.files)
  [[ $(wc -l <runtime.files) == 8 ]] || fail "the runtime component lacks libraries: $(cat runtime.files)"
  comm -13 runtime.files development.files >added
  for file in include/qxport/qxport.{h,mod} "$libdir"/libqxportmt{,_i8}.{so,a} "$libdir"/pkgconfig/qxport{,-i8}.pc include/qxport/i8/qxport.mod \
    "$libdir"/cmake/qxport/qxportConfig.cmake bin/qxport; do
    grep -qxF "./$file" added || fail "the development component lacks $file"
  done
  comm -13 development.files documentation.files >added
  grep -q '^\./share/man/man3/access.3f$' added || fail 'the documentation component lacks man pages'
  grep -q '^\./share/doc/qxport/CHANGELOG.md$' added || fail 'the documentation component lacks the changes'
  grep -Ev '^\./share/(man|doc)/' added | expect_empty 'the documentation component has more' || true
}

symbols_have_versions() {
  local name
  for name in "$prefix/$libdir"/libqx*.so; do
    nm -D --defined-only --with-symbol-versions "$name"
  done | awk '$2 != "A" { print $3 }' | grep -v '@@QXPORT_1\.0$' | expect_empty 'symbols without a version' || true
}

# What follows is done by the user nobody where this one is root, if that user may come here.
as_user=()
become_ordinary() {
  ((EUID == 0)) || return 0
  chmod -R a+rX "$work"
  mkdir -m 777 "$work/users"
  if setpriv --reuid=65534 --regid=65534 --clear-groups test -w "$work/users" -a -r "$prefix/bin/qxport"; then
    as_user=(setpriv --reuid=65534 --regid=65534 --clear-groups env -u CMAKE_C_COMPILER_LAUNCHER
      -u CMAKE_CXX_COMPILER_LAUNCHER "HOME=$work/users" "TMPDIR=$work/users")
  fi
}

from_the_installed_place() {
  local build="$work/users/a build"
  mkdir -p "$work/users"
  "${as_user[@]}" mkdir "$build"
  cp prog.f90 prog.c main.cpp sub.f90 "$work/users/"
  local -x PKG_CONFIG_PATH="$prefix/$libdir/pkgconfig" LD_LIBRARY_PATH="$prefix/$libdir"
  cd "$work/users"

  options_of --cflags --libs qxport
  "${as_user[@]}" "$FC" -o "$build/by_pc" prog.f90 "${options[@]}" || fail 'no program by pkg-config'
  prints 'Broken pipe' "$build/by_pc"
  options_of --static --cflags --libs qxport
  "${as_user[@]}" "$FC" -static -o "$build/by_static_pc" prog.f90 "${options[@]}" || fail 'no static program by pkg-config'
  prints 'Broken pipe' env -u LD_LIBRARY_PATH "$build/by_static_pc"
  options_of --cflags --libs qxport-posix
  "${as_user[@]}" "$CC" -o "$build/by_posix_pc" prog.c "${options[@]}" || fail 'no C program by pkg-config'
  prints 'Broken pipe' "$build/by_posix_pc"

  # What the command says is where the libraries are, leads there.
  printf '%s\n' 'integer access' 'external access' "if (access('/', 'r') /= 0) stop 1" "print '(a)', 'read'" end >old.f90
  "${as_user[@]}" "$prefix/bin/qxport" doctor "$FC" -- old.f90 >doctor.log 2>&1 || true
  grep -qF -- "$prefix/$libdir" doctor.log || { fail 'the command does not know where the libraries are'; cat doctor.log; }

  "${as_user[@]}" "$FC" -o "$build/plain" prog.f90 "-I$prefix/include/qxport" "-L$prefix/$libdir" -lqxportmt \
    -lqxcoremt_gnu || fail 'no program by a plain line'
  prints 'Broken pipe' "$build/plain"

  cat >meson.build <<'PROJECT'
project('consumer', 'c', 'cpp', 'fortran')
qxport = dependency('qxport')
executable('by_meson', 'prog.f90', dependencies: qxport)
executable('mixed_by_meson', 'main.cpp', 'sub.f90', dependencies: qxport)
executable('posix_by_meson', 'prog.c', dependencies: dependency('qxport-posix'))
PROJECT
  if "${as_user[@]}" env "CC=$CC" "CXX=$CXX" "FC=$FC" meson setup "$build/meson" . >meson.log 2>&1 &&
    "${as_user[@]}" meson compile -C "$build/meson" >>meson.log 2>&1; then
    prints 'Broken pipe' "$build/meson/by_meson"
    prints 'answer 0, process 1' "$build/meson/mixed_by_meson"
    prints 'Broken pipe' "$build/meson/posix_by_meson"
  else
    fail 'no project by Meson'
    tail -n 30 meson.log
  fi

  cat >CMakeLists.txt <<'PROJECT'
cmake_minimum_required(VERSION 3.25)
project(consumer LANGUAGES C CXX Fortran)
find_package(qxport 1.0 REQUIRED)
add_executable(mixed main.cpp sub.f90)
target_link_libraries(mixed PRIVATE qxport::qxport)
add_executable(mixed_static main.cpp sub.f90)
target_link_libraries(mixed_static PRIVATE qxport::qxport_static)
add_executable(c_alone prog.c)
set_target_properties(c_alone PROPERTIES QXPORT_PROVIDER posix)
target_link_libraries(c_alone PRIVATE qxport::qxport)
PROJECT
  if "${as_user[@]}" "$CMAKE" -S . -B "$build/cmake" -G Ninja "-DCMAKE_PREFIX_PATH=$prefix" "-DCMAKE_C_COMPILER=$CC" \
    "-DCMAKE_CXX_COMPILER=$CXX" "-DCMAKE_Fortran_COMPILER=$FC" >cmake.log 2>&1 &&
    "${as_user[@]}" "$CMAKE" --build "$build/cmake" >>cmake.log 2>&1; then
    prints 'answer 0, process 1' "$build/cmake/mixed"
    prints 'answer 0, process 1' env -u LD_LIBRARY_PATH "$build/cmake/mixed_static"
    prints 'Broken pipe' "$build/cmake/c_alone"
    readelf -dW "$build/cmake/c_alone" | grep -E 'gfortran|coremt_gnu' | expect_empty 'a C program needs a Fortran run-time' || true
  else
    fail 'no project by find_package'
    tail -n 30 cmake.log
  fi
}

below_a_project
((failures == 0)) || finish
install_by_components
symbols_have_versions
become_ordinary
from_the_installed_place
finish
