!finds: missing-module theirlib
!prints:  1.0 2.0
program named
  use theirlib, only: sortqq, KIND_DOUBLE
  real(8) :: a(2) = [2.0d0, 1.0d0]
  integer(4) :: n
  n = 2
  call sortqq(loc(a), n, KIND_DOUBLE)
  print '(2f4.1)', a
end program
