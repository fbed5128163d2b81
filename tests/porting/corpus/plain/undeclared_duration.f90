!finds: undeclared sleepqq
!mend: call sleepqq(milliseconds) => call sleepqq(1)
!prints: slept
program implicit
  call sleepqq(milliseconds)
  print '(a)', 'slept'
end program
