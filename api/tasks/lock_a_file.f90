! Lock a file against other programs
! A write lock on the whole file, which another process that asks for one does not get. It ends with `F_UNLCK`, when the
! file is closed and when the program ends, however it ends.
program lock_a_file
  use qxport, only: error_text, pxfclose, pxffcntl, pxfintset, pxfopen, pxfstructcreate, pxfstructfree
  use qxport_numbers, only: EACCES, EAGAIN, F_SETLK, F_UNLCK, F_WRLCK, O_CREAT, O_RDWR
  implicit none
  integer :: file, lock, answer, error
  call pxfopen('counter.dat', 0, O_RDWR + O_CREAT, int(o'666'), file, error)
  if (error /= 0) then
    print '(2a)', 'counter.dat: ', trim(error_text(error))
    stop 1
  end if
  call pxfstructcreate('flock', lock, error)
  call pxfintset(lock, 'l_type', F_WRLCK, error)
  call pxffcntl(file, F_SETLK, lock, answer, error)
  select case (error)
  case (0)
    print '(a)', 'counter.dat is ours'
    ! ... read and write it ...
    call pxfintset(lock, 'l_type', F_UNLCK, error)
    call pxffcntl(file, F_SETLK, lock, answer, error)
  case (EACCES, EAGAIN)
    print '(a)', 'somebody else has counter.dat'
  case default
    print '(2a)', 'counter.dat: ', trim(error_text(error))
  end select
  call pxfstructfree(lock, error)
  call pxfclose(file, error)
end program
