!prints: 3
      program includes
      include 'length.inc'
      write (*, '(i1)') lnblnk('abc')
      end
