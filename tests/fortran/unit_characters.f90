! Characters and positions of units: what a unit refuses and how that is told, large files, and what READ and WRITE find
! behind the routines.
program unit_characters
  use, intrinsic :: iso_fortran_env, only: int64
  use checks, only: check, finish
  use scratch, only: remove_directory, scratch_directory
  use unit_checks
  use qxport, only: fgetc, flush, fputc, fseek, fseeki8, ftell, ftelli8, getpos, getposi8, ierrno, pxffgetc, pxffputc
  implicit none
  integer(4), parameter :: ebadf = 9, einval = 22
  integer, parameter :: seek_set = 0, seek_cur = 1, seek_end = 2
  character, parameter :: newline = achar(10)
  character(:), allocatable :: directory, path

  directory = scratch_directory()
  path = directory // '/file'
  call characters_and_records()
  call unformatted_records()
  call direct_records()
  call scratch_files()
  call ends_of_files()
  call positions()
  call refused_positions()
  call large_positions()
  call longer_variables()
  call flushing()
  call one_direction_only()
  call units_not_open()
  call numbers_of_newunits()
  call both_families()
  call remove_directory(directory)
  deallocate (directory, path)
  call finish()

contains

  subroutine characters_and_records()
    integer :: unit
    character(20) :: line
    character :: next
    open (newunit=unit, file=path, status='replace')
    write (unit, '(a)', advance='no') 'ab'
    call put(unit, 'X', 'between two parts of a record')
    write (unit, '(a)') 'cd'
    call put(unit, 'Y', 'behind a record')
    write (unit, '(a)') 'ef'
    call put(unit, newline // char(233) // char(0), 'bytes')
    call flush(unit)
    call check(contents(path), 'abXcd' // newline // 'Yef' // newline // newline // char(233) // char(0), &
      'WRITE and fputc come out in order')
    call check(fseek(unit, 0, seek_set), 0, 'fseek')
    read (unit, '(a)') line
    call check(trim(line), 'abXcd', 'READ behind fseek')
    call check_next(unit, 'Y', 'behind READ')
    call check(ftell(unit), 7, 'ftell behind fgetc')
    read (unit, '(a)') line
    call check(trim(line), 'ef', 'READ behind fgetc')
    backspace (unit)
    call check_next(unit, 'Ye', 'behind BACKSPACE')
    backspace (unit)
    read (unit, '(a1)', advance='no') next
    call check_next(unit, 'ef' // newline // newline // char(233) // char(0), 'behind a READ without advancing')
    call check_end(unit, 'a file')
    rewind (unit)
    call check_next(unit, 'abX', 'behind REWIND')
    close (unit)
  end subroutine

  ! The bytes around a record are characters as well.
  subroutine unformatted_records()
    integer :: unit, length
    character(4) :: marker, text
    open (newunit=unit, file=path, status='replace', form='unformatted')
    write (unit) 'text', 'more'
    write (unit) 'last'
    rewind (unit)
    length = 8
    marker = transfer(length, marker)
    call check_next(unit, marker // 'textmore' // marker, 'an unformatted record')
    read (unit) text
    call check(text, 'last', 'READ of the next record')
    call check(fseek(unit, -8, seek_cur), 0, 'fseek into a record')
    call put(unit, 'LAST', 'over a record')
    backspace (unit, iostat=length)
    rewind (unit)
    read (unit) text
    read (unit) text
    call check(text, 'LAST', 'a record written over')
    close (unit)
  end subroutine

  subroutine direct_records()
    integer :: unit
    character(4) :: text
    open (newunit=unit, file=path, status='replace', access='direct', form='formatted', recl=4)
    write (unit, '(a)', rec=3) 'last'
    write (unit, '(a)', rec=1) 'text'
    call check(ftell(unit), 4, 'behind record 1')
    call put(unit, 'midd', 'record 2')
    read (unit, '(a)', rec=2) text
    call check(text, 'midd', 'READ of record 2')
    call check_next(unit, 'last', 'record 3')
    call check_end(unit, 'a direct file')
    close (unit)
    call check(contents(path), 'textmiddlast', 'a direct file')
  end subroutine

  subroutine scratch_files()
    integer :: unit
    character(20) :: line
    open (newunit=unit, status='scratch')
    call put(unit, 'one' // newline // 'two' // newline, 'a scratch file')
    rewind (unit)
    read (unit, '(a)') line
    call check(trim(line), 'one', 'READ of a scratch file')
    call check_next(unit, 'two' // newline, 'a scratch file')
    call check_end(unit, 'a scratch file')
    close (unit)
    call check_no_reading(unit, 'a scratch file that is gone')
  end subroutine

  ! READ is refused behind the endfile record, and the routines are not.
  subroutine ends_of_files()
    integer :: unit, status
    character(20) :: line
    call make_file(path, 'one' // newline)
    open (newunit=unit, file=path, status='old')
    read (unit, '(a)') line
    call check_end(unit, 'behind READ')
    read (unit, '(a)', iostat=status) line
    call check(is_iostat_end(status), 'fgetc at the end leaves READ its own')
    read (unit, '(a)', iostat=status) line
    call check(status > 0, 'READ behind the end is refused')
    call check_end(unit, 'behind the endfile record')
    call check(ftell(unit), 4, 'ftell there')
    read (unit, '(a)', iostat=status) line
    call check(status > 0, 'READ is refused still')
    write (unit, '(a)', iostat=status) 'x'
    call check(status > 0, 'so is WRITE')
    call check(fseek(unit, 0, seek_cur), 0, 'fseek behind the endfile record')
    write (unit, '(a)', iostat=status) 'two'
    call check(status, 0, 'WRITE behind fseek')
    call check(fseek(unit, 100, seek_end), 0, 'fseek beyond the end')
    call check_end(unit, 'beyond the end')
    call check(fseek(unit, 2, seek_end), 0, 'fseek a little beyond the end')
    call put(unit, 'x', 'beyond the end')
    close (unit)
    call check(contents(path), 'one' // newline // 'two' // newline // achar(0) // achar(0) // 'x', 'zeros before it')
  end subroutine

  subroutine positions()
    integer :: unit
    call make_file(path, '0123456789')
    open (newunit=unit, file=path, status='old', action='read')
    call check(fseek(unit, 3, seek_set), 0, 'from the beginning')
    call check_next(unit, '3', 'from the beginning')
    call check(fseek(unit, 2, seek_cur), 0, 'forward')
    call check_next(unit, '6', 'forward')
    call check(fseek(unit, -7, seek_cur), 0, 'backward')
    call check_next(unit, '0', 'backward')
    call check(fseek(unit, -1, seek_end), 0, 'from the end')
    call check_next(unit, '9', 'from the end')
    call check(fseek(unit, -4_int64, seek_end), 0, 'fseek of INTEGER(8) is fseeki8')
    call check_next(unit, '6', 'from the end with 64 bits')
    call check(fseeki8(unit, 1_int64, seek_set), 0, 'fseeki8')
    call check_next(unit, '1', 'fseeki8')
    call check(ftell(unit), 2, 'ftell')
    call check(ftelli8(unit), 2_int64, 'ftelli8')
    call check(getpos(unit), 2, 'getpos')
    call check(getposi8(unit), 2_int64, 'getposi8')
    close (unit)
  end subroutine

  subroutine refused_positions()
    integer, parameter :: offsets(6) = [-1, -5, -11, -2147483647 - 1, 0, 0]
    integer, parameter :: origins(6) = [seek_set, seek_cur, seek_end, seek_cur, 3, -1]
    integer :: unit, i
    call make_file(path, '0123456789')
    open (newunit=unit, file=path, status='old')
    call check(fseek(unit, 4, seek_set), 0, 'fseek')
    do i = 1, size(offsets)
      call check(fseek(unit, offsets(i), origins(i)), -einval, 'a position that cannot be')
      call check(ierrno(), -einval, 'its ierrno')
      call check(fseeki8(unit, int(offsets(i), int64), origins(i)), -einval, 'the same with 64 bits')
      call check(getpos(unit), 4, 'what is refused moves nothing')
    end do
    call check(fseek(unit, 0, seek_cur), 0, 'a success behind it')
    call check(ierrno(), 0, 'ierrno of a success')
    call check(fseeki8(unit, huge(0_int64), seek_cur), -einval, 'beyond 64 bits')
    call check(fseeki8(unit, 4_int64, seek_set), 0, 'a success with 64 bits')
    call check(ierrno(), 0, 'its ierrno')
    call check_next(unit, '4', 'what is refused moves nothing')
    close (unit)
  end subroutine

  ! Sparse files: the disk holds their last bytes.
  subroutine large_positions()
    integer(int64), parameter :: places(7) = [2147483646_int64, 2147483648_int64, 4294967287_int64, 4294967296_int64, &
      4294967301_int64, 8589934592_int64, 9876543210_int64]
    character(11), parameter :: forms(3) = [character(11) :: 'formatted', 'formatted', 'unformatted']
    character(10), parameter :: accesses(3) = [character(10) :: 'sequential', 'stream', 'stream']
    integer :: unit, i, k
    integer(int64) :: pos
    character(20) :: line
    do k = 1, size(forms)
      open (newunit=unit, file=path, status='replace', form=forms(k), access=accesses(k))
      do i = 1, size(places)
        call check(fseek(unit, places(i), seek_set), 0, 'fseek far')
        call check(ftelli8(unit), places(i), 'ftelli8 far')
        call check(getposi8(unit), places(i), 'getposi8 far')
        call mark_errors()
        call check(ftell(unit), low(places(i)), 'the low 32 bits by ftell')
        call check(getpos(unit), low(places(i)), 'the low 32 bits by getpos')
        call check_nothing_recorded('a position that only looks like a failure')
        if (accesses(k) == 'stream') then
          inquire (unit, pos=pos)
          call check(pos, places(i) + 1, 'INQUIRE far')
        end if
        call put(unit, 'xy', 'far')
        call check(ftelli8(unit), places(i) + 2, 'ftelli8 behind fputc')
      end do
      call check(fseek(unit, -2, seek_end), 0, 'back from the end')
      call check_next(unit, 'xy', 'at the end')
      call check_end(unit, 'far')
      call check(fseeki8(unit, places(1) - places(7) - 2, seek_cur), 0, 'back by more than 32 bits')
      call check_next(unit, 'xy', 'at the first place')
      call check(fseek(unit, 2147483647, seek_cur), 0, 'forward by the most of 32 bits')
      call check(getposi8(unit), places(1) + 2 + 2147483647, 'and there it is')
      call check(fseek(unit, -2147483647 - 1, seek_cur), 0, 'back by the most of 32 bits')
      call check(getposi8(unit), places(1) + 1, 'and there it is')
      if (forms(k) == 'formatted') then
        call check(fseek(unit, places(7) + 1, seek_set), 0, 'before the last byte')
        read (unit, '(a)', iostat=i) line
        ! The run-time takes a last line without an end for none, of a stream.
        call check(is_iostat_end(i) .eqv. accesses(k) == 'stream', 'READ far')
        if (accesses(k) /= 'stream') call check(trim(line), 'y', 'what READ finds far')
        call check(getposi8(unit), places(7) + 2, 'behind READ')
      end if
      close (unit, status='delete')
    end do
  end subroutine

  integer(4) function low(position)
    integer(int64), intent(in) :: position
    low = transfer(position, low)
  end function

  ! Of a variable that is longer one character is the routine's.
  subroutine longer_variables()
    integer :: unit
    character(4) :: text
    call make_file(path, 'ab')
    open (newunit=unit, file=path)
    text = '####'
    call check(fgetc(unit, text), 0, 'fgetc into a longer variable')
    call check(text, 'a###', 'one character of it')
    call check(fputc(unit, 'XYZ'), 0, 'fputc of a longer text')
    close (unit)
    call check(contents(path), 'aX', 'one character of that')
  end subroutine

  subroutine flushing()
    integer :: unit
    open (newunit=unit, file=path, status='replace')
    write (unit, '(a)') 'kept'
    call check(contents(path), '', 'WRITE is buffered')
    call mark_errors()
    call flush(unit)
    call check(contents(path), 'kept' // newline, 'flush writes it out')
    call put(unit, 'x', 'buffered too')
    call check(contents(path), 'kept' // newline, 'fputc is buffered')
    call mark_errors()
    call flush(unit)
    call check(contents(path), 'kept' // newline // 'x', 'flush writes that out')
    call flush(78)
    call flush(-1)
    call flush(2147483647)
    call flush(-2147483647 - 1)
    call check_nothing_recorded('flush')
    close (unit)
  end subroutine

  ! What is refused leaves the unit as it was.
  subroutine one_direction_only()
    integer :: unit
    character(20) :: line
    call make_file(path, 'one' // newline // 'two' // newline)
    open (newunit=unit, file=path, action='read')
    read (unit, '(a)') line
    call check_no_writing(unit, 'a unit for reading')
    call check_next(unit, 't', 'a unit for reading')
    call check_no_writing(unit, 'a unit for reading')
    read (unit, '(a)') line
    call check(trim(line), 'wo', 'READ behind a refused fputc')
    close (unit)
    open (newunit=unit, file=path, action='write')
    write (unit, '(a)', advance='no') 'ONE'
    call check_no_reading(unit, 'a unit for writing')
    write (unit, '(a)') '!'
    call check_no_reading(unit, 'a unit for writing')
    call put(unit, 'x', 'a unit for writing')
    close (unit)
    call check(contents(path), 'ONE!' // newline // 'x', 'WRITE behind a refused fgetc')
  end subroutine

  subroutine units_not_open()
    integer(4), parameter :: numbers(5) = [78, 2147483647, -1, -2147483647, -2147483647 - 1]
    integer :: i
    open (78, status='scratch')
    close (78)
    do i = 1, size(numbers)
      call check_no_reading(numbers(i), 'a unit that is not open')
      call check_no_writing(numbers(i), 'a unit that is not open')
      call check_no_position(numbers(i), ebadf, 'a unit that is not open')
    end do
  end subroutine

  ! No newunit is open. The run-time gives the same numbers to internal files, also for a while after their use.
  subroutine numbers_of_newunits()
    character(20) :: text
    integer :: unit, number
    write (text, '(a)') nested()
    open (newunit=unit, status='scratch')
    do number = -1, -30, -1
      if (number == unit) cycle
      call check_no_reading(number, 'a number of no newunit')
      call check_no_writing(number, 'a number of no newunit')
      call check_no_position(number, ebadf, 'a number of no newunit')
      call flush(number)
    end do
    call put(unit, 'x', 'a newunit')
    close (unit)
    call check_no_writing(unit, 'a newunit that was closed')
    call check_no_position(unit, ebadf, 'a newunit that was closed')
    write (text, '(a)') nested()
    call check(trim(text), '7', 'internal files go on')
  end subroutine

  ! A second internal file at the same time.
  function nested() result(text)
    character(10) :: text
    write (text, '(i0)') 7
  end function
  subroutine both_families()
    integer :: unit
    integer(4) :: ierror
    character :: next
    open (newunit=unit, file=path, status='replace')
    call pxffputc(unit, 'a', ierror)
    call put(unit, 'b', 'behind pxffputc')
    call pxffputc(unit, 'c', ierror)
    rewind (unit)
    call check_next(unit, 'a', 'before pxffgetc')
    call pxffgetc(unit, next, ierror)
    call check(next, 'b', 'pxffgetc behind fgetc')
    call check_next(unit, 'c', 'behind pxffgetc')
    close (unit)
  end subroutine

end program
