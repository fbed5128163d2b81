! Commands, the environment and the small routines as older programs call them: by name alone.
program commands_external
  use checks, only: check, finish
  use scratch, only: scratch_directory, remove_directory, quoted
  implicit none
  integer(4), external :: runqq, getenvqq
  logical(4), external :: systemqq, setenvqq, establishqq, setfileaccessqq
  external :: sleepqq, beepqq, seterrormodeqq, on_condition
  character(:), allocatable, save :: directory, file
  character(8) :: value
  integer(4) :: context
  logical :: made

  directory = scratch_directory()
  file = directory//'/made'
  call check(runqq('touch', quoted(file)), 0, 'run')
  inquire (file=file, exist=made)
  call check(made, 'what was made')
  call check(runqq('false', ''), -1, 'run what fails')
  call check(systemqq('rm '//quoted(file)), 'system')
  inquire (file=file, exist=made)
  call check(.not. made, 'what was removed')
  if (.not. systemqq('false')) call check(.false., 'system with a command that fails')

  call check(setenvqq('QXPORT_A=value'), 'set')
  call check(getenvqq('QXPORT_A', value), 5, 'length')
  call check(value, 'value   ', 'value')
  call check(.not. setenvqq('QXPORT_A'), 'set without =')

  call sleepqq(1)
  call beepqq(1, 1)
  call seterrormodeqq(.false.)
  context = 4711
  call check(.not. establishqq(on_condition, context), 'establish')
  call check(context, 4711, 'context')
  call check(.not. setfileaccessqq(file, 0), 'set attributes')
  call remove_directory(directory)
  call finish()
end program

subroutine on_condition()
  error stop 'the handler is called'
end subroutine
