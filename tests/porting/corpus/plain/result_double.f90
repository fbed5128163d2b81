!finds: result-kind dclock
!mend: real, external :: dclock => real(8), external :: dclock
!prints: T
program kinds
  real, external :: dclock
  print '(l1)', dclock() >= 0
end program
