!finds: intrinsic kill
!mend: integer kill => integer kill; external kill
!prints: -1
      program wants
      integer kill
      write (*, '(i2)') kill(2147483647, 0)
      end
