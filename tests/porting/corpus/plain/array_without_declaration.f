!finds: nobody table
!mend: real x => real x, table(3)
!prints: 1.5
      program wants
      real x
      x = 1.5
      if (x .gt. 2.0) x = table(2)
      write (*, '(f3.1)') x
      end
