!prints: T
program standard
  implicit none
  integer, external :: ierrno, unlink
  integer :: error
  error = unlink('/no/such/file')
  print '(l1)', ierrno() == error .and. error /= 0
end program
