!finds: handler-value signal
!mend: integer, value :: number => integer :: number
!prints: 10
module handlers
contains
  subroutine caught(number)
    integer, value :: number
    print '(i2)', number
  end subroutine
end module
program handles
  use handlers, only: caught
  use qxport, only: getpid, kill, signal
  implicit none
  integer :: error
  if (signal(10, caught, -1) == 0) error = kill(getpid(), 10)
end program
