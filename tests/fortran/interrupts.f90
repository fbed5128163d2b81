! ALARM and SIGNAL through the module, with procedures of a module and of the program.

! What the procedures of alarms write is read without a lock, with the VOLATILE attribute. The thread sanitizer asks here
! what it shall not report.
module raced_on_purpose
  use, intrinsic :: iso_c_binding, only: c_char, c_loc, c_null_char, c_ptr
  implicit none
  private
  public :: suppressions
  character(kind=c_char, len=26), target, save :: text = 'race:interrupt_procedures' // c_null_char

contains

  function suppressions() bind(C, name='__tsan_default_suppressions') result(answer)
    type(c_ptr) :: answer
    answer = c_loc(text)
  end function

end module

module interrupt_procedures
  implicit none
  integer(4), parameter :: rounds = 3
  integer(4), volatile :: ticks = 0, links = 0, answers(rounds) = -1
  integer(4), volatile :: caught = 0, number_caught = 0, caught_otherwise = 0

contains

  subroutine tick()
    ticks = ticks + 1
  end subroutine

  ! Arms the next one from inside.
  recursive subroutine next_one()
    use qxport, only: alarm
    links = links + 1
    if (links < rounds) answers(links) = alarm(1, next_one)
  end subroutine

  subroutine catch(number)
    integer(4), intent(in) :: number
    caught = caught + 1
    number_caught = number
  end subroutine

  subroutine catch_otherwise(number)
    integer(4), intent(in) :: number
    caught_otherwise = caught_otherwise + number
  end subroutine

end module

program interrupts
  use, intrinsic :: iso_c_binding, only: c_intptr_t
  use checks, only: check, finish
  use interrupt_procedures
  use qxport, only: alarm, dclock, errsns, getlasterror, getpid, kill, signal, sleep
  implicit none
  integer(4), parameter :: einval = 22, sigusr1 = 10, sigusr2 = 12, sigkill = 9

  call test_signal()
  call test_refusals()
  call test_alarm()
  call test_pending_alarm()
  call finish()

contains

  subroutine send(number, what)
    integer(4), intent(in) :: number
    character(*), intent(in) :: what
    call check(kill(getpid(), number), 0, what)
  end subroutine

  subroutine test_signal()
    integer(c_intptr_t) :: handler
    call check(signal(sigusr1, catch, -1) == 0, 'signal: the default before')
    call send(sigusr1, 'a signal')
    call check(caught, 1, 'the procedure is called')
    call check(number_caught, sigusr1, 'with the number')
    call send(sigusr1, 'a second signal')
    call check(caught, 2, 'the procedure stays')
    handler = signal(sigusr1, catch_otherwise, -1)
    call check(all(handler /= [-1, 0, 1]), 'signal: a handler before')
    call check(signal(sigusr2, catch, -1) == 0, 'another signal')
    call send(sigusr1, 'a third signal')
    call send(sigusr2, 'a fourth signal')
    call check(caught_otherwise, sigusr1, 'the other procedure')
    call check(number_caught, sigusr2, 'each signal has its own')
    call check(signal(sigusr1, catch, 1) == handler, 'ignoring answers the handler')
    call send(sigusr1, 'an ignored signal')
    call check(caught, 3, 'ignored signals call nothing')
    call check(signal(sigusr1, catch, 0) == 1, 'the default again answers 1')
    call check(signal(sigusr2, catch, 0) == handler, 'one handler for all procedures')
  end subroutine

  subroutine test_refusals()
    integer(4) :: io, number, status, unit, condition, error
    integer(c_intptr_t) :: answer
    answer = signal(33, catch, -1)
    error = getlasterror()
    call check(answer == einval, 'signal 33')
    call check(error, einval, 'signal 33: errno')
    call errsns(io, number, status, unit, condition)
    call check(number, einval, 'signal 33 is recorded')
    call check(signal(-1, catch, -1) == einval, 'signal -1')
    call check(signal(sigusr1, catch, 2) == einval, 'flag 2')
    call check(signal(0, catch, 1) == -1, 'signal 0')
    call check(signal(sigkill, catch, 1) == -1, 'SIGKILL')
    call check(signal(sigusr1, catch, 0) == 0, 'the default is still there')
  end subroutine

  subroutine wait_until(counter, wanted)
    integer(4), volatile, intent(inout) :: counter
    integer(4), intent(in) :: wanted
    do while (counter < wanted)
      call sleep(1)
    end do
  end subroutine

  subroutine test_alarm()
    real(8) :: begin
    call check(alarm(0, tick), 0, 'alarm of 0')
    call check(alarm(-4, tick), 0, 'alarm of -4')
    begin = dclock()
    call check(alarm(1, tick), 0, 'alarm of 1')
    call wait_until(ticks, 1)
    call check(dclock() >= begin + 1, 'the alarm was not early')
    call check(alarm(0, tick), 0, 'nothing is pending any more')
    call check(alarm(1, next_one), 0, 'the first of a chain')
    call wait_until(links, rounds)
    call check(all(answers(:rounds - 1) == 0), 'alarms armed from inside')
    call check(ticks, 1, 'the first procedure was called once')
    call check(dclock() >= begin + 1 + rounds, 'no alarm was early')
  end subroutine

  ! So far away that however busy the machine is it does not come. It ends with the program.
  subroutine test_pending_alarm()
    integer(4), parameter :: hour = 3600
    integer(4) :: remaining(3)
    call check(alarm(hour, tick), 0, 'alarm of an hour')
    remaining(1) = alarm(1, next_one)
    remaining(2) = alarm(0, next_one)
    remaining(3) = alarm(2 * hour, next_one)
    call check(all(remaining > hour / 2 .and. remaining <= hour), 'a pending alarm answers what remains')
    call check(remaining(2) <= remaining(1) .and. remaining(3) <= remaining(2), 'and is not replaced')
    ! An alarm of one second would have come.
    call sleep(2)
    call check(links, rounds, 'the other procedure was not called')
    call check(alarm(0, next_one) > hour / 2, 'nor was it cancelled')
  end subroutine

end program
