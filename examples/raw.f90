! raw: shows each key as it is pressed, until q or the end of the input; the terminal is as before afterwards,
! whichever way the program ends.
module raw_terminal
  use qxport, only: CC_MIN, CC_TIME, pxfconst, pxfeintset, pxffastexit, pxfgetsubhandle, pxfintget, pxfintset
  use qxport, only: pxfsigaction, pxfstructcopy, pxfstructcreate, pxftcgetattr, pxftcsetattr
  use qxport_numbers, only: TCSAFLUSH, TCSANOW
  implicit none
  private
  public :: constant, enter_raw_mode, leave_raw_mode
  integer, parameter :: keyboard = 0
  integer, save :: former = 0

contains

  integer function constant(name)
    character(*), intent(in) :: name
    integer :: ierror
    call pxfconst(name, constant, ierror)
    if (ierror /= 0) error stop 'raw: unknown constant'
  end function

  ! False when standard input is no terminal.
  logical function enter_raw_mode()
    integer :: raw, ierror, flags
    call pxfstructcreate('termios', former, ierror)
    call pxftcgetattr(keyboard, former, ierror)
    enter_raw_mode = ierror == 0
    if (.not. enter_raw_mode) return
    call restore_at_signals()
    call pxfstructcreate('termios', raw, ierror)
    call pxfstructcopy('termios', former, raw, ierror)
    call pxfintget(raw, 'c_lflag', flags, ierror)
    flags = iand(flags, not(ior(constant('ICANON'), constant('ECHO'))))
    call pxfintset(raw, 'c_lflag', flags, ierror)
    call pxfeintset(raw, 'c_cc', CC_MIN, 1, ierror)
    call pxfeintset(raw, 'c_cc', CC_TIME, 0, ierror)
    call pxftcsetattr(keyboard, TCSAFLUSH, raw, ierror)
  end function

  subroutine leave_raw_mode()
    integer :: ierror
    if (former /= 0) call pxftcsetattr(keyboard, TCSANOW, former, ierror)
  end subroutine

  subroutine restore_at_signals()
    character(7), parameter :: names(4) = [character(7) :: 'SIGINT', 'SIGTERM', 'SIGHUP', 'SIGQUIT']
    integer :: action, procedure, ierror, i
    call pxfstructcreate('sigaction', action, ierror)
    call pxfgetsubhandle(end_by_signal, procedure, ierror)
    call pxfintset(action, 'sa_handler', procedure, ierror)
    do i = 1, size(names)
      call pxfsigaction(constant(names(i)), action, 0, ierror)
    end do
  end subroutine

  ! A handler leaves units alone, which the signal may have come in the middle of.
  subroutine end_by_signal(signal)
    integer(4), intent(in) :: signal
    call leave_raw_mode()
    call pxffastexit(128 + signal)
  end subroutine

end module

program raw
  use raw_terminal
  use qxport, only: exit, pxfread
  use, intrinsic :: iso_fortran_env, only: error_unit, output_unit
  implicit none
  character :: key
  integer :: count, error

  if (.not. enter_raw_mode()) then
    write (error_unit, '(a)') 'raw: standard input is no terminal'
    call exit(1)
  end if
  print '(a)', 'press keys; q ends'
  flush (output_unit)
  do
    call pxfread(0, key, 1, count, error)
    if (error == constant('EINTR')) cycle
    if (error /= 0 .or. count == 0) exit
    if (iachar(key) > 32 .and. iachar(key) < 127) then
      print '(3a, i0)', 'key ', key, ' ', iachar(key)
    else
      print '(a, i0)', 'key ', iachar(key)
    end if
    flush (output_unit)
    if (key == 'q') exit
  end do
  call leave_raw_mode()
end program
