#!/usr/bin/env bash
# The example stopwatch tells the time by every clock, the progress by an alarm, and what Ctrl-C asks for.
set -euo pipefail

program=$EXAMPLES/stopwatch
place=$(mktemp -d)
trap 'rm -rf "$place"' EXIT
cd "$place"
failures=0
fail() {
  printf 'FAILED: %s\n' "$*"
  failures=$((failures + 1))
}
# What the procedures of alarms write is read without a lock, with the VOLATILE attribute.
printf 'race:interruptions\n' >suppressions
export TSAN_OPTIONS="suppressions=$place/suppressions"

# To its end: some progress, and times that fit one another.
status=0
timeout 60 "$program" 4 >out 2>err || status=$?
[[ $status == 0 ]] || fail "it ends with $status"
[[ ! -s err ]] || fail "it complains: $(<err)"
grep -q '^computing for 4.0 s from ' out || fail 'the first line'
(($(grep -c '^  [0-9]* %$' out) >= 1)) || fail 'no progress is told'
grep -q '^Done  at [0-9][0-9]:[0-9][0-9]:[0-9][0-9]:$' out || fail 'the last summary'
awk '/by dclock/ { elapsed = $4 } /by timef/ { whole = $4 } /^  steps/ { steps = $2 + 0 }
  END { exit !(elapsed >= 4 && whole >= 3 && steps > 0) }' out || fail "the times: $(<out)"

# Ctrl-C until it ends, which is the second time at the latest that it looks. Before its first line it is not ready, and
# that of the run before is gone.
: >out
"$program" 50 >out 2>err &
child=$!
until grep -q '^computing' out || ! kill -0 "$child" 2>/dev/null; do
  sleep 0.05
done
while kill -INT "$child" 2>/dev/null; do
  sleep 0.2
done
status=0
wait "$child" || status=$?
[[ $status == 130 ]] || fail "Ctrl-C ends it with $status"
grep -q '^Ended at ' out || fail "no summary at the end: $(<out)"

for wrong in 0 -1 text 1e9; do
  status=0
  "$program" "$wrong" >out 2>err || status=$?
  [[ $status == 2 && $(<err) == 'usage: stopwatch [SECONDS]' ]] || fail "$wrong is taken"
done

((failures == 0)) || exit 1
echo 'stopwatch tells the time'
