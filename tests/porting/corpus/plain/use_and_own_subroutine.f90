!finds: missing-module oldlib
!prints: own rename
program uses
  use oldlib
  call sleepqq(1)
  call rename()
contains
  subroutine rename()
    print '(a)', 'own rename'
  end subroutine
end program
