#!/usr/bin/env bash
# The example hexdump shows the bytes of files, pipes and devices in the canonical layout, from any byte on.
set -euo pipefail

# shellcheck source=hindered.bash
source "$(dirname "$0")/hindered.bash"
hexdump=$EXAMPLES/hexdump
room=$(mktemp -d)
trap 'rm -rf "$room"' EXIT
cd "$room"
failures=0
fail() {
  printf 'FAILED: %s\n' "$1"
  failures=$((failures + 1))
}

# The same layout by other means: canonical FILE BEGIN END SQUEEZED.
canonical() {
  "${PYTHON:?}" - "$@" <<'PYTHON'
import sys

name, begin, end, squeezed = sys.argv[1], int(sys.argv[2]), int(sys.argv[3]), sys.argv[4] == "yes"
with open(name, "rb") as file:
    file.seek(begin)
    data = file.read(end - begin)
former = None
starred = False
for start in range(0, len(data), 16):
    row = data[start:start + 16]
    if squeezed and row == former and len(row) == 16:
        if not starred:
            print("*")
        starred = True
        continue
    former, starred = row, False
    left, right = row[:8].hex(" "), row[8:].hex(" ")
    text = "".join(chr(byte) if 32 <= byte < 127 else "." for byte in row)
    print(f"{begin + start:08x}  {left:<23}  {right:<23}  |{text}|")
if data:
    print(f"{begin + len(data):08x}")
PYTHON
}

# shows WHAT BEGIN END SQUEEZED ARGUMENT...: the bytes of the file bytes, with nothing said beside them.
shows() {
  "$hexdump" "${@:5}" >out 2>messages || fail "$1: status $?"
  canonical bytes "$2" "$3" "$4" | diff - out || fail "$1"
  [[ ! -s messages ]] || fail "$1: it is not silent"
}

# is WHAT STATUS OUTPUT MESSAGE ARGUMENT...: reads the standard input as well.
is() {
  local status=0
  "$hexdump" "${@:5}" >out 2>messages || status=$?
  [[ $status == "$2" ]] || fail "$1: status $status"
  [[ $(<out) == "$3" ]] || { fail "$1: it shows"; cat out; }
  [[ $(<messages) == "$4" ]] || { fail "$1: it says"; cat messages; }
}

is 'every part of a line' 0 '00000000  41 20 6c 69 6e 65 0d 0a  ff 00 7f 7e 1f 20 09 80  |A line.....~. ..|
00000010  21                                                |!|
00000011' '' - < <(printf 'A line\r\n\377\0\177~\037 \t\200!')

# Files of many sizes.
for size in 1 7 8 9 15 16 17 31 32 33 255 256 4096 70001; do
  head -c "$size" /dev/urandom >bytes
  shows "$size bytes" 0 "$size" yes bytes
done
shows 'the standard input' 0 70001 yes <bytes
shows 'a pipe' 0 70001 yes < <(cat bytes)
: >bytes
is 'an empty file' 0 '' '' bytes

# Lines that repeat.
{
  head -c 100 /dev/zero
  printf 'some bytes, and a few more of them'
  head -c 1000 /dev/zero
} >bytes
shows 'equal lines' 0 1134 yes bytes
shows 'equal lines in full' 0 1134 no -v bytes
head -c 64 /dev/zero >bytes
shows 'equal lines up to the end' 0 64 yes bytes
{
  head -c 16 /dev/zero | tr '\0' ' '
  printf ' '
} >bytes
shows 'a first line of blanks' 0 17 yes bytes

