! Read single keys without waiting for Enter
! The terminal's line editing and its echo are switched off, and back on behind it, whatever happens in between.
program single_keys
  use qxport, only: CC_MIN, CC_TIME, isatty, pxfeintset, pxfintget, pxfintset, pxfread, pxfstructcopy, &
    pxfstructcreate, pxftcgetattr, pxftcsetattr
  use qxport_numbers, only: ECHO, ICANON, STDIN_FILENO, TCSAFLUSH, TCSANOW
  implicit none
  character :: key
  integer :: former, single, flags, count, error
  if (.not. isatty(5)) then
    print '(a)', 'the standard input is no terminal'
    stop
  end if
  call pxfstructcreate('termios', former, error)
  call pxftcgetattr(STDIN_FILENO, former, error)
  call pxfstructcreate('termios', single, error)
  call pxfstructcopy('termios', former, single, error)
  call pxfintget(single, 'c_lflag', flags, error)
  call pxfintset(single, 'c_lflag', iand(flags, not(ior(ICANON, ECHO))), error)
  call pxfeintset(single, 'c_cc', CC_MIN, 1, error)
  call pxfeintset(single, 'c_cc', CC_TIME, 0, error)
  call pxftcsetattr(STDIN_FILENO, TCSAFLUSH, single, error)
  print '(a)', 'press keys, q ends'
  do
    call pxfread(STDIN_FILENO, key, 1, count, error)
    if (error /= 0 .or. count == 0 .or. key == 'q') exit
    print '(a, i0)', 'key number ', iachar(key)
  end do
  call pxftcsetattr(STDIN_FILENO, TCSANOW, former, error)
end program
