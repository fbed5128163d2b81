!prints: mine
      program clean
      call sleepqq(2.5)
      end
      subroutine sleepqq(x)
      real x
      if (x .gt. 2.0) write (*, '(a)') 'mine'
      end
