!finds: argument-kind sleepqq
!mend: call sleepqq('1') => call sleepqq(1)
!prints: slept
      program kinds
      external sleepqq
      call sleepqq('1')
      write (*, '(a)') 'slept'
      end
