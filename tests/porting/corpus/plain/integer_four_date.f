!finds: integer-width unpacktimeqq
!mend: integer*4 iy => integer*2 iy
!prints: 1970
      program kinds
      integer*4 iy, im, id, ih, mi, is
      external unpacktimeqq
      call unpacktimeqq(0, iy, im, id, ih, mi, is)
      write (*, '(i4)') iy
      end
