!target: 64
!finds: comparison-kind qsort_il
!mend: integer(2) function up => integer(4) function up
!mend: integer(2), external :: up => integer(4), external :: up
!prints: 1 5 9
program sorts
  integer(2), external :: up
  integer :: a(3) = [5, 1, 9]
  call qsort_il(a, 3, 4_8, up)
  print '(3(i1,:,1x))', a
end program
integer(2) function up(x, y)
  integer :: x, y
  up = int(x - y, 2)
end function
