#!/usr/bin/env bash
# The example fsh runs commands as the system's own shell does, says what is wrong with wrong ones and goes on, and
# controls the jobs of a terminal.
# shellcheck disable=SC1003,SC2016 # the quotes and the names are for the shells that are tested
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
# shellcheck source=hindered.bash
source "$here/hindered.bash"
fsh=$EXAMPLES/fsh
place=$(cd "$(mktemp -d)" && pwd -P)
trap 'rm -rf "$place"' EXIT
unset UNSET
export LC_ALL=C HOME=$place WORK=$place/work
mkdir "$WORK"
ulimit -c 0
failures=0
fail() {
  printf 'FAILED: %s\n' "$1"
  failures=$((failures + 1))
}

# shell WANTED_STATUS ARGUMENT...: runs fsh in the work directory; what it says is in the files out and errors.
shell() {
  local wanted=$1 got=0
  shift
  (cd "$WORK" && timeout 60 "$fsh" "$@") >"$place/out" 2>"$place/errors" || got=$?
  ((got == wanted)) || fail "fsh ${*@Q} ended with $got, not $wanted: $(head -c 500 "$place/errors")"
}
says() { [[ $(cat "$place/out") == "$1" ]] || fail "not ${1@Q} is said but $(head -c 500 "$place/out")"; }
complains() { grep -qF -- "$1" "$place/errors" || fail "$1 is not told but $(head -c 500 "$place/errors")"; }
is_quiet() { [[ ! -s $place/errors ]] || fail "complaints: $(head -c 500 "$place/errors")"; }

# Twenty-five commands, some of more than one line, where @ stands for a number.
commands() {
  cat <<'COMMANDS'
printf '%s\n' "line @" 'single $HOME \n' back\\slash\ and\ space "q\"uote \$HOME \\ \x \`" '' "" end
seq @ 40 | sort -rn | grep -v 3 | head -n 4 | tr '\n' ' '; echo $?
echo "text @   of  a file" > file@; cat < file@
echo more >> file@; echo first >>  "file@"; wc -l < file@; cat file@ file@ | sort | uniq -c
ls nowhere@ 2> errors; sh -c 'test $1 -ne 0' sh $?; echo $?; test -s errors; echo $?
sh -c 'exit @'; echo $?; false; echo $?; true; echo "$?"
sh -c 'exit 3' | cat; echo $?; cat file@ | sh -c 'cat; exit @'; echo '$?' is $?
no-such-command-@ 2> errors; echo $?; ./not-executable 2> errors; echo "$?"; ./a-directory; echo $?; ./a-script @
sh -c 'kill -TERM $$' 2> errors; echo $?; sh -c 'kill -@ $$'; echo $?; sh -c 'kill -KILL $$' | cat; echo $?
mkdir -p made@/a; cd made@; pwd; cd a; pwd | tr a-z A-Z; cd ../..; pwd; cd made@/a; cd -; cd; pwd; cd "$WORK"; echo $PWD
export NAME@="value @" OTHER='x '; printf '[%s]' "$NAME@" "${OTHER}y" "${NAME@}s" '$NAME@' \$NAME@ "$OTHER"
export NAME@=changed LONELY; echo "$NAME@" a$UNSET${UNSET}b; printf '<%s>' $UNSET "" '' "$UNSET" $UNSET"" end
sh -c 'sleep 0.0@; echo background @ > later; echo $NAME@ >> later' & wait; cat later; echo $?
sh -c 'exit @' & wait $!; echo $?; sh -c 'exit 1' & true & wait; echo $?
echo a; echo b ;echo c # a comment; echo not this | "
echo 'it'"'"'s' a"b"c'd'\e "$"x $ "$" '$?' "#no" a#b \# \; "a;b" ';' "&" \| '<' ">" \( ')' x@y
echo 'one
two @' "three
four" five\
six; echo seven |
  tr a-z A-Z |   # a comment

  rev
> empty@; wc -c < empty@; >> empty@ < file@; 2> empty@; echo $?; >'with blank @' echo "with blank"; cat with\ blank\ @
ls nowhere@ 2>&1 | wc -l; ls nowhere@ 2>&1 >empty@ | wc -l; sh -c 'echo both; echo both >&2' >empty@ 2>&1; cat empty@
sh -c 'test $1 = $PPID' sh $$; echo $?; export SHELL@=$$; sh -c 'test $1 = $2' sh "$$" "$SHELL@"; echo $?
cd made@ > empty@; pwd; cd ..; cat nowhere@ 2> errors | wc -l; exit 9 | cat; echo $?; cd / | cat; pwd
seq 3000 | cat | cat | cat | cat | cat | cat | cat | cat | cat | cat | tail -n @; yes @ | head -n 2
cat < file@ | cat - file@ > copied; < file@ cat; <file@ cat>>copied; cat copied; cat file@ > copied | cat
printf '%s|' "a	tab" a	b 'c\' "d\\" "\a"b | cat -A; sh -c 'for word; do echo "$word"; done' sh "" ' ' \  "$UNSET" $?
sort -n file@ > sorted 2> errors; sh -c 'cat; exit @' < sorted > copied; echo $? $UNSET; cmp sorted copied; echo $?
COMMANDS
}

