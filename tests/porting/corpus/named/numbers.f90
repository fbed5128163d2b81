!finds: missing-module theirlib
!prints:  2
program named
  use theirlib, only: interrupted
  print '(i2)', interrupted
end program
