!finds: missing-module theirlib
!prints: T
program named
  use theirlib
  use, intrinsic :: iso_c_binding, only: c_intptr_t
  implicit none
  type(ENTRY) :: found
  integer(c_intptr_t) :: handle
  handle = SEARCH_FIRST
  if (getfileinfoqq('/etc/passwd', found, handle) == 0) error stop 'nothing found'
  print '(l1)', found%changed /= 0 .and. found%bytes >= 0
end program
