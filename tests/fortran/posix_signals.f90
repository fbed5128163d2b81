! Signals whose handlers are Fortran procedures.
module handlers
  implicit none
  integer(4), volatile :: calls_of_a = 0, calls_of_b = 0, number_of_a = 0, number_of_b = 0, blocked_in_b = -1

contains

  subroutine handler_a(number)
    integer(4), intent(in) :: number
    calls_of_a = calls_of_a + 1
    number_of_a = number
  end subroutine

  ! Also sends itself a second signal, to see whether it waits.
  subroutine handler_b(number)
    use qxport, only: ipxfconst, pxfgetpid, pxfkill
    integer(4), intent(in) :: number
    integer(4) :: pid, ierror
    calls_of_b = calls_of_b + 1
    number_of_b = number
    call pxfgetpid(pid, ierror)
    call pxfkill(pid, ipxfconst('SIGUSR2'), ierror)
    blocked_in_b = merge(1, 0, calls_of_a == 0)
  end subroutine

  ! Sets the next alarm, so that one that comes before the wait begins is not the last.
  subroutine handler_of_alarms(number)
    use qxport, only: pxfalarm
    integer(4), intent(in) :: number
    integer(4) :: left, ierror
    calls_of_a = calls_of_a + 1
    number_of_a = number
    call pxfalarm(1, left, ierror)
  end subroutine

end module

program posix_signals
  use, intrinsic :: iso_c_binding, only: c_funloc, c_funptr, c_int
  use, intrinsic :: iso_fortran_env, only: output_unit
  use checks, only: check, finish
  use handlers
  use qxport, only: ipxfconst, ipxfwexitstatus, pxfalarm, pxfcallsubhandle, pxffastexit, pxffork, pxfgetpid, &
    pxfgetsubhandle, pxfintget, pxfintset, pxfkill, pxfpause, pxfsigaction, pxfsigaddset, pxfsigdelset, &
    pxfsigemptyset, pxfsigfillset, pxfsigismember, pxfsigpending, pxfsigprocmask, pxfsigsuspend, pxfsleep, &
    pxfstructcreate, pxfstructfree, pxfwait, pxfwaitpid
  implicit none
  integer(4), parameter :: eintr = 4, einval = 22, enohandle = 127

  interface
    function host_signal(number, handler) bind(C, name='signal') result(former)
      import :: c_funptr, c_int
      integer(c_int), value :: number
      type(c_funptr), value :: handler
      type(c_funptr) :: former
    end function
  end interface

  integer(4) :: a, b, action, old, pid, sigusr1, sigusr2, sigalrm, ierror
  integer(c_int) :: native_number = 0

  call pxfgetpid(pid, ierror)
  sigusr1 = ipxfconst('SIGUSR1')
  sigusr2 = ipxfconst('SIGUSR2')
  sigalrm = ipxfconst('SIGALRM')
  call pxfgetsubhandle(handler_a, a, ierror)
  call check(ierror, 0, 'handle of A')
  call pxfgetsubhandle(handler_b, b, ierror)
  call check(ierror, 0, 'handle of B')
  call pxfstructcreate('sigaction', action, ierror)
  call pxfstructcreate('sigaction', old, ierror)
  call check_handler()
  call check_old_action()
  call check_mask()
  call check_native_handler()
  call check_waits()
  call check_sets()
  call check_refusals()
  call pxfstructfree(action, ierror)
  call pxfstructfree(old, ierror)
  call finish()