# Parts of a file.
head -c 5000 /dev/urandom >bytes
shows 'from a byte' 100 5000 yes -s 100 bytes
shows 'to a byte' 0 33 yes -n 33 bytes
shows 'in one word' 18 37 yes -s0x12 -n19 bytes
shows 'in capitals' 171 181 yes -s 0xAB -n 10 bytes
shows 'kilobytes' 2048 3072 yes -s 2K -n1K bytes
shows 'from the end' 4990 5000 yes -s -10 bytes
shows 'the whole from the end' 0 5000 yes -s -5000 bytes
shows 'more than there is' 4990 5000 yes -s 4990 -n 1G bytes
shows 'the last byte' 4999 5000 yes -s 4999 bytes
shows 'behind the options' 0 5000 yes -- bytes
shows 'a part of a pipe' 100 133 yes -s 100 -n 33 < <(cat bytes)
is 'nothing' 0 '' '' -n 0 bytes
is 'nothing behind the end' 0 '' '' -n 0 -s 5001 bytes
is 'the end' 0 '' '' -s 5000 bytes
is 'the end of a pipe' 0 '' '' -s 3 < <(printf 'abc')
is 'behind the end' 1 '' 'hexdump: bytes: there is no such byte' -s 5001 bytes
is 'before the beginning' 1 '' 'hexdump: bytes: there is no such byte' -s -5001 bytes
is 'behind the end of a pipe' 1 '' 'hexdump: standard input: there is no such byte' -s 4 < <(printf 'abc')
is 'from the end of a pipe' 1 '' 'hexdump: standard input: only a file has an end to count from' -s -1 < <(printf 'abc')

# A file of 6 GiB that is a hole nearly everywhere.
truncate -s 6442450944 bytes
printf 'behind it' >>bytes
is 'behind 4 GiB' 0 '17ffffff8  00 00 00 00 00 00 00 00  62 65 68 69 6e 64 20 69  |........behind i|
180000008  74                                                |t|
180000009' '' -s 0x17ffffff8 bytes
is 'behind 4 GiB from the end' 0 '180000007  69 74                                             |it|
180000009' '' -s -2 bytes
is 'six gigabytes' 0 '180000000  62 65                                             |be|
180000002' '' -s 6G -n 2 bytes
rm bytes

# Names, devices, and what cannot be read.
printf 'x' >./-n
printf 'y' >'a name'
is 'a name that begins with -' 0 '00000000  78                                                |x|
00000001' '' -- -n
is 'a name with a blank' 0 '00000000  79                                                |y|
00000001' '' 'a name'
is 'a device without an end' 0 '00000010  00 00 00                                          |...|
00000013' '' -s 16 -n 3 /dev/zero
is 'a name that is not -' 1 '' 'hexdump: - : No such file or directory' -- '- '
is 'no file' 1 '' 'hexdump: none: No such file or directory' none
is 'a directory' 1 '' 'hexdump: .: Is a directory' .
is 'a read that fails' 1 '' 'hexdump: /proc/self/mem: Input/output error' /proc/self/mem
status=0
"$hexdump" -s -1 'a name' >/dev/full 2>messages || status=$?
[[ $status == 1 ]] || fail "a full device: status $status"
grep -qx 'hexdump: standard output: No space left on device' messages || fail 'a full device is told'

make_hindrance "$room/hindered.so"
head -c 70001 /dev/urandom >bytes
canonical bytes 0 70001 yes >expected
hindered "$hexdump" bytes | cmp - expected || fail 'a file with interrupted calls'
# shellcheck disable=SC2002
cat bytes | hindered "$hexdump" | cmp - expected || fail 'a pipe with interrupted calls'

usage='usage: hexdump [-v] [-s OFFSET] [-n LENGTH] [--] [FILE]'
for wrong in -x -vv --v -s -n '-s x' '-s 1x' '-s 1KK' '-s K' '-s 0x' '-s --1' '-s 12a' '-n -1' '-s 9223372036854775808' \
  '-s 9007199254740992K' '-n 0xfffffffffffffffff' 'one two' '-v one two' '-- one two' 'one -v'; do
  read -ra words <<<"$wrong"
  is "$wrong" 2 '' "$usage" "${words[@]}"
done
is 'an empty number' 2 '' "$usage" -s ''
is 'a number with a blank' 2 '' "$usage" -s '1 '

((failures == 0)) || exit 1
echo 'hexdump shows the bytes'
