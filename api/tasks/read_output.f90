! Run a program and read its output
! A pipe, a child process that has the pipe as its standard output and becomes the program, and a Fortran unit on the end
! that is read. The program gets its arguments one by one, without a shell: blanks and quotes in them are no matter.
program read_output
  use qxport, only: error_text, ipxfwexitstatus, pxfclose, pxfdup2, pxfexecvp, pxffastexit, pxffdopen, pxffork, pxfpipe, &
    pxfwaitpid
  use qxport_numbers, only: STDOUT_FILENO
  implicit none
  character(20) :: arguments(3)
  character(80) :: line
  integer :: lengths(3), reading, writing, child, status, ended, error
  arguments = [character(20) :: 'printf', '%s\n', 'two words']
  lengths = len_trim(arguments)
  call pxfpipe(reading, writing, error)
  if (error == 0) call pxffork(child, error)
  if (error /= 0) then
    print '(a)', trim(error_text(error))
    stop 1
  end if
  if (child == 0) then
    call pxfdup2(writing, STDOUT_FILENO, error)
    call pxfclose(reading, error)
    call pxfclose(writing, error)
    call pxfexecvp('printf', 0, arguments, lengths, 3, error)
    call pxffastexit(127)
  end if
  call pxfclose(writing, error)
  call pxffdopen(reading, 20, 'r', error)
  call pxfclose(reading, error)
  do
    read (20, '(a)', iostat=error) line
    if (error /= 0) exit
    print '(2a)', 'it said: ', trim(line)
  end do
  close (20)
  call pxfwaitpid(child, status, 0, ended, error)
  print '(a, i0)', 'and ended with ', ipxfwexitstatus(status)
end program
