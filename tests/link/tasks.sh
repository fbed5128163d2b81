#!/usr/bin/env bash
# The programs of the page of tasks: each compiles without a warning, prints what it is there for, and ends well.
# shellcheck source=common.bash
source "$(dirname "$0")/common.bash"
unset COLOUR_OF_TASKS

# What each prints, as a pattern of the shell.
declare -A printed=(
  [catch_interrupt]='interrupted in step 3'
  [date_texts]=$'now it is ??? ??? ?? ??:??:?? ????\nTue Feb 29 00:00:00 2000\n\nyear 2000, month 2, day 29'
  [delete_files]=$'2 more files deleted\nrun-1.tmp: No such file or directory'
  [end_a_child]='ended by the signal that we sent: T'
  [environment]=$'COLOUR_OF_TASKS is not set\nnow it is deep blue\nand the shell sees it'
  [file_status]=$'there is no data.txt that could be read\n6 bytes\nchanged ??? ??? ?? ??:??:?? ????'
  [full_path]=$'/usr/bin/\n</data/> <run 7.tar> <.gz>'
  [list_directory]='      10  alpha.txt'
  [lock_a_file]='counter.dat is ours'
  [make_directories]=$'now in results\nand back\nremoved\nresults: No such file or directory'
  [measure_time]=$'sum  6.6667E+08\nmeasured'
  [output_to_terminal]='all is well'
  [read_characters]=$'words behind byte 10: 6\nsome words,'
  [random_numbers]=$'the same number again\nfive throws of a die'
  [read_output]=$'it said: two words\nand ended with 0'
  [rename_and_link]=$'rename: Success\nlink: Success\nrename: No such file or directory'
  [run_a_program]=$'hello from the shell\nthat went well\nand this ended with 3'
  [single_keys]='the standard input is no terminal'
  [sort_arrays]=$' -1.00  0.25  2.00  3.50 10.00\n2.0 is element 3'
  [trap_division]='raised: division        '
  [wait_and_alarm]='a second is over'
  [who_and_where]=$'user ?* on ?*\nand a process of its own'
)

for source in "$SOURCE_DIR"/api/tasks/*.f90; do
  name=$(basename "$source" .f90)
  if [[ -z ${printed[$name]:-} ]]; then
    fail "nobody knows what $name prints"
    continue
  fi
  mkdir "in $name"
  compile_fortran "in $name/task" "$source" -std=f2018 -Wall -Wno-intrinsics-std -Werror -J "in $name" "-L$QXPORT_LIB" \
    "-L$QXCORE_LIB" -lqxportmt -lqxcoremt_gnu || continue
  status=0
  output=$(cd "in $name" && LD_LIBRARY_PATH="$QXPORT_LIB:$QXCORE_LIB" timeout 60 ./task </dev/null 2>errors) || status=$?
  # shellcheck disable=SC2053  # a pattern
  if [[ $status != 0 || -s "in $name/errors" || $output != ${printed[$name]} ]]; then
    fail "$name: status $status, printed $output, $(cat "in $name/errors")"
  fi
  unset "printed[$name]"
done
((${#printed[@]} == 0)) || fail "there is no program for ${!printed[*]}"
finish
