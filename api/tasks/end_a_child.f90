! Start a process, and end it when it takes too long
program end_a_child
  use qxport, only: ipxfwtermsig, pxfexecvp, pxffastexit, pxffork, pxfkill, pxfwaitpid, pxfwifsignaled, sleepqq
  use qxport_numbers, only: SIGKILL, SIGTERM, WNOHANG
  implicit none
  integer :: child, status, ended, error, tenths
  call pxffork(child, error)
  if (error /= 0) stop 'no process can be started'
  if (child == 0) then
    call pxfexecvp('sleep', 0, [character(5) :: 'sleep', '600'], [5, 3], 2, error)
    call pxffastexit(127)
  end if
  do tenths = 1, 3
    call pxfwaitpid(child, status, WNOHANG, ended, error)
    if (ended /= 0) exit
    call sleepqq(100)
  end do
  if (ended == 0) then
    call pxfkill(child, SIGTERM, error)
    call pxfwaitpid(child, status, 0, ended, error)
  end if
  if (pxfwifsignaled(status)) print '(a, l1)', 'ended by the signal that we sent: ', &
    any(ipxfwtermsig(status) == [SIGTERM, SIGKILL])
end program
