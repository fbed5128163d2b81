!prints: abc 3
      program clean
      integer lnblnk, n
      external lnblnk
      character*10 text
      text = 'abc'
      n = lnblnk(text)
      write (*, '(a,1x,i1)') text(1:n), n
      end
