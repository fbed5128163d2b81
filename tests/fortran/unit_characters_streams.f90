! Characters of units where no positions are: the standard units, pipes and terminals; and units that are connected again.
program unit_characters_streams
  use, intrinsic :: iso_c_binding, only: c_int
  use checks, only: check, finish
  use pseudo_terminals, only: open_pseudo_terminal
  use scratch, only: remove_directory, scratch_directory
  use unit_checks
  use qxport, only: fgetc, flush, getc, ierrno, putc, pxfclose, pxfconst, pxfdup2, pxfexecv, pxffastexit, pxffdopen
  use qxport, only: pxffork, pxfmkfifo, pxfopen, pxfpipe, pxfwaitpid, pxfwrite
  implicit none
  integer(4), parameter :: ebadf = 9, einval = 22, espipe = 29, eend = -1
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
    call connected_again()
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
  ! The same number, another file each time, and another way of moving characters.
  subroutine connected_again()
    integer :: i, status
    integer(4) :: reader, writer, count, ierror
    character(20) :: line
    do i = 1, 3
      call make_file(path, 'abc')
      open (21, file=path, action='read')
      call check_next(21, 'a', 'for reading')
      close (21)
      call check_no_reading(21, 'between two files')
      open (21, file=path, action='write')
      write (21, '(a)', advance='no') 'A'
      call check_no_reading(21, 'for writing')
      write (21, '(a)') 'B'
      close (21)
      call check(contents(path), 'AB' // newline, 'what was written')
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
  ! This program again, with lines on a pipe as its standard input.
  subroutine run_on_pipes()
    character(*), parameter :: lines = 'one' // newline // 'two' // newline // newline // 'four' // newline // 'five' // &
      newline // 'six'
    call check(status_of('input', lines), 0, 'standard input on a pipe')
    call check(status_of('copy', lines // newline // char(233) // '!'), 0, 'copying standard input')
    call check(contents(path), '<one' // newline // 'two' // newline // newline // 'four' // newline // 'five' // newline // &
      'six' // newline // char(233) // '!>' // newline, 'the copy')
  end subroutine

  ! The program's standard output is the file.
  integer(4) function status_of(what, input) result(status)
    character(*), intent(in) :: what, input
    character(30) :: argv(2)
    integer(4) :: reader, writer, output, child, ended, count, ierror
    argv = [character(30) :: 'unit_characters_streams', what]
    call pxfpipe(reader, writer, ierror)
    call pxfwrite(writer, input, len(input), count, ierror)
    call pxfclose(writer, ierror)
    call make_file(path, '')
    flush (6)
    call pxffork(child, ierror)
    if (child == 0) then
      call pxfdup2(reader, 0, ierror)
      if (what == 'copy') then
        call pxfopen(path, 0, constant('O_WRONLY'), 0, output, ierror)
        call pxfdup2(output, 1, ierror)
      end if
      call pxfexecv('/proc/self/exe', 0, argv, [23, len(what)], 2, ierror)
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
    call check(contents(path), 'ab' // newline, 'what putc wrote')
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
    integer(c_int) :: master
    integer(4) :: terminal, count, ierror
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
