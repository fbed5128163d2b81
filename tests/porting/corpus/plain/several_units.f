!finds: implicit-result splitpathqq
!finds: literal-kind sleepqq
!mend: 1_2 => 1_4
!prints: 2
      subroutine first(n)
      character*9 a, b, c, d
      n = splitpathqq('/a', a, b, c, d)
      end
      subroutine middle
      external sleepqq
      call sleepqq(1_2)
      end
      program several
      call middle
      call first(n)
      if (n .gt. 0) write (*, '(i1)') 2
      end
