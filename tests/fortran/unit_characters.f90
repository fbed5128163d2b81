! Characters and positions of units: what a unit refuses and how that is told, the standard units, pipes and terminals,
! large files, and what READ and WRITE find behind the routines.
program unit_characters
  use, intrinsic :: iso_fortran_env, only: int64
  use checks, only: check, finish
  use pseudo_terminals, only: open_pseudo_terminal
  use scratch, only: remove_directory, scratch_directory
  use qxport, only: errsns, fgetc, flush, fputc, fseek, fseeki8, ftell, ftelli8, getc, getlasterror, getpos, getposi8
  use qxport, only: ierrno, isatty, putc, pxfclose, pxfconst, pxfdup2, pxfexecv, pxffastexit, pxffdopen, pxffgetc, pxffork
  use qxport, only: pxffputc, pxfmkfifo, pxfopen, pxfpipe, pxfwaitpid, pxfwrite
  implicit none
  integer(4), parameter :: ebadf = 9, einval = 22, espipe = 29, eend = -1
  integer, parameter :: seek_set = 0, seek_cur = 1, seek_end = 2
  character, parameter :: newline = achar(10), return = achar(13)
  character(:), allocatable :: directory, path
  character(20) :: part

  call get_command_argument(1, part)
  select case (part)
  case ('input')
    call standard_input()
  case ('copy')
    call copy_standard_input()
  case default
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
    call connected_again()
    call both_families()
    call run_on_pipes()
    call standard_units_closed()
    call pipes()
    call named_pipes()
    call terminals()
    call remove_directory(directory)
    deallocate (directory, path)
  end select
  call finish()

