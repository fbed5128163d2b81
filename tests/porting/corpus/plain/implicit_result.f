!finds: implicit-result splitpathqq
!prints: done
      program implicit
      character*9 a, b, c, d
      x = splitpathqq('/a', a, b, c, d)
      write (*, '(a)') 'done'
      end
