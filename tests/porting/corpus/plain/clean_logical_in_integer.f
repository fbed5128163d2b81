!prints: yes
      program clean
      integer*4 makedirqq, deldirqq
      external makedirqq, deldirqq
      i = deldirqq('made_here')
      i = makedirqq('made_here')
      j = deldirqq('made_here')
      if (i .ne. 0 .and. j .ne. 0) write (*, '(a)') 'yes'
      end
