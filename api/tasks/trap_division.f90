! Be told of a division by zero
! The flags of a computation are looked at behind it. (`ieee_handler` has a procedure called at the place itself.)
program trap_division
  use qxport, only: ieee_flags
  implicit none
  character(16) :: raised
  real, volatile :: x = 0
  integer :: answer
  answer = ieee_flags('clearall', '', '', raised)
  x = 1 / x
  answer = ieee_flags('get', 'exception', 'division', raised)
  print '(2a)', 'raised: ', raised
end program
