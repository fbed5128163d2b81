!prints: 1 5 9
program sorts
  integer(4), external :: up
  integer :: a(3) = [5, 1, 9]
  call qsort_ii(a, 3, 4, up)
  print '(3(i1,:,1x))', a
end program
integer(4) function up(x, y)
  integer :: x, y
  up = x - y
end function
