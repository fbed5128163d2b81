!prints: T
program clean
  use qxport_posix, only: pxfgetpid
  integer :: pid, ierror
  call pxfgetpid(pid, ierror)
  print '(l1)', pid > 1 .and. ierror == 0
end program
