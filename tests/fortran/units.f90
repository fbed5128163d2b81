! FSTAT, ISATTY and TTYNAM on units that the program opened.
program units
  use, intrinsic :: iso_c_binding, only: c_int
  use, intrinsic :: iso_fortran_env, only: error_unit, input_unit, output_unit
  use checks, only: check, finish
  use pseudo_terminals, only: open_pseudo_terminal
  use qxport
  implicit none
  integer(4), parameter :: ebadf = 9, einval = 22, enotty = 25, erange = 34

  interface
    function host_isatty(descriptor) bind(C, name='isatty') result(answer)
      import :: c_int
      integer(c_int), value :: descriptor
      integer(c_int) :: answer
    end function
  end interface

  character(1024) :: path
  integer :: unit

  call getenv('TMPDIR', path)
  if (path == ' ') path = '/tmp'
  write (path, '(2a, i0)') trim(path), '/qxport.units.', getpid()

  open (unit=77, file=path, status='new', access='stream', form='unformatted')
  call check_file(77, path)
  call check_removed_file(77, path)
  close (77)
  call check_unconnected(77, 'a closed unit')

  open (newunit=unit, file=path, status='new')
  call check(unit < 0, 'newunit is negative')
  call check_kind(unit, MODE_REGULAR, 'newunit')
  call check_no_terminal(unit, 'newunit')
  close (unit, status='delete')
  call check_unconnected(unit, 'a closed newunit')

  open (newunit=unit, status='scratch', form='unformatted')
  call check_kind(unit, MODE_REGULAR, 'a scratch file')
  call check_no_terminal(unit, 'a scratch file')
  close (unit)

  open (newunit=unit, status='scratch', access='direct', recl=100)
  write (unit, rec=3) repeat('x', 100)
  flush (unit)
  call check_size(unit, 300_8, 'direct access')
  close (unit)

  open (unit=2147483647, file='/dev/null', action='read')
  call check_kind(2147483647, MODE_CHARACTER_DEVICE, 'the largest unit number')
  call check_no_terminal(2147483647, 'the largest unit number')
  close (2147483647)

  call check_unconnected(78, 'a unit never opened')
  call check_numbers_of_newunits()
  call check_unconnected(2147483647, 'a huge number')
  call check_unconnected(-2147483647, 'a huge negative number')
  call check_unconnected(-2147483647 - 1, 'the most negative number')

  call check_stream(input_unit, 0_c_int)
  call check_stream(output_unit, 1_c_int)
  call check_stream(error_unit, 2_c_int)

  call check_large_file()
  call check_terminal()
  call finish()

