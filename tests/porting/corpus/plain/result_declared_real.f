!finds: result-kind lnblnk
!mend: real lnblnk => integer lnblnk
!prints: 2.0
      program kinds
      real lnblnk
      external lnblnk
      x = lnblnk('ab')
      write (*, '(f3.1)') x
      end
