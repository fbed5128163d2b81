!target: 64
!prints: 15
integer function caught(number)
  integer, value :: number
  print '(i2)', number
  caught = 1
end function
program handles
  integer, external :: caught, raiseqq
  integer(8), external :: signalqq
  integer(8) :: former
  former = signalqq(15, caught)
  if (raiseqq(15) /= 0) error stop 'not raised'
end program
