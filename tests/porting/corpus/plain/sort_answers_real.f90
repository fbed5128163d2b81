!finds: comparison-kind qsort_ii
!mend: function compare(x, y) => integer(4) function compare(x, y)
!mend: external compare => integer(4), external :: compare
!prints: 1 5 9
program sorts
  external compare
  integer :: a(3) = [5, 1, 9]
  call qsort_ii(a, 3, 4, compare)
  print '(3(i1,:,1x))', a
end program
function compare(x, y)
  integer :: x, y
  compare = x - y
end function
