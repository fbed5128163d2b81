!finds: nobody frobnicate
!mend: call frobnicate(3) => continue
!prints: done
      program wants
      call frobnicate(3)
      write (*, '(a)') 'done'
      end
