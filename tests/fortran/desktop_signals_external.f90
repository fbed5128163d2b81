! Signals by desktop numbers as older programs catch them: by name alone.
program desktop_signals_external
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
  call finish()
end program

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
