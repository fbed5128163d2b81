! stopwatch [SECONDS]: times a computation, about five seconds of it or as many as are asked for, by every clock of the
! library side by side.
!
! An alarm tells the progress every second. Ctrl-C prints a summary and goes on, and a second Ctrl-C within two seconds
! ends the computation.
module interruptions
  implicit none
  private
  public :: arm, interrupts, on_interrupt, ticks
  ! The procedures set these and no more; the program looks at them between two steps and does the printing.
  integer, volatile :: ticks = 0, interrupts = 0

contains

  recursive subroutine on_alarm()
    ticks = ticks + 1
    call arm()
  end subroutine

  subroutine arm()
    use qxport, only: alarm
    integer :: remaining
    remaining = alarm(1, on_alarm)
  end subroutine

  subroutine on_interrupt(number)
    integer, intent(in) :: number
    if (number > 0) interrupts = interrupts + 1
  end subroutine
end module

! One reading of every clock.
module readings
  use, intrinsic :: iso_fortran_env, only: real64, int64
  implicit none
  private
  public :: print_summary, reading, read_clocks
  type :: reading
    real(real64) :: wall, whole_seconds, processor, since_before
    real :: user_and_system(2)
  end type

contains

  ! SINCE_BEFORE is the processor time since the reading before this one.
  type(reading) function read_clocks() result(now)
    use qxport, only: dclock, dtime, etime, timef
    real :: since(2)
    now%wall = dclock()
    now%whole_seconds = timef()
    now%processor = etime(now%user_and_system)
    now%since_before = dtime(since)
  end function

  subroutine print_summary(title, begin, now, steps)
    use qxport, only: clock
    character(*), intent(in) :: title
    type(reading), intent(in) :: begin, now
    integer(int64), intent(in) :: steps
    real(real64) :: elapsed
    elapsed = now%wall - begin%wall
    print '(4a)', title, ' at ', clock(), ':'
    print '(a, f10.3, a)', '  elapsed, by dclock      ', elapsed, ' s'
    print '(a, f10.3, a)', '  elapsed, by timef       ', now%whole_seconds, ' s, in whole seconds'
    print '(a, f10.3, a)', '  processor, by etime     ', now%processor - begin%processor, ' s'
    print '(a, f10.3, a)', '  processor, by dtime     ', now%since_before, ' s since the reading before'
    print '(a, i10, a, f0.1, a)', '  steps                   ', steps, ', ', real(steps, real64) / max(elapsed, 1d-3) &
      / 1000, ' thousand a second'
  end subroutine
end module

program stopwatch
  use, intrinsic :: iso_c_binding, only: c_intptr_t
  use, intrinsic :: iso_fortran_env, only: error_unit, int64, output_unit, real64
  use interruptions, only: arm, interrupts, on_interrupt, ticks
  use qxport, only: dclock, exit, fdate, signal
  use readings, only: print_summary, reading, read_clocks
  implicit none
  integer, parameter :: sigint = 2, call_it = -1
  real(real64), parameter :: again_within = 2
  real(real64) :: seconds, elapsed, last_interrupt, x
  type(reading) :: begin, now
  integer(int64) :: steps
  integer :: seen_ticks, seen_interrupts
  logical :: ended

  call read_arguments(seconds)
  if (signal(sigint, on_interrupt, call_it) == -1_c_intptr_t) write (error_unit, '(a)') 'stopwatch: Ctrl-C ends it'
  begin = read_clocks()
  print '(a, f0.1, 2a)', 'computing for ', seconds, ' s from ', fdate()
  flush (output_unit)
  call arm()

  steps = 0
  x = 0.5
  ended = .false.
  seen_ticks = 0
  seen_interrupts = 0
  last_interrupt = -again_within
  elapsed = 0
  do while (.not. ended .and. elapsed < seconds)
    call compute(x)
    steps = steps + 1
    elapsed = dclock() - begin%wall
    if (ticks > seen_ticks) then
      seen_ticks = ticks
      print '(a, i0, a)', '  ', nint(100 * min(elapsed / seconds, 1d0)), ' %'
      flush (output_unit)
    end if
    if (interrupts > seen_interrupts) then
      ended = interrupts - seen_interrupts > 1 .or. elapsed - last_interrupt < again_within
      seen_interrupts = interrupts
      last_interrupt = elapsed
      if (.not. ended) then
        now = read_clocks()
        call print_summary('So far', begin, now, steps)
        print '(a)', '(again to end it)'
        flush (output_unit)
      end if
    end if
  end do

  now = read_clocks()
  call print_summary(merge('Ended', 'Done ', ended), begin, now, steps)
  if (x < 0) print '(a)', 'the computation has gone astray'
  if (ended) call exit(130)

contains

  subroutine read_arguments(wanted)
    real(real64), intent(out) :: wanted
    character(32) :: text
    integer :: status
    wanted = 5
    if (command_argument_count() == 0) return
    call get_command_argument(1, text, status=status)
    if (status == 0) read (text, *, iostat=status) wanted
    if (status /= 0 .or. command_argument_count() > 1 .or. .not. (wanted > 0 .and. wanted < 1d6)) then
      write (error_unit, '(a)') 'usage: stopwatch [SECONDS]'
      call exit(2)
    end if
  end subroutine

  ! A step of a chaotic sequence, between 0 and 1.
  subroutine compute(value)
    real(real64), intent(inout) :: value
    integer :: i
    do i = 1, 10000
      value = 3.9_real64 * value * (1 - value)
    end do
  end subroutine
end program
