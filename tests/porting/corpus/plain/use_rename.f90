!finds: missing-module oldlib
!prints: 4
program uses
  use oldlib, last => lnblnk
  implicit none
  print '(i1)', last('four  ')
end program
