#!/usr/bin/env bash
# The example ls lists a tree with every type of file as the system's own ls does.
set -euo pipefail

ls=$EXAMPLES/ls
tree=$(mktemp -d)
trap 'rm -rf "$tree"' EXIT
export LC_ALL=C TZ=Europe/Paris
failures=0

# same WHAT EXPECTED GOT: blanks that align columns do not count.
same() {
  if ! diff <(tr -s ' ' <<<"$2") <(tr -s ' ' <<<"$3"); then
    printf 'FAILED: %s\n' "$1"
    failures=$((failures + 1))
  fi
}

# What this ls cannot know: the blocks in use, and where a link points.
without_blocks_and_links() { sed -e '/^total [0-9]/d' -e 's/ -> .*//'; }

compare() {
  same "ls $*" "$(command ls "$@" 2>/dev/null | without_blocks_and_links)" "$("$ls" "$@" 2>/dev/null)"
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
ln file hard
mkfifo fifo
"$PYTHON" -c 'import socket; socket.socket(socket.AF_UNIX).bind("socket")'
chmod 1777 sticky
chmod 2755 setgid
chmod 4755 larger
chmod 7644 old
chmod 000 .dotfile
truncate -s 5G sparse

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

((failures == 0)) || exit 1
echo 'ls lists as the system does'
