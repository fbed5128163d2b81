!finds: missing-module oldlib
!prints: -1
program uses
  use oldlib, only: getarg
  implicit none
  integer(2) :: number = 1, status
  character(20) :: name
  call getarg(number, name, status)
  print '(i2)', status
end program
