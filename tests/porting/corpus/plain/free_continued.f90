!target: 64
!finds: integer-width sortqq
!prints:  1 2
subroutine order(a, & ! the array
                 n)
  integer :: a(*), n
  call sortqq(loc(a), &
              n, 327680)
end subroutine
program long
  integer :: a(2) = [2, 1]
  integer :: n
  n = 2
  call order(a, n)
  print '(2i2)', a
end program
