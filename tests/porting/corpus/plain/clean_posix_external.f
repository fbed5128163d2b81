!prints: T
      program clean
      integer ipid, ierr
      external pxfgetpid
      call pxfgetpid(ipid, ierr)
      write (*, '(l1)') ipid .gt. 1 .and. ierr .eq. 0
      end
