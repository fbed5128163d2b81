!finds: missing-module oldlib
!prints: 2
      program uses
      use oldlib
      integer*4 lnblnk
      external lnblnk
      call sleepqq(1)
      write (*, '(i1)') lnblnk('ab ')
      end
