! Ask whether a file exists, how large it is and when it changed
! `access` asks whether the program may read, write or execute it. `stati8` fills an array; its elements have names.
program file_status
  use qxport, only: access, ctime, stati8, STAT_MTIME, STAT_SIZE
  implicit none
  integer(8) :: status(12)
  integer :: unit
  if (access('data.txt', 'r') /= 0) print '(a)', 'there is no data.txt that could be read'
  open (newunit=unit, file='data.txt')
  write (unit, '(a)') '12345'
  close (unit)
  if (stati8('data.txt', status) /= 0) stop 'data.txt is gone'
  print '(i0, a)', status(STAT_SIZE), ' bytes'
  print '(2a)', 'changed ', ctime(status(STAT_MTIME))
end program
