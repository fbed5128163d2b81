!prints: 0
      program clean
      integer*4 chdir
      external chdir
      i = chdir('.')
      write (*, '(i1)') i
      end
