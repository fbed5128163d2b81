! IEEE_FLAGS and IEEE_HANDLER as older programs call them: by name alone. With arguments the program is one of its own
! children, which traps.
subroutine last_word(number, code)
  implicit none
  integer(4), intent(in) :: number, code
  write (10, '(a, i0, 1x, i0)') 'last word ', number, code
end subroutine

program ieee_external
  use, intrinsic :: iso_c_binding, only: c_intptr_t
  use checks, only: check, finish
  use scratch, only: quoted, remove_directory, scratch_directory
  implicit none
  integer, parameter :: journal = 10, came_back = 4, killed_by_sigfpe = 128 + 8
  integer(4), external :: ieee_flags
  integer(c_intptr_t), external :: ieee_handler
  external :: last_word
  character(:), allocatable, save :: self, directory
  character(32) :: task

  call get_command_argument(1, task)
  if (task /= '') call be_the_child(trim(task))
  call find_self()
  directory = scratch_directory()
  call check_direction()
  call check_precision()
  call check_words()
  call check_exceptions()
  call check_handler_words()
  call check_traps()
  call check_unmasked_flags()
  call remove_directory(directory)
  call finish()

contains

  subroutine set_masks(how, exception)
    character(*), intent(in) :: how, exception
    call set_flags(how, exception)
  end subroutine

  subroutine kill_self()
    integer(4), external :: getpid, kill
    if (kill(getpid(), 8) /= 0) stop 5
  end subroutine

  include 'ieee.inc'
end program
