!finds: missing-module oldlib
!prints: found
program uses
  use oldlib, only: file_info_i8, find => getfileinfoqqi8
  type(file_info_i8) :: info
  integer(4) :: handle
  handle = -1
  if (find('/etc/passwd', info, handle) > 0) print '(a)', 'found'
end program
