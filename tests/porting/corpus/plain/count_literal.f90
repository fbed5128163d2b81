!target: 64
!finds: implicit-result bsearchqq
!finds: integer-width bsearchqq
!prints: 3
program kinds
  integer :: bsearch, a(3) = [1, 2, 3], key = 3
  bsearch = look()
  print '(i1)', bsearch
contains
  integer function look()
    look = bsearchqq(loc(key), loc(a), 3, 327680)
  end function
end program
