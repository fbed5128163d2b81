!finds: integer-width raiseqq
!mend: integer*2 n => integer*4 n
!prints: -1
      program kinds
      integer*2 n
      integer*4 raiseqq
      external raiseqq
      n = 99
      write (*, '(i2)') raiseqq(n)
      end
