! Make, enter and remove directories
! `makedirqq`, `changedirqq` and `deldirqq` answer a truth; `getlasterrorqq`, asked at once, tells why one failed. `getcwd`
! tells where the program is.
program make_directories
  use qxport, only: changedirqq, deldirqq, error_text, getcwd, getlasterrorqq, makedirqq
  implicit none
  character(4096) :: path
  integer :: error
  if (.not. makedirqq('results')) then
    error = getlasterrorqq()
    print '(2a)', 'results: ', trim(error_text(error))
  end if
  if (changedirqq('results')) then
    if (getcwd(path) == 0) print '(2a)', 'now in ', trim(path(index(trim(path), '/', back=.true.) + 1:))
    if (changedirqq('..')) print '(a)', 'and back'
  end if
  if (deldirqq('results')) print '(a)', 'removed'
  if (.not. deldirqq('results')) then
    error = getlasterrorqq()
    print '(2a)', 'results: ', trim(error_text(error))
  end if
end program
