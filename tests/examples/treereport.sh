#!/usr/bin/env bash
# treereport on trees of every kind, its counts and sizes compared with those of find and du. EXAMPLES names the folder
# of the built examples.
set -uo pipefail
export LC_ALL=C TZ=UTC
here=$(cd "$(dirname "$0")" && pwd)
# shellcheck source=hindered.bash
source "$here/hindered.bash"
program=${EXAMPLES:?}/treereport
if [[ ! -x $program ]]; then
  printf 'FAILED: there is no program %s\n' "$program"
  exit 1
fi
work=$(mktemp -d)
clean_up() {
  touch "$work/stop"
  wait
  chmod -R u+rwx "$work" 2>/dev/null
  rm -rf "$work"
}
trap clean_up EXIT
checks=0
failures=0

# The superuser without its privileges: permissions hold for it as for any owner of files.
ordinary=()
((EUID != 0)) || ordinary=(setpriv --inh-caps=-all --bounding-set=-all --)

# same WHAT EXPECTED ACTUAL
same() {
  checks=$((checks + 1))
  [[ $2 != "$3" ]] || return 0
  failures=$((failures + 1))
  printf 'FAILED: %s\n--- expected\n%s\n--- got\n%s\n' "$1" "$2" "$3"
}

# Runs the program; leaves its status, $work/out and $work/err.
report() {
  timeout 100 "$program" "$@" >"$work/out" 2>"$work/err"
  status=$?
}

# reports DIRECTORY...: runs it where it must succeed.
reports() {
  report "$@"
  same "status of ${*:-no argument}" 0 "$status"
  same "standard error of ${*:-no argument}" '' "$(cat "$work/err")"
}

value() { sed -n "s/^  $1  *//p" "$work/out"; }

# section TITLE: the lines of the report that follow the title, up to an empty one.
section() { awk -v title="$1" '/^$/ { on = 0 } on; index($0, title) == 1 { on = 1 }' "$work/out"; }

# found DIRECTORY TEST...: the number of what find finds, whatever its name.
found() { find "$@" -printf x | wc -c; }

same_counts() {
  same "files of $1" "$(found "$1" -type f)" "$(value files)"
  same "directories of $1" "$(found "$1" -type d)" "$(value directories)"
  same "links of $1" "$(found "$1" -type l)" "$(value links)"
  same "others of $1" "$(found "$1" ! -type f ! -type d ! -type l)" "$(value others)"
  same "bytes of $1" "$(find "$1" -type f -print0 | du -lcb --files0-from=- | tail -n 1 | cut -f 1)" \
    "$(value 'total size' | sed 's/.*(\([0-9]*\) bytes)$/\1/')"
}

# ranks DIRECTORY KEY: what find and sort say of the first ten files, as "bytes date path"; key 1 is the size, 2 the time.
ranks() {
  find "$1" -type f -printf '%s\t%T@\t%TF %TH:%TM:%TS\t%P\n' | sed 's/\.[0-9]*\t/\t/g' |
    sort -t $'\t' -k "$2,${2}nr" -k 4,4 | head -n 10 | cut -f 1,3,4
}

ranked() { section "$1" | sed -E 's/^ *([0-9]+) +[0-9.]+ [KMGTPE]?i?B  (-?[0-9-]+ [0-9:]+)  (.*)$/\1\t\2\t\3/'; }

same_ranks() {
  same "largest of $1" "$(ranks "$1" 1)" "$(ranked 'The largest files')"
  same "newest of $1" "$(ranks "$1" 2)" "$(ranked 'The newest files')"
}

# The classes that are not empty, as "label number".
classes() {
  find "$1" -type f -printf '%s\n' | awk '
    BEGIN { split("B KiB MiB GiB TiB PiB EiB", units) }
    { class = 0; for (limit = 1; $1 >= limit; limit *= 4) ++class; ++number[class] }
    END {
      for (class = 0; class <= 32; ++class) {
        unit = class > 0 ? int((class - 1) / 5) : 0
        format = unit == 0 ? "%d %s" : "%.1f %s"
        label = class == 0 ? "empty" : sprintf(format, 4 ^ (class - 1 - 5 * unit), units[unit + 1])
        if (number[class] > 0) print label, number[class]
      }
    }'
}