# in_the_work_directory SHELL ARGUMENT...: runs a shell with always the same directory around it.
in_the_work_directory() {
  rm -rf "$WORK"
  mkdir -p "$WORK/a-directory"
  echo 'echo never' >"$WORK/not-executable"
  printf '#!/bin/sh\necho script $1\n' >"$WORK/a-script"
  chmod +x "$WORK/a-script"
  local status=0
  (cd "$WORK" && timeout 120 "$@") 2>"$place/errors" || status=$?
  echo "status $status"
}

for number in {1..8}; do
  commands | sed "s/@/$number/g"
done >"$place/script"
echo "sh -c 'exit 41'" >>"$place/script"
in_the_work_directory /bin/sh "$place/script" >"$place/expected"
tail -n 1 "$place/expected" | grep -qx 'status 41' || fail 'the script does not reach its end'
same() { diff "$place/expected" - >"$place/difference" || fail "$1: $(head -n 20 "$place/difference")"; }
in_the_work_directory "$fsh" "$place/script" | same 'commands of a file'
in_the_work_directory "$fsh" -c "$(cat "$place/script")" | same 'commands of a text'
in_the_work_directory "$fsh" <"$place/script" | same 'commands of standard input'

# The end and its status.
shell 0 -c ''
shell 0 </dev/null
shell 9 -c 'sh -c "exit 9"'
shell 1 -c 'false; exit; echo never'
says ''
shell 44 -c 'exit 300'
shell 2 -c 'exit many'
complains 'exit: many'
shell 127 -c 'cd .; no-such-command'
complains 'no-such-command: not found'
# A directory of PATH that may not be searched, for a user whom permissions bind.
ordinary=()
((EUID != 0)) || ordinary=(setpriv --inh-caps=-all --bounding-set=-all --)
mkdir "$place/closed"
chmod 000 "$place/closed"
PATH=$place/closed:$PATH timeout 60 "${ordinary[@]}" "$fsh" -c 'no-such-command' 2>"$place/errors" && got=0 || got=$?
((got == 127)) || fail "a command that is nowhere ends with $got behind a closed directory"
complains 'no-such-command: not found'
chmod 700 "$place/closed"
shell 126 -c ./a-directory
complains './a-directory: Permission denied'
shell 143 -c "sh -c 'kill -TERM \$\$'"
shell 0 <<<'echo no newline at the end'$'\n''printf last'
says $'no newline at the end\nlast'
printf 'echo b\0efore' >"$place/script"
shell 0 "$place/script"
says before

# What follows a command on standard input is for it.
shell 0 <<'COMMANDS'
sh -c 'read -r line; echo "got $line"'
the line
echo after it
cat | tr a-z A-Z
all the rest
exit 7
COMMANDS
says $'got the line\nafter it\nALL THE REST\nEXIT 7'
# But not for one in the background.
shell 0 <<'COMMANDS'
cat & wait
echo still here
COMMANDS
says 'still here'

