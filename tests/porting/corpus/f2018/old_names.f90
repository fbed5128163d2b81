!prints: -1
program standard
  implicit none
  integer, external :: kill
  print '(i2)', kill(2147483647, 0)
end program
