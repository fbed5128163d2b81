#!/usr/bin/env bash
# The example tee copies through files, pipes and FIFOs, byte by byte as they are.
set -euo pipefail

# shellcheck source=hindered.bash
source "$(dirname "$0")/hindered.bash"
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
(umask 027 && "$tee" made </dev/null)
expect 'a new file has the permissions that the mask leaves' test "$(stat -c %a made)" = 640

mkfifo fifo
cat fifo >from_fifo &
"$tee" fifo 'name with blank ' <input | cmp - original || { echo 'FAILED: the pipe'; failures=$((failures + 1)); }
wait
expect 'a FIFO gets a copy' cmp input from_fifo
expect 'the name of a file keeps its blanks' cmp input 'name with blank '

# Without a reader there is nothing left to do, whatever is still to be read.
status=0
yes | timeout 60 "$tee" kept 2>errors | head -n 1 >/dev/null || status=${PIPESTATUS[1]}
expect 'it ends when the reader has left' test "$status" = 1
expect 'the lost reader is told' grep -qx 'tee: standard output: Broken pipe' errors
expect 'the file has what was copied until then' cmp -n "$(stat -c %s kept)" kept <(yes)

# Other readers that leave do not end the copying to the rest.
head -c 10 fifo >/dev/null &
status=0
"$tee" fifo rest <input >out 2>errors || status=$?
wait
expect 'a lost reader of a FIFO gives status 1' test "$status" = 1
expect 'the lost reader of a FIFO is told' grep -qx 'tee: fifo: Broken pipe' errors
expect 'the output is whole though another reader left' cmp input out
expect 'the file behind it is whole though a reader left' cmp input rest

status=0
"$tee" full /dev/full <input >out 2>errors || status=$?
expect 'a full device gives status 1' test "$status" = 1
expect 'a full device is told once' diff errors <(echo 'tee: /dev/full: No space left on device')
expect 'the file beside a full device is whole' cmp input full
status=0
"$tee" closed <input >&- 2>errors || status=$?
expect 'no output gives status 1' test "$status" = 1
expect 'the file is whole without an output' cmp input closed
status=0
yes | timeout 60 "$tee" >/dev/full 2>errors || status=${PIPESTATUS[1]}
expect 'it ends when there is nowhere left to write' test "$status" = 1

make_hindrance "$place/hindered.so"
hindered "$tee" slowly <input >out
expect 'interrupted calls lose nothing of the output' cmp input out
expect 'interrupted calls lose nothing of a file' cmp input slowly

# A host that tells at the close that what was written did not fit.
cat >late.c <<'END'
#include <errno.h>
#include <unistd.h>
int close(int descriptor) {
  (void)descriptor;
  errno = ENOSPC;
  return -1;
}
END
make_preloaded "$place/late.so" late.c
status=0
preloaded "$place/late.so" "$tee" late <input >out 2>errors || status=$?
expect 'a failed close gives status 1' test "$status" = 1
expect 'a failed close of the output is told' grep -qx 'tee: standard output: No space left on device' errors
expect 'a failed close of a file is told' grep -qx 'tee: late: No space left on device' errors

# More files than can be open.
status=0
(ulimit -n 12 && exec "$tee" limited{1..20} <input >out 2>errors) || status=$?
expect 'too many files give status 1' test "$status" = 1
expect 'they are told' grep -qx 'tee: limited20: Too many open files' errors
expect 'the output is whole' cmp input out
expect 'the files that could be opened are whole' cmp input limited1

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