# Wrong commands are told, and nothing of their line is done; what came before them is.
for wrong in '|' 'echo never |' '| cat' 'echo a | | cat' ';' '; echo never' '&' 'echo never ;; echo never' \
  'echo never && echo never' 'echo >' 'echo > | cat' 'cat << end' 'echo (never)' "echo never 'open" 'echo never "open' \
  'echo never; echo "\"' 'echo never \'; do
  shell 2 -c $'echo before\n'"$wrong"
  says before
  complains 'syntax error'
done
shell 2 -c $'echo before\necho never; |\necho never'
says before

# Commands that fail, and the shell that goes on with what it had.
for failing in 'cat < nowhere' 'echo x > nowhere/file' 'echo x >> a-directory' 'echo x > ""' 'cd . < nowhere' \
  '< nowhere' 'echo x 2> nowhere/file' 'echo x > $UNSET' 'true >&9' 'cd . >&9' 'true >&name' 'cd nowhere' \
  'cd not-executable' 'export 1x=2' 'export =' 'fg' 'bg' 'wait 99999999' 'wait name' 'wait %9' '""' \
  'sleep 0.1 & jobs > /dev/full'; do
  shell 0 -c "$failing; sh -c 'test \$1 -gt 0' sh \$?; echo failed \$?"
  says 'failed 0'
  [[ $failing == wait* ]] || [[ -s $place/errors ]] || fail "nothing is told of $failing"
done
shell 1 -c 'cd nowhere; cat < nowhere/file; echo x > a-directory; ./not-executable; fg'
complains 'cd: nowhere: No such file or directory'
complains 'nowhere/file: No such file or directory'
complains 'a-directory: Is a directory'
complains './not-executable: Permission denied'
complains 'fg: no job control'
shell 0 -c 'echo x > first > nowhere/second; cd . > third 2> nowhere/fourth; echo said; cat first; wc -c < third'
says $'said\n0'
complains 'nowhere/second: No such file or directory'
complains 'nowhere/fourth: No such file or directory'

# Nothing is left open, neither in the shell nor for the commands.
shell 0 -c "ls /proc/\$\$/fd > shell; ls /proc/self/fd > child
$(for number in {1..20}; do
  echo 'cd . > file 2>> other < file 9>file; cd . > file > nowhere/file; cat < file | cat < nowhere | cat > file'
  echo 'true & wait; sleep 0 | true & wait; 2>&1 >&2; true > file >&9; export A=1 >&9 | no-such-command; "'
  echo '" | true; exit 3 | cd / | jobs'
done)
ls /proc/\$\$/fd > shell.after; ls /proc/self/fd > child.after; true | ls /proc/self/fd | cat > child.piped"
for list in shell{,.after} child{,.after,.piped}; do
  cmp "$WORK/${list%.*}" "$WORK/$list" || fail 'descriptors are left open'
done
/bin/sh -c 'ls /proc/self/fd' | cmp "$WORK/child" || fail 'commands have other descriptors than usual'

# The script's descriptor is not for commands: they neither inherit it nor meet it.
{
  printf 'ls /proc/self/fd > child; true | ls /proc/self/fd | cat > child.piped\n'
  for number in {3..9}; do printf 'true >&%d; echo $? > met%d\n' "$number" "$number"; done
  printf 'cd . 3>x 4>x 5>x 6>x 7>x 8>x 9>x\necho end\n'
} >"$place/script"
shell 0 "$place/script" 3>&- 4>&- 5>&- 6>&- 7>&- 8>&- 9>&-
says end
for list in child{,.piped}; do
  /bin/sh -c 'ls /proc/self/fd' 3>&- 4>&- 5>&- 6>&- 7>&- 8>&- 9>&- | cmp - "$WORK/$list" || fail 'commands of a file have other descriptors than usual'
done
for number in {3..9}; do
  [[ $(<"$WORK/met$number") == 2 ]] || fail "commands of a file meet descriptor $number"
done

