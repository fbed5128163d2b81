!finds: integer-width sleepqq
!mend: external :: sleepqq => use qxport, only: sleepqq
!prints: slept
program wide
  external :: sleepqq
  integer :: n
  n = 1
  call sleepqq(n)
  print '(a)', 'slept'
end program
