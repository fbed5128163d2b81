! Wait, or have a procedure called after some seconds
! `sleepqq` waits milliseconds. `alarm` calls a procedure in a thread of its own when the seconds are over.
module deadlines
  implicit none
  logical, volatile :: is_over = .false.

contains

  subroutine deadline()
    is_over = .true.
  end subroutine
end module

program wait_and_alarm
  use deadlines, only: deadline, is_over
  use qxport, only: alarm, sleepqq
  implicit none
  integer :: pending
  pending = alarm(1, deadline)
  do while (.not. is_over)
    call sleepqq(10)
  end do
  print '(a)', 'a second is over'
end program
