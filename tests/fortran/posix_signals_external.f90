! Signals as programs use them that know of no module.
program posix_signals_external
  use, intrinsic :: iso_c_binding, only: c_int
  use checks, only: check, finish
  implicit none
  integer(4), parameter :: eintr = 4, sigusr1 = 10, sigusr2 = 12, sig_setmask = 2, sig_block = 0
  external :: pxfgetpid, pxfgetsubhandle, pxfintset, pxfkill, pxfsigaction, pxfsigaddset, &
    pxfsigdelset, pxfsigemptyset, pxfsigfillset, pxfsigismember, pxfsigpending, pxfsigprocmask, pxfsigsuspend, &
    pxfstructcreate, pxfstructfree, count_signal
  interface
    subroutine change_mask(ihow, jsigset, josigset, ierror) bind(C, name='fortran_pxfsigprocmask')
      import :: c_int
      integer(c_int), intent(in) :: ihow, jsigset, josigset
      integer(c_int), intent(inout) :: ierror
    end subroutine
  end interface
  integer(4), volatile :: calls, last
  common /signals_seen/ calls, last
  integer(4) :: set, old, action, handler, pid, ierror

  calls = 0
  last = 0
  call pxfgetpid(pid, ierror)
  call pxfstructcreate('sigset', set, ierror)
  call pxfstructcreate('sigset', old, ierror)
  call check_sets()
  call check_handler()
  call pxfstructfree(set, ierror)
  call pxfstructfree(old, ierror)
  call finish()

contains

  subroutine expect(number, wanted, what)
    integer(4), intent(in) :: number
    logical, intent(in) :: wanted
    character(*), intent(in) :: what
    logical(4) :: answer
    call pxfsigismember(set, number, answer, ierror)
    call check(answer .eqv. wanted, what)
  end subroutine

  subroutine check_sets()
    call pxfsigfillset(set, ierror)
    call check(ierror, 0, 'sigfillset')
    call expect(sigusr1, .true., 'a full set')
    call expect(sigusr2, .true., 'a full set, to its end')
    call pxfsigdelset(set, sigusr1, ierror)
    call expect(sigusr1, .false., 'the one that is not in the set')
    call expect(sigusr2, .true., 'all others')
    call pxfsigemptyset(set, ierror)
    call expect(sigusr2, .false., 'an empty set')
    call pxfsigaddset(set, sigusr1, ierror)
    call expect(sigusr1, .true., 'a set of one')
    call expect(sigusr2, .false., 'a set of no other')
  end subroutine

  ! The signal is blocked, sent, seen to be pending, and caught while the mask is away.
  subroutine check_handler()
    call pxfgetsubhandle(count_signal, handler, ierror)
    call pxfstructcreate('sigaction', action, ierror)
    call pxfintset(action, 'sa_handler', handler, ierror)
    call pxfsigaction(sigusr1, action, 0, ierror)
    call check(ierror, 0, 'sigaction')
    call change_mask(sig_block, set, old, ierror)
    call check(ierror, 0, 'fortran_pxfsigprocmask')
    call pxfkill(pid, sigusr1, ierror)
    call check(calls, 0, 'a blocked signal waits')
    call pxfsigpending(set, ierror)
    call expect(sigusr1, .true., 'sigpending')
    call pxfsigemptyset(set, ierror)
    call pxfsigsuspend(set, ierror)
    call check(ierror, eintr, 'sigsuspend')
    call check(calls, 1, 'the handler ran')
    call check(last, sigusr1, 'its number')
    call pxfsigprocmask(sig_setmask, old, 0, ierror)
    call pxfkill(pid, sigusr1, ierror)
    call check(calls, 2, 'a signal that is not blocked')
    call pxfstructfree(action, ierror)
  end subroutine

end program

subroutine count_signal(number)
  implicit none
  integer(4), intent(in) :: number
  integer(4), volatile :: calls, last
  common /signals_seen/ calls, last
  calls = calls + 1
  last = number
end subroutine
