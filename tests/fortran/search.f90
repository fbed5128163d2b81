! The file search through the module: enumeration, exact search and deletion.
program search
  use, intrinsic :: iso_c_binding, only: c_intptr_t
  use, intrinsic :: iso_fortran_env, only: int32
  use checks, only: check, finish
  use scratch, only: remove_directory, scratch_directory
  use qxport, only: file_info, file_info_i8, file_length, getfileinfoqq, getfileinfoqqi8, findfileqq, delfilesqq, &
                    FILE_SEARCH_BEGIN, FILE_SEARCH_END, FILE_SEARCH_ERROR, FILE_ATTRIBUTE_DIRECTORY, &
                    FILE_ATTRIBUTE_SYSTEM, FILE_ATTRIBUTE_READ_ONLY, getlasterrorqq, errsns, ierrno, chdir
  implicit none
  integer(4), parameter :: ENOENT = 2, EINVAL = 22
  character(:), allocatable, save :: directory

  directory = scratch_directory()
  call check(chdir(directory), 0, 'into the directory of the test')
  call run('mkdir sub list')
  call make('one.dat', 5)
  call make('two words.dat', 12)
  call make('.hidden.dat', 1)
  call make('list/prog', 1)
  call run('chmod 444 one.dat; mkfifo fifo')

  call check_constants()
  call check_layout()
  call check_default_record()
  call check_neighbours()
  call check_wide_record()
  call check_endings()
  call check_both_at_once()
  call check_other_handles()
  call check_find()
  call check_delete()

  call check(chdir('/'), 0, 'out of the directory of the test')
  call remove_directory(directory)
  call finish()

