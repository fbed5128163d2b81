!finds: intrinsic long
!prints: -7
      program wants
      integer*2 i
      i = -7
      write (*, '(i2)') long(i)
      end
