! What the program's statements find behind the unit routines: on formatted streams, where no positions are, behind records
! that are not complete, and on units made of descriptors.
program units_statements
  use, intrinsic :: iso_fortran_env, only: int64
  use, intrinsic :: iso_c_binding, only: c_int
  use checks, only: check, finish
  use pseudo_terminals, only: open_pseudo_terminal
  use scratch, only: remove_directory, scratch_directory
  use qxport
  implicit none
  integer(4), parameter :: ebadf = 9, eagain = 11, einval = 22, enxio = 6, eend = -1, seek_set = 0, seek_end = 2
  character, parameter :: newline = achar(10), return = achar(13)
  character(:), allocatable :: directory, path
  character(10) :: part

  call get_command_argument(1, part)
  if (part == 'stdin') then
    call standard_input()
    call finish()
    stop
  end if
  directory = scratch_directory()
  path = directory // '/file'
  call formatted_streams()
  call unfinished_records()
  call sequential_ends()
  call large_positions()
  call run_on_a_pipe()
  call pipes_that_end()
  call pipes_that_have_nothing()
  call named_pipes()
  call terminals()
  call controlling_terminals()
  call own_descriptors()
  call closed_descriptors()
  call numbers_of_no_unit()
  call no_descriptor_is_left_open()
  call accesses()
  call remove_directory(directory)
  deallocate (directory, path)
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

  subroutine check_letter(got, text, i, what)
    character, intent(in) :: got
    character(*), intent(in) :: text, what
    integer, intent(in) :: i
    call check(got, text(i:i), what)
  end subroutine

  subroutine check_file(expected, what)
    character(*), intent(in) :: expected, what
    character(:), allocatable :: found
    integer :: unit, size
    open (newunit=unit, file=path, status='old', access='stream', form='unformatted', action='read')
    inquire (unit, size=size)
    allocate (character(size) :: found)
    read (unit) found
    close (unit)
    call check(found, expected, what)
  end subroutine

  ! The lowest number that is no open descriptor.
  integer(4) function lowest()
    integer(4) :: ierror
    call pxfopen('/dev/null', 0, constant('O_RDONLY'), 0, lowest, ierror)
    call pxfclose(lowest, ierror)
  end function

  ! Ten lines, moved in by each routine, and written to by WRITE.
  subroutine formatted_streams()
    character(*), parameter :: ten = 'line 0' // newline // 'line 1' // newline // 'line 2' // newline // &
      'line 3' // newline // 'line 4' // newline // 'line 5' // newline // 'line 6' // newline // 'line 7' // newline // &
      'line 8' // newline // 'line 9' // newline
    character(9), parameter :: actions(2) = ['readwrite', 'write    ']
    integer :: i, unit
    integer(4) :: ierror
    integer(int64) :: pos
    character :: next
    do i = 1, 2
      call make_file(ten)
      open (newunit=unit, file=path, access='stream', form='formatted', action=actions(i))
      call pxffseek(unit, 0, seek_end, ierror)
      write (unit, '(a)') 'new'
      close (unit)
      call check_file(ten // 'new' // newline, 'WRITE behind pxffseek to the end, ' // actions(i))
      call make_file(ten)
      open (newunit=unit, file=path, access='stream', form='formatted', action=actions(i))
      call pxffputc(unit, 'L', ierror)
      call pxffputc(unit, 'I', ierror)
      inquire (unit, pos=pos)
      call check(pos, 3_int64, 'INQUIRE behind pxffputc, ' // actions(i))
      close (unit)
      call check_file('LI' // ten(3:), 'CLOSE behind pxffputc, ' // actions(i))
      open (newunit=unit, file=path, access='stream', form='formatted', action=actions(i))
      call pxffseek(unit, 7, seek_set, ierror)
      call pxffputc(unit, 'L', ierror)
      write (unit, '(a)') 'ast'
      close (unit)
      call check_file('LI' // ten(3:7) // 'Last' // newline, 'WRITE behind pxffputc, ' // actions(i))
    end do
    call make_file(ten)
    open (newunit=unit, file=path, access='stream', form='formatted')
    do i = 1, 10
      call pxffgetc(unit, next, ierror)
      call check(next, ten(i:i), 'pxffgetc')
    end do
    inquire (unit, pos=pos)
    call check(pos, 11_int64, 'INQUIRE behind pxffgetc')
    write (unit, '(a)') '!'
    close (unit)
    call check_file(ten(:10) // '!' // newline, 'WRITE behind pxffgetc')
    call make_file(ten)
    open (newunit=unit, file=path, access='stream', form='unformatted')
    call pxffseek(unit, -7, seek_end, ierror)
    inquire (unit, pos=pos)
    call check(pos, 64_int64, 'INQUIRE behind pxffseek')
    call pxffgetc(unit, next, ierror)
    read (unit, pos=64) next
    call check(next, 'l', 'READ from where pxffseek led, behind pxffgetc')
    close (unit)
  end subroutine

  ! What WRITE began without advancing is complete as it stands behind pxffseek.
  subroutine unfinished_records()
    character(9), parameter :: actions(2) = ['readwrite', 'write    ']
    integer :: i, unit
    integer(4) :: ierror
    character :: next
    do i = 1, 2
      open (newunit=unit, file=path, status='replace', action=actions(i))
      write (unit, '(a)', advance='no') 'abc'
      call pxffseek(unit, 0, seek_set, ierror)
      call pxffseek(unit, 0, seek_end, ierror)
      write (unit, '(a)') 'X'
      close (unit)
      call check_file('abcX' // newline, 'no line end of its own, ' // actions(i))
      open (newunit=unit, file=path, status='replace', action=actions(i))
      write (unit, '(a)', advance='no') 'abc'
      call pxffseek(unit, 0, seek_set, ierror)
      close (unit)
      call check_file('abc', 'nor at CLOSE, ' // actions(i))
    end do
    open (newunit=unit, file=path, status='replace')
    write (unit, '(a)', advance='no') 'abc'
    call pxffgetc(unit, next, ierror)
    call check(ierror, eend, 'nothing is behind it')
    backspace (unit)
    call pxffputc(unit, 'X', ierror)
    close (unit)
    call check_file('Xbc', 'nor in the middle')
    open (newunit=unit, file=path, status='replace')
    write (unit, '(a)', advance='no') 'abc'
    call pxffputc(unit, 'd', ierror)
    write (unit, '(a)') 'e'
    close (unit)
    call check_file('abcde' // newline, 'a record goes on behind pxffputc')
  end subroutine

  ! As the language has it, a sequential file ends behind the record that was written last.
  subroutine sequential_ends()
    integer :: unit, status
    integer(4) :: ierror
    character :: next
    character(20) :: line
    open (newunit=unit, file=path, status='replace')
    write (unit, '(a)') 'one', 'two', 'three'
    call pxffseek(unit, 4, seek_set, ierror)
    write (unit, '(a)') 'II'
    close (unit)
    call check_file('one' // newline // 'II' // newline, 'WRITE behind pxffseek')
    call make_file('one' // newline // 'two' // newline // 'three' // newline)
    open (newunit=unit, file=path)
    read (unit, '(a)') line
    call pxffgetc(unit, next, ierror)
    call check(next, 't', 'pxffgetc behind READ')
    call pxffputc(unit, 'W', ierror)
    read (unit, '(a)') line
    call check(trim(line), 'o', 'READ behind pxffputc behind pxffgetc')
    call pxffputc(unit, 'T', ierror)
    rewind (unit)
    read (unit, '(a)') line
    read (unit, '(a)') line
    call check(trim(line), 'tWo', 'what pxffputc wrote behind READ')
    read (unit, '(a)') line
    call check(trim(line), 'Three', 'and what it left')
    read (unit, '(a)', iostat=status) line
    call check(is_iostat_end(status), 'the end')
    call pxffgetc(unit, next, ierror)
    call check(ierror, eend, 'pxffgetc behind the end')
    call pxffseek(unit, 0, seek_end, ierror)
    write (unit, '(a)', iostat=status) 'four'
    call check(status, 0, 'WRITE behind the end and pxffseek')
    close (unit)
    call check_file('one' // newline // 'tWo' // newline // 'Three' // newline // 'four' // newline, 'a line more')
  end subroutine

  ! Of a position the low 32 bits are told, and no position is a failure.
  subroutine large_positions()
    integer, parameter :: gigabyte = 1073741824
    integer :: unit, i
    integer(4) :: ierror, offset
    character :: next
    open (newunit=unit, file=path, status='replace')
    do i = 1, 5
      call pxffseek(unit, gigabyte, 1, ierror)
      call check(ierror, 0, 'a gigabyte further')
      offset = 4711
      call pxfftell(unit, offset, ierror)
      call check(ierror, 0, 'pxfftell of gigabytes')
      select case (i)
      case (1, 5)
        call check(offset, gigabyte, 'one gigabyte, or five')
      case (2)
        call check(offset, -2147483647 - 1, 'two gigabytes')
      case (3)
        call check(offset, -gigabyte, 'three gigabytes')
      case (4)
        call check(offset, 0, 'four gigabytes')
      end select
    end do
    call pxffputc(unit, 'x', ierror)
    call pxffputc(unit, return, ierror)
    call check(ierror, 0, 'pxffputc behind five gigabytes')
    call pxffseek(unit, -2, seek_end, ierror)
    call pxffgetc(unit, next, ierror)
    call check(next, 'x', 'pxffgetc behind five gigabytes')
    call pxffgetc(unit, next, ierror)
    call check(next, return, 'a file''s carriage return is one')
    call pxffseek(unit, -2147483647 - 1, seek_end, ierror)
    call pxfftell(unit, offset, ierror)
    call check(offset, -gigabyte + 2, 'back from behind five gigabytes')
    call pxffseek(unit, -2147483647 - 1, 1, ierror)
    call check(ierror, 0, 'and back again')
    call pxffseek(unit, -2147483647 - 1, 1, ierror)
    call check(ierror, einval, 'before the file')
    call pxfftell(unit, offset, ierror)
    call check(offset, gigabyte + 2, 'what is refused moves nothing')
    close (unit, status='delete')
  end subroutine

  ! This program again, with lines on a pipe as its standard input.
  subroutine run_on_a_pipe()
    character(*), parameter :: lines = 'one' // newline // 'two' // newline // newline // 'four' // newline // 'five' // &
      newline // 'six'
    character(20) :: argv(2)
    integer(4) :: reader, writer, child, status, ended, count, ierror
    argv = ['units_statements    ', 'stdin               ']
    call pxfpipe(reader, writer, ierror)
    call pxfwrite(writer, lines, len(lines), count, ierror)
    call pxfclose(writer, ierror)
    flush (6)
    call pxffork(child, ierror)
    if (child == 0) then
      call pxfdup2(reader, 0, ierror)
      call pxfexecv('/proc/self/exe', 0, argv, [16, 5], 2, ierror)
      call pxffastexit(1)
    end if
    call pxfclose(reader, ierror)
    call pxfwaitpid(child, status, 0, ended, ierror)
    call check(status, 0, 'standard input on a pipe')
  end subroutine

  ! No line is lost between READ and pxfgetc, whoever reads first.
  subroutine standard_input()
    character(20) :: line
    character :: next
    integer(4) :: ierror, offset
    integer :: i
    read (5, '(a)') line
    call check(trim(line), 'one', 'READ')
    call pxfftell(5, offset, ierror)
    call check(ierror, einval, 'a pipe has no positions to tell')
    call pxffseek(5, 0, seek_set, ierror)
    call check(ierror, einval, 'nor to move to')
    do i = 1, 5
      call pxfgetc(next, ierror)
      call check(ierror, 0, 'IERROR of pxfgetc')
      call check_letter(next, 'two' // newline // newline, i, 'pxfgetc behind READ')
    end do
    read (5, '(a)') line
    call check(trim(line), 'four', 'READ behind pxfgetc')
    read (5, '(a1)', advance='no') next
    call check(next, 'f', 'READ without advancing')
    call pxfgetc(next, ierror)
    call check(next, 'i', 'pxfgetc behind it')
    read (5, '(a)') line
    call check(trim(line), 've', 'READ of what is left')
    do i = 1, 3
      call pxfgetc(next, ierror)
      call check_letter(next, 'six', i, 'pxfgetc of the last line')
    end do
    do i = 1, 3
      next = '#'
      call pxfgetc(next, ierror)
      call check(ierror, eend, 'the end of a pipe')
      call check(next, '#', 'no character at the end')
    end do
  end subroutine

  ! A carriage return ends a record of a pipe for READ, and so it does for pxffgetc.
  subroutine pipes_that_end()
    character(*), parameter :: text = 'a' // return // newline // 'b' // return // 'c'
    character(*), parameter :: expected = 'a' // newline // 'b' // newline // 'c'
    integer(4) :: reader, writer, count, ierror
    character :: next
    integer :: i
    call pxfpipe(reader, writer, ierror)
    call pxfwrite(writer, text, len(text), count, ierror)
    call pxfclose(writer, ierror)
    call pxffdopen(reader, 21, 'r', ierror)
    call pxfclose(reader, ierror)
    do i = 1, len(expected)
      call pxffgetc(21, next, ierror)
      call check_letter(next, expected, i, 'a character of a pipe')
    end do
    call pxffgetc(21, next, ierror)
    call check(ierror, eend, 'the end')
    close (21)
  end subroutine

  ! A pipe that has nothing for now has something later.
  subroutine pipes_that_have_nothing()
    integer(4) :: reader, writer, count, ierror, flags, i
    character :: next
    call pxfpipe(reader, writer, ierror)
    flags = constant('O_NONBLOCK')
    call pxffcntl(reader, constant('F_SETFL'), flags, count, ierror)
    call pxffdopen(reader, 21, 'r', ierror)
    do i = 1, 3
      next = '#'
      call pxffgetc(21, next, ierror)
      call check(ierror, -eagain, 'nothing for now')
      call check(next, '#', 'no character')
      call pxfwrite(writer, 'xy', 2, count, ierror)
      call pxffgetc(21, next, ierror)
      call check(ierror, 0, 'something')
      call check(next, 'x', 'the first')
      call pxffgetc(21, next, ierror)
      call check(next, 'y', 'the second')
    end do
    close (21)
    call pxfclose(reader, ierror)
    call pxfclose(writer, ierror)
  end subroutine

  ! Opened by its name, for reading and writing at once: what is in the pipe stays in order.
  subroutine named_pipes()
    integer(4) :: ierror
    integer :: unit
    character(20) :: line
    character :: next
    call pxfmkfifo(directory // '/pipe', 0, int(o'600'), ierror)
    open (newunit=unit, file=directory // '/pipe', action='readwrite')
    write (unit, '(a)') 'first', 'second', 'third'
    call pxffflush(unit, ierror)
    call check(ierror, 0, 'pxffflush of a pipe')
    read (unit, '(a)') line
    call pxffgetc(unit, next, ierror)
    call check(next, 's', 'pxffgetc behind READ')
    call pxffflush(unit, ierror)
    read (unit, '(a)') line
    call check(trim(line), 'econd', 'READ behind pxffflush')
    read (unit, '(a)') line
    call check(trim(line), 'third', 'and the last')
    close (unit, status='delete')
  end subroutine

  subroutine terminals()
    integer(c_int) :: master
    integer(4) :: terminal, count, ierror
    character(:), allocatable :: device
    character(20) :: line
    character :: next
    integer :: i
    call open_pseudo_terminal(master, device)
    call pxfopen(device, 0, constant('O_RDWR') + constant('O_NOCTTY'), 0, terminal, ierror)
    call pxffdopen(terminal, 21, 'r', ierror)
    call pxfwrite(master, 'one' // newline // 'two' // newline // 'three' // newline // achar(4), 15, count, ierror)
    read (21, '(a)') line
    call check(trim(line), 'one', 'READ of a terminal')
    do i = 1, 4
      call pxffgetc(21, next, ierror)
      call check_letter(next, 'two' // newline, i, 'pxffgetc of a terminal')
    end do
    read (21, '(a)') line
    call check(trim(line), 'three', 'READ again')
    call pxffgetc(21, next, ierror)
    call check(ierror, eend, 'the end that was typed')
    close (21)
    call pxfclose(terminal, ierror)
    call pxfclose(master, ierror)
  end subroutine

  ! The leader of a session gets no controlling terminal by connecting one to a unit.
  subroutine controlling_terminals()
    integer(c_int) :: master
    integer(4) :: terminal, child, status, ended, descriptor, session, ierror
    character(:), allocatable :: device
    call open_pseudo_terminal(master, device)
    flush (6)
    call pxffork(child, ierror)
    if (child == 0) then
      call pxfsetsid(session, ierror)
      if (ierror /= 0) call pxffastexit(1)
      call pxfopen(device, 0, constant('O_RDWR') + constant('O_NOCTTY'), 0, terminal, ierror)
      call pxffdopen(terminal, 21, 'r+', ierror)
      if (ierror /= 0) call pxffastexit(2)
      call pxfopen('/dev/tty', 0, constant('O_RDWR'), 0, descriptor, ierror)
      call pxffastexit(merge(0, 3, ierror == enxio))
    end if
    call pxfwaitpid(child, status, 0, ended, ierror)
    call check(status, 0, 'no controlling terminal')
    call pxfclose(master, ierror)
  end subroutine

  ! A unit's own descriptor is connected already: nothing is lost.
  subroutine own_descriptors()
    integer(4) :: reader, writer, own, again, count, ierror
    character(20) :: line
    call pxfpipe(reader, writer, ierror)
    call pxffdopen(reader, 21, 'r', ierror)
    call pxffileno(21, own, ierror)
    call pxfwrite(writer, 'one' // newline // 'two' // newline, 8, count, ierror)
    read (21, '(a)') line
    call pxffdopen(own, 21, 'r', ierror)
    call check(ierror, 0, 'pxffdopen of the unit''s own pipe')
    call pxffileno(21, again, ierror)
    call check(again, own, 'the descriptor stays')
    read (21, '(a)') line
    call check(trim(line), 'two', 'and what READ had in its buffer')
    call pxffdopen(own, 21, 'w', ierror)
    call check(ierror, einval, 'it allows no more than before')
    close (21)
    call pxfclose(reader, ierror)
    call pxfclose(writer, ierror)
  end subroutine

  ! A unit whose descriptor the program closed can be connected anew, also one that NEWUNIT numbered. Each in a process of
  ! its own: the run-time may crash there.
  subroutine closed_descriptors()
    integer(4) :: child, status, ended, ierror
    integer :: i
    call make_file('text' // newline)
    flush (6)
    do i = 1, 4
      call pxffork(child, ierror)
      if (child == 0) call pxffastexit(connect_again(mod(i, 2) == 0, i > 2))
      call pxfwaitpid(child, status, 0, ended, ierror)
      call check(status, 0, 'pxffdopen of a unit whose descriptor was closed')
    end do
  end subroutine

  integer(4) function connect_again(numbered_by_newunit, written) result(step)
    logical, intent(in) :: numbered_by_newunit, written
    integer(4) :: own, descriptor, ierror
    integer :: unit
    character(20) :: line
    unit = 21
    if (numbered_by_newunit) then
      open (newunit=unit, file=directory // '/other', status='replace')
    else
      open (unit, file=directory // '/other', status='replace')
    end if
    if (written) write (unit, '(a)') 'lost'
    call pxfopen(path, 0, constant('O_RDWR'), 0, descriptor, ierror)
    call pxffileno(unit, own, ierror)
    call pxfclose(own, ierror)
    call pxffdopen(descriptor, unit, 'r+', ierror)
    step = 1
    if (ierror /= 0) return
    read (unit, '(a)') line
    step = 2
    if (line /= 'text') return
    close (unit)
    call pxfclose(descriptor, step)
  end function

  subroutine numbers_of_no_unit()
    integer(4) :: descriptor, ierror, before
    integer :: i, unit
    character(10) :: text
    call pxfopen('/dev/null', 0, constant('O_RDWR'), 0, descriptor, ierror)
    write (text, '(a)') nested()
    before = lowest()
    do i = 1, 30
      call pxffdopen(descriptor, -i, 'r', ierror)
      call check(ierror, einval, 'a negative number that is no unit')
    end do
    call pxffdopen(descriptor, -2147483647 - 1, 'r', ierror)
    call check(ierror, einval, 'the most negative number')
    open (newunit=unit, status='scratch')
    close (unit)
    call pxffdopen(descriptor, unit, 'r', ierror)
    call check(ierror, einval, 'a number of NEWUNIT that was closed')
    call check(lowest(), before, 'no descriptor is left open')
    call pxfclose(descriptor, ierror)
    write (text, '(a)') nested()
    call check(trim(text), '7', 'internal files go on')
  end subroutine

  ! A second internal file at the same time.
  function nested() result(text)
    character(10) :: text
    write (text, '(i0)') 7
  end function

  subroutine no_descriptor_is_left_open()
    integer(4) :: reader, writer, before, ierror
    integer :: i
    before = lowest()
    do i = 1, 3
      call pxfpipe(reader, writer, ierror)
      call pxffdopen(reader, 21, 'r', ierror)
      call pxffdopen(writer, 22, 'w', ierror)
      call pxffdopen(reader, 21, 'r', ierror)
      call check(ierror, 0, 'connected again')
      close (21)
      close (22)
      call pxfclose(reader, ierror)
      call pxfclose(writer, ierror)
      call check(lowest(), before, 'nothing is left of a pipe''s units')
    end do
  end subroutine

  ! What may be asked of a descriptor that allows one direction, or both.
  subroutine accesses()
    integer(4) :: writing, both, ierror
    character :: next
    call make_file('ab')
    call pxfopen(path, 0, constant('O_WRONLY'), 0, writing, ierror)
    call pxffdopen(writing, 21, 'r', ierror)
    call check(ierror, einval, 'r of a descriptor for writing')
    call pxffdopen(writing, 21, 'a', ierror)
    call check(ierror, 0, 'a of a descriptor for writing')
    call pxffputc(21, 'A', ierror)
    call check(ierror, 0, 'a writes')
    close (21)
    call check_file('Ab', 'where the descriptor stands')
    call pxfclose(writing, ierror)
    call pxfopen(path, 0, constant('O_RDWR'), 0, both, ierror)
    call pxffdopen(both, 21, 'a', ierror)
    call check(ierror, 0, 'a of a descriptor for both')
    call pxffgetc(21, next, ierror)
    call check(ierror, -ebadf, 'a does not read')
    call pxffdopen(both, 21, 'a+', ierror)
    call pxffgetc(21, next, ierror)
    call check(ierror, 0, 'a+ reads')
    call check(next, 'A', 'where the descriptor stands')
    call pxffdopen(both, 21, 'r', ierror)
    call pxffputc(21, 'x', ierror)
    call check(ierror, -ebadf, 'r does not write')
    close (21)
    call pxfclose(both, ierror)
  end subroutine

end program
