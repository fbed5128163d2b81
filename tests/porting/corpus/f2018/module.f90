!finds: missing-module oldlib
!prints: T
program standard
  use oldlib
  implicit none
  print '(l1)', kill(2147483647, 0) == -1
end program
