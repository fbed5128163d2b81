!finds: missing-module oldlib
!prints: 1970
program uses
  use oldlib, only: unpacktimeqq
  integer :: year, month, day, hour, minute, second
  call unpacktimeqq(86400, year, month, day, hour, minute, second)
  print '(i4)', year
end program
