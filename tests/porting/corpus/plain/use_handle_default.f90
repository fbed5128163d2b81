!finds: missing-module oldlib
!prints: found
program uses
  use oldlib
  implicit none
  type(file_info) :: info
  integer :: handle
  handle = FILE_SEARCH_BEGIN
  if (getfileinfoqq('/etc/passwd', info, handle) > 0) print '(a)', 'found'
end program
