!prints: 0
      program wants
      integer stat, b(13)
      i = stat('.', b)
      write (*, '(i1)') i
      end
