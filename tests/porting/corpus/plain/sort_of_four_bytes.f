!finds: comparison-kind qsort_ii
!mend: integer*2 function up => integer*4 function up
!mend: integer*2 up => integer*4 up
!prints: 1 5 9
      program sorts
      integer*2 up
      external up
      integer a(3)
      data a /5, 1, 9/
      call qsort_ii(a, 3, 4, up)
      write (*, '(3(i1,:,1x))') a
      end
      integer*2 function up(x, y)
      integer x, y
      up = x - y
      end
