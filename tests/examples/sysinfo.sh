#!/usr/bin/env bash
# sysinfo: its numbers compared with those that a C program gets from the host's headers, its names and components with
# the catalogue. EXAMPLES names the folder of the built examples.
set -uo pipefail
export LC_ALL=C
# shellcheck source=hindered.bash
source "$(dirname "$0")/hindered.bash"
program=${EXAMPLES:?}/sysinfo
: "${SOURCE_DIR:?}" "${CC:?}" "${PYTHON:?}" "${TARGET:?}"
if [[ ! -x $program ]]; then
  printf 'FAILED: there is no program %s\n' "$program"
  exit 1
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
checks=0
failures=0

# same WHAT EXPECTED ACTUAL
same() {
  checks=$((checks + 1))
  [[ $2 != "$3" ]] || return 0
  failures=$((failures + 1))
  printf 'FAILED: %s\n' "$1"
  diff <(printf '%s\n' "$2") <(printf '%s\n' "$3") | head -n 20
}

width_flags=()
[[ $TARGET != 32 ]] || width_flags=(-m32)

# Every constant of the table, one a line: name, decimal number, and what stands beside it for bits.
constants() {
  awk '/^Records:/ { exit }
    /^  / { for (i = 1; i <= NF; ++i) printf "%s%s", $i ~ /^[A-Z_][A-Z_0-9]*$/ ? "\n" : " ", $i }
    END { print "" }' "$work/out" | sed '1d'
}

# The rows of the records: record, component, type and the routines, with tabs between them.
components() {
  awk '/^Records:/ { on = 1; getline; next } !on || /^  An / || /^  which / { next }
    { record = substr($0, 3, 9) != "         " ? substr($0, 3, 9) : record
      print record "\t" substr($0, 14, 10) "\t" substr($0, 26, 14) "\t" substr($0, 42, 23) "\t" substr($0, 66) }' \
    "$work/out" | sed -E 's/ +\t/\t/g; s/ +$//'
}

# A C program that prints each of the names with the host's number, or the binding's own.
host_constants() {
  {
    cat <<'END'
#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdint.h>
#include <stdio.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#undef NSIG
#undef NCCS
#define NSIG 32
#define NCCS 20
#define SYS_NMLN 256
#define _SYS_NAMELEN 256
#define STDIN_UNIT 5
#define STDOUT_UNIT 6
#define STDERR_UNIT 0
#define EARRAYLEN 125
#define ENONAME 126
#define ENOHANDLE 127
#define ETRUNC 129
#define EEND (-1)
#ifndef SIGEMT
#define SIGEMT (-1)
#endif
#ifndef SIGINFO
#define SIGINFO (-1)
#endif
int main(void) {
END
    while read -r name _; do
      printf '  printf("%%s %%d\\n", "%s", (int32_t)(intptr_t)(%s));\n' "$name" "$name"
    done
    printf '}\n'
  } >"$work/host.c"
  "$CC" "${width_flags[@]}" -D_GNU_SOURCE -D_FILE_OFFSET_BITS=64 -o "$work/host" "$work/host.c" && "$work/host"
}

test_constants() {
  timeout 60 "$program" >"$work/out" 2>"$work/err"
  same 'status' 0 $?
  same 'standard error' '' "$(cat "$work/err")"
  constants >"$work/constants"
  same 'number of constants' 268 "$(wc -l <"$work/constants")"
  same 'names of the catalogue' \
    "$("$PYTHON" - "$SOURCE_DIR/api/posix_constants.toml" <<'END' | sort
import sys
import tomllib

# Those that the library knows by name; others are parameters of a module alone.
with open(sys.argv[1], 'rb') as file:
    for group in tomllib.load(file)['constant_group']:
        if group.get('by_name', True):
            print(*(constant['name'] for constant in group['names']), sep='\n')
END
)" \
    "$(cut -d ' ' -f 1 "$work/constants" | sort)"
  same 'numbers of the host' "$(host_constants <"$work/constants")" "$(cut -d ' ' -f 1,2 "$work/constants")"
  local name value bits
  while read -r name value bits; do
    [[ -z $bits ]] || same "bits of $name" "$((value & 0xFFFFFFFF))" "$((bits))"
  done <"$work/constants"
  same 'bits of permissions' 'S_IRWXU 448 0700' "$(grep '^S_IRWXU' "$work/constants")"
  same 'no bits' 'TAB0 0 0' "$(grep '^TAB0' "$work/constants")"
  same 'bits of an action' 'SA_NOCLDSTOP 1 0x1' "$(grep '^SA_NOCLDSTOP' "$work/constants")"
  same 'a plain number' 'SIGINT 2' "$(grep '^SIGINT ' "$work/constants")"
}

