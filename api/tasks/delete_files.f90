! Delete a file, or all files of a pattern
! `unlink` deletes one file and answers an error number. `delfilesqq` deletes every regular file that a pattern matches and
! answers how many those were.
program delete_files
  use qxport, only: delfilesqq, error_text, unlink
  implicit none
  integer :: unit, error, i
  character(20) :: name
  do i = 1, 3
    write (name, '(a, i0, a)') 'run-', i, '.tmp'
    open (newunit=unit, file=name)
    close (unit)
  end do
  error = unlink('run-1.tmp')
  if (error /= 0) print '(2a)', 'run-1.tmp: ', trim(error_text(error))
  print '(i0, a)', delfilesqq('run-?.tmp'), ' more files deleted'
  error = unlink('run-1.tmp')
  if (error /= 0) print '(2a)', 'run-1.tmp: ', trim(error_text(error))
end program