contains

  integer(4) function constant(name)
    character(*), intent(in) :: name
    integer(4) :: ierror
    call pxfconst(name, constant, ierror)
    call check(ierror, 0, name)
  end function

  subroutine make_file(text)
    character(*), intent(in) :: text
    integer :: unit
    open (newunit=unit, file=path, status='replace', access='stream', form='unformatted')
    write (unit) text
    close (unit)
  end subroutine

  function contents() result(found)
    character(:), allocatable :: found
    integer :: unit, size
    open (newunit=unit, file=path, status='old', access='stream', form='unformatted', action='read')
    inquire (unit, size=size)
    allocate (character(size) :: found)
    read (unit) found
    close (unit)
  end function

  ! Sets the places of an error to what no routine here records.
  subroutine mark_errors()
    logical :: terminal
    terminal = isatty(78)
    call check(.not. terminal .and. recorded() == ebadf, 'errsns is marked')
    call check(fseek(78, 0, 0), -ebadf, 'fseek of no unit')
    call check(ierrno(), -ebadf, 'ierrno is marked')
  end subroutine

  integer(4) function recorded()
    integer(4) :: io, status, unit, condition
    call errsns(io, recorded, status, unit, condition)
  end function

  subroutine check_nothing_recorded(what)
    character(*), intent(in) :: what
    call check(recorded(), ebadf, what // ': errsns')
    call check(ierrno(), -ebadf, what // ': ierrno')
  end subroutine

  ! errno is asked for first: other calls may change it.
  subroutine check_recorded(what)
    character(*), intent(in) :: what
    integer(4) :: last
    last = getlasterror()
    call check(last, einval, what // ': errno')
    call check(recorded(), einval, what // ': errsns')
    call check(ierrno(), einval, what // ': ierrno')
  end subroutine

  subroutine check_next(unit, expected, what)
    integer, intent(in) :: unit
    character(*), intent(in) :: expected, what
    integer :: i
    character :: next
    do i = 1, len(expected)
      next = '#'
      call check(fgetc(unit, next), 0, what // ': fgetc')
      call check(next, expected(i:i), what // ': its character')
    end do
  end subroutine

  subroutine put(unit, text, what)
    integer, intent(in) :: unit
    character(*), intent(in) :: text, what
    integer :: i
    do i = 1, len(text)
      call check(fputc(unit, text(i:i)), 0, what // ': fputc')
    end do
  end subroutine

  subroutine check_end(unit, what)
    integer, intent(in) :: unit
    character(*), intent(in) :: what
    integer :: i
    character :: next
    call mark_errors()
    do i = 1, 2
      next = '#'
      call check(fgetc(unit, next), eend, what // ': the end')
      call check(next, '#', what // ': no character at the end')
    end do
    call check_nothing_recorded(what // ': the end')
  end subroutine

  subroutine check_no_reading(unit, what)
    integer, intent(in) :: unit
    character(*), intent(in) :: what
    integer(4) :: answer
    character :: next
    next = '#'
    call mark_errors()
    answer = fgetc(unit, next)
    call check_recorded(what // ': fgetc')
    call check(answer, einval, what // ': fgetc')
    call check(next, '#', what // ': its character')
  end subroutine

  subroutine check_no_writing(unit, what)
    integer, intent(in) :: unit
    character(*), intent(in) :: what
    integer(4) :: answer
    call mark_errors()
    answer = fputc(unit, 'x')
    call check_recorded(what // ': fputc')
    call check(answer, einval, what // ': fputc')
  end subroutine

  ! Every routine of positions answers minus the number, and tells it in its own way.
  subroutine check_no_position(unit, number, what)
    integer, intent(in) :: unit
    integer(4), intent(in) :: number
    character(*), intent(in) :: what
    call mark_errors()
    call check(fseek(unit, 0, seek_set), -number, what // ': fseek')
    call check(ierrno(), -number, what // ': ierrno of fseek')
    call check(getpos(unit), -number, what // ': getpos')
    call check(getposi8(unit), int(-number, int64), what // ': getposi8')
    call check(ierrno(), -number, what // ': getpos and getposi8 tell nothing')
    call check(ftell(unit), -number, what // ': ftell')
    call check(ierrno(), number, what // ': ierrno of ftell')
    call check(fseeki8(unit, 0_int64, seek_set), -number, what // ': fseeki8')
    call check(ierrno(), -number, what // ': ierrno of fseeki8')
    call check(ftelli8(unit), int(-number, int64), what // ': ftelli8')
    call check(ierrno(), number, what // ': ierrno of ftelli8')
    call check(recorded(), ebadf, what // ': errsns of positions')
  end subroutine

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
    call check(contents(), 'abXcd' // newline // 'Yef' // newline // newline // char(233) // char(0), &
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
    call check(contents(), 'textmiddlast', 'a direct file')
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
    call make_file('one' // newline)
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
    call check(contents(), 'one' // newline // 'two' // newline // achar(0) // achar(0) // 'x', 'zeros before it')
  end subroutine

  subroutine positions()
    integer :: unit
    call make_file('0123456789')
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
    call make_file('0123456789')
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
    call make_file('ab')
    open (newunit=unit, file=path)
    text = '####'
    call check(fgetc(unit, text), 0, 'fgetc into a longer variable')
    call check(text, 'a###', 'one character of it')
    call check(fputc(unit, 'XYZ'), 0, 'fputc of a longer text')
    close (unit)
    call check(contents(), 'aX', 'one character of that')
  end subroutine

  subroutine flushing()
    integer :: unit
    open (newunit=unit, file=path, status='replace')
    write (unit, '(a)') 'kept'
    call check(contents(), '', 'WRITE is buffered')
    call mark_errors()
    call flush(unit)
    call check(contents(), 'kept' // newline, 'flush writes it out')
    call put(unit, 'x', 'buffered too')
    call check(contents(), 'kept' // newline, 'fputc is buffered')
    call mark_errors()
    call flush(unit)
    call check(contents(), 'kept' // newline // 'x', 'flush writes that out')
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
    call make_file('one' // newline // 'two' // newline)
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
    call check(contents(), 'ONE!' // newline // 'x', 'WRITE behind a refused fgetc')
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

  ! The same number, another file each time, and another way of moving characters.
  subroutine connected_again()
    integer :: i, status
    integer(4) :: reader, writer, count, ierror
    character(20) :: line
    do i = 1, 3
      call make_file('abc')
      open (21, file=path, action='read')
      call check_next(21, 'a', 'for reading')
      close (21)
      call check_no_reading(21, 'between two files')
      open (21, file=path, action='write')
      write (21, '(a)', advance='no') 'A'
      call check_no_reading(21, 'for writing')
      write (21, '(a)') 'B'
      close (21)
      call check(contents(), 'AB' // newline, 'what was written')
      open (21, file=path, access='stream', form='formatted')
      call check_next(21, 'A', 'a formatted stream')
      inquire (21, pos=status)
      call check(status, 2, 'INQUIRE of a formatted stream')
      close (21)
      open (21, file=path, access='stream', form='unformatted')
      call check_next(21, 'A', 'a stream')
      read (21) line(1:1)
      call check(line(1:1), 'B', 'READ of a stream')
      close (21)
      call pxfpipe(reader, writer, ierror)
      call pxfwrite(writer, 'one' // newline // 'two' // newline, 8, count, ierror)
      call pxffdopen(reader, 21, 'r', ierror)
      read (21, '(a)') line
      call check_next(21, 'two' // newline, 'a pipe behind READ')
      close (21)
      call pxfclose(reader, ierror)
      call pxfclose(writer, ierror)
    end do
  end subroutine

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

  ! This program again, with lines on a pipe as its standard input.
  subroutine run_on_pipes()
    character(*), parameter :: lines = 'one' // newline // 'two' // newline // newline // 'four' // newline // 'five' // &
      newline // 'six'
    call check(status_of('input', lines), 0, 'standard input on a pipe')
    call check(status_of('copy', lines // newline // char(233) // '!'), 0, 'copying standard input')
    call check(contents(), '<one' // newline // 'two' // newline // newline // 'four' // newline // 'five' // newline // &
      'six' // newline // char(233) // '!>' // newline, 'the copy')
  end subroutine

  ! The program's standard output is the file.
  integer(4) function status_of(what, input) result(status)
    character(*), intent(in) :: what, input
    character(20) :: argv(2)
    integer(4) :: reader, writer, output, child, ended, count, ierror
    argv = [character(20) :: 'unit_characters', what]
    call pxfpipe(reader, writer, ierror)
    call pxfwrite(writer, input, len(input), count, ierror)
    call pxfclose(writer, ierror)
    call make_file('')
    flush (6)
    call pxffork(child, ierror)
    if (child == 0) then
      call pxfdup2(reader, 0, ierror)
      if (what == 'copy') then
        call pxfopen(path, 0, constant('O_WRONLY'), 0, output, ierror)
        call pxfdup2(output, 1, ierror)
      end if
      call pxfexecv('/proc/self/exe', 0, argv, [15, len(what)], 2, ierror)
      call pxffastexit(1)
    end if
    call pxfclose(reader, ierror)
    call pxfwaitpid(child, status, 0, ended, ierror)
  end function

  ! No line is lost between READ and getc, whoever reads first.
  subroutine standard_input()
    character(20) :: line
    character :: next
    integer :: i
    read (5, '(a)') line
    call check(trim(line), 'one', 'READ')
    call check_no_position(5, espipe, 'a pipe')
    do i = 1, 5
      next = '#'
      call check(getc(next), 0, 'getc')
      call check_letter(next, 'two' // newline // newline, i, 'getc behind READ')
    end do
    read (5, '(a)') line
    call check(trim(line), 'four', 'READ behind getc')
    read (5, '(a1)', advance='no') next
    call check_next(5, 'i', 'behind READ without advancing')
    read (5, '(a)') line
    call check(trim(line), 've', 'READ of what is left')
    do i = 1, 3
      call check(getc(next), 0, 'getc')
      call check_letter(next, 'six', i, 'getc of the last line')
    end do
    call mark_errors()
    do i = 1, 3
      next = '#'
      call check(getc(next), eend, 'the end of a pipe')
      call check(next, '#', 'no character at the end')
    end do
    call check_nothing_recorded('getc at the end')
    call check_end(5, 'fgetc at the end of a pipe')
    call check_no_writing(5, 'standard input')
    call check_no_reading(6, 'standard output')
    call check_no_reading(0, 'standard error')
  end subroutine

  subroutine check_letter(got, text, i, what)
    character, intent(in) :: got
    character(*), intent(in) :: text, what
    integer, intent(in) :: i
    call check(got, text(i:i), what)
  end subroutine

  ! In order with WRITE. The end of the program must not say anything behind it.
  subroutine copy_standard_input()
    character :: next
    write (6, '(a)', advance='no') '<'
    do while (getc(next) == 0)
      if (putc(next) /= 0) error stop 2
    end do
    write (6, '(a)') '>'
    flush (6)
    call pxffastexit(0)
  end subroutine

  ! In processes of their own, since the checks speak on one of the units.
  subroutine standard_units_closed()
    integer(4) :: child, status, ended, ierror, answer
    character :: next
    flush (6)
    call pxffork(child, ierror)
    if (child == 0) then
      close (5)
      close (6)
      call mark_errors()
      next = '#'
      answer = getc(next)
      if (answer /= -1 .or. next /= '#') call pxffastexit(1)
      if (ierrno() /= -ebadf) call pxffastexit(2)
      answer = putc('x')
      if (answer /= einval) call pxffastexit(3)
      if (ierrno() /= einval) call pxffastexit(4)
      open (6, file=path, status='replace')
      if (putc('a') /= 0) call pxffastexit(5)
      write (6, '(a)') 'b'
      close (6)
      open (5, file=path, status='old')
      answer = getc(next)
      call pxffastexit(merge(0, 6, answer == 0 .and. next == 'a'))
    end if
    call pxfwaitpid(child, status, 0, ended, ierror)
    call check(status, 0, 'standard units closed and opened')
    call check(contents(), 'ab' // newline, 'what putc wrote')
  end subroutine

  subroutine pipes()
    character(*), parameter :: text = 'a' // return // newline // 'b' // return // 'c'
    integer(4) :: reader, writer, count, ierror
    character(20) :: line
    call pxfpipe(reader, writer, ierror)
    call pxfwrite(writer, text, len(text), count, ierror)
    call pxffdopen(reader, 21, 'r', ierror)
    call pxffdopen(writer, 22, 'w', ierror)
    call pxfclose(reader, ierror)
    call pxfclose(writer, ierror)
    call check_no_position(21, espipe, 'a pipe')
    call check_no_position(22, espipe, 'the other end of a pipe')
    call check_no_reading(22, 'the end of a pipe that is written')
    call check_no_writing(21, 'the end of a pipe that is read')
    call put(22, 'd' // newline, 'a pipe')
    write (22, '(a)') 'last'
    call flush(22)
    call check_next(21, 'a' // newline // 'b' // newline, 'a pipe')
    read (21, '(a)') line
    call check(trim(line), 'cd', 'READ of a pipe')
    close (22)
    call check_next(21, 'last' // newline, 'the rest of a pipe')
    call check_end(21, 'a pipe')
    close (21)
  end subroutine

  ! Opened by its name, for reading and writing at once.
  subroutine named_pipes()
    integer(4) :: ierror
    integer :: unit
    character(20) :: line
    call pxfmkfifo(directory // '/pipe', 0, int(o'600'), ierror)
    open (newunit=unit, file=directory // '/pipe', action='readwrite')
    write (unit, '(a)') 'first', 'second', 'third'
    call flush(unit)
    read (unit, '(a)') line
    call check_next(unit, 's', 'a named pipe behind READ')
    call flush(unit)
    call check_no_position(unit, espipe, 'a named pipe')
    read (unit, '(a)') line
    call check(trim(line), 'econd', 'READ behind flush')
    call check_next(unit, 'third' // newline, 'the last line of a named pipe')
    close (unit, status='delete')
  end subroutine

  subroutine terminals()
    integer(4) :: master, terminal, count, ierror
    character(:), allocatable :: device
    character(20) :: line
    call open_pseudo_terminal(master, device)
    call pxfopen(device, 0, constant('O_RDWR') + constant('O_NOCTTY'), 0, terminal, ierror)
    call pxffdopen(terminal, 21, 'r', ierror)
    call pxfwrite(master, 'one' // newline // 'two' // newline // 'three' // newline // achar(4), 15, count, ierror)
    read (21, '(a)') line
    call check(trim(line), 'one', 'READ of a terminal')
    call check_no_position(21, espipe, 'a terminal')
    call check_next(21, 'two' // newline, 'a terminal')
    read (21, '(a)') line
    call check(trim(line), 'three', 'READ of a terminal again')
    call mark_errors()
    call check(fgetc(21, line(1:1)), eend, 'the end that was typed')
    call check_nothing_recorded('the end that was typed')
    close (21)
    call pxfclose(terminal, ierror)
    call pxfclose(master, ierror)
  end subroutine

end program
