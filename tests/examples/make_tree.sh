#!/usr/bin/env bash
# The example make_tree makes what its steps ask for, and tells of each how it went.
set -euo pipefail

make_tree=$EXAMPLES/make_tree
work=$(cd "$(mktemp -d)" && pwd -P)
trap 'rm -rf "$work"' EXIT
cd "$work"
export TZ=Europe/Paris
failures=0

fail() {
  printf 'FAILED: %s\n' "$*"
  failures=$((failures + 1))
}

cat >steps <<'STEPS'
# what is made first
dir src/deep/er

dir with blanks
file src/main.f90
file with blanks/a file
stamp 2001-02-03T04:05:06 src/main.f90
stamp 2023-07-15T12:00:00 with blanks/a file
run cp src/main.f90 'src/copy.f90'
run printf '%s-%s\n' one 'two three'
shell echo through the shell | tr a-z A-Z; exit 3
rename src/copy.f90 src/renamed.f90
dir src/deep/er
remove src/deep/er
STEPS
status=0
"$make_tree" a/b <steps >out 2>errors || status=$?
[[ $status == 0 ]] || fail "status $status"
[[ ! -s errors ]] || fail "$(cat errors)"
cat >expected <<EXPECTED
in $work/a/b
done    dir src/deep/er
done    dir with blanks
done    file src/main.f90
done    file with blanks/a file
done    stamp 2001-02-03T04:05:06 src/main.f90
done    stamp 2023-07-15T12:00:00 with blanks/a file
done    run cp src/main.f90 'src/copy.f90'
one-two three
done    run printf '%s-%s\\n' one 'two three'
THROUGH THE SHELL
done    shell echo through the shell | tr a-z A-Z; exit 3
done    rename src/copy.f90 src/renamed.f90
done    dir src/deep/er
done    remove src/deep/er
EXPECTED
diff expected out || fail 'what was told'
made=$(cd a/b && find . | sort)
[[ $made == ".
./src
./src/deep
./src/main.f90
./src/renamed.f90
./with blanks
./with blanks/a file" ]] || fail "what was made: $made"
[[ $(stat -c %Y a/b/src/main.f90) == "$(date -d '2001-02-03 04:05:06' +%s)" ]] || fail 'the time of a file in winter'
[[ $(stat -c %Y 'a/b/with blanks/a file') == "$(date -d '2023-07-15 12:00:00' +%s)" ]] || fail 'the time of a file in summer'

# failing STEP WHY: it is told, and is the only one that is.
failing() {
  local status=0
  printf '%s\nshell :\n' "$1" | "$make_tree" a/b >out 2>&1 || status=$?
  if [[ $status != 1 || $(sed -n 2p out) != "FAILED  $1: $2" || $(sed -n 3p out) != 'done    shell :' ]]; then
    fail "$1: status $status, $(cat out)"
  fi
}
failing 'remove src' 'Directory not empty'
failing 'remove none' 'No such file or directory'
failing 'rename none other' 'No such file or directory'
failing 'run false' 'it cannot be run, or did not end well'
failing 'run ./none 2>errors' 'it cannot be run, or did not end well'
failing 'dir src/main.f90' 'Not a directory'
failing 'dir src/main.f90/x' 'Not a directory'
failing 'file none/x' 'No such file or directory'
failing 'stamp 2023-02-30T00:00:00 src/main.f90' 'no such time'
failing 'stamp 2023-02-03 src/main.f90' 'no such time'
failing 'stamp yyyy-02-03T00:00:00 src/main.f90' 'no such time'
failing 'stamp 2001-02-03T04:05:06 none' 'No such file or directory'
failing 'jump' 'no such step'

status=0
"$make_tree" </dev/null >out 2>errors || status=$?
[[ $status == 2 && -s errors ]] || fail "no directory: status $status"
status=0
"$make_tree" steps </dev/null >out 2>errors || status=$?
[[ $status == 2 && -s errors ]] || fail "a directory that is a file: status $status"
status=0
"$make_tree" a/b </dev/null >out || status=$?
[[ $status == 0 ]] || fail "no steps: status $status"

((failures == 0)) || exit 1
echo 'make_tree makes what it is asked for'