contains

  subroutine run(command)
    character(*), intent(in) :: command
    integer :: status
    call execute_command_line(command, exitstat=status)
    call check(status == 0, command)
  end subroutine

  subroutine make(name, length)
    character(*), intent(in) :: name
    integer, intent(in) :: length
    integer :: unit
    open (newunit=unit, file=name, access='stream', status='replace')
    write (unit) repeat('x', length)
    close (unit)
  end subroutine

  subroutine check_constants()
    call check(FILE_SEARCH_BEGIN == -1_c_intptr_t, 'FILE_SEARCH_BEGIN')
    call check(FILE_SEARCH_END == -2_c_intptr_t, 'FILE_SEARCH_END')
    call check(FILE_SEARCH_ERROR == -3_c_intptr_t, 'FILE_SEARCH_ERROR')
    call check(FILE_ATTRIBUTE_READ_ONLY, 1, 'FILE_ATTRIBUTE_READ_ONLY')
    call check(FILE_ATTRIBUTE_SYSTEM, 4, 'FILE_ATTRIBUTE_SYSTEM')
    call check(FILE_ATTRIBUTE_DIRECTORY, 16, 'FILE_ATTRIBUTE_DIRECTORY')
  end subroutine

  ! No gap before the last byte of the name; a compiler may pad behind it.
  subroutine check_layout()
    character(276) :: narrow
    character(280) :: wide
    narrow = transfer(file_info(1, 2, 3, 4, 5, 'first'//repeat('x', 249)//'!'), narrow)
    call check(narrow(21:275), 'first'//repeat('x', 249)//'!', 'place of the name in file_info')
    call check(transfer(narrow(17:20), 0_int32), 5, 'place of the attributes in file_info')
    wide = transfer(file_info_i8(1, 2, 3, [4, 5], 6, 'first'//repeat('x', 249)//'!'), wide)
    call check(wide(25:279), 'first'//repeat('x', 249)//'!', 'place of the name in file_info_i8')
    call check(transfer(wide(21:24), 0_int32), 6, 'place of the attributes in file_info_i8')
  end subroutine

  subroutine check_neighbours()
    type(file_info) :: infos(3)
    integer(c_intptr_t) :: handle
    infos = file_info(4711, 4711, 4711, 4711, 4711, '#')
    handle = FILE_SEARCH_BEGIN
    call check(getfileinfoqq('one.dat', infos(2), handle), 7, 'into an array')
    call check(infos(2)%length, 5, 'the element')
    call check(infos(1)%name == '#' .and. infos(3)%creation_time == 4711, 'its neighbours')
    call check(getfileinfoqq('one.dat', infos(2), handle), 0, 'no further entry')
  end subroutine

  subroutine check_default_record()
    type(file_info) :: info
    integer(c_intptr_t) :: handle
    info = file_info(4711, 0, 0, 0, 99, '#')
    handle = FILE_SEARCH_BEGIN
    call check(getfileinfoqq('two*.dat  ', info, handle), 13, 'length of the name')
    call check(info%name, 'two words.dat'//repeat(' ', 242), 'name')
    call check(info%creation_time, 4711, 'creation time is the caller''s')
    call check(info%last_write_time > 0 .and. info%last_access_time > 0, 'times of the file')
    call check(info%length, 12, 'length of the file')
    call check(info%attributes, 0, 'attributes of a file')
    call check(handle /= FILE_SEARCH_BEGIN .and. handle /= FILE_SEARCH_END .and. handle /= FILE_SEARCH_ERROR, &
               'handle of a search under way')
    call check(getfileinfoqq('two*.dat  ', info, handle), 0, 'no further entry')
    call check(handle /= FILE_SEARCH_BEGIN, 'handle behind the end')

    call attributes_of('sub', FILE_ATTRIBUTE_DIRECTORY)
    call attributes_of('fifo', FILE_ATTRIBUTE_SYSTEM)
    call attributes_of('one.dat', 0)
  end subroutine

  subroutine attributes_of(name, expected)
    character(*), intent(in) :: name
    integer(4), intent(in) :: expected
    type(file_info) :: info
    integer(c_intptr_t) :: handle
    handle = FILE_SEARCH_BEGIN
    call check(getfileinfoqq(name, info, handle), len(name), name)
    call check(info%attributes, expected, 'attributes of '//name)
    call check(getfileinfoqq(name, info, handle), 0, 'end behind '//name)
  end subroutine

  subroutine check_wide_record()
    type(file_info_i8) :: info
    integer(c_intptr_t) :: handle
    integer :: count
    integer(8) :: total
    call run('truncate -s 5368709127 large')
    handle = FILE_SEARCH_BEGIN
    info = file_info_i8(4711, 0, 0, [0, 0], 99, '#')
    call check(getfileinfoqqi8('large', info, handle), 5, 'length of the name')
    call check(file_length(info), 5368709127_8, 'length of a large file')
    call check(info%creation_time /= 4711, 'creation time is written')
    call check(info%attributes, 0, 'attributes of a file that may be written')
    call check(getfileinfoqqi8('large', info, handle), 0, 'no further entry')
    call run('rm large')

    count = 0
    total = 0
    handle = FILE_SEARCH_BEGIN
    do while (getfileinfoqqi8('*.dat', info, handle) > 0)
      count = count + 1
      total = total + file_length(info)
      if (info%name == 'one.dat') call check(info%attributes, FILE_ATTRIBUTE_READ_ONLY, 'attributes of one.dat')
    end do
    call check(count, 3, 'files *.dat, the hidden one too')
    call check(total, 18_8, 'their bytes')
  end subroutine

  subroutine check_endings()
    type(file_info) :: info
    integer(c_intptr_t) :: handle
    integer(4) :: length, error, io, number, status, unit, condition
    handle = FILE_SEARCH_BEGIN
    length = getfileinfoqq('missing/*', info, handle)
    error = getlasterrorqq()
    call errsns(io, number, status, unit, condition)
    call check(length, 0, 'missing directory')
    call check(handle == FILE_SEARCH_ERROR, 'handle of a missing directory')
    call check(error, ENOENT, 'errno of a missing directory')
    call check(number, ENOENT, 'status of a missing directory')
    call check(ierrno(), 0, 'ierrno is not concerned')

    ! errno is 2 from here, so the end reads as a normal one.
    handle = FILE_SEARCH_BEGIN
    call check(getfileinfoqq('sub/', info, handle), 0, 'empty pattern')
    call check(handle == FILE_SEARCH_END, 'handle of an empty pattern')
    call check(getfileinfoqq('sub/', info, handle), 0, 'a search that has ended')
    call check(handle == FILE_SEARCH_ERROR, 'handle of a search that has ended')
    handle = FILE_SEARCH_BEGIN
    call check(getfileinfoqq('/tmp', info, handle), 0, 'the root directory')
    call check(handle == FILE_SEARCH_ERROR, 'handle of the root directory')
  end subroutine

  subroutine check_both_at_once()
    type(file_info) :: narrow
    type(file_info_i8) :: wide
    integer(c_intptr_t) :: narrow_handle, wide_handle
    integer(4) :: length
    integer :: pairs
    narrow_handle = FILE_SEARCH_BEGIN
    wide_handle = FILE_SEARCH_BEGIN
    pairs = 0
    do
      if (getfileinfoqq('*.dat', narrow, narrow_handle) == 0) exit
      length = getfileinfoqqi8('*.dat', wide, wide_handle)
      call check(wide%name, narrow%name, 'both yield the same')
      pairs = pairs + 1
    end do
    length = getfileinfoqqi8('*.dat', wide, wide_handle)
    call check(length, 0, 'both end together')
    call check(pairs, 3, 'pairs of entries')
  end subroutine

  ! A handle of the kind that is not the size of an address.
  subroutine check_other_handles()
    integer(c_intptr_t) :: address
    integer(merge(4, 8, c_intptr_t == 8)) :: handles(3), former
    type(file_info) :: info
    type(file_info_i8) :: wide
    integer :: count
    handles = [77, int(FILE_SEARCH_BEGIN), 77]
    count = 0
    do while (getfileinfoqq('*.dat', info, handles(2)) > 0)
      count = count + 1
      former = handles(2)
    end do
    call check(count, 3, 'entries by the other handle')
    call check(handles(2) == FILE_SEARCH_END, 'the other handle at the end')
    call check(handles(1) == 77 .and. handles(3) == 77, 'nothing beside the other handle')
    handles(2) = former
    call check(getfileinfoqq('*.dat', info, handles(2)), 0, 'another handle whose search has ended')
    call check(handles(2) == FILE_SEARCH_ERROR, 'the handle then')
    handles(2) = int(FILE_SEARCH_BEGIN)
    count = 0
    do while (getfileinfoqqi8('*.dat', wide, handles(2)) > 0)
      count = count + 1
    end do
    call check(count, 3, 'wide entries by the other handle')
    ! One search that is given up, another beside it: their handles differ.
    handles = int(FILE_SEARCH_BEGIN)
    count = getfileinfoqq('*.dat', info, handles(1))
    count = getfileinfoqq('*.dat', info, handles(2))
    call check(handles(1) /= handles(2), 'handles of two searches')
    do while (getfileinfoqq('*.dat', info, handles(2)) > 0)
    end do
    do while (getfileinfoqq('*.dat', info, handles(1)) > 0)
    end do
    handles(1) = int(FILE_SEARCH_BEGIN)
    call check(getfileinfoqq('/no/such/place/*', info, handles(1)), 0, 'a directory that is not there')
    call check(handles(1) == FILE_SEARCH_ERROR, 'the other handle then')
    address = FILE_SEARCH_BEGIN
    call check(getfileinfoqq('one.dat', info, address) > 0, 'the usual handle beside it')
    do while (getfileinfoqq('one.dat', info, address) > 0)
    end do
  end subroutine

  subroutine check_find()
    character(20) :: path
    character(5) :: short
    integer(4) :: length, error
    call check(findfileqq('one.dat', 'NO_SUCH_VARIABLE', path), 9, 'in the current directory')
    call check(path, './one.dat           ', 'its path')
    call check(findfileqq('prog', 'NO_SUCH_VARIABLE', path), 0, 'nowhere')
    call check(path, repeat(' ', 20), 'path of nothing')
    call check(findfileqq('list/prog', 'NO_SUCH_VARIABLE', path), 9, 'in its directory')
    length = findfileqq('list/prog', 'NO_SUCH_VARIABLE', short)
    error = getlasterrorqq()
    call check(length, 5, 'length of a truncated path')
    call check(short, 'list/', 'a truncated path')
    call check(error, EINVAL, 'errno of a truncated path')
    call check(findfileqq('sh', 'PATH', path) > 0, 'the shell along PATH')
    call check(index(path, '/sh ') > 0, 'path of the shell')
  end subroutine

  subroutine check_delete()
    logical :: present
    call check(delfilesqq('missing/*'), 0, 'delete in a missing directory')
    call check(delfilesqq('two*'), 1, 'delete by a pattern')
    inquire (file='two words.dat', exist=present)
    call check(.not. present, 'the file is gone')
    call check(delfilesqq('*'), 2, 'delete all files')
    inquire (file='fifo', exist=present)
    call check(present, 'a FIFO stays')
    call check(delfilesqq(directory//'/list/*'), 1, 'delete elsewhere')
    inquire (file='list', exist=present)
    call check(present, 'still in the directory of the test')
  end subroutine

end program