same_classes() {
  same "classes of $1" "$(classes "$1")" \
    "$(section 'Sizes of the files' | sed -E 's/^ *//; s/ +\|#* / /' | grep -v ' 0$')"
  same "bars of $1 that do not fit their number" '' "$(section 'Sizes of the files' | awk '
    { bar = gsub(/#/, "#"); lengths[NR] = bar; numbers[NR] = $NF; if ($NF > most) most = $NF }
    END {
      for (i in lengths) {
        expected = int(numbers[i] * 50 / most)
        if (expected == 0 && numbers[i] > 0) expected = 1
        if (lengths[i] != expected) print numbers[i], lengths[i]
      }
    }')"
}

same_all() {
  same_counts "$1"
  same_ranks "$1"
  same_classes "$1"
  same "completeness of $1" 'Everything was examined.' "$(tail -n 1 "$work/out")"
}

make_plain_tree() {
  mkdir -p "$1"/{a/b/c,.hidden,empty}
  local size date number=0
  for size in 0 1 3 4 15 16 1023 1024 1048524 1048525 1048576 3G 5G; do
    truncate -s "$size" "$1/a/size-$size"
  done
  for date in '1902-02-28 23:59:59' '1969-12-31 23:59:59' '1970-01-01 00:00:00' '1999-12-31 12:00:00' \
    '2000-02-29 00:00:01' '2000-03-01 00:00:00' '2024-02-29 23:59:59' '2037-06-15 08:09:10' \
    '2100-02-28 23:59:59' '2100-03-01 00:00:00' '2200-12-31 01:02:03'; do
    number=$((number + 1))
    printf '%*s' "$number" '' >"$1/a/b/dated-$number"
    touch -d "$date" "$1/a/b/dated-$number"
  done
  echo secret >"$1/.hidden/.file"
  ln "$1/.hidden/.file" "$1/a/b/c/hard link"
  ln -s ../.hidden/.file "$1/a/to-file"
  ln -s ../.hidden "$1/a/to-directory"
  ln -s .. "$1/a/b/c/upwards"
  mkfifo "$1/fifo"
}

test_plain() {
  local tree=$work/plain
  make_plain_tree "$tree"
  reports "$tree"
  same_all "$tree"
  same 'no file is unreadable' '' "$(value unreadable)"
  same 'total size in words' '8.0 GiB' "$(value 'total size' | sed 's/ (.*//')"
  same 'sizes in words' \
    '5.0 GiB 3.0 GiB 1.0 MiB 1.0 MiB 1023.9 KiB 1.0 KiB 1023 B' \
    "$(section 'The largest files' | head -n 7 | sed -E 's/^ *[0-9]+ +([0-9.]+ [KMG]?i?B) .*/\1/' | paste -sd ' ')"

  local old=$work/old
  mkdir "$old"
  cp -p "$tree"/a/b/dated-* "$old"
  reports "$old"
  same_all "$old"
  same 'dates are those of date(1)' "$(stat -c %Y "$old"/* | sort -nr | head -n 10 | sed 's/^/@/' |
    date -u -f - '+%F %T')" "$(ranked 'The newest files' | cut -f 2)"

  ln -s plain "$work/link"
  reports "$work/link"
  same 'a link as the root is followed' "$(found "$tree" -type f)" "$(value files)"
  reports "$tree///"
  same_all "$tree"
}

test_empty() {
  mkdir "$work/nothing"
  reports "$work/nothing"
  same_counts "$work/nothing"
  same 'an empty tree is one directory' 1 "$(value directories)"
  same 'an empty tree has no size' '0 B (0 bytes)' "$(value 'total size')"
  same 'an empty tree has nothing to rank' 0 "$(grep -c -e 'largest' -e 'newest' -e 'Sizes' "$work/out")"
  same 'an empty tree is complete' 'Everything was examined.' "$(tail -n 1 "$work/out")"
}

test_names() {
  local tree=$work/names long longest
  long=$(printf 'd%.0s' {1..255})
  longest=$(printf 'n%.0s' {1..255})
  mkdir -p "$tree/$long/$long" "$tree/ dir in front" "$tree/a*b?" "$tree/-" "$tree/[x]"
  local name
  for name in ' in front' 'in the middle' '*' '?' '-x' 'back\slash' $'new\nline' $'tab\there' $'\e[31mred' \
    $'\xff\xfe' $'caf\xc3\xa9' $'\xc2\x9b' $'cut\xe2\x82' $'\x7f' '"' "$longest"; do
    echo content >"$tree/$name"
    echo content >"$tree/$long/$long/$name"
    echo content >"$tree/a*b?/$name"
  done
  echo content >"$tree/ dir in front/ in front"
  reports "$tree"
  same_counts "$tree"
  same 'names are no obstacle' 'Everything was examined.' "$(tail -n 1 "$work/out")"

  mkdir "$work/few"
  (cd "$tree" && cp -- '*' 'back\slash' $'new\nline' $'\e[31mred' $'\xff\xfe' $'caf\xc3\xa9' $'\xc2\x9b' \
    $'cut\xe2\x82' ' in front' "$longest" "$work/few")
  reports "$work/few"
  same 'names as printed' "$(printf '%s\n' ' in front' '*' '\033[31mred' '\302\233' '\377\376' 'back\134slash' \
    $'caf\xc3\xa9' 'cut\342\202' 'new\012line' "$longest" | sort)" \
    "$(ranked 'The newest files' | cut -f 3 | sort)"
  same 'the report is UTF-8' 0 "$(iconv -f UTF-8 -t UTF-8 "$work/out" >/dev/null 2>&1; echo $?)"
}

test_trailing_blanks() {
  local tree=$work/blanks
  mkdir -p "$tree/sub/dir " "$tree/. " "$tree/.. "
  echo 1234 >"$tree/name"
  echo 12345678 >"$tree/name "
  echo 12345678 >"$tree/sub/  "
  echo 12 >"$tree/sub/dir /inside"
  echo 1 >"$tree/. /inside"
  echo 1 >"$tree/.. /inside"
  # Of the same size and time they come in the order of their names.
  echo 12345678 | tee "$tree/equal"{'  ',' ','','!'}{,' '} >/dev/null
  find "$tree" -exec touch -d '2020-01-01 00:00:00' {} +
  reports "$tree"
  same_all "$tree"
  same 'files of names with blanks at the end' 12 "$(value files)"
  reports "$tree/sub/dir "
  same_all "$tree/sub/dir "
}

# Links that lead nowhere are links like others.
test_dangling() {
  local tree=$work/links
  mkdir -p "$tree"/{gone,loop,mixed}
  ln -s nowhere "$tree/gone/dangling"
  ln -s self "$tree/loop/self"
  touch "$tree"/mixed/file-{1..100}
  ln -s nowhere "$tree/mixed/"$'b\nad'
  reports "$tree"
  same_all "$tree"
  same 'dangling links' 3 "$(value links)"
}

# Permissions, for a user whom they bind.
test_permissions() {
  local tree=$work/closed
  mkdir -p "$tree"/{closed/inner,listed/inner,searched/inner,open/inner,towards}
  echo content | tee "$tree"/{closed,listed,searched,open}/file "$tree/locked" "$tree/open/locked" >/dev/null
  ln -s ../closed/file "$tree/towards/link"
  chmod 000 "$tree/closed" "$tree/locked" "$tree/open/locked"
  chmod 444 "$tree/listed"
  chmod 111 "$tree/searched"
  same 'permissions bind' 0 "$("${ordinary[@]}" test -r "$tree/closed"; echo $(($? == 0)))"

  "${ordinary[@]}" timeout 100 "$program" "$tree" >"$work/out" 2>"$work/err"
  same 'status with closed directories' 0 $?
  same 'standard error with closed directories' '' "$(cat "$work/err")"
  same 'closed directories' "$(sort <<'END'
  "closed": Permission denied
  "listed/file": Permission denied
  "listed/inner": Permission denied
  "searched": Permission denied
END
)" "$(section 'Not examined' | sort)"
  same 'directories, closed ones too' 7 "$(value directories)"
  same 'files, locked ones too' 3 "$(value files)"
  same 'a link to where this user may not look' 1 "$(value links)"
  same 'locked files' '2 of the files' "$(value unreadable)"

  local root
  for root in closed listed searched; do
    "${ordinary[@]}" timeout 100 "$program" "$tree/$root" >"$work/out" 2>"$work/err"
    same "status of a $root root" 1 $?
    same "report on a $root root" '' "$(cat "$work/out")"
    same "error of a $root root" "treereport: $tree/$root: Permission denied" "$(cat "$work/err")"
  done
}

