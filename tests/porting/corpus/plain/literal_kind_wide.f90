!finds: literal-kind sleepqq
!mend: 1_8 => 1_4
!prints: slept
program kinds
  external :: sleepqq
  call sleepqq(1_8)
  print '(a)', 'slept'
end program
