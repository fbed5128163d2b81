#!/usr/bin/env bash
# traps: what rounding, flags and a trap look like. EXAMPLES names the folder of the built examples.
set -uo pipefail
export LC_ALL=C
program=${EXAMPLES:?}/traps
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
ulimit -c 0
failures=0

# same WHAT EXPECTED ACTUAL
same() {
  [[ $2 != "$3" ]] || return 0
  failures=$((failures + 1))
  printf 'FAILED: %s\n' "$1"
  diff <(printf '%s\n' "$2") <(printf '%s\n' "$3") | head -n 20
}

# ends STATUS ARGUMENTS...: what is written goes to the files out and err.
ends() {
  local expected=$1 status=0
  shift
  timeout 60 "$program" "$@" >"$work/out" 2>"$work/err" </dev/null || status=$?
  same "status of traps $*" "$expected" "$status"
}

last_line() { tail -n 1 "$work/out"; }

ends 9
same 'standard error' '' "$(cat "$work/err")"
same 'all of it' 'The sum of 1/1 to 1/10000 in REAL(4), rounded
  to nearest
  down
  up
  toward zero
What computations raise
  6 / 2        nothing
  6 / 7        inexact
  huge * huge  overflow inexact
  tiny * tiny  underflow inexact
  1 / 0        division
  0 / 0        invalid
The solution of 5 equations
  division by zero in the elimination, column 3: signal 8' "$(sed -E 's/ +9\.78[0-9]+$//' "$work/out")"

# The true sum, 9.787606, lies between those rounded down and up; all terms are positive, so that toward zero is down.
same 'order of the sums' 'down < nearest < up, toward zero is down' "$(awk '
  /^  to nearest/ { nearest = $NF } /^  down/ { down = $NF } /^  up/ { up = $NF } /^  toward zero/ { zero = $NF }
  END { print (down < 9.787606 && down < nearest ? "down < nearest" : down " " nearest) \
    (nearest < up && 9.787606 < up ? " < up" : " " up) (zero == down ? ", toward zero is down" : " " zero) }' "$work/out")"

for column in 1 2 4; do
  ends 9 "$column"
  same "column $column" "  division by zero in the elimination, column $column: signal 8" "$(last_line)"
done
ends 9 5
same 'column 5' '  division by zero in the back substitution, column 5: signal 8' "$(last_line)"
ends 0 0
same 'sound equations' '    2.00  1.00  1.00  1.00  1.00' "$(last_line)"

for wrong in -1 6 x 1.5 99999999999999999999; do
  ends 2 "$wrong"
  same "standard error of $wrong" 'usage: traps [COLUMN], 1 to 5 or 0 for none' "$(cat "$work/err")"
  same "standard output of $wrong" '' "$(cat "$work/out")"
done
ends 2 1 2
((failures == 0))
