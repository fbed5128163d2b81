!prints: good
      program clean
      character*4096 dir, me
      integer*4 getpid
      i = getcwd(dir)
      call getlog(me)
      if (i .eq. 0 .and. getpid() .gt. 1) write (*, '(a)') 'good'
      end
