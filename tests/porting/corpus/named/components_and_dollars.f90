!finds: missing-module theirlib
!prints: passwd
program named
  use theirlib
  use, intrinsic :: iso_c_binding, only: c_intptr_t
  implicit none
  type(BIG$ENTRY) :: found
  type(ENTRY) :: small
  integer(c_intptr_t) :: handle
  integer :: length
  handle = SEARCH_FIRST
  length = find$next('/etc/passwd', small, handle)
  handle = SEARCH_FIRST
  if (getfileinfoqqi8('/etc/passwd', found, handle) /= length .or. found%changed /= small%changed) error stop 'not the same'
  print '(a)', trim(found%name)
end program
