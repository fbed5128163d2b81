!prints: 1970
      program clean
      integer*2 iy, im, id, ih, mi, is
      external unpacktimeqq
      call unpacktimeqq(86400, iy, im, id, ih, mi, is)
      write (*, '(i4)') iy
      end
