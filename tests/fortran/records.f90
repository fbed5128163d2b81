! Records through the module: all eleven kinds made, set, read, copied and freed.
program records
  use, intrinsic :: iso_c_binding, only: c_intptr_t
  use checks, only: check, finish
  use qxport, only: pxfaint8get, pxfaint8set, pxfaintget, pxfaintset, pxfeintget, pxfeintset, pxfestrget, &
    pxfint8get, pxfint8set, pxfintget, pxfintset, pxfstrget, pxfstrset, pxfstructcopy, &
    pxfstructcreate, pxfstructfree
  implicit none
  integer(4), parameter :: earraylen = 125, enoname = 126, enohandle = 127, etrunc = 129, erange = 34, einval = 22
  logical, parameter :: handles_are_places = storage_size(0_c_intptr_t) == 64

  call check_handles()
  call check_names()
  call check_numbers('sigaction', [character(10) :: 'sa_handler', 'sa_mask', 'sa_flags'])
  call check_numbers('tms', [character(10) :: 'tms_utime', 'tms_stime', 'tms_cutime', 'tms_cstime'])
  call check_numbers('stat', [character(10) :: 'st_mode', 'st_ino', 'st_dev', 'st_nlink', 'st_uid', 'st_gid', &
                              'st_size', 'st_atime', 'st_mtime', 'st_ctime'])
  call check_numbers('utimbuf', [character(10) :: 'actime', 'modtime'])
  call check_numbers('flock', [character(10) :: 'l_type', 'l_whence', 'l_start', 'l_len', 'l_pid'])
  call check_numbers('termios', [character(10) :: 'c_iflag', 'c_oflag', 'c_cflag', 'c_lflag'])
  call check_numbers('group', [character(10) :: 'gr_gid'])
  call check_numbers('passwd', [character(10) :: 'pw_uid', 'pw_gid'])
  call check_texts('utsname', [character(10) :: 'sysname', 'nodename', 'release', 'version', 'machine'])
  call check_texts('dirent', [character(10) :: 'd_name'])
  call check_texts('group', [character(10) :: 'gr_name'])
  call check_texts('passwd', [character(10) :: 'pw_name', 'pw_dir', 'pw_shell'])
  call check_wide_numbers()
  call check_array()
  call check_long_texts()
  call check_members()
  call check_copies()
  call check_refusals()
  call finish()

