!finds: literal-kind secnds
!mend: 1.0d0 => 1.0
!prints: T
      program kinds
      real*4 secnds
      external secnds
      write (*, '(l1)') secnds(1.0d0) .ge. -1.0
      end
