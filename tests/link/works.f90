! A little of each area, the program's own unit included: it ends with 0 when all of it works.
program works
  use, intrinsic :: iso_c_binding, only: c_intptr_t
  use qxport, only: access, errsns, file_info_i8, file_length, findfileqq, for_qxport_version, fstat, getcwd, &
    getfileinfoqqi8, ierrno, stat, FILE_SEARCH_BEGIN, FILE_SEARCH_END, STAT_SIZE
  implicit none
  character(*), parameter :: name = 'a file.txt'
  character(1024) :: directory, found
  character(100) :: identity
  type(file_info_i8) :: info
  integer(c_intptr_t) :: handle
  integer(4) :: status(13), unit_status(13), io, number, run_time_status, error_unit, condition
  integer :: unit, length

  length = for_qxport_version(identity)
  call expect(identity(1:5) == 'Zelta', 'the identity')
  call expect(getcwd(directory) == 0 .and. directory(1:1) == '/', 'the working directory')

  open (newunit=unit, file=name, status='replace', action='write')
  write (unit, '(a)') '123456789'
  flush (unit)
  call expect(fstat(unit, unit_status) == 0, 'the status of a unit')
  call expect(stat(name, status) == 0, 'the status of a file')
  call expect(status(STAT_SIZE) == 10 .and. unit_status(STAT_SIZE) == 10, 'the size in both')
  call expect(findfileqq(name, 'PATH', found) == 12 .and. found == './'//name, 'the file by its name')

  handle = FILE_SEARCH_BEGIN
  length = getfileinfoqqi8('a f*.t?t', info, handle)
  call expect(length == 10 .and. info%name == name .and. file_length(info) == 10, 'the file by a pattern')
  length = getfileinfoqqi8('a f*.t?t', info, handle)
  call expect(length == 0 .and. handle == FILE_SEARCH_END, 'the end of the search')

  close (unit, status='delete')
  call expect(access(name, 'r') == 22 .and. ierrno() == 22, 'the file that is gone')
  call errsns(io, number, run_time_status, error_unit, condition)
  call expect(number == 22, 'the recorded error')

contains

  subroutine expect(holds, what)
    logical, intent(in) :: holds
    character(*), intent(in) :: what
    if (holds) return
    print '(2a)', 'wrong: ', what
    error stop
  end subroutine

end program
