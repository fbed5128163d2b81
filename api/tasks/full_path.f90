! Make a name a full path, and take a path apart
program full_path
  use qxport, only: fullpathqq, splitpathqq, PATHQQ_LENGTH
  implicit none
  character(PATHQQ_LENGTH) :: path, directory, name, extension
  character(1) :: drive
  integer :: length
  length = fullpathqq('/usr/../usr/bin/', path)
  print '(a)', path(:length)
  length = splitpathqq('/data/run 7.tar.gz', drive, directory, name, extension)
  print '(6a)', '<', directory(:length), '> <', trim(name), '> <', trim(extension)//'>'
end program
