!target: 64
!finds: integer-width sortqq
!prints:  1 2
      integer*4 a(2)
      data a /2, 1/
      n = 2
      call sortqq(loc(a), n, 327680)
      write (*, '(2i2)') a
      end
