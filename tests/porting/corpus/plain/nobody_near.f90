!finds: nobody getpidd
!mend: getpidd => getpid
!prints: T
program wants
  integer :: getpidd
  external :: getpidd
  print '(l1)', getpidd() > 1
end program
