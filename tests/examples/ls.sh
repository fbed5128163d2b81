#!/usr/bin/env bash
# The example ls lists a tree with every type of file as the system's own ls does.
set -euo pipefail

# shellcheck source=hindered.bash
source "$(dirname "$0")/hindered.bash"
ls=$EXAMPLES/ls
# What stands beside the tree stays as it is, whatever others do in the directory for temporary files: .. is listed too.
place=$(mktemp -d)
trap 'rm -rf "$place"' EXIT
tree=$place/tree
mkdir "$tree"
export LC_ALL=C TZ=Europe/Paris
failures=0

# same WHAT EXPECTED GOT: blanks that align columns do not count.
same() {
  if ! diff <(tr -s ' ' <<<"$2") <(tr -s ' ' <<<"$3"); then
    printf 'FAILED: %s\n' "$1"
    failures=$((failures + 1))
  fi
}

# What this ls cannot know: the blocks in use.
without_blocks() { sed '/^total [0-9]/d'; }

compare() {
  same "ls $*" "$(command ls "$@" 2>/dev/null | without_blocks)" "$("$ls" "$@" 2>/dev/null)"
}

cd "$tree"
mkdir -p sub/deeper empty sticky setgid '.hidden dir'
printf 'one' >file
printf '%s' "$(seq 1000)" >larger
touch .dotfile ' leading blank' 'trailing blank ' $'new\tline' "$(printf 'n%.0s' {1..255})" $'latin-\xe9'
touch -d '2001-02-03 04:05:06' old
touch -d '2020-07-08 09:10:11' sub/older
touch -d '2020-07-08 09:10:12' sub/newer
printf 'xx' >sub/deeper/leaf
ln -s file link
ln -s nowhere dangling
ln -s sub link_to_directory
ln -s "$(printf '/%.0sx' {1..2000})" long_link
ln -s 'target with blanks ' 'link with a blank '
ln -s ../file sub/link
touch -hd '2020-07-08 09:10:13' sub/link
echo content >-l
mkdir -- --
ln file hard
mkfifo fifo
"$PYTHON" -c 'import socket; socket.socket(socket.AF_UNIX).bind("socket")'
chmod 1777 sticky
chmod 2755 setgid
chmod 4755 larger
chmod 7644 old
chmod 000 .dotfile
truncate -s 5G sparse
# The time of day for half a year, and not of what is still to come.
touch -d '170 days ago' 'half a year'
touch -d '200 days ago' 'more than half a year'
touch -d '300 days ago' 'less than a year'
touch -d 'tomorrow' tomorrow

compare
compare -a
compare -l
compare -la
compare -R
compare -lR
compare -laR
compare -S sub/deeper
compare -lS
compare -t sub
compare -lt sub
compare -l file link sub fifo
compare sub empty
compare -l empty
compare -l -- file
compare -l link_to_directory
compare -l /dev/null /dev/zero /dev/tty
compare -- -l
compare -l -- -l file
compare -l -- --
compare -- -- sub
compare --
compare sub/link
compare -l sub/link link_to_directory/link

# Dates beyond 32 bits of seconds, where the file system keeps them, by the rules of several zones.
mkdir dates
number=0
for date in '2038-01-19 03:14:07' '2038-01-19 03:14:08' '2039-12-31 23:59:59' '2040-02-29 12:00:00' \
  '2040-07-01 00:30:00' '2041-01-01 00:00:00' '2099-12-31 23:59:59' '2100-02-28 23:30:00' '2100-03-01 00:10:00' \
  '2400-02-29 01:00:00' '2446-05-10 22:38:55' '1901-12-13 20:45:51' '1901-12-13 20:45:52' '1969-12-31 23:59:59'; do
  number=$((number + 1))
  TZ=UTC touch -d "$date" "dates/$(printf %02d $number)"
done
for zone in UTC Europe/Paris America/St_Johns Pacific/Auckland Asia/Kolkata XXX-3; do
  TZ=$zone compare -l dates
  TZ=$zone compare -lt dates
done

# Columns stand under one another: the size ends where the one above ends.
"$ls" -l | awk '{ print index($0, $5) + length($5) }' | sort -u | wc -l | grep -qx 1 ||
  { echo 'FAILED: the columns are not aligned'; failures=$((failures + 1)); }

# status WANTED ARGUMENT...
status() {
  local wanted=$1 got=0
  shift
  "$ls" "$@" >/dev/null 2>"$tree/.errors" || got=$?
  if ((got != wanted)); then
    printf 'FAILED: ls %s ended with %d, not %d\n' "$*" "$got" "$wanted"
    failures=$((failures + 1))
  fi
  if ((wanted != 0)) && [[ ! -s $tree/.errors ]]; then
    printf 'FAILED: ls %s said nothing\n' "$*"
    failures=$((failures + 1))
  fi
}
status 0
status 2 -q
status 2 not-there
status 2 file not-there
grep -q "not-there.*No such file or directory" "$tree/.errors" ||
  { echo 'FAILED: the reason of a missing name'; failures=$((failures + 1)); }

