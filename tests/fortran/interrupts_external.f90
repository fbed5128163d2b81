! ALARM and SIGNAL as older programs call them: by name alone, with procedures of their own.

! What the procedures of alarms write is read without a lock, with the VOLATILE attribute. The thread sanitizer asks here
! what it shall not report.
module raced_on_purpose
  use, intrinsic :: iso_c_binding, only: c_char, c_loc, c_null_char, c_ptr
  implicit none
  private
  public :: suppressions
  character(kind=c_char, len=11), target, save :: text = 'race:tick_' // c_null_char

contains

  function suppressions() bind(C, name='__tsan_default_suppressions') result(answer)
    type(c_ptr) :: answer
    answer = c_loc(text)
  end function

end module

module interrupt_state
  implicit none
  integer(4), volatile :: ticks = 0, caught = 0, number_caught = 0
end module

subroutine tick()
  use interrupt_state, only: ticks
  implicit none
  ticks = ticks + 1
end subroutine

subroutine catch(number)
  use interrupt_state, only: caught, number_caught
  implicit none
  integer(4), intent(in) :: number
  caught = caught + 1
  number_caught = number
end subroutine

program interrupts_external
  use, intrinsic :: iso_c_binding, only: c_intptr_t
  use checks, only: check, finish
  use interrupt_state, only: caught, number_caught, ticks
  implicit none
  integer(4), external :: alarm, getpid, kill
  integer(c_intptr_t), external :: signal
  external :: catch, sleep, tick
  integer(4), parameter :: einval = 22, sigusr1 = 10
  integer(4) :: remaining

  call check(signal(sigusr1, catch, -1) == 0, 'signal')
  call check(kill(getpid(), sigusr1), 0, 'a signal')
  call check(caught, 1, 'the procedure is called')
  call check(number_caught, sigusr1, 'with the number')
  call check(all(signal(sigusr1, catch, 1) /= [-1, 0, 1]), 'signal answers the handler')
  call check(signal(sigusr1, catch, 0) == 1, 'signal answers that it was ignored')
  call check(signal(33, catch, 0) == einval, 'signal 33')
  call check(signal(sigusr1, catch, 2) == einval, 'flag 2')

  call check(alarm(0, tick), 0, 'alarm of 0')
  call check(alarm(1, tick), 0, 'alarm of 1')
  do while (ticks == 0)
    call sleep(1)
  end do
  call check(ticks, 1, 'the procedure is called once')
  call check(alarm(0, tick), 0, 'nothing is pending')
  ! So far away that however busy the machine is it does not come. It ends with the program.
  call check(alarm(3600, tick), 0, 'alarm of an hour')
  remaining = alarm(5, tick)
  call check(remaining > 1800 .and. remaining <= 3600, 'a pending alarm answers what remains')
  call check(alarm(0, tick) > 1800, 'and is not replaced')
  call check(ticks, 1, 'the procedure is not called again')
  call finish()
end program
