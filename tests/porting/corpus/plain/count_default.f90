!target: 64
!finds: integer-width sortqq
!prints:  1 2 3
program kinds
  integer :: a(3) = [3, 1, 2]
  integer :: n = 3
  call sortqq(loc(a), n, 327680)
  print '(3i2)', a
end program
