! Files, directories, descriptors, terminals, users and groups through the module.
program posix_files
  use, intrinsic :: iso_c_binding, only: c_f_pointer, c_int, c_ptr
  use checks, only: check, finish
  use qxport
  implicit none
  integer(4), parameter :: enoent = 2, ebadf = 9, einval = 22, enotty = 25, enohandle = 127, end_of_directory = 128, &
    etrunc = 129
  interface
    function errno_location() bind(C, name='__errno_location') result(location)
      import :: c_ptr
      type(c_ptr) :: location
    end function
  end interface
  ! Values of the host that have no name among the constants.
  integer(4), parameter :: write_lock = 1, no_lock = 2
  character(:), allocatable :: directory
  character(4096) :: former
  integer(4) :: length, ierror

  call pxfgetcwd(former, length, ierror)
  call check(ierror, 0, 'PXFGETCWD at the start')
  call check(length, len_trim(former), 'length of the directory')
  call make_directory()
  call test_descriptors()
  call test_buffers_of_any_type()
  call test_names()
  call test_status()
  call test_times()
  call test_directory_streams()
  call test_getcwd()
  call test_fcntl()
  call test_terminals()
  call test_users()
  call test_groups()
  call pxfchdir(former, 0, ierror)
  call check(ierror, 0, 'PXFCHDIR back')
  call pxfrmdir(directory, 0, ierror)
  call check(ierror, 0, 'PXFRMDIR of the emptied directory')
  deallocate (directory)
  call finish()

