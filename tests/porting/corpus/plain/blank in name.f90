!finds: missing-module oldlib
!prints: 1
program blank
  use oldlib, only: lnblnk
  print '(i1)', lnblnk('a')
end program