contains

  integer(4) function made(structure)
    character(*), intent(in) :: structure
    integer(4) :: error
    error = -1
    call pxfstructcreate(structure, made, error)
    call check(error, 0, 'create '//structure)
  end function

  subroutine release(record)
    integer(4), intent(inout) :: record
    integer(4) :: error
    error = -1
    call pxfstructfree(record, error)
    call check(error, 0, 'free')
    call check(record, 0, 'the handle after a free')
  end subroutine

  subroutine check_handles()
    integer(4) :: first, second, third, error, stale
    first = made('sigset')
    second = made('sigset')
    third = made('sigset')
    if (handles_are_places) then
      call check(first == 1 .and. second == 2 .and. third == 3, 'the first three records')
    end if
    stale = second
    call release(second)
    call pxfstructfree(second, error)
    call check(error, enohandle, 'free 0')
    second = stale
    call pxfstructfree(second, error)
    call check(error, enohandle, 'free twice')
    call check(second, stale, 'the handle of a refused free stays')
    second = made('sigset')
    if (handles_are_places) call check(second, 2, 'the freed handle comes next')
    call release(first)
    call release(second)
    call release(third)
  end subroutine

  subroutine check_names()
    character(10) :: padded
    integer(4) :: record, error, value
    padded = 'StaT'
    record = made(padded)
    call release(record)
    record = made('stat  x')
    padded = 'ST_SIZE'
    call pxfintset(record, padded, 77, error)
    call check(error, 0, 'a padded name in capitals')
    call pxfintget(record, 'st_size x', value, error)
    call check(value, 77, 'a name ends at its first blank')
    call pxfintget(record, ' st_size', value, error)
    call check(error, enoname, 'a name that begins with a blank')
    call pxfintget(record, 'sa_mask', value, error)
    call check(error, enoname, 'a component of another kind')
    call pxfintget(record, repeat('x', 10000), value, error)
    call check(error, enoname, 'a name of 10,000 characters')
    call release(record)
    record = 4711
    call pxfstructcreate('stats', record, error)
    call check(error, enoname, 'create stats')
    call pxfstructcreate('', record, error)
    call check(error, enoname, 'create nothing')
  end subroutine

  subroutine check_numbers(structure, names)
    character(*), intent(in) :: structure, names(:)
    integer(4) :: record, error, value, i
    integer(8) :: wide
    record = made(structure)
    do i = 1, size(names)
      call pxfintget(record, names(i), value, error)
      call check(error, 0, names(i)//': get')
      call check(value, 0, names(i)//' is 0 at first')
    end do
    do i = 1, size(names)
      call pxfintset(record, names(i), -100*i, error)
      call check(error, 0, names(i)//': set')
    end do
    do i = 1, size(names)
      value = 4711
      call pxfintget(record, names(i), value, error)
      call check(value, -100*i, names(i)//': what was set')
      wide = 0
      call pxfint8get(record, names(i), wide, error)
      call check(error, 0, names(i)//': get into an integer(8)')
      call check(wide, 2_8**32 - 100_8*i, names(i)//': the low 32 bits')
      call pxfint8set(record, names(i), 1000_8*i, error)
      call check(error, 0, names(i)//': set from an integer(8)')
      call pxfintget(record, names(i), value, error)
      call check(value, 1000*i, names(i)//': what was set from an integer(8)')
    end do
    call release(record)
  end subroutine

  subroutine check_texts(structure, names)
    character(*), intent(in) :: structure, names(:)
    integer(4) :: record, error, length, i
    character(10) :: value
    character(3) :: short
    record = made(structure)
    do i = 1, size(names)
      call pxfstrget(record, names(i), value, length, error)
      call check(error, 0, names(i)//': get')
      call check(length, 0, names(i)//' is empty at first')
      call check(value, repeat(' ', 10), names(i)//': blanks')
      value = 'Darwin'
      call pxfstrset(record, names(i), value, len(value), error)
      call check(error, 0, names(i)//': set')
    end do
    do i = 1, size(names)
      call pxfstrget(record, names(i), value, length, error)
      call check(error, 0, names(i)//': get what was set')
      call check(length, 6, names(i)//': its length')
      call check(value, 'Darwin    ', names(i)//': blank-padded')
      call pxfstrget(record, names(i), short, length, error)
      call check(error, etrunc, names(i)//': get into a short variable')
      call check(length, 6, names(i)//': its full length')
      call check(short, 'Dar', names(i)//': cut')
      call pxfstrset(record, names(i), 'abc', 4, error)
      call check(error, einval, names(i)//': a length above the variable''s')
      call pxfstrset(record, names(i), 'abc', -1, error)
      call check(error, einval, names(i)//': a negative length')
    end do
    call release(record)
    call pxfstrset(0, names(1), 'abc', 4, error)
    call check(error, einval, 'the length is looked at before the handle')
  end subroutine

  subroutine check_wide_numbers()
    integer(4) :: record, error, value
    integer(8) :: wide
    record = made('stat')
    call pxfint8set(record, 'st_size', 3000000000_8, error)
    value = 4711
    call pxfintget(record, 'st_size', value, error)
    call check(error, erange, 'a size of 3 GB')
    call check(value, 0, 'a size of 3 GB gives 0')
    wide = 0
    call pxfint8get(record, 'st_size', wide, error)
    call check(wide, 3000000000_8, 'a size of 3 GB into a zeroed integer(8)')
    call pxfint8set(record, 'st_size', 2_8**32 + 5, error)
    wide = 0
    call pxfint8get(record, 'st_size', wide, error)
    call check(wide, 5_8, 'the low 32 bits of 2**32 + 5')
    wide = 7*2_8**32
    call pxfint8get(record, 'st_size', wide, error)
    call check(wide, 7*2_8**32 + 5, 'the upper half of the variable stays')
    call release(record)
  end subroutine

  subroutine check_array()
    integer(4) :: record, error, length, value, i
    integer(4) :: array(32)
    integer(8) :: wide(32)
    record = made('termios')
    array = [(i, i=1, 32)]
    length = 32
    call pxfaintset(record, 'c_cc', array, length, error)
    call check(error, earraylen, 'set 32 elements')
    call check(length, 32, 'ialen of a set stays')
    array = -1
    call pxfaintget(record, 'c_cc', array, length, error)
    call check(error, earraylen, 'get 32 elements')
    call check(length, 20, 'ialen of a get')
    call check(all(array(:20) == [(i, i=1, 20)]) .and. all(array(21:) == -1), 'twenty elements')
    wide = -1
    length = 3
    call pxfaint8get(record, 'C_CC', wide, length, error)
    call check(error, 0, 'get three elements')
    call check(all(wide(:3) == [1, 2, 3]) .and. all(wide(4:) == -1), 'three elements')
    wide = 2_8**32 + 9
    call pxfaint8set(record, 'c_cc', wide, 2, error)
    call check(error, 0, 'set two elements')
    call pxfeintget(record, 'c_cc', 2, value, error)
    call check(value, 9, 'the second element')
    call pxfeintget(record, 'c_cc', 3, value, error)
    call check(value, 3, 'the third element')
    call pxfeintset(record, 'c_cc', 20, 99, error)
    call check(error, 0, 'set the last element')
    call pxfeintget(record, 'c_cc', 20, value, error)
    call check(value, 99, 'the last element')
    call pxfeintget(record, 'c_cc', 0, value, error)
    call check(error, earraylen, 'element 0')
    call pxfeintset(record, 'c_cc', 21, value, error)
    call check(error, earraylen, 'element 21')
    call release(record)
  end subroutine

  subroutine check_long_texts()
    integer(4) :: record, error, length
    character(300) :: value
    record = made('utsname')
    call pxfstrset(record, 'nodename', 'node', 4, error)
    call pxfstrset(record, 'sysname', repeat('s', 256), 256, error)
    call check(error, 0, 'a sysname of 256 characters')
    call pxfstrget(record, 'sysname', value, length, error)
    call check(length, 256, 'the length of the sysname')
    call pxfstrget(record, 'nodename', value, length, error)
    call check(length, 0, 'it ends on the first character of nodename')
    call pxfstrset(record, 'release', repeat('r', 256), 256, error)
    call check(error, etrunc, 'a release of 256 characters')
    call pxfstrget(record, 'release', value, length, error)
    call check(length, 255, 'the release is cut')
    call release(record)
    record = made('passwd')
    call pxfstrset(record, 'pw_dir', repeat('d', 10000)//'  ', 10002, error)
    call check(error, 0, 'a directory of 10,000 characters')
    call pxfstrget(record, 'pw_dir', value, length, error)
    call check(error, etrunc, 'get 300 characters of it')
    call check(length, 10000, 'its length')
    call check(value, repeat('d', 300), 'its first characters')
    call release(record)
  end subroutine

  subroutine check_members()
    integer(4) :: record, error, value, length
    character(8) :: text
    record = made('group')
    call pxfintget(record, 'gr_nmem', value, error)
    call check(error, 0, 'gr_nmem')
    call check(value, 0, 'no members')
    call pxfintset(record, 'gr_nmem', 3, error)
    call check(error, enoname, 'gr_nmem cannot be set')
    text = 'former'
    call pxfestrget(record, 'gr_mem', 1, text, length, error)
    call check(error, earraylen, 'member 1 of none')
    call check(text, 'former  ', 'a refused get leaves the variable')
    call release(record)
    record = made('passwd')
    call pxfestrget(record, 'gr_mem', 1, text, length, error)
    call check(error, einval, 'members of a passwd record')
    call release(record)
  end subroutine

  subroutine check_copies()
    character(9), parameter :: kinds(11) = [character(9) :: 'sigset', 'sigaction', 'utsname', 'tms', 'dirent', 'stat', &
                                            'utimbuf', 'flock', 'termios', 'group', 'passwd']
    integer(4) :: source, destination, error, i, j, length, value
    character(8) :: text
    do i = 1, size(kinds)
      source = made(kinds(i))
      do j = 1, size(kinds)
        destination = made(kinds(j))
        call pxfstructcopy(kinds(i), source, destination, error)
        call check(error, merge(0, einval, i == j), 'copy '//kinds(i)//' to '//kinds(j))
        call release(destination)
      end do
      call pxfstructcopy(kinds(i), source, source, error)
      call check(error, 0, 'copy a '//kinds(i)//' onto itself')
      call pxfstructcopy(kinds(mod(i, 11) + 1), source, source, error)
      call check(error, enoname, 'copy a '//kinds(i)//' under another name')
      call pxfstructcopy(kinds(i), source, 0, error)
      call check(error, enohandle, 'copy a '//kinds(i)//' to nothing')
      call release(source)
    end do
    source = made('passwd')
    destination = made('passwd')
    call pxfstrset(source, 'pw_name', 'ann', 3, error)
    call pxfintset(source, 'pw_uid', 1000, error)
    call pxfstrset(destination, 'pw_shell', '/bin/sh', 7, error)
    call pxfstructcopy('PASSWD', source, destination, error)
    call release(source)
    call pxfstrget(destination, 'pw_name', text, length, error)
    call check(text, 'ann     ', 'the copy keeps its strings')
    call pxfintget(destination, 'pw_uid', value, error)
    call check(value, 1000, 'the copy of a number')
    call pxfstrget(destination, 'pw_shell', text, length, error)
    call check(length, 0, 'the copy of an absent string')
    call release(destination)
  end subroutine

  subroutine check_refusals()
    integer(4) :: record, error, value
    do record = 0, 512, 256
      call pxfintget(record, 'st_size', value, error)
      call check(error, enohandle, 'get from an unknown handle')
      call pxfintset(record, 'st_size', 1, error)
      call check(error, enohandle, 'set with an unknown handle')
    end do
    record = made('sigset')
    call pxfintget(record, 'mask', value, error)
    call check(error, enoname, 'a sigset has no components')
    call release(record)
  end subroutine

end program
