!finds: intrinsic stat
!mend: integer stat, => integer stat; external stat; integer
!prints: 0
      program wants
      integer stat, b(12)
      i = stat('.', b)
      write (*, '(i1)') i
      end
