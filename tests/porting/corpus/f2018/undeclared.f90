!finds: implicit-result unlink
!prints: T
program standard
  i = int(unlink('/no/such/file'))
  print '(l1)', i /= 0
end program
