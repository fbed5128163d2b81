!target: 32
!prints:  1 2 3
      program kinds
      integer a(3), n
      data a /3, 1, 2/
      n = 3
      call sortqq(loc(a), n, 327680)
      write (*, '(3i2)') a
      end
