#!/usr/bin/env bash
# The example sortlines sorts as the system's own sort does, and refuses what has no lines of one length.
set -euo pipefail

sortlines=$EXAMPLES/sortlines
room=$(mktemp -d)
trap 'rm -rf "$room"' EXIT
export LC_ALL=C
failures=0
fail() {
  printf 'FAILED: %s\n' "$1"
  failures=$((failures + 1))
}
cd "$room"

# sorts WIDTH LINES
sorts() {
  if (($1 == 0)); then
    yes '' | head -n "$2" >'the input' || true
  else
    head -c $(($1 * $2)) /dev/urandom | base64 -w "$1" | head -n "$2" >'the input' || true
  fi
  "$sortlines" 'the input' 'the output' 2>messages || fail "width $1: status $?"
  sort 'the input' | cmp - 'the output' || fail "width $1 is not sorted"
  [[ ! -s messages ]] || fail "width $1: it is not silent"
}

for width in 0 1 3 6 7 15 31 63 200; do
  sorts "$width" 1000
done
sorts 15 100000
sorts 5 1

: >'the input'
"$sortlines" 'the input' 'the output' || fail 'an empty file'
[[ -f 'the output' && ! -s 'the output' ]] || fail 'an empty file is not sorted to an empty one'

sorts 12 300000
"$sortlines" -p 'the input' 'the output' 2>messages || fail 'with -p'
grep -q 'read: 100 %' messages || fail 'the progress of reading'
grep -q 'sorted: 300000 lines in' messages || fail 'the progress of sorting'
grep -q 'written: 100 %' messages || fail 'the progress of writing'

# status WANTED ARGUMENT...: it also says something.
status() {
  local wanted=$1 got=0
  shift
  "$sortlines" "$@" >/dev/null 2>messages || got=$?
  ((got == wanted)) || fail "sortlines $* ended with $got, not $wanted"
  [[ -s messages ]] || fail "sortlines $* said nothing"
}
status 2
status 2 one
status 2 one two three
status 2 -p one
status 1 'not there' 'the output'
status 1 'the input' 'no/such/directory'
printf 'ab\nabc\n' >uneven
status 1 uneven 'the output'
printf 'ab\na\n\nab\n' >uneven
status 1 uneven 'the output'
printf 'ab\nab' >uneven
status 1 uneven 'the output'
printf 'no end' >uneven
status 1 uneven 'the output'
status 1 . 'the output'

((failures == 0)) || exit 1
echo 'sortlines sorts as the system does'
