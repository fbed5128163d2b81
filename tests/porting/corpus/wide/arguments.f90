!finds: default-integer-8 -fdefault-integer-8
!finds: integer-width sleepqq
!mend: integer :: n => integer(4) :: n
!prints: slept
program wide
  integer :: n
  external :: sleepqq
  n = 1
  call sleepqq(n)
  print '(a)', 'slept'
end program