test_form() {
  same 'longest line' 1 "$(($(awk '{ if (length > most) most = length } END { print most }' "$work/out") <= 100))"
  same 'blanks at the end of a line' '' "$(grep ' $' "$work/out")"
  same 'lines whose names are not below those of the line above' '' "$(awk '
    /^Records:/ { exit } !/^  / { before = ""; next }
    { places = ""; rest = $0; offset = 0
      while (match(rest, /  [A-Z_][A-Z_0-9]*/)) {
        places = places " " offset + RSTART
        offset += RSTART + RLENGTH - 1
        rest = substr(rest, RSTART + RLENGTH)
      }
      if (before != "" && index(before " ", places " ") != 1) print
      before = places }' "$work/out")"
}

test_records() {
  same 'components of the catalogue' "$("$PYTHON" - "$SOURCE_DIR/api/posix_fields.toml" <<'END'
import sys
import tomllib

NUMBERS = ('pxfintget  pxfint8get', 'pxfintset  pxfint8set')
FORMS = {'integer(4)': NUMBERS, 'integer(8)': NUMBERS, 'string': ('pxfstrget', 'pxfstrset'),
         'strings': ('pxfestrget, one by one', '')}

def row(record, component, kind, get, set_, access):
    return '\t'.join([record, component, kind, get, set_ if 'set' in access else '']).rstrip()

with open(sys.argv[1], 'rb') as file:
    records = tomllib.load(file)['record']
for record in records:
    components = [part for part in record['components'] if part['access']]
    if not components:
        print(record['name'] + '\t\tno components')
    for part in components:
        name, kind, access = part['name'], part['type'], part['access']
        if 'count' in part:
            print(row(record['name'], name, f"{part['count']} INTEGER(4)", 'pxfaintget pxfaint8get',
                      'pxfaintset pxfaint8set', access))
            print(row(record['name'], name, 'one of these', 'pxfeintget', 'pxfeintset', access))
        elif 'capacity' in part:
            print(row(record['name'], name, f"CHARACTER({part['capacity']})", *FORMS['string'], access))
        else:
            kinds = {'string': 'CHARACTER(*)', 'strings': f"{part.get('count_of')} names"}
            print(row(record['name'], name, kinds.get(kind, kind.upper()), *FORMS[kind], access))
END
)" "$(components | sed 's/\t*$//')"
}

# A library that does not know a name, refuses a component or makes no record of a kind: told, and the status is 1.
test_complaints() {
  cat >"$work/refusing.c" <<'END'
#define _GNU_SOURCE
#include <dlfcn.h>
#include <stdint.h>
#include <string.h>

void pxfconst_(const char *name, int32_t *value, int32_t *error, intptr_t length) {
  void (*original)(const char *, int32_t *, int32_t *, intptr_t) =
      (void (*)(const char *, int32_t *, int32_t *, intptr_t))dlsym(RTLD_NEXT, "pxfconst_");
  original(name, value, error, length);
  if (strncmp(name, "SIGWINCH ", 9) == 0) {
    *value = -1;
    *error = 126;
  }
}

void pxfintset_(const int32_t *handle, const char *name, const int32_t *value, int32_t *error,
                       intptr_t length) {
  (void)handle, (void)value, (void)length;
  *error = strncmp(name, "st_mode ", 8) == 0 ? 126 : 0;
}

void pxfstructcreate_(const char *name, int32_t *handle, int32_t *error, intptr_t length) {
  void (*original)(const char *, int32_t *, int32_t *, intptr_t) =
      (void (*)(const char *, int32_t *, int32_t *, intptr_t))dlsym(RTLD_NEXT, "pxfstructcreate_");
  original(name, handle, error, length);
  if (strncmp(name, "dirent", 6) == 0)
    *error = 127;
}
END
  make_preloaded "$work/refusing.so" "$work/refusing.c"
  preloaded "$work/refusing.so" "$program" >"$work/out" 2>"$work/err"
  same 'status with a refusing library' 1 $?
  same 'standard error with a refusing library' 'sysinfo: the library does not know SIGWINCH
sysinfo: the library makes no record dirent
sysinfo: the library does not treat st_mode of stat as it is told here' "$(cat "$work/err")"
  constants >"$work/constants"
  same 'the table with a refusing library' 268 "$(wc -l <"$work/constants")"
  same 'an unknown name' 'SIGWINCH unknown' "$(grep '^SIGWINCH' "$work/constants")"
}

test_output() {
  timeout 60 "$program" >/dev/full 2>"$work/err"
  same 'status with a full device' 1 $?
  same 'standard error with a full device' 'sysinfo: standard output: No space left on device' "$(cat "$work/err")"
  timeout 60 "$program" >&- 2>"$work/err"
  same 'status without an output' 1 $?
  same 'standard error without an output' 'sysinfo: standard output: Bad file descriptor' "$(cat "$work/err")"
  make_hindrance "$work/hindered.so"
  same 'the table with interrupted calls' "$(timeout 60 "$program")" "$(hindered "$program")"
}

for name in constants form records complaints output; do
  "test_$name"
done
printf '%d checks, %d failed\n' "$checks" "$failures"
((failures == 0))
