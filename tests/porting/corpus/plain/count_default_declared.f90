!target: 64
!finds: integer-width bsearchqq
!mend: integer, external :: bsearchqq => 
!mend: program kinds => program kinds; use qxport, only: bsearchqq
!prints: 2
program kinds
  integer, external :: bsearchqq
  integer :: a(3) = [1, 2, 3], key = 2
  integer :: n = 3
  print '(i1)', bsearchqq(loc(key), loc(a), n, 327680)
end program
