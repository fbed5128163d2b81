!finds: argument-count splitpathqq
!mend: splitpathqq('/a/b', d) => splitpathqq('/a/b', d, e, f, g)
!prints: 3
      program kinds
      character*9 d, e, f, g
      integer splitpathqq
      external splitpathqq
      write (*, '(i1)') splitpathqq('/a/b', d)
      end