# Few descriptors, and none from where the test was started: what cannot be had is told, and what the shell has it keeps.
limited() {
  local limit=$1 wanted=$2 got=0
  shift 2
  (cd "$WORK" && ulimit -n "$limit" && exec timeout 60 "$fsh" "$@" 3>&- 4>&- 5>&- 6>&- 7>&- 8>&- 9>&-) \
    >"$place/out" 2>"$place/errors" || got=$?
  ((got == wanted)) || fail "fsh ${*@Q} with $limit descriptors ended with $got, not $wanted: $(<"$place/errors")"
}
limited 10 0 -c 'cd . > other; echo failed $?; cd . < other; echo and still here'
says $'failed 2\nand still here'
complains '1: Too many open files'
limited 10 127 "$place/script"
complains 'Too many open files'
limited 5 0 -c 'echo a | cat | cat | cat; echo failed $?; echo room for | cat; echo and still here'
says $'failed 2\nroom for\nand still here'
complains 'cannot start a process: Too many open files'
limited 14 0 -c "$(for number in {1..30}; do echo 'true | true; cd . > other; true &'; done)"$'\nwait; echo end'
says end
shell 0 -c 'echo a >&12; echo failed $?'
says 'failed 2'
complains '12: Bad file descriptor'

# A host that refuses the first process: what stands ready for it is closed.
cat >"$place/refusing.c" <<'END'
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <unistd.h>

pid_t fork(void) {
  static int calls;
  errno = EAGAIN;
  return calls++ == 0 ? -1 : ((pid_t (*)(void))dlsym(RTLD_NEXT, "fork"))();
}
END
make_preloaded "$place/refusing.so" "$place/refusing.c"
shell 0 -c 'ls /proc/$$/fd'
mv "$place/out" "$place/usual"
preloaded "$place/refusing.so" "$fsh" -c 'true | true; echo failed $?; ls /proc/$$/fd' >"$place/out" 2>"$place/errors" ||
  fail 'the shell ends without a process'
complains 'cannot start a process: Resource temporarily unavailable'
says "failed 2
$(<"$place/usual")"

# Calls that are interrupted, and do little at a time.
make_hindrance "$place/hindered.so"
deep=$(printf 'd%.0s' {1..200})
deep=$deep/$deep/$deep/$deep/$deep/$deep/$deep
{
  printf 'mkdir -p %s; cd %s; cd /; cd - > "$WORK/back"; cd "$WORK"; cat back | tr d e\n' "$deep" "$deep"
  printf '# %s\n' "$deep"
  printf 'echo %s | cat - > copy; wc -c < copy\nexit 6\n' "$deep"
} >"$place/script"
shell 6 "$place/script"
[[ $(tail -n 1 "$place/out") == $((${#deep} + 1)) ]] || fail 'the script of long lines does not reach its end'
mv "$place/out" "$place/usual"
(cd "$WORK" && hindered "$fsh" "$place/script") >"$place/out" 2>"$place/errors" && got=0 || got=$?
((got == 6)) || fail "fsh with interrupted calls ended with $got: $(head -c 500 "$place/errors")"
cmp "$place/usual" "$place/out" || fail 'interrupted calls change what a script does'

# As many and as long as one likes.
shell 0 -c "echo through $(printf '| cat %.0s' {1..100})"
says through
is_quiet
shell 0 -c "printf '%s\n' $(seq -s ' ' 5000) | tail -n 1; printf %s '$(printf '%0100000d' 0)' | wc -c"
says $'5000\n100000'
shell 0 -c "export LONG='$(printf '%0100000d' 0)'; printf %s \"\$LONG\" | wc -c; printf %s a\"\$LONG\"b | wc -c"
says $'100000\n100002'
shell 0 <<<"$(for number in {1..200}; do echo 'true &'; done)"$'\nwait; jobs; echo done'
says 'done'
is_quiet
shell 0 -c 'sleep 0.5 & sleep 0.5 | cat & jobs; wait; jobs'
says $'[1] Running     sleep 0.5\n[2] Running     sleep 0.5 | cat'
shell 3 -c 'sh -c "exit 2" & sh -c "exit 3" & wait %1; echo $?; wait %2'
says 2

# Wrong uses.
shell 2 -c
shell 2 -x text
shell 2 -c one two
complains 'usage:'
shell 127 "$place/nowhere"
complains 'No such file or directory'
shell 2 "$WORK"
complains 'Is a directory'

((failures == 0)) || exit 1
timeout 240 "$PYTHON" "$here/fsh.py" "$fsh"
