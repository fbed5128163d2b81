#!/usr/bin/env bash
# What the README says to type works as it is written there, and its lists are those of the catalogue.
# shellcheck source=common.bash
source "$(dirname "$0")/common.bash"
readme=$SOURCE_DIR/README.md
"$CMAKE" --install "$BUILD_DIR" --prefix "$work/prefix" >install.log 2>&1 || { fail 'it does not install'; cat install.log; }

# blocks LANGUAGE: each fenced block of the README into a file of its own, LANGUAGE.1 and so on.
blocks() {
  awk -v "language=$1" '/^```/ { inside = $0 == "```" language; number += inside; next }
    inside { print > (language "." number) }' "$readme"
}
blocks fortran
blocks sh
blocks cmake

# The programs: the first one is the prog.f90 of the commands.
export LD_LIBRARY_PATH="$QXPORT_LIB:$QXCORE_LIB"
for block in fortran.*; do
  program=prog_${block#*.}.f90
  # Six blanks before the first word are the fixed form.
  ! head -n 1 "$block" | grep -q '^      ' || program=${program%90}
  cp "$block" "$program"
  compile_fortran "${program%.f*}" "$program" -std=f2018 -Wno-intrinsics-std -Wall -Werror "-L$QXPORT_LIB" "-L$QXCORE_LIB" \
    -lqxportmt -lqxcoremt_gnu && run "./${program%.f*}"
done
[[ -s prog_1.f90 && -s prog_2.f ]] || fail 'the programs are not there'
LC_ALL=C ./prog_1 | grep -qx 'data: No such file or directory' || fail 'the first program says something else'
cp prog_1.f90 prog.f90

# The commands, with the prefix put in under a name that has no blanks wherever this directory is. What ./dev does is its
# own affair, but it must know the command.
prefix=/proc/self/cwd/prefix
mkdir bin
cat >bin/gfortran <<EOF
#!/bin/sh
exec "$FC" ${target_flags[*]@Q} "\$@"
EOF
chmod +x bin/gfortran
run_line() {
  local line=${1//PREFIX/$prefix}
  line=${line%%  #*}
  case $line in
    './dev '*)
      read -r _ command _ <<<"$line"
      "$SOURCE_DIR/dev" help | grep -q "^  $command\b" || fail "./dev knows no $command"
      ;;
    export*) eval "$line" ;;
    *-static*) [[ -n $SANITIZE ]] || eval "$line" || fail "$line" ;;
    'cmake '*) ;;  # a build takes long; another test builds the sources as a user would
    *) eval "$line" || fail "$line" ;;
  esac
}
PATH=$work/bin:$PATH
for block in sh.*; do
  while read -r line; do
    run_line "$line"
  done <"$block"
done
[[ -x a.out ]] || fail 'no program was built'
nm prog.o | grep -q ' U qxport_chdir_' || fail 'nm shows something else'
grep -q find_package cmake.1 || fail 'the lines for CMake are not there'

"$PYTHON" - "$SOURCE_DIR" <<'PYTHON' | expect_empty 'lists that are not those of the catalogue'
import re, sys
sys.dont_write_bytecode = True
sys.path.insert(0, sys.argv[1] + "/tools")
from qxapi.catalogue import load
from qxapi.compiler_names import INTRINSICS
catalogue, readme = load(sys.argv[1] + "/api"), open(sys.argv[1] + "/README.md", encoding="utf-8").read()
section = readme[readme.index("### Names that the compiler has too"):]
listed = re.findall(r"`(\w+)`", section[:section.index(".\n")])
expected = sorted(routine.generic for routine in catalogue.routines if routine.generic in INTRINSICS)
if listed != expected:
    print("names of intrinsics:", " ".join(sorted(set(listed) ^ set(expected))))
for family in catalogue.families:
    row = f"| {family.title} | {'; '.join(area.title[0].lower() + area.title[1:] for area in family.areas)} |"
    if row not in readme:
        print(row)
PYTHON
finish
