#line 1 "src/core/gnu/units.f90"
! The units of the GNU Fortran run-time as its users reach them: INQUIRE, OPEN and the documented extensions. No private
! interface of the run-time is relied on, so any release of it serves.
module qxcore_gnu_units
  use, intrinsic :: iso_c_binding, only: c_bool, c_char, c_int32_t, c_int64_t, c_intptr_t
  implicit none
  private
  integer, parameter :: longest_path = 4096

contains

  subroutine end_program(status) bind(C, name='qxcore_gnu_exit')
    integer(c_int32_t), value :: status
    call exit(status)
  end subroutine

  ! A negative number may be one of the run-time's own, kept for internal files: it looks open, but FNUM, FGETC and other
  ! inquiries crash on it. It alone denies sharing; a unit that NEWUNIT made does not. This is asked before every
  ! character, so it asks for no more than it needs.
  function is_open(unit) bind(C, name='qxcore_gnu_is_open') result(answer)
    integer(c_int32_t), value :: unit
    logical(c_bool) :: answer
    integer :: status
    character(6) :: share
    inquire (unit=unit, share=share, iostat=status)
    answer = status == 0 .and. share /= 'DENYRW' .and. share /= 'UNKNOW'
  end function

  function descriptor(unit) bind(C, name='qxcore_gnu_descriptor') result(answer)
    integer(c_intptr_t), value :: unit
    integer(c_int32_t) :: answer
    answer = -1
    if (unit > huge(0) .or. unit < -huge(0)) return
    if (unit < 0) then
      if (.not. is_open(int(unit))) return
    end if
    answer = fnum(int(unit))
  end function

  function file_name(unit, name, capacity) bind(C, name='qxcore_gnu_file_name') result(answer)
    integer(c_int32_t), value :: unit, capacity
    character(kind=c_char), intent(out) :: name(capacity)
    integer(c_int32_t) :: answer
    character(longest_path) :: text
    logical :: named
    integer :: i
    answer = 0
    inquire (unit=unit, named=named, name=text)
    if (.not. named) return
    answer = min(len_trim(text), capacity)
    do i = 1, answer
      name(i) = text(i:i)
    end do
  end function

  function open_unit(unit, path, path_length, action) bind(C, name='qxcore_gnu_open') result(answer)
    integer(c_int32_t), value :: unit, path_length, action
    character(kind=c_char), intent(in) :: path(path_length)
    integer(c_int32_t) :: answer
    character(9), parameter :: actions(0:2) = [character(9) :: 'read', 'write', 'readwrite']
    character(path_length) :: text
    integer :: i
    do i = 1, path_length
      text(i:i) = path(i)
    end do
    open (unit=unit, file=text, status='old', action=actions(action), iostat=answer)
  end function

  ! 0, or -1 at the end of the file, or an error number. Arguments by reference, as the run-time takes them: nothing is
  ! left to do here but to call it.
  function read_character(unit, next) bind(C, name='qxcore_gnu_read_character') result(answer)
    integer(c_int32_t), intent(in) :: unit
    character(kind=c_char), intent(out) :: next
    integer(c_int32_t) :: answer
    answer = fgetc(unit, next)
  end function

  ! Of the run-time's own numbers none is.
  function is_writable(unit) bind(C, name='qxcore_gnu_is_writable') result(answer)
    integer(c_int32_t), value :: unit
    logical(c_bool) :: answer
    integer :: status
    character(9) :: writable, share
    inquire (unit=unit, write=writable, share=share, iostat=status)
    answer = status == 0
    if (answer) answer = writable == 'YES' .and. share /= 'DENYRW'
  end function

  function write_character(unit, character_number) bind(C, name='qxcore_gnu_write_character') result(answer)
    integer(c_int32_t), value :: unit, character_number
    integer(c_int32_t) :: answer
    call fputc(unit, char(iand(character_number, 255)), answer)
  end function

  ! What INQUIRE calls the size of the file; -1 where there is none.
  function file_size(unit) bind(C, name='qxcore_gnu_file_size') result(answer)
    integer(c_int32_t), value :: unit
    integer(c_int64_t) :: answer
    inquire (unit=unit, size=answer)
  end function

  function position(unit) bind(C, name='qxcore_gnu_position') result(answer)
    integer(c_int32_t), value :: unit
    integer(c_int64_t) :: answer
    answer = ftell(unit)
  end function

  function rewind_unit(unit) bind(C, name='qxcore_gnu_rewind') result(answer)
    integer(c_int32_t), value :: unit
    integer(c_int32_t) :: answer
    rewind (unit, iostat=answer)
  end function

  function seek(unit, offset) bind(C, name='qxcore_gnu_seek') result(answer)
    integer(c_int32_t), value :: unit
    integer(c_int64_t), value :: offset
    integer(c_int32_t) :: answer
    call fseek(unit, offset, 0, answer)
  end function

  function flush_unit(unit) bind(C, name='qxcore_gnu_flush') result(answer)
    integer(c_int32_t), value :: unit
    integer(c_int32_t) :: answer
    flush (unit, iostat=answer)
  end function

end module
