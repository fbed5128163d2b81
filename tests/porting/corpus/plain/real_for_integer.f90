!finds: argument-kind sleepqq
!mend: 1.5 => 1
!prints: slept
program kinds
  external :: sleepqq
  call sleepqq(1.5)
  print '(a)', 'slept'
end program
