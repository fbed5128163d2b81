!finds: intrinsic ran
!prints: 337897
      program wants
      integer seed
      seed = 7
      x = ran(seed)
      write (*, '(i6)') seed
      end
