!finds: intrinsic ttynam
!prints: done
      program wants
      character*40 name
      name = ' '
      call ttynam(name, 0)
      write (*, '(a)') 'done'
      end
