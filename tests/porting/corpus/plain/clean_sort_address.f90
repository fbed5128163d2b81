!target: 64
!prints:  1 2 3
program clean
  integer(4) :: a(3) = [3, 1, 2]
  integer(8) :: n
  external :: sortqq
  n = 3
  call sortqq(loc(a), n, 327680)
  print '(3i2)', a
end program
