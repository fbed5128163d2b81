#!/usr/bin/env bash
# The example montecarlo comes near the truth, draws a bar on a terminal, is interrupted and goes on, and tells what is
# wrong with its arguments and its file.
set -euo pipefail

program=$EXAMPLES/montecarlo
place=$(mktemp -d)
trap 'rm -rf "$place"' EXIT
cd "$place"
export LC_ALL=C
failures=0
fail() {
  printf 'FAILED: %s\n' "$*"
  failures=$((failures + 1))
}

# montecarlo STATUS ARGUMENTS...: what it prints goes to out and err.
montecarlo() {
  local expected=$1 status=0
  shift
  timeout 100 "$program" "$@" >out 2>err </dev/null || status=$?
  [[ $status == "$expected" ]] || fail "montecarlo $* ends with $status: $(<err)"
}

# result_of FILE: the line with the estimate, which is the same for the same samples.
result_of() {
  grep -E '^(pi is|the mean square)' "$1"
}

# The truth lies within four times the error that is told.
montecarlo 0 pi 400000
[[ ! -s err ]] || fail "no terminal, and yet: $(<err)"
result_of out | awk '{ d = $3 - 3.14159265358979; exit !(d * d < 16 * $5 * $5 && $5 > 0.001 && $5 < 0.004 && $7 == 400000) }' ||
  fail "pi: $(<out)"
montecarlo 0 walk 4000
result_of out | awk '{ d = $8 - 1000; exit !(d * d < 16 * $10 * $10 && $10 > 5 && $10 < 50 && $12 == 4000) }' ||
  fail "walk: $(<out)"
montecarlo 0 -s 7 pi 400000
result_of out >seven
montecarlo 0 -s -7 pi 4e5
result_of out >minus_seven
! cmp -s seven minus_seven || fail 'two seeds give the same'

# In two parts what comes out is the same as at once.
montecarlo 0 -f part -s 7 pi 150001
grep -qx 'pi  ' part || fail "what is saved: $(<part)"
montecarlo 0 -f part pi 400000
grep -q '^going on behind 150001 samples of pi$' out || fail "it does not go on: $(<out)"
result_of out | cmp -s - seven || fail 'in two parts another result'
[[ ! -e part.new ]] || fail 'a file is left behind'
# There is nothing left to do then, and the file stays as it is.
cp part before
montecarlo 0 -f part -s 7 pi 1000
result_of out | cmp -s - seven || fail 'fewer samples than there are'
cmp -s part before || fail 'the file has changed'

# Ctrl-C in the middle saves; the same command goes on.
"$program" -f saved -s 11 walk 1e12 >out 2>err &
child=$!
# It is under way once it has saved its beginning.
until [[ -s saved ]] || ! kill -0 "$child" 2>/dev/null; do
  sleep 0.05
done
sleep 0.2
while kill -INT "$child" 2>/dev/null; do
  sleep 0.2
done
status=0
wait "$child" || status=$?
[[ $status == 130 ]] || fail "Ctrl-C ends it with $status"
grep -q "interrupted; the same command goes on from 'saved'" err || fail "what Ctrl-C says: $(<err)"
done_so_far=$(sed -n 3p saved)
((done_so_far > 0)) || fail "nothing was saved: $(<saved)"
montecarlo 0 -s 11 walk "$done_so_far"
result_of out >at_once
montecarlo 0 -f saved walk "$done_so_far"
result_of out | cmp -s - at_once || fail 'what was saved is not what was computed'
montecarlo 0 -f saved walk $((done_so_far + 2000))
result_of out >later
montecarlo 0 -s 11 walk $((done_so_far + 2000))
result_of out | cmp -s - later || fail 'what goes on behind Ctrl-C is another sequence'

# A bar on a terminal: the last one is full.
"$PYTHON" -B - "$program" >screen <<'PYTHON'
import os
import pty
import sys

child, screen = pty.fork()
if child == 0:
    os.execv(sys.argv[1], [sys.argv[1], "pi", "400000"])
shown = b""
try:
    while piece := os.read(screen, 4096):
        shown += piece
except OSError:  # the terminal's end
    pass
status = os.waitstatus_to_exitcode(os.waitpid(child, 0)[1])
print(shown.decode().replace("\r", "\n"))
sys.exit(status)
PYTHON
grep -qE '^\[#{40}\]100 % +3\.1[0-9]+ \+- +0?\.00[0-9]+$' screen || fail "no full bar: $(<screen)"
grep -q '^pi is' screen || fail "no result on the terminal: $(<screen)"

# wrong STATUS MESSAGE ARGUMENTS...
wrong() {
  local message=$2
  montecarlo "$1" "${@:3}"
  [[ $(head -n 1 err) == "montecarlo: $message" ]] || fail "montecarlo ${*:3} says: $(<err)"
  [[ $1 == 1 || $(sed -n 2p err) == 'usage: '* ]] || fail "montecarlo ${*:3} does not tell its usage"
}
wrong 2 'it wants two arguments behind the options'
wrong 2 'it wants two arguments behind the options' pi
wrong 2 'it wants two arguments behind the options' pi 10 20
wrong 2 "it knows pi and walk, not 'e'" e 10
for samples in 0 -1 2.5 ten 1e16 '1 2' ''; do
  wrong 2 "SAMPLES is a whole number from 1 to 1e15, not '$samples'" pi "$samples"
done
wrong 2 '-s wants a value' -s
wrong 2 "a seed is a whole number of 32 bits, not '2147483648'" -s 2147483648 pi 10
wrong 2 'the name of the file is empty' -f '' pi 10
wrong 1 "'part' is a computation of pi" -f part walk 10
wrong 1 "'part' was begun with another seed" -f part -s 8 pi 10
printf 'no state\n' >text
: >empty
sed '4,9s/.*/0/' part >zeros
head -n 7 part >short
for file in text empty zeros short; do
  cp "$file" kept
  wrong 1 "'$file': it holds no computation of this program" -f "$file" pi 10
  cmp -s "$file" kept || fail "$file has changed"
done
montecarlo 1 -f absent/file pi 10
grep -q "^montecarlo: 'absent/file': .*No such file" err || fail "an absent directory: $(<err)"

((failures == 0)) || exit 1
echo 'montecarlo comes near the truth'