contains

  subroutine install(number, handler)
    integer(4), intent(in) :: number, handler
    integer(4) :: ierror
    call pxfintset(action, 'sa_handler', handler, ierror)
    call pxfsigaction(number, action, 0, ierror)
    call check(ierror, 0, 'sigaction')
  end subroutine

  subroutine send(number)
    integer(4), intent(in) :: number
    integer(4) :: ierror
    call pxfkill(pid, number, ierror)
    call check(ierror, 0, 'kill')
  end subroutine

  subroutine check_handler()
    call install(sigusr1, a)
    call send(sigusr1)
    call check(calls_of_a, 1, 'A is called once')
    call check(number_of_a, 10, 'with the number of the signal')
    call install(sigusr1, ipxfconst('SIG_IGN'))
    call send(sigusr1)
    call check(calls_of_a, 1, 'an ignored signal calls nothing')
  end subroutine

  subroutine check_old_action()
    integer(4) :: handler, ierror
    call install(sigusr1, a)
    call pxfintset(action, 'sa_handler', b, ierror)
    call pxfsigaction(sigusr1, action, old, ierror)
    call check(ierror, 0, 'B in place of A')
    call pxfintget(old, 'sa_handler', handler, ierror)
    call check(handler, a, 'the old action is A')
    call pxfsigaction(sigusr1, old, action, ierror)
    call pxfintget(action, 'sa_handler', handler, ierror)
    call check(handler, b, 'the old action is B')
    calls_of_a = 0
    call send(sigusr1)
    call check(calls_of_a, 1, 'A again')
    call check(calls_of_b, 0, 'and not B')
  end subroutine

  subroutine check_mask()
    integer(4) :: mask, ierror
    call install(sigusr2, a)
    call pxfstructcreate('sigset', mask, ierror)
    call pxfsigaddset(mask, sigusr2, ierror)
    call pxfintset(action, 'sa_mask', mask, ierror)
    calls_of_a = 0
    call install(sigusr1, b)
    call send(sigusr1)
    call check(calls_of_b, 1, 'B is called')
    call check(number_of_b, sigusr1, 'with its number')
    call check(blocked_in_b, 1, 'the mask''s signal waits for B''s end')
    call check(calls_of_a, 1, 'and comes then')
    call check(number_of_a, sigusr2, 'with its own number')
    call pxfintset(action, 'sa_mask', 0, ierror)
    call pxfstructfree(mask, ierror)
  end subroutine

  subroutine native_handler(number) bind(C)
    integer(c_int), value :: number
    native_number = number
  end subroutine

  ! A handler that other code installed: its handle calls it, and so does the signal when it is installed again.
  subroutine check_native_handler()
    integer(4) :: handler, number, answer, ierror
    type(c_funptr) :: former
    former = host_signal(int(sigusr2, c_int), c_funloc(native_handler))
    call pxfsigaction(sigusr2, 0, old, ierror)
    call check(ierror, 0, 'what is installed')
    call pxfintget(old, 'sa_handler', handler, ierror)
    number = sigusr2
    answer = pxfcallsubhandle(handler, number, ierror)
    call check(ierror, 0, 'the handle of a native handler')
    call check(native_number, sigusr2, 'calls it')
    call check(number + 0 * answer, sigusr2, 'and changes nothing')
    call install(sigusr2, a)
    call pxfsigaction(sigusr2, old, 0, ierror)
    call check(ierror, 0, 'a native handler is installed again')
    native_number = 0
    calls_of_a = 0
    call send(sigusr2)
    call check(native_number, sigusr2, 'and called')
    call check(calls_of_a, 0, 'in the place of A')
    former = host_signal(int(sigusr2, c_int), former)
  end subroutine

  subroutine check_waits()
    integer(4) :: of_alarms, none, left, ierror
    call pxfgetsubhandle(handler_of_alarms, of_alarms, ierror)
    call install(sigalrm, of_alarms)
    calls_of_a = 0
    call pxfalarm(1, left, ierror)
    call check(left, 0, 'no alarm before')
    call pxfpause(ierror)
    call check(ierror, eintr, 'pause')
    call check(calls_of_a >= 1, 'the alarm''s handler')
    call check(number_of_a, sigalrm, 'with its number')
    call pxfalarm(1, left, ierror)
    call pxfsleep(1000, left, ierror)
    call check(ierror, 0, 'sleep')
    call check(left > 900, 'what is left of a sleep')
    call check(left <= 1000, 'and no more')
    call pxfstructcreate('sigset', none, ierror)
    call pxfalarm(1, left, ierror)
    call pxfsigsuspend(none, ierror)
    call check(ierror, eintr, 'sigsuspend')
    call check(calls_of_a >= 3, 'the handler was called each time')
    call pxfstructfree(none, ierror)
    call check_interrupted_waits()
    call pxfalarm(0, left, ierror)
    call check_restarted_wait()
  end subroutine

  subroutine check_interrupted_waits()
    integer(4) :: child, status, ended, left, ierror
    flush (output_unit)
    call pxffork(child, ierror)
    if (child == 0) then
      do
        call pxfpause(ierror)
      end do
    end if
    status = 4711
    call pxfalarm(1, left, ierror)
    call pxfwaitpid(child, status, 0, ended, ierror)
    call check(ierror, eintr, 'an interrupted waitpid')
    call check(ended, -1, 'no child has ended')
    call check(status, 4711, 'the status stays')
    call pxfalarm(1, left, ierror)
    call pxfwait(status, ended, ierror)
    call check(ierror, eintr, 'an interrupted wait')
    call check(status, 4711, 'the status stays there too')
    call pxfkill(child, ipxfconst('SIGKILL'), ierror)
    call pxfwaitpid(child, status, 0, ended, ierror)
    call check(ended, child, 'the child was there all the time')
  end subroutine

  ! The child sends the signal during the wait, and ends some time later.
  subroutine check_restarted_wait()
    integer(4) :: child, status, ended, left, ierror
    call pxfintset(action, 'sa_flags', ipxfconst('SA_RESTART'), ierror)
    call install(sigusr1, a)
    call pxfintset(action, 'sa_flags', 0, ierror)
    calls_of_a = 0
    flush (output_unit)
    call pxffork(child, ierror)
    if (child == 0) then
      call pxfsleep(1, left, ierror)
      call pxfkill(pid, sigusr1, ierror)
      call pxfsleep(1, left, ierror)
      call pxffastexit(5)
    end if
    call pxfwaitpid(child, status, 0, ended, ierror)
    call check(ierror, 0, 'a waitpid that goes on')
    call check(ended, child, 'to the end of the child')
    call check(ipxfwexitstatus(status), 5, 'with its status')
    call install(sigusr1, a)
    call check(calls_of_a, 1, 'behind the handler')
  end subroutine

  subroutine check_sets()
    integer(4) :: set, former, number, ierror
    logical(4) :: member
    call pxfstructcreate('sigset', set, ierror)
    call pxfstructcreate('sigset', former, ierror)
    call pxfsigfillset(set, ierror)
    do number = 1, 32
      call pxfsigismember(set, number, member, ierror)
      call check(member, 'a full set')
    end do
    call pxfsigdelset(set, sigusr1, ierror)
    call pxfsigismember(set, sigusr1, member, ierror)
    call check(.not. member, 'a signal taken out')
    call pxfsigemptyset(set, ierror)
    call pxfsigaddset(set, sigusr1, ierror)
    call pxfsigprocmask(ipxfconst('SIG_BLOCK'), set, former, ierror)
    call check(ierror, 0, 'sigprocmask')
    call pxfsigismember(former, sigusr1, member, ierror)
    call check(.not. member, 'the former mask')
    call install(sigusr1, a)
    calls_of_a = 0
    call send(sigusr1)
    call check(calls_of_a, 0, 'a blocked signal waits')
    call pxfsigemptyset(set, ierror)
    call pxfsigpending(set, ierror)
    call pxfsigismember(set, sigusr1, member, ierror)
    call check(member, 'and is pending')
    call pxfsigprocmask(ipxfconst('SIG_SETMASK'), former, 0, ierror)
    call check(calls_of_a, 1, 'until it is let through')
    call pxfstructfree(set, ierror)
    call pxfstructfree(former, ierror)
  end subroutine

  subroutine check_refusals()
    integer(4) :: freed, stale, ierror
    call pxfstructcreate('sigaction', freed, ierror)
    stale = freed
    call pxfstructfree(freed, ierror)
    call pxfsigaction(33, action, 0, ierror)
    call check(ierror, einval, 'signal 33')
    call pxfsigaction(-1, action, 0, ierror)
    call check(ierror, einval, 'signal -1')
    call pxfsigaction(0, action, 0, ierror)
    call check(ierror, einval, 'signal 0')
    call pxfsigaction(sigusr1, stale, 0, ierror)
    call check(ierror, enohandle, 'a stale handle')
    call pxfsigaction(sigusr1, action, stale, ierror)
    call check(ierror, enohandle, 'a stale handle of the old action')
    call pxfkill(pid, -1, ierror)
    call check(ierror, einval, 'kill with signal -1')
  end subroutine

end program
