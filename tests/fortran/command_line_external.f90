! The command line by name, with and without the status.
program command_line
  use, intrinsic :: iso_c_binding, only: c_f_procpointer, c_funloc
  use checks, only: check, finish
  implicit none
  ! The compiler has all calls of a procedure that it knows nothing of agree.
  abstract interface
    subroutine without_status(n, buffer)
      integer(4), intent(in) :: n
      character(*), intent(inout) :: buffer
    end subroutine
    subroutine without_status_two(n, buffer)
      integer(2), intent(in) :: n
      character(*), intent(inout) :: buffer
    end subroutine
  end interface
  procedure(without_status), pointer :: getarg_short
  procedure(without_status_two), pointer :: getargi2_short
  external :: getarg, getargi2
  integer(4), external :: iargc, nargs
  include 'command_line.inc'

  subroutine prepare()
    call c_f_procpointer(c_funloc(getarg), getarg_short)
    call c_f_procpointer(c_funloc(getargi2), getargi2_short)
  end subroutine

  subroutine check_both_kinds()
    character(60000), save :: long
    character(4) :: short
    integer(2) :: status(3)
    status = 77_2
    call getargi2(1_2, short, status(2))
    call check(short, 'one ', 'an argument by an INTEGER(2)')
    call check(all(status == [77_2, 3_2, 77_2]), 'its length and nothing else')
    call getargi2_short(3_2, short)
    call check(short, ' two', 'without a status')
    call getarg_short(1, long)
    call check(long == 'one', 'a long variable')
  end subroutine
end program
