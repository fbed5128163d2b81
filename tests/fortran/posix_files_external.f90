! Files, directories, descriptors, terminals, users and groups as programs call them that know of no module.
program posix_files_external
  use, intrinsic :: iso_c_binding, only: c_f_pointer, c_int, c_ptr
  use checks, only: check, finish
  implicit none
  integer(4), parameter :: ebadf = 9, enotty = 25, end_of_directory = 128
  ! True is all bits, which is no LOGICAL of every compiler.
  integer(4), external :: pxfisdir, pxfischr, pxfisblk, pxfisreg, pxfisfifo
  integer(4), external :: ipxfconst, getpid
  external :: pxfopen, pxfcreat, pxfclose, pxfwrite, pxflseek, pxfdup, pxfdup2, pxfpipe, pxffcntl, pxffstat, &
    pxffpathconf, pxfumask
  external :: pxfmkdir, pxfrmdir, pxfchdir, pxfgetcwd, pxfopendir, pxfreaddir, pxfrewinddir, pxfclosedir
  external :: pxfaccess, pxfchmod, pxfchown, pxfmkfifo, pxflink, pxfrename, pxfunlink, pxfstat, pxfutime, pxfpathconf
  external :: pxftcgetattr, pxftcsetattr, pxfcfgetospeed, pxfcfgetispeed, pxfcfsetospeed, pxfcfsetispeed, &
    pxftcsendbreak, pxftcdrain, pxftcflush, pxftcflow, pxftcgetpgrp, pxftcsetpgrp
  external :: pxfgetpwuid, pxfgetpwnam, pxfgetgrgid, pxfgetgrnam
  external :: pxfstructcreate, pxfstructfree, pxfintget, pxfintset, pxfstrget, pxfread, getenv
  interface
    function errno_location() bind(C, name='__errno_location') result(location)
      import :: c_ptr
      type(c_ptr) :: location
    end function
  end interface
  character(1024) :: directory, former, name
  character(8) :: text
  integer(4) :: ierror, length, fd, other, count, handle, stream, entry, value, mode, mask

  call pxfgetcwd(former, length, ierror)
  call check(ierror, 0, 'PXFGETCWD')
  call check(length, len_trim(former), 'its length')
  call getenv('TMPDIR', name)
  if (name == ' ') name = '/tmp'
  write (directory, '(2a, i0)') trim(name), '/qxport.external.posix.', getpid()
  call pxfmkdir(directory, 0, int(o'700', 4), ierror)
  call check(ierror, 0, 'PXFMKDIR')
  call pxfchdir(directory, 0, ierror)
  call check(ierror, 0, 'PXFCHDIR')

  call pxfumask(int(o'022', 4), mask, ierror)
  call check(ierror, 0, 'PXFUMASK')
  call pxfcreat('file  ', 0, int(o'644', 4), fd, ierror)
  call check(ierror, 0, 'PXFCREAT')
  call pxfwrite(fd, '0123456789', 10, count, ierror)
  call check(count, 10, 'PXFWRITE')
  call pxfclose(fd, ierror)
  call check(ierror, 0, 'PXFCLOSE')
  call pxfclose(fd, ierror)
  call check(ierror, ebadf, 'PXFCLOSE again')
  call pxfopen('fileXYZ', 4, ipxfconst('O_RDONLY'), 0, fd, ierror)
  call check(ierror, 0, 'PXFOPEN')
  call pxflseek(fd, 2, ipxfconst('SEEK_SET'), value, ierror)
  call check(value, 2, 'PXFLSEEK')
  call pxfread(fd, text, 8, count, ierror)
  call check(text, '23456789', 'PXFREAD')
  call pxfdup(fd, other, ierror)
  call check(ierror, 0, 'PXFDUP')
  call pxfdup2(fd, other, ierror)
  call check(ierror, 0, 'PXFDUP2')
  value = -77
  call pxffcntl(other, ipxfconst('F_GETFD'), value, count, ierror)
  call check(ierror, 0, 'PXFFCNTL')
  call check(count, 0, 'flags of a duplicate')
  call pxfclose(other, ierror)
  call pxffpathconf(fd, ipxfconst('_PC_NAME_MAX'), value, ierror)
  call check(value > 10, 'PXFFPATHCONF')
  call pxfstructcreate('stat', handle, ierror)
  call pxffstat(fd, handle, ierror)
  call check(ierror, 0, 'PXFFSTAT')
  call pxfintget(handle, 'st_size', value, ierror)
  call check(value, 10, 'st_size')
  call pxfintget(handle, 'st_mode', mode, ierror)
  call check(mode, int(o'100644', 4), 'st_mode')
  call check(pxfisreg(mode), -1, 'PXFISREG')
  call check(pxfisdir(mode), 0, 'PXFISDIR')
  call check(pxfischr(mode), 0, 'PXFISCHR')
  call check(pxfisblk(mode), 0, 'PXFISBLK')
  call check(pxfisfifo(mode), 0, 'PXFISFIFO')
  call pxfclose(fd, ierror)

  call pxfaccess('file', 0, ipxfconst('R_OK'), ierror)
  call check(ierror, 0, 'PXFACCESS')
  call pxfchmod('file', 0, int(o'600', 4), ierror)
  call check(ierror, 0, 'PXFCHMOD')
  call pxfchown('file', 0, -1, -1, ierror)
  call check(ierror, 0, 'PXFCHOWN')
  call pxflink('file', 0, 'second  ', 0, ierror)
  call check(ierror, 0, 'PXFLINK')
  call pxfrename('second and', 6, 'third and', 5, ierror)
  call check(ierror, 0, 'PXFRENAME')
  call pxfstat('third   ', 99, handle, ierror)
  call check(ierror, 0, 'PXFSTAT')
  call pxfintget(handle, 'st_nlink', value, ierror)
  call check(value, 2, 'st_nlink')
  call pxfstructfree(handle, ierror)
  call pxfutime('third time', 0, 0, ierror)
  call check(ierror, 0, 'PXFUTIME')
  call pxfpathconf('third', 0, ipxfconst('_PC_NAME_MAX'), value, ierror)
  call check(ierror, 0, 'PXFPATHCONF')
  call pxfmkfifo('fifo', 0, int(o'600', 4), ierror)
  call check(ierror, 0, 'PXFMKFIFO')

  call pxfopendir('.', 0, stream, ierror)
  call check(ierror, 0, 'PXFOPENDIR')
  call pxfstructcreate('dirent', entry, ierror)
  call pxfreaddir(stream, entry, ierror)
  call pxfrewinddir(stream, ierror)
  call clear_errno()
  count = 0
  do
    call pxfreaddir(stream, entry, ierror)
    if (ierror /= 0) exit
    count = count + 1
  end do
  call check(ierror, end_of_directory, 'end of the directory')
  call check(count, 5, 'entries')
  call pxfclosedir(stream, ierror)
  call check(ierror, 0, 'PXFCLOSEDIR')
  call check(stream, 0, 'no handle')
  call pxfstructfree(entry, ierror)
  call pxfunlink('file', 0, ierror)
  call check(ierror, 0, 'PXFUNLINK')
  call pxfunlink('third', 0, ierror)
  call pxfunlink('fifo', 0, ierror)
  call pxfchdir(former, 0, ierror)
  call pxfrmdir(directory, 0, ierror)
  call check(ierror, 0, 'PXFRMDIR')

  call pxfstructcreate('termios', handle, ierror)
  call pxfpipe(fd, other, ierror)
  call check(ierror, 0, 'PXFPIPE')
  call pxftcgetattr(fd, handle, ierror)
  call check(ierror, enotty, 'PXFTCGETATTR')
  call pxftcsetattr(fd, 0, handle, ierror)
  call check(ierror, enotty, 'PXFTCSETATTR')
  call pxftcsendbreak(fd, 0, ierror)
  call check(ierror, enotty, 'PXFTCSENDBREAK')
  call pxftcdrain(fd, ierror)
  call check(ierror, enotty, 'PXFTCDRAIN')
  call pxftcflush(fd, 0, ierror)
  call check(ierror, enotty, 'PXFTCFLUSH')
  call pxftcflow(fd, 1, ierror)
  call check(ierror, enotty, 'PXFTCFLOW')
  call pxftcgetpgrp(fd, value, ierror)
  call check(ierror, enotty, 'PXFTCGETPGRP')
  call pxftcsetpgrp(fd, 1, ierror)
  call check(ierror, enotty, 'PXFTCSETPGRP')
  call pxfcfsetospeed(handle, ipxfconst('B300'), ierror)
  call check(ierror, 0, 'PXFCFSETOSPEED')
  call pxfcfgetospeed(handle, value, ierror)
  call check(value, ipxfconst('B300'), 'PXFCFGETOSPEED')
  call pxfcfsetispeed(handle, ipxfconst('B600'), ierror)
  call check(ierror, 0, 'PXFCFSETISPEED')
  call pxfcfgetispeed(handle, value, ierror)
  call check(value, ipxfconst('B600'), 'PXFCFGETISPEED')
  call pxfstructfree(handle, ierror)

  call pxfstructcreate('passwd', handle, ierror)
  ierror = -77
  call pxfgetpwuid(0, handle, ierror)
  call pxfgetpwnam('root  ', 0, handle, ierror)
  call check(ierror, -77, 'IERROR after lookups of a user')
  call pxfstrget(handle, 'pw_name', name, length, ierror)
  call check(name(1:length), 'root', 'pw_name')
  call pxfstructfree(handle, ierror)
  call pxfstructcreate('group', handle, ierror)
  ierror = -77
  call pxfgetgrgid(0, handle, ierror)
  call pxfgetgrnam('root', 4, handle, ierror)
  call check(ierror, -77, 'IERROR after lookups of a group')
  call pxfstrget(handle, 'gr_name', name, length, ierror)
  call check(name(1:length), 'root', 'gr_name')
  call pxfstructfree(handle, ierror)
  call check(ierror, 0, 'PXFSTRUCTFREE')
  call finish()

contains

  ! The end of a directory is told from a failure by errno, which keeps what an earlier failure left there.
  subroutine clear_errno()
    integer(c_int), pointer :: errno
    call c_f_pointer(errno_location(), errno)
    errno = 0
  end subroutine

end program
