#!/usr/bin/env bash
# The example tee copies through files, pipes and FIFOs, byte by byte as they are.
set -euo pipefail

tee=$EXAMPLES/tee
place=$(mktemp -d)
trap 'rm -rf "$place"' EXIT
cd "$place"
failures=0
expect() {
  if ! "${@:2}"; then
    printf 'FAILED: %s\n' "$1"
    failures=$((failures + 1))
  fi
}

head -c 1000000 /dev/urandom >input
cp input original
"$tee" one two <input >out
expect 'standard output is a copy' cmp input out
expect 'the first file is a copy' cmp input one
expect 'the second file is a copy' cmp input two

"$tee" -a one <input >/dev/null
cat input input >twice
expect '-a appends' cmp twice one
printf 'short' | "$tee" two >/dev/null
expect 'without -a a file is emptied first' test "$(cat two)" = short

mkfifo fifo
cat fifo >from_fifo &
"$tee" fifo 'name with blank ' <input | cmp - original || { echo 'FAILED: the pipe'; failures=$((failures + 1)); }
wait
expect 'a FIFO gets a copy' cmp input from_fifo
expect 'the name of a file keeps its blanks' cmp input 'name with blank '

# A reader that leaves does not end the copying to the others.
status=0
"$tee" kept <input 2>errors | head -c 10 >/dev/null || status=${PIPESTATUS[0]}
expect 'the file is whole though the reader left' cmp input kept
expect 'the lost reader is told' grep -q 'standard output' errors

status=0
"$tee" no/such/directory/file <input >out 2>errors || status=$?
expect 'a file that cannot be opened gives status 1' test "$status" = 1
expect 'and is named' grep -q 'no/such/directory/file' errors
expect 'and the rest is copied' cmp input out
status=0
"$tee" <. >out 2>errors || status=$?
expect 'a failed read gives status 1' test "$status" = 1

((failures == 0)) || exit 1
echo 'tee copies'
