! A signal's procedure that ends a pipe.
module ends_of_pipes
  use, intrinsic :: iso_c_binding, only: c_int
  use qxport, only: pxfclose
  implicit none
  integer(4) :: end_to_close

contains

  subroutine close_the_end(signal) bind(C)
    integer(c_int), value :: signal
    integer(4) :: ierror
    if (signal /= 0) call pxfclose(end_to_close, ierror)
  end subroutine

end module

! Units on descriptors of every kind, and what the host refuses them: no failure passes for a success or for the end of
! the file.
program posix_units_host
  use, intrinsic :: iso_c_binding, only: c_funloc, c_funptr, c_int, c_intptr_t, c_long
  use checks, only: check, finish
  use ends_of_pipes, only: close_the_end, end_to_close
  use pseudo_terminals, only: open_pseudo_terminal
  use qxport
  implicit none
  integer(4), parameter :: ebadf = 9, einval = 22, enospc = 28, eend = -1

  interface
    function socketpair(domain, type, protocol, sockets) bind(C) result(answer)
      import :: c_int
      integer(c_int), value :: domain, type, protocol
      integer(c_int), intent(out) :: sockets(2)
      integer(c_int) :: answer
    end function
    function limit_of(resource, limit) bind(C, name='getrlimit') result(answer)
      import :: c_int, c_long
      integer(c_int), value :: resource
      integer(c_long), intent(out) :: limit(2)
      integer(c_int) :: answer
    end function
    function set_limit(resource, limit) bind(C, name='setrlimit') result(answer)
      import :: c_int, c_long
      integer(c_int), value :: resource
      integer(c_long), intent(in) :: limit(2)
      integer(c_int) :: answer
    end function
    function ignore(signal, handler) bind(C, name='signal') result(former)
      import :: c_int, c_intptr_t
      integer(c_int), value :: signal
      integer(c_intptr_t), value :: handler
      integer(c_intptr_t) :: former
    end function
    function handle(signal, handler) bind(C, name='signal') result(former)
      import :: c_funptr, c_int, c_intptr_t
      integer(c_int), value :: signal
      type(c_funptr), value :: handler
      integer(c_intptr_t) :: former
    end function
    function siginterrupt(signal, flag) bind(C) result(answer)
      import :: c_int
      integer(c_int), value :: signal, flag
      integer(c_int) :: answer
    end function
    function ualarm(microseconds, interval) bind(C) result(former)
      import :: c_int
      integer(c_int), value :: microseconds, interval
      integer(c_int) :: former
    end function
    function setuid(user) bind(C) result(answer)
      import :: c_int
      integer(c_int), value :: user
      integer(c_int) :: answer
    end function
  end interface

  character(1024) :: base
  character(:), allocatable :: path

  call getenv('TMPDIR', base)
  if (base == ' ') base = '/tmp'
  write (base, '(2a, i0)') trim(base), '/qxport.units.host.', getpid()
  path = trim(base)
  call sockets()
  call terminals()
  call pipes_without_positions()
  call rights_of_former_times()
  call interrupted_at_the_end()
  call descriptors_stay_in_the_program()
  call numbers_of_internal_files()
  call wrong_direction()
  call full_device()
  call full_file()
  deallocate (path)
  call finish()

