!finds: integer-width unpacktimeqq
!mend: external unpacktimeqq =>
!mend: program kinds => program kinds; use qxport, only: unpacktimeqq
!prints: 1970
      program kinds
      integer*4 iy, im, id, ih, mi, is
      external unpacktimeqq
      call unpacktimeqq(0, iy, im, id, ih, mi, is)
      write (*, '(i4)') iy
      end
