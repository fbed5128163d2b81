! Ask whether the output goes to a terminal
! Colours and progress bars belong on a terminal, not into a file.
program output_to_terminal
  use qxport, only: isatty
  implicit none
  if (isatty(6)) then
    print '(3a)', achar(27)//'[32m', 'all is well', achar(27)//'[0m'
  else
    print '(a)', 'all is well'
  end if
end program
