!finds: intrinsic idate
!prints: T
      program wants
      integer t(3)
      call idate(t)
      write (*, '(l1)') t(3) .lt. 100
      end
