! Read and set environment variables
! What is set here is seen by the rest of the program and by the programs that it runs.
program environment
  use qxport, only: getenvqq, setenvqq, system
  implicit none
  character(80) :: text
  integer :: length
  length = getenvqq('COLOUR_OF_TASKS', text)
  if (length == 0) print '(a)', 'COLOUR_OF_TASKS is not set'
  if (setenvqq('COLOUR_OF_TASKS=deep blue')) then
    length = getenvqq('COLOUR_OF_TASKS', text)
    print '(2a)', 'now it is ', text(:length)
    if (system('test "$COLOUR_OF_TASKS" = "deep blue"') == 0) print '(a)', 'and the shell sees it'
  end if
end program
