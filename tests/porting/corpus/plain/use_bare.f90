!finds: missing-module oldlib
!prints:  1.0 2.0
program uses
  use oldlib
  real(8) :: a(2) = [2.0d0, 1.0d0]
  integer(4) :: n
  n = 2
  call sortqq(loc(a), n, SORT_REAL8)
  print '(2f4.1)', a
end program
