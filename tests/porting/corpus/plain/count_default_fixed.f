!target: 64
!finds: integer-width sortqq
!prints:  1 2 3
      subroutine order(a, n)
      integer*4 a(*), n
      call sortqq(loc(a), n, 327680)
      end
      program kinds
      integer*4 a(3)
      data a /3, 1, 2/
      n = 3
      call order(a, n)
      write (*, '(3i2)') a
      end
