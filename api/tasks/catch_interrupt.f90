! Catch Ctrl-C
! The handler only notes that the key was pressed; the program looks at the note when it likes. Here the program presses
! the key itself.
module interrupts
  use qxport_numbers, only: SIGINT
  implicit none
  logical, volatile :: pressed = .false.

contains

  subroutine note(number)
    integer(4), intent(in) :: number
    pressed = number == SIGINT
  end subroutine
end module

program catch_interrupt
  use interrupts, only: note, pressed
  use qxport, only: getpid, kill, signal
  use qxport_numbers, only: SIGINT
  implicit none
  integer(8) :: former
  integer :: step, error
  former = signal(SIGINT, note, -1)
  do step = 1, 1000
    ! ... the work ...
    if (step == 3) error = kill(getpid(), SIGINT)
    if (pressed) exit
  end do
  print '(a, i0)', 'interrupted in step ', step
end program
