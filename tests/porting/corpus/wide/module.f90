!finds: missing-module oldlib
!prints: 1970 75
program through_a_module
  use oldlib, only: pxfopen, unpacktimeqq
  implicit none
  integer :: year, month, day, hour, minute, second, descriptor, ierror
  call unpacktimeqq(86400, year, month, day, hour, minute, second)
  call pxfopen('name', 2**32 + 4, 0, 0, descriptor, ierror)
  print '(i4, 1x, i0)', year, ierror
end program
