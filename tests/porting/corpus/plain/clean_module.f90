!prints: /tmp/x
program clean
  use qxport, only: splitpathqq
  implicit none
  character(20) :: drive, directory, name, extension
  if (splitpathqq('/tmp/x', drive, directory, name, extension) < 1) error stop 'no directory'
  print '(2a)', trim(directory), trim(name)
end program
