#line 1 "src/core/gnu/units.f90"
! The units of the GNU Fortran run-time as its users reach them: INQUIRE, OPEN and the documented extensions. No private
! interface of the run-time is relied on, so any release of it serves.
module qxcore_gnu_units
  use, intrinsic :: iso_c_binding, only: c_bool, c_char, c_int32_t, c_int64_t, c_intptr_t
  implicit none
  private
  integer, parameter :: longest_path = 4096
  integer, parameter :: from_start = 0, from_here = 1
  integer, parameter :: refused = 0, direct = 1, mended = 2, records = 3, bytes = 4

  interface
    function has_positions(descriptor) bind(C, name='qxcore_gnu_has_positions') result(answer)
      import :: c_bool, c_int32_t
      integer(c_int32_t), value :: descriptor
      logical(c_bool) :: answer
    end function
  end interface

contains

  subroutine end_program(status) bind(C, name='qxcore_gnu_exit')
    integer(c_int32_t), value :: status
    call exit(status)
  end subroutine

  ! A negative number may be one of the run-time's own, kept for internal files: it looks open, but FNUM, FGETC and other
  ! inquiries crash on it. It alone denies sharing; a unit that NEWUNIT made does not.
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
    ! OPEN alone would close a connected unit too, but loses its buffer's memory. A number of NEWUNIT ends with its CLOSE.
    if (unit >= 0) close (unit, iostat=answer)
    open (unit=unit, file=text, status='old', action=actions(action), iostat=answer)
  end function

  ! How characters are moved on a unit, for reading or for writing: see units.h. FSEEK by nothing tells whether there are
  ! positions; where a size has 32 bits it fails behind 2 GiB as well, although it moves. This is asked before every character: the program may have closed the unit and opened another, and moved it
  ! by statements of its own. So it asks for no more than it needs.
  function way_of_reading(unit) bind(C, name='qxcore_gnu_way_of_reading') result(answer)
    integer(c_int32_t), value :: unit
    integer(c_int32_t) :: answer
    character(3) :: readable
    character(6) :: access, share
    integer :: status
    answer = refused
    if (unit < 0) then
      inquire (unit=unit, read=readable, access=access, share=share, iostat=status)
      if (status /= 0 .or. share == 'DENYRW') return
    else
      inquire (unit=unit, read=readable, access=access)
    end if
    if (readable == 'YES') answer = way_of(unit, access)
  end function

  function way_of_writing(unit) bind(C, name='qxcore_gnu_way_of_writing') result(answer)
    integer(c_int32_t), value :: unit
    integer(c_int32_t) :: answer
    character(3) :: writable
    character(6) :: access, share
    integer :: status
    answer = refused
    if (unit < 0) then
      inquire (unit=unit, write=writable, access=access, share=share, iostat=status)
      if (status /= 0 .or. share == 'DENYRW') return
    else
      inquire (unit=unit, write=writable, access=access)
    end if
    if (writable == 'YES') answer = way_of(unit, access)
  end function

  function way_of(unit, access) result(answer)
    integer(c_int32_t), intent(in) :: unit
    character(6), intent(in) :: access
    integer(c_int32_t) :: answer
    integer :: status
    character(9) :: form
    if (access == 'STREAM') then
      inquire (unit=unit, form=form)
      answer = bytes
      if (form /= 'FORMATTED') return
    end if
    call fseek(unit, 0, from_here, status)
    if (status /= 0) then
      if (has_positions(fnum(unit))) status = 0
    end if
    if (status /= 0) then
      answer = records
    else if (access == 'STREAM') then
      answer = mended
    else
      answer = direct
    end if
  end function

  ! 0, or -1 at the end of the file and for a failed read. FGETC knows nothing of what READ has in its buffer; FTELL
  ! brings the two together, where the file has positions.
  function get_character(unit, next) bind(C, name='qxcore_gnu_get_character') result(answer)
    integer(c_int32_t), value :: unit
    character(kind=c_char), intent(out) :: next
    integer(c_int32_t) :: answer
    integer(c_int64_t) :: position
    position = ftell(unit)
    answer = fgetc(unit, next)
  end function

  ! What a pipe has given cannot be had again, and READ alone knows what of it is in the buffer. Behind the end of the
  ! file READ is refused and nothing is in the buffer; a terminal may go on, and so may a pipe that had nothing for now.
  function read_record(unit, next) bind(C, name='qxcore_gnu_read_record') result(answer)
    integer(c_int32_t), value :: unit
    character(kind=c_char), intent(out) :: next
    integer(c_int32_t) :: answer
    read (unit, '(a1)', advance='no', iostat=answer) next
    if (is_iostat_eor(answer)) then
      next = new_line(next)
      answer = 0
    else if (answer > 0) then
      answer = fgetc(unit, next)
    end if
  end function

  ! A record that WRITE began without advancing is complete as it stands.
  subroutine end_record(unit) bind(C, name='qxcore_gnu_end_record')
    integer(c_int32_t), value :: unit
    integer :: ignored
    read (unit, '()', advance='no', iostat=ignored)
  end subroutine

  function read_byte(unit, next) bind(C, name='qxcore_gnu_read_byte') result(answer)
    integer(c_int32_t), value :: unit
    character(kind=c_char), intent(out) :: next
    integer(c_int32_t) :: answer
    read (unit, iostat=answer) next
  end function

  function put_character(unit, next) bind(C, name='qxcore_gnu_put_character') result(answer)
    integer(c_int32_t), value :: unit
    character(kind=c_char), value :: next
    integer(c_int32_t) :: answer
    call fputc(unit, next, answer)
  end function

  function write_byte(unit, next) bind(C, name='qxcore_gnu_write_byte') result(answer)
    integer(c_int32_t), value :: unit
    character(kind=c_char), value :: next
    integer(c_int32_t) :: answer
    write (unit, iostat=answer) next
  end function

  ! Tells the run-time where a formatted unit of stream access stands: FGETC, FPUTC and FSEEK leave that behind, and the
  ! next WRITE would cut the file there. A unit that cannot be read needs WRITE for it, which begins a record; FGETC,
  ! which fails, and FSEEK make the run-time forget that.
  subroutine mend_position(unit, position) bind(C, name='qxcore_gnu_mend_position')
    integer(c_int32_t), value :: unit
    integer(c_int64_t), value :: position
    integer :: status
    character :: ignored
    read (unit, '()', advance='no', pos=position + 1, iostat=status)
    if (status == 0) return
    write (unit, '()', advance='no', pos=position + 1, iostat=status)
    status = fgetc(unit, ignored)
    call fseek(unit, position, from_start, status)
  end subroutine

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

  ! Moves a unit that has positions to one of them. FGETC ends writing: what WRITE began without advancing stays as it
  ! is. A unit of sequential access is rewound first, so that it is at no end of the file: READ goes on there, and WRITE
  ! makes its record the last.
  function seek(unit, position) bind(C, name='qxcore_gnu_seek') result(answer)
    integer(c_int32_t), value :: unit
    integer(c_int64_t), value :: position
    integer(c_int32_t) :: answer
    character(10) :: access
    character(9) :: form
    character :: ignored
    inquire (unit=unit, access=access, form=form)
    if (access == 'STREAM' .and. form /= 'FORMATTED') then
      read (unit, pos=position + 1, iostat=answer)
      if (answer /= 0) write (unit, pos=position + 1, iostat=answer)
      return
    end if
    answer = fgetc(unit, ignored)
    answer = 0
    if (access == 'SEQUENTIAL') rewind (unit, iostat=answer)
    if (answer == 0) answer = begin_at(unit, position)
    if (access == 'STREAM') call mend_position(unit, position)
  end function

  ! Where a unit begins that nothing was read from or written to. What FSEEK answers is not to be relied on: see above.
  function begin_at(unit, position) bind(C, name='qxcore_gnu_begin_at') result(answer)
    integer(c_int32_t), value :: unit
    integer(c_int64_t), value :: position
    integer(c_int32_t) :: answer
    call fseek(unit, position, from_start, answer)
    if (ftell(unit) == position) answer = 0
  end function

  function flush_unit(unit) bind(C, name='qxcore_gnu_flush') result(answer)
    integer(c_int32_t), value :: unit
    integer(c_int32_t) :: answer
    flush (unit, iostat=answer)
  end function

end module
