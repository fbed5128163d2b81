!finds: result-kind sleepqq
!mend: i = sleepqq(1) => call sleepqq(1)
!mend: integer :: sleepqq => integer :: i
!prints: slept
program kinds
  integer :: sleepqq
  external :: sleepqq
  i = sleepqq(1)
  print '(a)', 'slept'
end program
