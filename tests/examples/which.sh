#!/usr/bin/env bash
# The example which finds programs along PATH as the shell does, and tells their parts.
set -euo pipefail

which=$EXAMPLES/which
tree=$(cd "$(mktemp -d)" && pwd -P)
trap 'rm -rf "$tree"' EXIT
cd "$tree"
failures=0

# expect WHAT STATUS OUTPUT ARGUMENT...: what the program prints and answers with PATH=$path.
expect() {
  local what=$1 status=$2 output=$3 got code=0
  shift 3
  got=$(env PATH="$path" "$which" "$@" 2>errors) || code=$?
  if [[ $code != "$status" || $got != "$output" ]]; then
    printf 'FAILED: %s: status %s with\n%s\n' "$what" "$code" "$got"
    failures=$((failures + 1))
  fi
}

mkdir one two 'a b' 'with=sign'
for program in one/tool two/tool 'a b/tool' two/other.sh 'with=sign/signed'; do
  printf '#!/bin/sh\n' >"$program"
  chmod 755 "$program"
done
printf 'text' >one/other.sh # not executable
mkdir one/shell             # a directory
printf '#!/bin/sh\n' >two/shell
printf '#!/bin/sh\n' >here
chmod 755 two/shell here
ln -s ../two/other.sh one/linked

path="$tree/none:$tree/one:$tree/a b:$tree/two:$tree/with=sign"
expect 'the first' 0 "$tree/one/tool" tool
expect 'all' 0 "$tree/one/tool
$tree/a b/tool
$tree/two/tool" -a tool
expect 'what may not be executed is no program' 0 "$tree/two/other.sh" other.sh
expect 'a directory is no program' 0 "$tree/two/shell" shell
expect 'a directory with a sign' 0 "$tree/with=sign/signed" -a signed
expect 'the current directory is not searched' 1 '' here
grep -q "no program 'here'" errors || { echo 'FAILED: what was not found'; failures=$((failures + 1)); }
expect 'several names' 1 "$tree/one/tool
$tree/two/shell" tool none shell
expect 'a name with a slash' 0 './here' ./here
expect 'a name with a slash that is not there' 1 '' ./none
expect 'a link and its parts' 0 "$tree/one/linked
  resolved   $tree/two/other.sh
  directory  $tree/two/
  name       other
  extension  .sh" -l linked
expect 'an empty name' 1 '' ''
expect 'no names' 2 ''
expect 'a wrong option' 2 '' -x tool
expect 'a name behind the options' 1 '' -- -a
path="::$tree/two:"
expect 'empty elements' 0 "$tree/two/tool" tool
path="$tree/two:$tree/two"
expect 'the same directory twice' 0 "$tree/two/tool
$tree/two/tool" -a tool
path=
expect 'an empty PATH' 1 '' tool

# Programs of the system, as the shell finds them.
path=/usr/bin:/bin
for program in sh ls awk; do
  expect "$program" 0 "$(PATH=$path bash -c "type -P $program")" "$program"
done

((failures == 0)) || exit 1
echo 'which finds programs as the shell does'
