!finds: literal-kind sleepqq
!mend: 1_2 => 1_4
!prints: slept
      program kinds
      external sleepqq
      call sleepqq(1_2)
      write (*, '(a)') 'slept'
      end