# What few hosts have: numbers of a device as large as they can be, and a directory that nobody can read.
cat >"$place/rare.c" <<'END'
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <stdint.h>
#include <string.h>
#include <sys/sysmacros.h>
int32_t qxport_lstati8_(const char *name, int64_t *status, intptr_t name_length) {
  int32_t (*original)(const char *, int64_t *, intptr_t) =
      (int32_t(*)(const char *, int64_t *, intptr_t))dlsym(RTLD_NEXT, "qxport_lstati8_");
  const int32_t error = original(name, status, name_length);
  status[6] = (int64_t)makedev(2741, 703710);
  return error;
}
void pxfopendir_(const char *name, const int32_t *length, int32_t *handle, int32_t *error, intptr_t name_length) {
  void (*original)(const char *, const int32_t *, int32_t *, int32_t *, intptr_t) =
      (void (*)(const char *, const int32_t *, int32_t *, int32_t *, intptr_t))dlsym(RTLD_NEXT, "pxfopendir_");
  original(name, length, handle, error, name_length);
  if (memmem(name, *length, "deeper", 6) != NULL)
    *error = EIO;
}
END
make_preloaded "$place/rare.so" "$place/rare.c"
rare() { preloaded "$place/rare.so" "$ls" "$@"; }
same 'the numbers of a large device' '2741, 703710' \
  "$(rare -l /dev/null | sed -nE 's/.* ([0-9]+, +[0-9]+) .*/\1/p')"
# Below a directory that was named such a failure is the lesser one.
same 'a directory below that cannot be read' "ls: cannot open directory 'sub/deeper': Input/output error
1" \
  "$(rare -R sub 2>&1 >/dev/null || echo $?)"
same 'a directory that cannot be read' "ls: cannot open directory 'sub/deeper': Input/output error
2" \
  "$(rare sub/deeper 2>&1 >/dev/null || echo $?)"
same 'the greater failure counts' 2 "$(rare -R not-there sub >/dev/null 2>&1 || echo $?)"

# What cannot be written is told, also what stands in a buffer until the end.
for arguments in -a -l -lR; do
  got=0
  "$ls" "$arguments" >/dev/full 2>"$tree/.errors" || got=$?
  [[ $got == 1 && $(<"$tree/.errors") == 'ls: standard output: No space left on device' ]] ||
    { echo "FAILED: ls $arguments >/dev/full ended with $got"; failures=$((failures + 1)); }
  got=0
  "$ls" "$arguments" >&- 2>"$tree/.errors" || got=$?
  [[ $got == 1 && $(<"$tree/.errors") == 'ls: standard output: Bad file descriptor' ]] ||
    { echo "FAILED: ls $arguments >&- ended with $got"; failures=$((failures + 1)); }
done
make_hindrance "$place/hindered.so"
same 'ls with interrupted calls' "$("$ls" -lR)" "$(hindered "$ls" -lR)"

# One directory is open at a time, and none stays open.
mkdir many
for number in {1..40}; do mkdir -p "many/$number/deeper"; done
same 'ls of many directories with few descriptors' "$(command ls -lR many | without_blocks)" \
  "$(ulimit -n 12 && "$ls" -lR many 2>&1)"

# A terminal gets no byte that it might obey; a pipe gets the names as they are.
mkdir "$place/names"
cd "$place/names"
for name in $'\e[31mred' $'new\nline' $'caf\xc3\xa9' $'\xc2\x9bm' $'latin-\xe9' $'cut-\xe2\x82' $'\x7fdel' $'\xe2\x82\xac' \
  $'\xed\xa0\x80' $'\xc0\xaf' $'\xf0\x9f\x98\x80' $'\xf4\x90\x80\x80' $'tab\there' plain\ name\\; do
  ln -s "$name" "$name"
done
mkdir $'dir\rectory'
on_a_terminal() {
  "$PYTHON" - "$@" <<'PROGRAM'
import os, pty, sys
said = []
def read(descriptor):
    said.append(os.read(descriptor, 65536))
    return b""
status = pty.spawn(sys.argv[1:], read)
sys.stdout.buffer.write(b"".join(said).replace(b"\r\n", b"\n"))
sys.exit(os.waitstatus_to_exitcode(status))
PROGRAM
}
expected=$(sort <<'END'
?[31mred
new?line
café
??m
latin-?
cut-??
?del
€
???
??
😀
????
tab?here
plain name\
END
)
same 'names on a terminal' "$(sort <<<"$expected"$'\n''dir?ectory')" "$(on_a_terminal "$ls" | sort)"
same 'links on a terminal' "$expected" "$(on_a_terminal "$ls" -l | sed -n 's/.* -> //p' | sort)"
same 'headers on a terminal' '.:
./dir?ectory:' "$(on_a_terminal "$ls" -R | grep ':$')"
same 'complaints on a terminal' "ls: cannot access 'no?where': No such file or directory" \
  "$(on_a_terminal "$ls" $'no\ewhere' || true)"
compare
compare -l

((failures == 0)) || exit 1
echo 'ls lists as the system does'
