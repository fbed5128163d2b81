! Rename a file, and make a link to one
program rename_and_link
  use qxport, only: error_text, pxflink, rename
  implicit none
  integer :: unit, error
  open (newunit=unit, file='draft.txt')
  close (unit)
  error = rename('draft.txt', 'final.txt')
  print '(2a)', 'rename: ', trim(error_text(error))
  call pxflink('final.txt', 0, 'copy.txt', 0, error)
  print '(2a)', 'link: ', trim(error_text(error))
  error = rename('draft.txt', 'final.txt')
  print '(2a)', 'rename: ', trim(error_text(error))
end program