contains

  subroutine check_recorded(expected, what)
    integer(4), intent(in) :: expected
    character(*), intent(in) :: what
    integer(4) :: io, number, status, unit, condition
    call errsns(io, number, status, unit, condition)
    call check(number, expected, what // ': errsns')
  end subroutine

  subroutine check_kind(unit, kind, what)
    integer, intent(in) :: unit
    integer(4), intent(in) :: kind
    character(*), intent(in) :: what
    integer(4) :: statb(13)
    call check(fstat(unit, statb), 0, what // ': fstat')
    call check(iand(statb(STAT_MODE), MODE_TYPE_MASK), kind, what // ': type')
  end subroutine

  subroutine check_size(unit, expected, what)
    integer, intent(in) :: unit
    integer(8), intent(in) :: expected
    character(*), intent(in) :: what
    integer(8) :: statb(13)
    call check(fstati8(unit, statb), 0, what // ': fstati8')
    call check(statb(STAT_SIZE), expected, what // ': size')
  end subroutine

  ! The unit has the status that the file has by its name.
  subroutine check_file(unit, name)
    integer, intent(in) :: unit
    character(*), intent(in) :: name
    integer(4) :: by_name(13), by_unit(13)
    integer(8) :: by_name8(13), by_unit8(13)
    write (unit) 'ten bytes!'
    flush (unit)
    by_name = -77
    by_unit = -77
    by_name8 = -77
    by_unit8 = -77
    call check(stat(name, by_name), 0, 'stat')
    call check(stati8(name, by_name8), 0, 'stati8')
    call check(fstat(unit, by_unit), 0, 'fstat')
    call check(fstati8(unit, by_unit8), 0, 'fstati8')
    call check(all(by_unit == by_name), 'the status of the unit is the file''s')
    call check(all(by_unit8 == by_name8), 'so it is in INTEGER(8)')
    call check(by_unit(STAT_SIZE), 10, 'size')
    call check(by_unit(13) == -77 .and. by_unit8(13) == -77, 'element 13 stays')
    call check_no_terminal(unit, 'a file')
  end subroutine

  subroutine check_removed_file(unit, name)
    integer, intent(in) :: unit
    character(*), intent(in) :: name
    integer(4) :: statb(13)
    call check(unlink(name), 0, 'unlink')
    call check(fstat(unit, statb), 0, 'fstat of a removed file')
    call check(statb(STAT_LINKS), 0, 'links of a removed file')
    call check(statb(STAT_SIZE), 10, 'size of a removed file')
  end subroutine

  subroutine check_no_terminal(unit, what)
    integer, intent(in) :: unit
    character(*), intent(in) :: what
    character(300) :: name
    logical :: answer
    integer(4) :: last
    answer = isatty(unit)
    call check(.not. answer, what // ': isatty')
    name = repeat('#', 300)
    call ttynam(name, unit)
    last = getlasterror()
    call check(last, enotty, what // ': errno of ttynam')
    call check(name, repeat(' ', 300), what // ': ttynam')
    call check_recorded(enotty, what)
  end subroutine

  subroutine check_unconnected(unit, what)
    integer, intent(in) :: unit
    character(*), intent(in) :: what
    integer(4) :: statb(13), answer, last
    integer(8) :: statb8(13)
    character(300) :: name
    logical :: terminal
    statb = -77
    statb8 = -77
    answer = fstat(unit, statb)
    last = getlasterror()
    call check(answer, einval, what // ': fstat')
    call check(last, einval, what // ': errno of fstat')
    call check(ierrno(), einval, what // ': ierrno of fstat')
    call check_recorded(einval, what // ': fstat')
    call check(fstati8(unit, statb8), einval, what // ': fstati8')
    call check(all(statb == -77) .and. all(statb8 == -77), what // ': the arrays stay')
    terminal = isatty(unit)
    last = getlasterror()
    call check(.not. terminal, what // ': isatty')
    call check(last, ebadf, what // ': errno of isatty')
    call check_recorded(ebadf, what // ': isatty')
    name = repeat('#', 300)
    call ttynam(name, unit)
    last = getlasterror()
    call check(name, repeat(' ', 300), what // ': ttynam')
    call check(last, ebadf, what // ': errno of ttynam')
    call check_recorded(ebadf, what // ': ttynam')
    call check(ierrno(), einval, what // ': isatty and ttynam leave ierrno')
  end subroutine

  ! No newunit is open. The run-time gives the same numbers to internal files, also for a while after their use.
  subroutine check_numbers_of_newunits()
    character(20) :: text, what
    integer :: unit
    write (text, '(a)') nested()
    read (text, '(a)') what
    do unit = -1, -30, -1
      write (what, '(a, i0)') 'unit ', unit
      call check_unconnected(unit, trim(what))
    end do
    open (newunit=unit, status='scratch')
    write (text, '(a)') nested()
    call check_kind(unit, MODE_REGULAR, 'a newunit beside internal files')
    call check_no_terminal(unit, 'a newunit beside internal files')
    close (unit)
    write (text, '(a)') nested()
    call check_unconnected(unit, 'a closed newunit beside internal files')
  end subroutine

  ! A second internal file at the same time.
  function nested() result(text)
    character(10) :: text
    write (text, '(i0)') 7
  end function

  ! A preconnected unit is the host's descriptor.
  subroutine check_stream(unit, descriptor)
    integer, intent(in) :: unit
    integer(c_int), intent(in) :: descriptor
    integer(4) :: statb(13)
    logical :: terminal
    terminal = isatty(unit)
    call check(terminal .eqv. host_isatty(descriptor) /= 0, 'isatty of a preconnected unit')
    call check(fstat(unit, statb), 0, 'fstat of a preconnected unit')
  end subroutine

  subroutine check_large_file()
    integer(8), parameter :: size = 3221225472_8
    integer(4) :: statb(13), answer, last
    integer :: unit
    open (newunit=unit, status='scratch', access='stream', form='unformatted')
    write (unit, pos=size) 'x'
    flush (unit)
    statb = -77
    answer = fstat(unit, statb)
    last = getlasterror()
    call check(answer, erange, 'fstat of 3 GB')
    call check(last, erange, 'errno of 3 GB')
    call check(ierrno(), erange, 'ierrno of 3 GB')
    call check_recorded(erange, '3 GB')
    call check(statb(STAT_SIZE), -1, 'size of 3 GB')
    call check(iand(statb(STAT_MODE), MODE_TYPE_MASK), MODE_REGULAR, 'all else of 3 GB is filled')
    call check(statb(13), -77, 'element 13 of 3 GB stays')
    call check_size(unit, size, '3 GB')
    close (unit)
  end subroutine

  ! The master's side stays open to the end: closing it would hang up what the program runs on.
  subroutine check_terminal()
    integer(c_int) :: master
    character(300) :: name
    character(:), allocatable :: expected
    logical :: terminal
    integer :: unit
    call open_pseudo_terminal(master, expected)
    open (newunit=unit, file=expected, action='readwrite')
    terminal = isatty(unit)
    call check(terminal, 'isatty of a terminal')
    call check_kind(unit, MODE_CHARACTER_DEVICE, 'a terminal')
    call ttynam(name, unit)
    call check(name, expected // repeat(' ', 300 - len(expected)), 'ttynam of a terminal')
    call ttynam(name(1:4), unit)
    call check(name(1:4), expected(1:4), 'ttynam is cut')
    call check(getlasterror(), einval, 'errno of a name that was cut')
    call check_recorded(einval, 'a name that was cut')
    close (unit)
    call check_unconnected(unit, 'a closed terminal')
  end subroutine

end program
