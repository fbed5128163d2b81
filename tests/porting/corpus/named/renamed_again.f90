!finds: missing-module theirlib
!prints: 2
program named
  use theirlib, seek => find_value
  integer(4) :: a(2) = [1, 2], key = 2, n = 2
  print '(i1)', seek(loc(key), loc(a), n, SORT_INTEGER4)
end program
