!finds: argument-count exit
!finds: argument-count rand
!mend: rand() => rand(0)
!prints: T
program ends
  implicit none
  real :: rand
  print '(l1)', rand() < 1
  call exit
end program