# The longest path that the system takes is 4095 bytes; a thousand levels of short names.
test_depth() {
  local tree=$work/deep name level
  name=$(printf 'd%.0s' {1..100})
  mkdir "$tree"
  (
    cd "$tree" || exit
    for level in {1..45}; do
      echo "$level" >file
      mkdir "$name" && cd "$name" || exit
    done
  )
  same 'the deep tree is there' 46 "$(found "$tree" -type d)"
  reports "$tree"
  same 'directories within reach' "$(find "$tree" -type d | awk 'length <= 4095' | wc -l)" "$(value directories)"
  same 'files within reach' "$(find "$tree" -type f | awk 'length <= 4095' | wc -l)" "$(value files)"
  same 'what is out of reach' "$(find "$tree" -printf '%p\t%h\t%P\n' | awk -F '\t' '
      length($1) > 4095 && length($2) <= 4095 { print "  \"" $3 "\": File name too long" }' | sort)" \
    "$(section 'Not examined' | sort)"

  mkdir "$work/steps"
  (
    cd "$work/steps" || exit
    for level in {1..400}; do mkdir d && cd d && echo "$level" >f || exit; done
  )
  reports "$work/steps"
  same_all "$work/steps"

  # Names at the limit, and one character behind it.
  local path=$work/limit
  mkdir "$path"
  while ((${#path} < 4093 - 201)); do path+=/$name; done
  path+=/$(printf 'e%.0s' $(seq $((4093 - ${#path} - 1))))
  mkdir -p "$path"
  (cd "$path" && mkdir x && echo content >f && echo content >ff && echo content >x/file) 2>/dev/null
  same 'length of the path two before the limit' 4093 ${#path}
  reports "$work/limit"
  same 'files up to the limit' 1 "$(value files)"
  same 'directories up to the limit' "$(found "$work/limit" -type d)" "$(value directories)"
  same 'what is behind the limit' "$(printf '  "%s": File name too long\n' "${path#"$work/limit/"}"/{ff,x/file})" \
    "$(section 'Not examined' | sort)"
}

test_many() {
  mkdir "$work/many" "$work/many/sub"
  (cd "$work/many" && seq -f 'file-%.0f' 50000 | xargs touch -d '2020-01-01 00:00:00')
  (cd "$work/many/sub" && seq -f '%.0f' 2000 | xargs mkdir)
  # Processor time, which other work on the machine does not lengthen; a growth by the square would take minutes.
  local seconds TIMEFORMAT=%0U
  { time reports "$work/many"; } 2>"$work/seconds"
  seconds=$(tail -n 1 "$work/seconds")
  same 'many files take at most 10 s' 1 $((seconds <= 10))
  same_all "$work/many"
}

# Directories that change while they are read.
test_changes() {
  local tree=$work/changing round
  mkdir "$tree"
  while [[ ! -e $work/stop ]] && kill -0 $$; do
    mkdir -p "$tree"/{a,b}/{c,d} && touch "$tree"/{a,b,a/c,b/d}/file-{1..200}
    rm -rf "$tree"/{a,b}
  done 2>/dev/null &
  for round in {1..40}; do
    report "$tree"
    same "status of round $round of a changing tree" 0 "$status"
    same "standard error of round $round of a changing tree" '' "$(cat "$work/err")"
    same "end of round $round of a changing tree" 1 "$(grep -c -e '^Everything was' -e '^Not examined' "$work/out")"
  done
  touch "$work/stop"
  wait
  reports "$tree"
  same_all "$tree"
}

test_header() {
  mkdir -p "$work/here/below"
  local before after date login
  login=$(logname 2>/dev/null)
  before=$(date +%s)
  cd "$work/here" || exit
  LOGNAME=somebody USER=other reports
  after=$(date +%s)
  same 'directory without an argument' "$(pwd -P)" "$(value directory)"
  same 'directories without an argument' 2 "$(value directories)"
  same 'host' "$(uname -n)" "$(value host)"
  same 'user by LOGNAME' "${login:-somebody}" "$(value user)"
  date=$(date -d "$(value date)" +%s)
  same 'date of the report' 1 $((before <= date && date <= after))
  TZ=UTC-2 reports below
  same 'zone of the report' +0200 "$(value date | cut -d ' ' -f 3)"
  date=$(date -d "$(value date)" +%s)
  same 'date in another zone' 1 $((before <= date && date <= after + 30))
  same 'directory of a relative argument' "$(pwd -P)/below" "$(value directory)"
  unset LOGNAME
  USER=other reports below
  same 'user by USER' "${login:-other}" "$(value user)"
  unset USER
  reports below
  same 'user by number' "${login:-user id $(id -u)}" "$(value user)"

  mkdir "$work/vanished"
  cd "$work/vanished" || exit
  rmdir "$work/vanished"
  reports
  same 'files of a directory that was removed' 0 "$(value files)"
  cd / || exit
}

# refused STATUS ERROR ARGUMENT...: no report, the status, and the first line of the error.
refused() {
  local expected=$1 message=$2
  shift 2
  report "$@"
  same "status of arguments: $*" "$expected" "$status"
  same "output of arguments: $*" '' "$(cat "$work/out")"
  same "error of arguments: $*" "$message" "$(head -n 1 "$work/err")"
}

test_arguments() {
  local usage='usage: treereport [DIRECTORY]'
  refused 2 "$usage" "$work" "$work"
  refused 2 "$usage" ''
  refused 2 "$usage" --help
  refused 2 "$usage" -x
  refused 1 "treereport: $work/none: No such file or directory" "$work/none"
  refused 1 "treereport: none\\033 : No such file or directory" $'none\e '
  echo content >"$work/file"
  refused 1 "treereport: $work/file: Not a directory" "$work/file"
  ln -s nowhere "$work/dangling"
  refused 1 "treereport: $work/dangling: No such file or directory" "$work/dangling"
  refused 1 "treereport: $(printf 'x%.0s' {1..256}): File name too long" "$(printf 'x%.0s' {1..256})"
  refused 1 "treereport: $(printf '/x%.0s' {1..5000}): File name too long" "$(printf '/x%.0s' {1..5000})"
}

test_output() {
  mkdir "$work/small"
  echo content >"$work/small/file"
  timeout 60 "$program" "$work/small" >/dev/full 2>"$work/err"
  same 'status with a full device' 1 $?
  same 'standard error with a full device' 'treereport: standard output: No space left on device' "$(cat "$work/err")"
  timeout 60 "$program" "$work/small" >&- 2>"$work/err"
  same 'status without an output' 1 $?
  same 'standard error without an output' 'treereport: standard output: Bad file descriptor' "$(cat "$work/err")"
  make_hindrance "$work/hindered.so"
  same 'the report with interrupted calls' "$(timeout 60 "$program" "$work/small" | grep -v '^  date')" \
    "$(hindered "$program" "$work/small" | grep -v '^  date')"
}

# One directory is open at a time, and none stays open.
test_few_descriptors() {
  local number
  for number in {1..40}; do mkdir -p "$work/wide/$number/deeper"; done
  (ulimit -n 12 && exec timeout 60 "$program" "$work/wide") >"$work/out" 2>"$work/err"
  same 'status with few descriptors' 0 $?
  same_counts "$work/wide"
  same 'a tree with few descriptors is complete' 'Everything was examined.' "$(tail -n 1 "$work/out")"
}

# Files with holes may claim more than can be counted: two of these are the first byte too many.
test_huge() {
  local number
  mkdir "$work/huge"
  make_preloaded "$work/huge.so" "$here/huge_files.c"
  for number in 1 2 3; do
    echo content >"$work/huge/$number"
    preloaded "$work/huge.so" "$program" "$work/huge" >"$work/out" 2>"$work/err"
    same "status with $number huge files" 0 $?
    same "huge files, $number of them" "$number" "$(value files)"
    same "total size of $number huge files" "$((number == 1 ? 1 << 62 : (1 << 63) - 1))" \
      "$(value 'total size' | sed 's/.*(\([0-9]*\) bytes)$/\1/')"
  done
}

# The whole system is too much to report on: it is enough that the walk goes on, or has come to an end.
test_root() {
  local outcome files
  timeout 2 "$program" / >"$work/out" 2>"$work/err"
  outcome=$?
  files=$(value files)
  same 'the root of all is walked' 1 $((outcome == 124 || ${files:-0} > 0))
  same 'the root of all is no error' '' "$(cat "$work/err")"
}

for name in plain empty names trailing_blanks dangling permissions depth many changes header arguments output few_descriptors huge root; do
  "test_$name"
done
printf '%d checks, %d failed\n' "$checks" "$failures"
((failures == 0))