contains

  ! The end of a directory is told from a failure by errno, which keeps what an earlier failure left there.
  subroutine clear_errno()
    integer(c_int), pointer :: errno
    call c_f_pointer(errno_location(), errno)
    errno = 0
  end subroutine

  subroutine make_directory()
    character(1024) :: base, name
    call getenv('TMPDIR', base)
    if (base == ' ') base = '/tmp'
    write (name, '(2a, i0)') trim(base), '/qxport.posix.', getpid()
    directory = trim(name)
    call pxfmkdir(name, 0, int(o'700', 4), ierror)
    call check(ierror, 0, 'PXFMKDIR')
    call pxfchdir(name, 0, ierror)
    call check(ierror, 0, 'PXFCHDIR')
  end subroutine

  integer(4) function constant(name)
    character(*), intent(in) :: name
    call pxfconst(name, constant, ierror)
    call check(ierror, 0, name)
  end function

  integer(4) function record(kind)
    character(*), intent(in) :: kind
    call pxfstructcreate(kind, record, ierror)
    call check(ierror, 0, 'record of ' // kind)
  end function

  subroutine release(handle)
    integer(4), intent(inout) :: handle
    call pxfstructfree(handle, ierror)
    call check(ierror, 0, 'PXFSTRUCTFREE')
  end subroutine

  subroutine make_file(name, text)
    character(*), intent(in) :: name, text
    integer(4) :: fd, count
    call pxfcreat(name, 0, int(o'644', 4), fd, ierror)
    call check(ierror, 0, 'PXFCREAT of ' // name)
    call pxfwrite(fd, text, len(text), count, ierror)
    call check(count, len(text), 'PXFWRITE to ' // name)
    call pxfclose(fd, ierror)
    call check(ierror, 0, 'PXFCLOSE of ' // name)
  end subroutine

  logical function exists(name)
    character(*), intent(in) :: name
    inquire (file=name, exist=exists)
  end function

  subroutine remove(name)
    character(*), intent(in) :: name
    call pxfunlink(name, len(name), ierror)
    call check(ierror, 0, 'PXFUNLINK of ' // name)
  end subroutine

  subroutine test_descriptors()
    integer(4) :: fd, other, count, position, reader, writer, mask
    character(8) :: text
    call make_file('data.txt', '0123456789')
    call pxfopen('data.txt   ', 0, constant('O_RDONLY'), 0, fd, ierror)
    call check(ierror, 0, 'PXFOPEN')
    text = '########'
    call pxfread(fd, text, 4, count, ierror)
    call check(ierror, 0, 'PXFREAD')
    call check(count, 4, 'bytes read')
    call check(text, '0123####', 'the bytes')
    call pxfread(fd, text, 0, count, ierror)
    call check(ierror, 0, 'PXFREAD of nothing')
    call check(count, 0, 'nothing read')
    call pxflseek(fd, -2, constant('SEEK_END'), position, ierror)
    call check(ierror, 0, 'PXFLSEEK')
    call check(position, 8, 'position')
    call pxfdup(fd, other, ierror)
    call check(ierror, 0, 'PXFDUP')
    call pxfread(other, text, 8, count, ierror)
    call check(text(1:count), '89', 'bytes through the second descriptor')
    call pxfdup2(fd, other, ierror)
    call check(ierror, 0, 'PXFDUP2')
    call pxfclose(fd, ierror)
    call check(ierror, 0, 'PXFCLOSE')
    call pxfclose(fd, ierror)
    call check(ierror, ebadf, 'PXFCLOSE again')
    call pxfclose(other, ierror)
    call pxfpipe(reader, writer, ierror)
    call check(ierror, 0, 'PXFPIPE')
    call pxfwrite(writer, 'through', 7, count, ierror)
    call check(count, 7, 'bytes into the pipe')
    call pxfread(reader, text, 8, count, ierror)
    call check(text(1:count), 'through', 'bytes out of the pipe')
    call pxfclose(reader, ierror)
    call pxfclose(writer, ierror)
    call pxfopen('missing', 0, constant('O_RDONLY'), 0, fd, ierror)
    call check(ierror, enoent, 'PXFOPEN of no file')
    call check(fd, -1, 'no descriptor')
    call pxfumask(int(o'027', 4), mask, ierror)
    call pxfumask(mask, mask, ierror)
    call check(ierror, 0, 'PXFUMASK')
    call check(mask, int(o'027', 4), 'mask')
    call remove('data.txt')
  end subroutine

  subroutine test_buffers_of_any_type()
    real(8) :: out(3), in(3)
    integer(4) :: fd, count, number
    out = [1.5d0, -2.25d0, 3.125d0]
    call pxfopen('binary', 0, ior(constant('O_RDWR'), constant('O_CREAT')), int(o'600', 4), fd, ierror)
    call pxfwrite(fd, out, 24, count, ierror)
    call check(count, 24, 'an array written')
    call pxflseek(fd, 0, constant('SEEK_SET'), count, ierror)
    in = 0
    call pxfread(fd, in, 24, count, ierror)
    call check(all(transfer(in, 0_8, 3) == transfer(out, 0_8, 3)), 'the array read')
    call pxflseek(fd, 4, constant('SEEK_SET'), count, ierror)
    number = 0
    call pxfread(fd, number, 4, count, ierror)
    call check(number, int(z'3FF80000', 4), 'half of a REAL(8) as an INTEGER(4)')
    call pxfclose(fd, ierror)
    call remove('binary')
  end subroutine

  subroutine test_names()
    integer(4) :: value
    call make_file('file', 'text')
    call pxfaccess('file  ', 0, constant('R_OK'), ierror)
    call check(ierror, 0, 'PXFACCESS')
    call pxfaccess('missing', 0, constant('F_OK'), ierror)
    call check(ierror, enoent, 'PXFACCESS of no file')
    call pxfaccess('file', -1, constant('F_OK'), ierror)
    call check(ierror, einval, 'PXFACCESS with a negative length')
    call pxfchmod('file', 4, int(o'600', 4), ierror)
    call check(ierror, 0, 'PXFCHMOD')
    call pxfchown('file', 0, -1, -1, ierror)
    call check(ierror, 0, 'PXFCHOWN')
    call pxflink('file', 0, 'second', 0, ierror)
    call check(ierror, 0, 'PXFLINK')
    call pxfrename('second   ', 0, 'third and more', 5, ierror)
    call check(ierror, 0, 'PXFRENAME')
    call check(exists('third'), 'the renamed file')
    call pxfmkfifo('fifo', 0, int(o'600', 4), ierror)
    call check(ierror, 0, 'PXFMKFIFO')
    call pxfpathconf('file', 4, constant('_PC_NAME_MAX'), value, ierror)
    call check(ierror, 0, 'PXFPATHCONF')
    call check(value > 10, 'a limit')
    call pxfpathconf('file', 5, constant('_PC_NAME_MAX'), value, ierror)
    call check(ierror, einval, 'PXFPATHCONF with a length beyond the variable')
    call remove('third')
    call remove('fifo')
    call remove('file')
  end subroutine

  subroutine test_status()
    integer(4) :: status, mode, links, uid, fd
    integer(8) :: size, inode
    logical(4) :: regular, is_directory
    call make_file('file', 'four')
    status = record('stat')
    call pxfstat('file', 3, status, ierror)
    call check(ierror, 0, 'PXFSTAT')
    call pxfint8get(status, 'st_size', size, ierror)
    call check(iand(size, int(z'FFFFFFFF', 8)), 4_8, 'st_size')
    call pxfintget(status, 'st_mode', mode, ierror)
    regular = pxfisreg(mode)
    is_directory = pxfisdir(mode)
    call check(regular, 'PXFISREG')
    call check(.not. is_directory, 'PXFISDIR of a file')
    call pxfintget(status, 'st_nlink', links, ierror)
    call check(links, 1, 'st_nlink')
    call pxfintget(status, 'st_uid', uid, ierror)
    call check(uid, getuid(), 'st_uid')
    call pxfint8get(status, 'st_ino', inode, ierror)
    call check(ierror, 0, 'st_ino')
    call pxfstat('.', 0, status, ierror)
    call pxfintget(status, 'st_mode', mode, ierror)
    call check(logical(pxfisdir(mode), 4) .eqv. .true., 'PXFISDIR')
    call check(.not. pxfisfifo(mode), 'PXFISFIFO of a directory')
    call pxfstat('/dev/null', 0, status, ierror)
    call pxfintget(status, 'st_mode', mode, ierror)
    call check(logical(pxfischr(mode)), 'PXFISCHR')
    call check(.not. pxfisblk(mode), 'PXFISBLK of a character device')
    call pxfopen('file', 0, constant('O_RDONLY'), 0, fd, ierror)
    call pxffstat(fd, status, ierror)
    call check(ierror, 0, 'PXFFSTAT')
    call pxfclose(fd, ierror)
    call pxfstat('file', 0, 0, ierror)
    call check(ierror, enohandle, 'PXFSTAT without a record')
    call release(status)
    status = record('dirent')
    call pxfstat('file', 0, status, ierror)
    call check(ierror, einval, 'PXFSTAT with a record for directories')
    call release(status)
    call remove('file')
  end subroutine

  subroutine test_times()
    integer(4) :: times, status, seconds
    call make_file('my', '')
    times = record('utimbuf')
    status = record('stat')
    call pxfintset(times, 'actime', 1000, ierror)
    call pxfintset(times, 'modtime', 2000, ierror)
    call pxfutime('my file', 0, times, ierror)
    call check(ierror, 0, 'PXFUTIME')
    call pxfstat('my', 0, status, ierror)
    call pxfintget(status, 'st_mtime', seconds, ierror)
    call check(seconds, 2000, 'st_mtime')
    call pxfintget(status, 'st_atime', seconds, ierror)
    call check(seconds, 1000, 'st_atime')
    call pxfutime('my', 0, 0, ierror)
    call pxfstat('my', 0, status, ierror)
    call pxfintget(status, 'st_mtime', seconds, ierror)
    call check(seconds > 1000000, 'now')
    call release(times)
    call release(status)
    call remove('my')
  end subroutine

  subroutine test_directory_streams()
    integer(4) :: stream, entry, count, length, former_handle
    character(256) :: first, name
    call make_file('one', '')
    call make_file('two', '')
    entry = record('dirent')
    call pxfopendir('. ', 0, stream, ierror)
    call check(ierror, 0, 'PXFOPENDIR')
    call clear_errno()
    count = 0
    do
      call pxfreaddir(stream, entry, ierror)
      if (ierror /= 0) exit
      count = count + 1
      call pxfstrget(entry, 'd_name', name, length, ierror)
      if (count == 1) first = name
      call check(any(name(1:length) == [character(3) :: '.', '..', 'one', 'two']), 'entry ' // name(1:length))
    end do
    call check(ierror, end_of_directory, 'end of the directory')
    call check(count, 4, 'entries')
    call pxfrewinddir(stream, ierror)
    call check(ierror, 0, 'PXFREWINDDIR')
    call pxfreaddir(stream, entry, ierror)
    call pxfstrget(entry, 'd_name', name, length, ierror)
    call check(name, first, 'the first entry again')
    former_handle = stream
    call pxfclosedir(stream, ierror)
    call check(ierror, 0, 'PXFCLOSEDIR')
    call check(stream, 0, 'no handle any more')
    call pxfreaddir(former_handle, entry, ierror)
    call check(ierror, enohandle, 'PXFREADDIR of a closed stream')
    call pxfclosedir(stream, ierror)
    call check(ierror, einval, 'PXFCLOSEDIR again')
    call pxfopendir('one', 0, stream, ierror)
    call check(ierror, 20, 'PXFOPENDIR of a file')
    call release(entry)
    call remove('one')
    call remove('two')
  end subroutine

  subroutine test_getcwd()
    character(len(directory)) :: exact
    character(len(directory) - 1) :: brief
    call pxfgetcwd(exact, length, ierror)
    call check(ierror, 0, 'PXFGETCWD')
    call check(length, len(exact), 'its length')
    call check(exact, directory, 'the directory')
    call pxfgetcwd(brief, length, ierror)
    call check(ierror, etrunc, 'PXFGETCWD cut')
    call check(length, 0, 'its length when cut')
    call check(brief, directory(1:len(brief)), 'the cut directory')
  end subroutine

  subroutine test_fcntl()
    integer(4) :: fd, lock, argument, answer, value
    call make_file('locked', '0123456789')
    call pxfopen('locked', 0, constant('O_RDWR'), 0, fd, ierror)
    argument = 100
    call pxffcntl(fd, constant('F_DUPFD'), argument, answer, ierror)
    call check(ierror, 0, 'F_DUPFD')
    call check(answer >= 100, 'a number from 100 on')
    call pxfclose(answer, ierror)
    call pxffcntl(fd, constant('F_DUPFD'), 200, answer, ierror)
    call check(ierror == 0 .and. answer >= 200, 'a literal as the argument')
    call pxffcntl(answer, constant('F_SETFD'), 2 - 1, value, ierror)
    call check(ierror, 0, 'an expression as the argument')
    call pxffcntl(answer, constant('F_GETFD'), 0, value, ierror)
    call check(value, 1, 'the flag that it set')
    call pxfclose(answer, ierror)
    lock = record('flock')
    call pxfintset(lock, 'l_type', write_lock, ierror)
    call pxfintset(lock, 'l_whence', constant('SEEK_SET'), ierror)
    call pxfintset(lock, 'l_len', 5, ierror)
    call pxffcntl(fd, constant('F_SETLK'), lock, answer, ierror)
    call check(ierror, 0, 'F_SETLK')
    call pxffcntl(fd, constant('F_GETLK'), lock, answer, ierror)
    call check(ierror, 0, 'F_GETLK')
    call pxfintget(lock, 'l_type', value, ierror)
    call check(value, no_lock, 'nobody else holds the lock')
    argument = 0
    call pxffcntl(fd, constant('F_GETLK'), argument, answer, ierror)
    call check(ierror, enohandle, 'F_GETLK without a record')
    call release(lock)
    call pxfclose(fd, ierror)
    call remove('locked')
  end subroutine

  subroutine test_terminals()
    integer(4) :: attributes, fd, speed, group
    attributes = record('termios')
    call pxfopen('/dev/null', 0, constant('O_RDWR'), 0, fd, ierror)
    call pxftcgetattr(fd, attributes, ierror)
    call check(ierror, enotty, 'PXFTCGETATTR of no terminal')
    call pxftcsetattr(fd, 0, attributes, ierror)
    call check(ierror, enotty, 'PXFTCSETATTR of no terminal')
    call pxftcsendbreak(fd, 0, ierror)
    call check(ierror, enotty, 'PXFTCSENDBREAK of no terminal')
    call pxftcdrain(fd, ierror)
    call check(ierror, enotty, 'PXFTCDRAIN of no terminal')
    call pxftcflush(fd, 0, ierror)
    call check(ierror, enotty, 'PXFTCFLUSH of no terminal')
    call pxftcflow(fd, 1, ierror)
    call check(ierror, enotty, 'PXFTCFLOW of no terminal')
    call pxftcgetpgrp(fd, group, ierror)
    call check(ierror, enotty, 'PXFTCGETPGRP of no terminal')
    call pxftcsetpgrp(fd, 1, ierror)
    call check(ierror, enotty, 'PXFTCSETPGRP of no terminal')
    call pxfclose(fd, ierror)
    call pxfcfsetospeed(attributes, constant('B9600'), ierror)
    call check(ierror, 0, 'PXFCFSETOSPEED')
    call pxfcfgetospeed(attributes, speed, ierror)
    call check(speed, constant('B9600'), 'PXFCFGETOSPEED')
    call pxfcfsetispeed(attributes, constant('B1200'), ierror)
    call check(ierror, 0, 'PXFCFSETISPEED')
    call pxfcfgetispeed(attributes, speed, ierror)
    call check(speed, constant('B1200'), 'PXFCFGETISPEED')
    call release(attributes)
    attributes = record('group')
    call pxfcfsetospeed(attributes, constant('B9600'), ierror)
    call check(ierror, einval, 'PXFCFSETOSPEED of a group')
    call release(attributes)
  end subroutine

  subroutine test_users()
    integer(4) :: user, uid, length
    character(64) :: name
    user = record('passwd')
    ierror = 0
    call pxfgetpwuid(0, user, ierror)
    call check(ierror, 0, 'PXFGETPWUID')
    call pxfstrget(user, 'pw_name', name, length, ierror)
    call check(length, 4, 'length of the name')
    call check(trim(name), 'root', 'the name')
    ierror = -77
    call pxfgetpwnam('root  ', 0, user, ierror)
    call check(ierror, -77, 'PXFGETPWNAM leaves IERROR')
    call pxfintget(user, 'pw_uid', uid, ierror)
    call check(uid, 0, 'pw_uid')
    call pxfstrget(user, 'pw_dir', name, length, ierror)
    call check(length > 0 .and. name(1:1) == '/', 'pw_dir')
    call pxfgetpwnam('root', 0, 0, ierror)
    call check(ierror, enohandle, 'PXFGETPWNAM without a record')
    call release(user)
  end subroutine

  subroutine test_groups()
    integer(4) :: group, gid, length
    character(64) :: name
    group = record('group')
    ierror = -77
    call pxfgetgrgid(0, group, ierror)
    call check(ierror, -77, 'PXFGETGRGID leaves IERROR')
    call pxfstrget(group, 'gr_name', name, length, ierror)
    call check(name(1:length), 'root', 'gr_name')
    ierror = -77
    call pxfgetgrnam('rootXYZ', 4, group, ierror)
    call check(ierror, -77, 'PXFGETGRNAM leaves IERROR')
    call pxfintget(group, 'gr_gid', gid, ierror)
    call check(gid, 0, 'gr_gid')
    call pxfgetgrgid(0, 0, ierror)
    call check(ierror, enohandle, 'PXFGETGRGID without a record')
    call release(group)
  end subroutine

end program
