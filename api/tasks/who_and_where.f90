! Tell the user, the host and the process
program who_and_where
  use qxport, only: getlog, getpid, getuid, hostnm
  implicit none
  character(64) :: user, host
  call getlog(user)
  if (hostnm(host) /= 0) host = 'unknown'
  if (user == ' ') write (user, '(a, i0)') 'user number ', getuid()
  print '(4a)', 'user ', trim(user), ' on ', trim(host)
  if (getpid() > 0) print '(a)', 'and a process of its own'
end program
