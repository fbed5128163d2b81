! Signals by desktop numbers through the module, which demands handlers that take their numbers by value.
module desktop_handlers
  implicit none
  integer, volatile :: calls = 0, number = 0, exception = 0
contains

  integer(4) function on_signal(signum)
    integer(4), value :: signum
    calls = calls + 1
    number = signum
    on_signal = 0
  end function

  integer(4) function on_exception(signum, code)
    integer(4), value :: signum
    integer(4), value :: code
    calls = calls + 1
    number = signum
    exception = code
    on_exception = 0
  end function

end module

program desktop_signals
  use, intrinsic :: iso_c_binding, only: c_intptr_t
  use checks, only: check, finish
  use desktop_handlers
  use qxport, only: signalqq, signalfpeqq, raiseqq, SIGQQ_INT, SIGQQ_ILL, SIGQQ_FPE, SIGQQ_SEGV, SIGQQ_TERM, SIGQQ_USR1, &
                    SIGQQ_USR2, SIGQQ_ABRT, FPEQQ_OTHER, FPEQQ_INVALID, FPEQQ_ZERODIVIDE, FPEQQ_OVERFLOW, &
                    FPEQQ_UNDERFLOW, FPEQQ_INEXACT
  implicit none
  integer(4), parameter :: signals(8) = [SIGQQ_INT, SIGQQ_ILL, SIGQQ_FPE, SIGQQ_SEGV, SIGQQ_TERM, SIGQQ_USR1, &
                                         SIGQQ_USR2, SIGQQ_ABRT]
  integer :: i

  call check(all(signals == [2, 4, 8, 11, 15, 16, 17, 22]), 'numbers of the signals')
  call check(all([FPEQQ_OTHER, FPEQQ_INVALID, FPEQQ_ZERODIVIDE, FPEQQ_OVERFLOW, FPEQQ_UNDERFLOW, FPEQQ_INEXACT] == &
                 [-1, 129, 131, 132, 133, 134]), 'codes of the exceptions')
  do i = 1, size(signals)
    call check(signalqq(signals(i), on_signal) == 0_c_intptr_t, 'install')
    call check(raiseqq(signals(i)), 0, 'send')
    call check(calls, i, 'calls')
    call check(number, signals(i), 'number')
  end do
  call check(raiseqq(20), 0, 'send the other number of SIGUSR1')
  call check(number, SIGQQ_USR1, 'number of that')
  call check(signalfpeqq(on_exception) == 0_c_intptr_t, 'install for exceptions')
  call check(raiseqq(SIGQQ_FPE), 0, 'send an exception')
  call check(number, SIGQQ_FPE, 'number of an exception')
  call check(exception, FPEQQ_OTHER, 'code of an exception')
  call check(calls, size(signals) + 2, 'all calls')
  call check(signalqq(9, on_signal) == -1_c_intptr_t, 'install for no signal')
  call check(raiseqq(5), -1, 'send no signal')
  call check(raiseqq(0), 0, 'send nothing')
  call check(calls, size(signals) + 2, 'no more calls')
  call finish()
end program
