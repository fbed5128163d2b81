!prints:  1 2 2.0 1.0
      program sorts
      integer*4 up, down, a(2)
      real*4 x(2)
      external up, down
      data a /2, 1/, x /1., 2./
      call qsort_ii(a, 2, 4, up)
      call qsort_ii(x, 2, 4, down)
      write (*, '(2i2, 2f4.1)') a, x
      end
      integer*4 function up(i, j)
      integer*4 i, j
      up = i - j
      end
      integer*4 function down(y, z)
      real*4 y, z
      down = z - y
      end
