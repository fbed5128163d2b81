!target: 64
!finds: integer-width sortqq
!prints:  1 2
      subroutine order(a,
     1                 n)
      integer*4 a(*), n
      call sortqq(loc(a), n,
     &            327680)
      end
      program long
      integer*4 a(2)
      data a /2, 1/
      n = 2
      call order(a, n)
      write (*, '(2i2)') a
      end
