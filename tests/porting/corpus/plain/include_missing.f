!finds: missing-include nowhere.inc
!mend: include 'nowhere.inc' => use qxport, only: lnblnk
!prints: 3
      program includes
      include 'nowhere.inc'
      write (*, '(i1)') lnblnk('abc')
      end
