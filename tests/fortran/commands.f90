! Commands, the environment and the small routines through the module.
module handlers
  implicit none
contains
  subroutine on_condition()
    error stop 'the handler is called'
  end subroutine
end module

program commands
  use checks, only: check, finish
  use handlers, only: on_condition
  use qxport, only: runqq, systemqq, getenvqq, setenvqq, sleepqq, beepqq, establishqq, seterrormodeqq, &
                    setfileaccessqq, getenv, pxfgetenv, changedirqq, getlasterrorqq, errsns
  use scratch, only: scratch_directory, remove_directory
  implicit none
  integer(4), parameter :: EINVAL = 22
  character(:), allocatable, save :: directory

  directory = scratch_directory()
  call check(changedirqq(directory), 'into the directory of the test')
  call check_commands()
  call check_environment()
  call check_small_routines()
  call check(changedirqq('/'), 'out of the directory of the test')
  call remove_directory(directory)
  call finish()

contains

  function first_line(name) result(line)
    character(*), intent(in) :: name
    character(80) :: line
    integer :: unit
    open (newunit=unit, file=name, status='old', action='read')
    read (unit, '(a)') line
    close (unit)
  end function

  ! What stands in a unit's buffer comes later, unless it is flushed.
  subroutine check_commands()
    integer :: unit
    logical :: in_order
    call check(runqq('printf', '%s-%s ''a b'' c >printed   '), 0, 'run')
    call check(trim(first_line('printed')), 'a b-c', 'what was printed')
    call check(runqq('sh', '-c ''exit 3'''), -1, 'run what fails')
    call check(runqq('./none', '2>/dev/null'), -1, 'run what is not there')
    call check(systemqq('exit 3'), 'system with a command that fails')
    call check(systemqq('printf x"y" >printed   '), 'system')
    call check(trim(first_line('printed')), 'xy', 'what was printed by it')
    open (newunit=unit, file='log')
    write (unit, '(a)') 'first'
    flush (unit)
    call check(systemqq('echo second >>log'), 'beside an open unit')
    close (unit)
    call check(systemqq('test "$(cat log)" = "$(printf ''first\nsecond'')" && : >in_order'), 'order of the lines')
    inquire (file='in_order', exist=in_order)
    call check(in_order, 'the lines are in order')
  end subroutine

  subroutine check_environment()
    character(10) :: value
    integer(4) :: length, ierror
    call check(setenvqq('QXPORT_A=one  '), 'set')
    call check(getenvqq('QXPORT_A  ', value), 3, 'length')
    call check(value, 'one       ', 'value')
    call getenv('QXPORT_A', value)
    call check(value, 'one       ', 'value through getenv')
    call pxfgetenv('QXPORT_A', 0, value, length, ierror)
    call check(value(:length), 'one', 'value through pxfgetenv')
    call get_environment_variable('QXPORT_A', value)
    call check(value, 'one       ', 'value through the language')
    call check(systemqq('printf %s "$QXPORT_A" >printed'), 'a command that asks for it')
    call check(trim(first_line('printed')), 'one', 'what the command saw')
    call check(setenvqq('QXPORT_A='), 'set to nothing')
    call check(getenvqq('QXPORT_A', value), 0, 'length of nothing')
    call check(.not. setenvqq('QXPORT_A'), 'set without =')
    call check(getlasterrorqq(), EINVAL, 'errno of that')
    call check(setenvqq('QXPORT_B=C=D'), 'set a name with =')
    call check(getenvqq('QXPORT_B=C', value), 1, 'length of its value')
    call check(value, 'D         ', 'its value')
    call check(getenvqq('QXPORT_NONE', value), 0, 'length of a variable that is not set')
    call check(value, '          ', 'value of a variable that is not set')
  end subroutine

  subroutine check_small_routines()
    integer(4) :: context, io, number, status, unit, condition
    integer(8) :: begin, end, rate
    call system_clock(begin, rate)
    call sleepqq(30)
    call system_clock(end)
    call check(end - begin >= rate*30/1000 - rate/1000, 'sleep')
    call sleepqq(-1)
    call beepqq(440, 100)
    call seterrormodeqq(.true.)
    context = 4711
    call check(.not. establishqq(on_condition, context), 'establish')
    call check(context, 4711, 'context')
    call check(.not. setfileaccessqq('printed', 1), 'set attributes')
    call errsns(io, number, status, unit, condition)
    call check(number, EINVAL, 'status of that')
  end subroutine

end program
