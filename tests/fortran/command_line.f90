! The command line through the module.
program command_line
  use checks, only: check, finish
  use qxport, only: getarg, getarg_short => getarg, iargc, nargs
  implicit none
  include 'command_line.inc'

  subroutine prepare()
  end subroutine

  subroutine check_both_kinds()
    character(70000), save :: long
    character(4) :: short
    integer(2) :: status(3)
    status = 77_2
    call getarg(1_2, short, status(2))
    call check(short, 'one ', 'an argument by an INTEGER(2)')
    call check(all(status == [77_2, 3_2, 77_2]), 'its length and nothing else')
    call getarg(1_2, short)
    call getarg(9_2, short, status(2))
    call check(short == ' ' .and. status(2) == -1_2, 'no argument by an INTEGER(2)')
    ! Longer than what a call by name takes for a length.
    call getarg(1, long)
    call check(long == 'one', 'a long variable')
    call getarg(3_2, long)
    call check(long == ' two words ', 'a long variable by an INTEGER(2)')
  end subroutine
end program
