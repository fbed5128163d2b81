! Signals by desktop numbers as older programs catch them: by name alone.
program desktop_signals_external
  use, intrinsic :: ieee_exceptions, only: ieee_divide_by_zero, ieee_set_halting_mode
  use, intrinsic :: iso_c_binding, only: c_intptr_t
  use checks, only: check, finish
  implicit none
  integer(c_intptr_t), external :: signalqq, signalfpeqq
  integer(4), external :: raiseqq, on_signal, on_exception
  integer, volatile :: calls, number, exception
  common /seen/ calls, number, exception
  calls = 0
  call check(signalqq(16, on_signal) == 0, 'install')
  call check(raiseqq(16), 0, 'send')
  call check(calls, 1, 'calls')
  call check(number, 16, 'number')
  call check(signalqq(8, on_exception) == 0, 'install for exceptions')
  call check(raiseqq(8), 0, 'send an exception')
  call check(number, 8, 'number of an exception')
  call check(exception, -1, 'code of an exception')
  exception = 0
  call check(signalfpeqq(on_exception) == 0, 'install by the other routine')
  call check(raiseqq(8), 0, 'send another exception')
  call check(exception, -1, 'its code')
  call check(signalqq(3, on_signal) == -1, 'install for no signal')
  call check(raiseqq(3), -1, 'send no signal')
  call check_trap(.true., 'a trap of the handler by number')
  call check_trap(.false., 'a trap of the handler by name')
  call finish()

contains

  ! A division by zero that traps, in a child: its handler does not return.
  subroutine check_trap(by_number, what)
    logical, intent(in) :: by_number
    character(*), intent(in) :: what
    integer(4), external :: on_trap, ipxfwexitstatus
    external :: pxffork, pxfwaitpid
    integer(4) :: child, ended, status, ierror
    real(8), volatile :: one, zero
    one = 1
    zero = 0
    call pxffork(child, ierror)
    if (child == 0) then
      if (by_number) then
        if (signalqq(8, on_trap) /= 0) call end_process(3)
      else
        if (signalfpeqq(on_trap) /= 0) call end_process(3)
      end if
      call ieee_set_halting_mode(ieee_divide_by_zero, .true.)
      one = one / zero
      call end_process(4)
    end if
    call pxfwaitpid(child, status, 0, ended, ierror)
    call check(ended, child, what // ': its end')
    call check(ipxfwexitstatus(status), 31, what)
  end subroutine
end program

! Ends the process there and then, as a handler may.
subroutine end_process(code)
  use, intrinsic :: iso_c_binding, only: c_int
  implicit none
  integer, intent(in) :: code
  interface
    subroutine leave(code) bind(C, name='_exit')
      import :: c_int
      integer(c_int), value :: code
    end subroutine
  end interface
  call leave(int(code, c_int))
end subroutine

integer(4) function on_trap(signum, code)
  implicit none
  integer(4), value :: signum, code
  external :: end_process
  call end_process(merge(31, 32, signum == 8 .and. code == 131))
  on_trap = 0
end function

integer(4) function on_signal(signum)
  implicit none
  integer(4), value :: signum
  integer, volatile :: calls, number, exception
  common /seen/ calls, number, exception
  calls = calls + 1
  number = signum
  on_signal = 0
end function

integer(4) function on_exception(signum, code)
  implicit none
  integer(4), value :: signum, code
  integer, volatile :: calls, number, exception
  common /seen/ calls, number, exception
  number = signum
  exception = code
  on_exception = 0
end function
