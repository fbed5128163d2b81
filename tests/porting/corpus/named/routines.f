!finds: missing-module theirlib
!prints:  1 2
      program named
      use theirlib
      integer*4 a(2), n
      data a /2, 1/
      n = 2
      call order_array(loc(a), n, sort_integer4)
      write (*, '(2i2)') a
      end
