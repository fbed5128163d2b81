!prints: slept
      program given
      common /c/ kcom
      equivalence (keq, other)
      namelist /nl/ knl
      character*2 text
      data kdat /1/
      kcom = 1
      text = '1 '
      open (10, file='given.dat', iostat=kios)
      write (10, *) 1, 1
      rewind (10)
      read (10, *) kread, karr
      inquire (10, number=kinq)
      close (10, status='delete')
      read (text, *) ktext
      call give(kcall)
      other = 0.
      knl = kvalue(kfun)
      do 10 kdo = 1, 1
      call sleepqq(kdo)
 10   continue
      assign 10 to klab
      call sleepqq(kcom)
      call sleepqq(kdat)
      call sleepqq(keq)
      call sleepqq(knl)
      call sleepqq(kread)
      call sleepqq(karr)
      call sleepqq(kios)
      call sleepqq(kinq - 9)
      call sleepqq(ktext)
      call sleepqq(kcall)
      call sleepqq(kfun)
      if (klab .lt. 0) call sleepqq(klab)
      call inside(1)
      call pxfgetpid(kpid, ierror)
      call pxfkill(kpid, 0, ierror)
      write (*, '(a)') 'slept'
      contains
      subroutine inside(karg)
      call sleepqq(karg)
      khost = 1
      call sleepqq(khost)
      end subroutine
      end
      subroutine give(k)
      k = 1
      end
      function kvalue(k)
      k = 1
      kvalue = 1
      end
      subroutine opened
      open (newunit=kunit, status='scratch')
      call flush(kunit)
      call sleepqq(kunit)
      end
