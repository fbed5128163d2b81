! The file search as older programs call it: by name alone, with records of their own.
program search_external
  use, intrinsic :: iso_c_binding, only: c_intptr_t
  use, intrinsic :: iso_fortran_env, only: int8
  use checks, only: check, finish
  use scratch, only: quoted, remove_directory, scratch_directory
  implicit none

  type :: fileinfo
    sequence
    integer(4) :: creation
    integer(4) :: lastwrite
    integer(4) :: lastaccess
    integer(4) :: length
    integer(4) :: permit
    character(255) :: name
  end type

  integer(4), external :: delfilesqq, findfileqq, getfileinfoqq, getfileinfoqqi8
  integer(4), external :: GETFILEINFOQQ_OTHER, GETFILEINFOQQI8_OTHER
  integer(8), external :: file_length
  character(:), allocatable, save :: directory

  directory = scratch_directory()
  call run('cd '//quoted(directory)//' && mkdir sub && printf 12345 >file && chmod 444 file')

  call check_record()
  call check_bytes()
  call check_other_handles()
  call check_find()
  call check_delete()

  call remove_directory(directory)
  call finish()

contains

  subroutine run(command)
    character(*), intent(in) :: command
    integer :: status
    call execute_command_line(command, exitstat=status)
    call check(status == 0, command)
  end subroutine

  subroutine check_record()
    type(fileinfo) :: info
    integer(c_intptr_t) :: handle
    logical :: seen_file, seen_directory
    integer :: count
    info = fileinfo(4711, 0, 0, 0, 99, '#')
    handle = -1
    count = 0
    seen_file = .false.
    seen_directory = .false.
    do while (getfileinfoqq(directory//'/*', info, handle) > 0)
      count = count + 1
      call check(handle /= -1 .and. handle /= -2 .and. handle /= -3, 'handle under way')
      call check(info%creation, 4711, 'creation time is the caller''s')
      if (info%name == 'file') seen_file = info%length == 5 .and. info%permit == 0 .and. info%lastwrite > 0
      if (info%name == 'sub') seen_directory = info%permit == 16
    end do
    call check(count, 4, 'entries, with . and ..')
    call check(seen_file, 'the file')
    call check(seen_directory, 'the directory')
    handle = -1
    call check(getfileinfoqq('/no-such-directory/*', info, handle), 0, 'missing directory')
    call check(handle == -3, 'handle of a missing directory')
  end subroutine

  ! Those that the module has for handles of the kind that is not the size of an address.
  subroutine check_other_handles()
    integer(int8) :: bytes(279)
    type(fileinfo) :: info
    integer(OTHER_KIND) :: handle
    handle = -1
    call check(GETFILEINFOQQ_OTHER(directory//'/f*', info, handle), 4, 'length of the name by the other handle')
    call check(GETFILEINFOQQ_OTHER(directory//'/f*', info, handle), 0, 'nothing more by the other handle')
    call check(handle == -2 .or. handle == -3, 'the other handle at the end')
    handle = -1
    call check(GETFILEINFOQQI8_OTHER(directory//'/f*', bytes, handle), 4, 'wide, by the other handle')
    call check(GETFILEINFOQQI8_OTHER(directory//'/f*', bytes, handle), 0, 'nothing more of the wide ones')
  end subroutine

  ! The wide record as 279 bytes, taken apart by hand.
  subroutine check_bytes()
    integer(int8) :: bytes(0:280)
    integer(c_intptr_t) :: handle
    character(255) :: name
    bytes = 99
    handle = -1
    call check(getfileinfoqqi8(directory//'/f*', bytes(1:279), handle), 4, 'length of the name')
    call check(transfer(bytes(1:4), 0) /= 1667457891, 'creation time is written')
    call check(transfer(bytes(5:8), 0) > 0, 'last-write time')
    call check(transfer(bytes(9:12), 0) > 0, 'last-access time')
    call check(transfer(bytes(13:20), 0_8), 5_8, 'length')
    call check(file_length(bytes(1:279)), 5_8, 'file_length')
    call check(transfer(bytes(21:24), 0), 1, 'read-only')
    name = transfer(bytes(25:279), name)
    call check(name, 'file'//repeat(' ', 251), 'name')
    call check(bytes(0) == 99 .and. bytes(280) == 99, 'nothing is written beside the record')
    call check(getfileinfoqqi8(directory//'/f*', bytes(1:279), handle), 0, 'no further entry')
  end subroutine

  subroutine check_find()
    character(len(directory) + 20) :: path
    call check(findfileqq(directory//'/file', 'NO_SUCH_VARIABLE', path), len(directory) + 5, 'found')
    call check(trim(path), directory//'/file', 'its path')
    call check(findfileqq('no-such-file', 'NO_SUCH_VARIABLE', path), 0, 'not found')
    call check(path == '', 'path of nothing')
  end subroutine

  subroutine check_delete()
    logical :: present
    call check(delfilesqq(directory//'/f*'), 1, 'delete by a pattern')
    inquire (file=directory//'/file', exist=present)
    call check(.not. present, 'the file is gone')
    call check(delfilesqq(directory//'/*'), 0, 'a directory stays')
  end subroutine

end program