contains

  integer(4) function constant(name)
    character(*), intent(in) :: name
    integer(4) :: ierror
    call pxfconst(name, constant, ierror)
    call check(ierror, 0, name)
  end function

  ! One unit writes, the other reads, and back.
  subroutine check_talk(one, other, what)
    integer, intent(in) :: one, other
    character(*), intent(in) :: what
    character(40) :: line
    character :: ch
    integer(4) :: ierror
    integer :: status
    write (one, '(a, i0)') 'number ', 42
    call pxffflush(one, ierror)
    call check(ierror, 0, what // ': pxffflush')
    read (other, '(a)', iostat=status) line
    call check(trim(line), 'number 42', what // ': READ')
    call pxffputc(one, 'x', ierror)
    call check(ierror, 0, what // ': pxffputc')
    call pxffputc(one, 'y', ierror)
    call pxffflush(one, ierror)
    call pxffgetc(other, ch, ierror)
    call check(ch, 'x', what // ': pxffgetc')
    call pxffgetc(other, ch, ierror)
    call check(ch, 'y', what // ': pxffgetc again')
  end subroutine

  subroutine sockets()
    integer(c_int) :: ends(2)
    integer(4) :: ierror
    character :: ch
    call check(socketpair(1_c_int, 1_c_int, 0_c_int, ends), 0, 'socketpair')
    call pxffdopen(ends(1), 31, 'r+', ierror)
    call check(ierror, 0, 'a unit on a socket')
    call pxffdopen(ends(2), 32, ' ', ierror)
    call check(ierror, 0, 'a unit on the other socket')
    call check_talk(31, 32, 'a socket')
    call check_talk(32, 31, 'the other socket')
    close (32)
    call pxfclose(ends(2), ierror)
    ch = '#'
    call pxffgetc(31, ch, ierror)
    call check(ierror, eend, 'the end of a socket')
    call check(ch, '#', 'no character at the end of a socket')
    close (31)
    call pxfclose(ends(1), ierror)
  end subroutine

  ! The master's side is read and written below the units.
  subroutine terminals()
    integer(c_int) :: master
    integer(4) :: terminal, ierror, count
    character(:), allocatable :: device
    character(40) :: line
    integer :: status
    call open_pseudo_terminal(master, device)
    call pxfopen(device, 0, constant('O_RDWR') + constant('O_NOCTTY'), 0, terminal, ierror)
    call pxffdopen(terminal, 33, 'r+', ierror)
    call check(ierror, 0, 'a unit on a terminal')
    call pxfwrite(master, 'typed' // new_line('a'), 6, count, ierror)
    read (33, '(a)', iostat=status) line
    call check(trim(line), 'typed', 'READ of what was typed')
    call pxfread(master, line, 40, count, ierror)
    write (33, '(a)', iostat=status) 'shown'
    call pxffflush(33, ierror)
    call check(ierror, 0, 'pxffflush of a terminal')
    call pxfread(master, line, 40, count, ierror)
    call check(line(:count), 'shown' // achar(13) // new_line('a'), 'WRITE is shown')
    close (33)
    call pxfclose(terminal, ierror)
    call pxfclose(master, ierror)
  end subroutine

  subroutine pipes_without_positions()
    integer(4) :: reader, writer, position, ierror
    call pxfpipe(reader, writer, ierror)
    call pxffdopen(writer, 34, 'w', ierror)
    position = 4711
    call pxfftell(34, position, ierror)
    call check(ierror, einval, 'pxfftell of a pipe')
    call check(position, 4711, 'the offset is left alone')
    call pxffseek(34, 0, constant('SEEK_SET'), ierror)
    call check(ierror, einval, 'pxffseek of a pipe')
    close (34)
    call pxfclose(reader, ierror)
    call pxfclose(writer, ierror)
  end subroutine

  ! The signal comes while the read waits, and it is its procedure that ends the pipe.
  subroutine interrupted_at_the_end()
    integer(c_int), parameter :: sigalrm = 14
    integer(c_intptr_t) :: former_action
    integer(4) :: reader, ierror, answer
    character :: ch
    ch = '#'
    call pxfpipe(reader, end_to_close, ierror)
    call pxffdopen(reader, 38, 'r', ierror)
    former_action = handle(sigalrm, c_funloc(close_the_end))
    call check(siginterrupt(sigalrm, 1_c_int), 0, 'siginterrupt')
    answer = ualarm(20000_c_int, 0_c_int)
    call pxffgetc(38, ch, ierror)
    call check(ierror, eend, 'an interrupted read is begun again, and comes to the end')
    call check(ch, '#', 'no character at the end')
    former_action = ignore(sigalrm, former_action)
    close (38)
    call pxfclose(reader, ierror)
  end subroutine

  ! What was opened with other rights stays open: the file is nobody's by now, and a process that gave up the
  ! superuser's rights cannot even open its own descriptors by name.
  subroutine rights_of_former_times()
    integer(4) :: descriptor, reader, writer, child, count, ierror, status, ended
    character(20) :: text
    call pxfopen(path, 0, constant('O_RDWR') + constant('O_CREAT'), int(o'600', 4), descriptor, ierror)
    call check(ierror, 0, 'a file of its own')
    call pxfwrite(descriptor, 'first' // new_line('a') // 'second' // new_line('a'), 13, count, ierror)
    call pxfchmod(path, 0, 0, ierror)
    call pxflseek(descriptor, 6, constant('SEEK_SET'), count, ierror)
    call pxfpipe(reader, writer, ierror)
    flush (6)
    call pxffork(child, ierror)
    if (child == 0) then
      if (getuid() == 0) call check(setuid(65534_c_int), 0, 'setuid')
      call pxffdopen(descriptor, 35, 'r+', ierror)
      if (ierror /= 0) call pxffastexit(1)
      read (35, '(a)') text
      if (text /= 'second') call pxffastexit(2)
      write (35, '(a)') 'third'
      call pxffflush(35, ierror)
      if (ierror /= 0) call pxffastexit(3)
      call pxffdopen(writer, 36, 'w', ierror)
      if (ierror /= 0) call pxffastexit(4)
      write (36, '(a)') 'piped'
      call pxffflush(36, ierror)
      call pxffastexit(ierror)
    end if
    call pxfwait(status, ended, ierror)
    call check(status, 0, 'units on descriptors of former rights')
    call pxfclose(writer, ierror)
    call pxfread(reader, text, 20, count, ierror)
    call check(text(:count), 'piped' // new_line('a'), 'what came through the pipe')
    call pxfclose(reader, ierror)
    call pxflseek(descriptor, 13, constant('SEEK_SET'), count, ierror)
    call pxfread(descriptor, text, 20, count, ierror)
    call check(text(:count), 'third' // new_line('a'), 'what came into the file')
    call pxfclose(descriptor, ierror)
    call pxfunlink(path, 0, ierror)
    call check(ierror, 0, 'the file is removed')
  end subroutine

  subroutine descriptors_stay_in_the_program()
    integer(4) :: reader, writer, descriptor, argument, flags, ierror
    call pxfpipe(reader, writer, ierror)
    call pxffdopen(writer, 37, 'w', ierror)
    call pxffileno(37, descriptor, ierror)
    argument = 0
    call pxffcntl(descriptor, constant('F_GETFD'), argument, flags, ierror)
    call check(flags, 1, 'a unit''s descriptor is closed when another program is executed')
    call pxffcntl(writer, constant('F_GETFD'), argument, flags, ierror)
    call check(flags, 0, 'the caller''s stays as it was')
    close (37)
    call pxfclose(reader, ierror)
    call pxfclose(writer, ierror)
  end subroutine

  ! The run-time has negative numbers of its own, also for a while after their use. None is the program's unit.
  subroutine numbers_of_internal_files()
    character(20) :: text, what
    integer :: unit, i
    write (text, '(a)') nested()
    read (text, '(a)') what
    do i = 1, 30
      call check_unconnected(-i)
    end do
    do unit = -2147483647 - 1, -2147483640
      call check_unconnected(unit)
    end do
    call check_unconnected(2147483647)
  end subroutine

  ! A second internal file at the same time.
  function nested() result(text)
    character(10) :: text
    write (text, '(i0)') 7
  end function

  subroutine check_unconnected(unit)
    integer, intent(in) :: unit
    character(30) :: what
    character :: ch
    integer(4) :: ierror, value
    write (what, '(a, i0)') 'unit ', unit
    ch = '#'
    call pxffgetc(unit, ch, ierror)
    call check(ierror, -ebadf, trim(what) // ': pxffgetc')
    call check(ch, '#', trim(what) // ': its character')
    call pxffputc(unit, 'x', ierror)
    call check(ierror, -ebadf, trim(what) // ': pxffputc')
    call pxfftell(unit, value, ierror)
    call check(ierror, einval, trim(what) // ': pxfftell')
    call pxffseek(unit, 0, 0, ierror)
    call check(ierror, einval, trim(what) // ': pxffseek')
    call pxffflush(unit, ierror)
    call check(ierror, ebadf, trim(what) // ': pxffflush')
    call pxffileno(unit, value, ierror)
    call check(ierror, ebadf, trim(what) // ': pxffileno')
    call check(value, -1, trim(what) // ': its descriptor')
  end subroutine

  subroutine wrong_direction()
    integer :: unit
    integer(4) :: ierror
    character :: ch
    ch = '#'
    open (newunit=unit, file=path, action='write')
    call pxffgetc(unit, ch, ierror)
    call check(ierror, -ebadf, 'pxffgetc of a unit for writing')
    call check(ch, '#', 'its character is left alone')
    close (unit)
    open (newunit=unit, file=path, action='read')
    call pxffputc(unit, 'x', ierror)
    call check(ierror, -ebadf, 'pxffputc of a unit for reading')
    call pxffflush(unit, ierror)
    call check(ierror, 0, 'nothing is left to be written')
    call pxffgetc(unit, ch, ierror)
    call check(ierror, eend, 'the unit is at its end as before')
    close (unit, status='delete')
  end subroutine

  subroutine full_device()
    integer(4) :: ierror
    open (41, file='/dev/full', action='write')
    call pxffputc(41, 'x', ierror)
    call check(ierror, -enospc, 'pxffputc to a full device')
    write (41, '(a)') 'text'
    call pxffflush(41, ierror)
    call check(ierror, ebadf, 'pxffflush to a full device')
    close (41)
  end subroutine

  ! The buffer takes what the file does not.
  subroutine full_file()
    integer(c_int), parameter :: file_size = 1, sigxfsz = 25
    integer(c_intptr_t), parameter :: ignored = 1
    integer(c_intptr_t) :: former_action
    integer(c_long) :: former(2)
    integer(4) :: ierror
    logical :: flushed, committed
    former_action = ignore(sigxfsz, ignored)
    open (42, file=path, action='readwrite')
    call check(limit_of(file_size, former), 0, 'getrlimit')
    call check(set_limit(file_size, [5_c_long, former(2)]), 0, 'setrlimit')
    write (42, '(a)') 'more than five'
    flushed = flushqq(42)
    committed = commitqq(42)
    call pxffflush(42, ierror)
    call check(set_limit(file_size, former), 0, 'setrlimit back')
    call check(.not. flushed, 'flushqq of a full file')
    call check(.not. committed, 'commitqq of a full file')
    call check(ierror, ebadf, 'pxffflush of a full file')
    call pxffflush(42, ierror)
    call check(ierror, 0, 'pxffflush once there is room')
    close (42, status='delete')
    former_action = ignore(sigxfsz, former_action)
  end subroutine

end program
