!target: 64
!finds: comparison-kind signalqq
!mend: integer(2) function caught => integer(4) function caught
!prints: caught
integer(2) function caught(number)
  integer, value :: number
  if (number > 0) print '(a)', 'caught'
  caught = 1
end function
program handles
  external :: caught
  integer, external :: raiseqq
  integer(8), external :: signalqq
  integer(8) :: former
  former = signalqq(15, caught)
  if (raiseqq(15) /= 0) error stop 'not raised'
end program
