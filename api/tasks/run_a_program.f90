! Run a program and look at its status
! `system` gives a command to the shell and answers how it ended: 0 when all is well, else its exit status is taken out of
! the answer by `ipxfwexitstatus`.
program run_a_program
  use qxport, only: ipxfwexitstatus, system
  implicit none
  integer :: status
  status = system('echo hello from the shell')
  if (status == 0) print '(a)', 'that went well'
  status = system('exit 3')
  print '(a, i0)', 'and this ended with ', ipxfwexitstatus(status)
end program
