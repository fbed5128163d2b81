!finds: missing-module theirlib
!finds: missing-name wait_awhile
!mend: wait_awhile => sleepqq
!prints: waited
program named
  use theirlib, only: wait_awhile
  call wait_awhile(1)
  print '(a)', 'waited'
end program
