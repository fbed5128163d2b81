!finds: intrinsic kill
!prints: -1
      program wants
      write (*, '(i2)') kill(2147483647, 0)
      end
