!finds: missing-module oldlib
!mend: integer :: handle => integer(int_ptr) :: handle
!mend: use oldlib => use oldlib; use iso_c_binding, only: int_ptr => c_intptr_t
!finds: does-not-compile use_handle_default.f90
!prints: found
program uses
  use oldlib
  implicit none
  type(file_info) :: info
  integer :: handle
  handle = FILE_SEARCH_BEGIN
  if (getfileinfoqq('/etc/passwd', info, handle) > 0) print '(a)', 'found'
end program
