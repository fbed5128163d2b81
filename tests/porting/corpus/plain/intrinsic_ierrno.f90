!finds: intrinsic ierrno
!prints: T
program wants
  integer, external :: unlink
  i = unlink('/no/such/file')
  print '(l1)', ierrno() == i
end program
