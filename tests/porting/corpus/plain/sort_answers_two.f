!target: 64
!finds: comparison-kind qsort
!mend: integer*2 function down => integer*4 function down
!mend: integer*2 down => integer*4 down
!prints: 9 5 1
      program sorts
      integer*2 down
      external down
      integer a(3)
      integer*8 n, size
      data a /5, 1, 9/, n /3/, size /4/
      call qsort(a, n, size, down)
      write (*, '(3(i1,:,1x))') a
      end
      integer*2 function down(x, y)
      integer x, y
      down = y - x
      end
