!finds: missing-module oldlib
!prints:  7
program uses
  use oldlib
  integer :: access
  access = 7
  call sleepqq(1)
  print '(i2)', access
end program
