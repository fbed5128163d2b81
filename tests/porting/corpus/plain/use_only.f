!finds: missing-module oldlib
!prints: 0
      program uses
      use oldlib, only: chdir, getcwd
      character*200 dir
      i = getcwd(dir)
      write (*, '(i1)') chdir(dir) + i
      end
