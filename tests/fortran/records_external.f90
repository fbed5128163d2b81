! Records and procedure handles as older programs use them: by the routines' names alone.
program records_external
  use, intrinsic :: iso_c_binding, only: c_intptr_t
  use checks, only: check, finish
  implicit none
  external :: pxfaint8get, pxfaint8set, pxfaintget, pxfaintset, pxfeintget, pxfeintset, pxfestrget, &
    pxfestrset, pxfgetsubhandle, pxfint8get, pxfint8set, pxfintget, pxfintset, pxfstrget, pxfstrset, &
    pxfstructcopy, pxfstructcreate, pxfstructfree
  integer(4), external :: pxfcallsubhandle
  integer(8), external :: pxfcallsubhandlei8
  integer(4), parameter :: earraylen = 125, enoname = 126, enohandle = 127, etrunc = 129, erange = 34, einval = 22
  interface
    integer(4) function three_times(ival)
      integer(4), intent(inout) :: ival
    end function
    integer(8) function squared(ival)
      integer(8), intent(in) :: ival
    end function
  end interface

  call check_life()
  call check_numbers()
  call check_array()
  call check_texts()
  call check_copies()
  call check_procedures()
  call finish()

contains

  subroutine check_life()
    character(9), parameter :: kinds(11) = [character(9) :: 'sigset', 'sigaction', 'utsname', 'tms', 'dirent', 'stat', &
                                            'utimbuf', 'flock', 'termios', 'group', 'passwd']
    integer(4) :: handles(11), former, error, i
    do i = 1, size(kinds)
      error = -1
      call pxfstructcreate(kinds(i), handles(i), error)
      call check(error, 0, 'create '//kinds(i))
      if (storage_size(0_c_intptr_t) == 64) call check(handles(i), i, 'the handle of '//kinds(i))
    end do
    do i = 1, size(kinds)
      error = -1
      former = handles(i)
      call pxfstructfree(handles(i), error)
      call check(error, 0, 'free '//kinds(i))
      call check(handles(i), 0, 'the freed handle of '//kinds(i))
      call pxfstructfree(former, error)
      call check(error, enohandle, 'free a second time: '//kinds(i))
    end do
    call pxfstructcreate('stats', former, error)
    call check(error, enoname, 'create stats')
  end subroutine

  subroutine check_numbers()
    integer(4) :: record, value, error
    integer(8) :: wide
    call pxfstructcreate('STAT  ', record, error)
    call check(error, 0, 'create STAT')
    call pxfintset(record, 'st_mode', -5, error)
    call pxfintget(record, 'ST_Mode ', value, error)
    call check(value, -5, 'what was set')
    wide = 3000000000_8
    call pxfint8set(record, 'st_size', wide, error)
    call pxfintget(record, 'st_size', value, error)
    call check(error, erange, 'a size of 3 GB')
    wide = 0
    call pxfint8get(record, 'st_size', wide, error)
    call check(wide, 3000000000_8, 'a size of 3 GB into a zeroed integer(8)')
    call pxfintget(record, 'sa_mask', value, error)
    call check(error, enoname, 'a component of another kind')
    call pxfstructfree(record, error)
    call pxfintget(256, 'st_size', value, error)
    call check(error, enohandle, 'an unknown handle')
  end subroutine

  subroutine check_array()
    integer(4) :: record, array(32), length, value, error, i
    integer(8) :: wide(20)
    call pxfstructcreate('termios', record, error)
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
    wide = -7
    call pxfaint8set(record, 'c_cc', wide, 2, error)
    wide = 0
    call pxfaint8get(record, 'c_cc', wide, length, error)
    call check(all(wide(:3) == [-7, -7, 3]), 'elements of integer(8)')
    call pxfeintset(record, 'c_cc', 20, 99, error)
    call pxfeintget(record, 'c_cc', 20, value, error)
    call check(value, 99, 'the last element')
    call pxfeintget(record, 'c_cc', 21, value, error)
    call check(error, earraylen, 'element 21')
    call pxfstructfree(record, error)
  end subroutine

  subroutine check_texts()
    integer(4) :: record, length, error
    character(10) :: value
    character(3) :: short
    call pxfstructcreate('utsname', record, error)
    value = 'Darwin'
    call pxfstrset(record, 'sysname', value, 10, error)
    call check(error, 0, 'set a text')
    call pxfstrget(record, 'sysname', value, length, error)
    call check(length, 6, 'its length')
    call check(value, 'Darwin    ', 'the text')
    call pxfstrget(record, 'sysname', short, length, error)
    call check(error, etrunc, 'a short variable')
    call check(length, 6, 'the full length')
    call check(short, 'Dar', 'the cut text')
    call pxfstrset(record, 'sysname', 'abc', 4, error)
    call check(error, einval, 'a length above the variable''s')
    call pxfestrget(record, 'gr_mem', 1, value, length, error)
    call check(error, einval, 'members of no group')
    call pxfestrset(record, 'sysname', 1, value, length, error)
    call check(error, enoname, 'pxfestrset')
    call pxfstructfree(record, error)
  end subroutine

  subroutine check_copies()
    integer(4) :: source, destination, length, error
    character(8) :: value
    call pxfstructcreate('group', source, error)
    call pxfstructcreate('group', destination, error)
    call pxfstrset(source, 'gr_name', 'staff', 5, error)
    call pxfstructcopy('passwd', source, destination, error)
    call check(error, enoname, 'copy under another name')
    call pxfstructcopy('group', source, destination, error)
    call check(error, 0, 'copy')
    call pxfstructfree(source, error)
    call pxfstrget(destination, 'gr_name', value, length, error)
    call check(value, 'staff   ', 'what was copied')
    call pxfstructcopy('group', source, destination, error)
    call check(error, enohandle, 'copy of nothing')
    call pxfstructfree(destination, error)
  end subroutine

  subroutine check_procedures()
    integer(4) :: handle, value, answer, error
    call pxfgetsubhandle(three_times, handle, error)
    call check(error, 0, 'the handle of a procedure')
    value = 5
    answer = pxfcallsubhandle(handle, value, error)
    call check(error, 0, 'call it')
    call check(answer, 1015, 'what it answers')
    call check(value, 15, 'what it does to its argument')
    answer = pxfcallsubhandle(0, value, error)
    call check(error, enohandle, 'call nothing')
    call pxfgetsubhandle(squared, handle, error)
    call check(pxfcallsubhandlei8(handle, 3000000000_8, error), 9000000000000000000_8, 'a function of INTEGER(8)')
    call check(error, 0, 'call of one')
  end subroutine

end program

integer(8) function squared(ival)
  implicit none
  integer(8), intent(in) :: ival
  squared = ival * ival
end function

integer(4) function three_times(ival)
  implicit none
  integer(4), intent(inout) :: ival
  ival = 3*ival
  three_times = ival + 1000
end function
