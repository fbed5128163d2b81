!finds: missing-module oldlib
!finds: missing-module oldsys
!prints: T
program uses
  use oldlib
  use :: oldsys, only: getpid
  implicit none
  logical(4) :: made
  made = setenvqq('CORPUS=2')
  print '(l1)', made .and. getpid() > 1
end program
