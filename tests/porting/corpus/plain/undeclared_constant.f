!target: 64
!finds: undeclared sortqq
!finds: integer-width sortqq
!mend: integer*4 a(2), n => integer*4 a(2), n, sort_integer4
!mend: n = 2 => n = 2; sort_integer4 = 327680
!prints:  1 2
      program implicit
      integer*4 a(2), n
      data a /2, 1/
      n = 2
      call sortqq(loc(a), n, sort_integer4)
      write (*, '(2i2)') a
      end
