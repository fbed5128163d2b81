! What the tests of characters and positions of units share: files, and how each routine tells a success, the end of the
! file and a refusal.
module unit_checks
  use, intrinsic :: iso_fortran_env, only: int64
  use checks, only: check
  use qxport, only: errsns, fgetc, fputc, fseek, fseeki8, ftell, ftelli8, getlasterror, getpos, getposi8, ierrno, isatty
  implicit none
  private
  public :: check_end, check_next, check_no_position, check_no_reading, check_no_writing, check_nothing_recorded, contents
  public :: make_file, mark_errors, put
  integer(4), parameter :: ebadf = 9, einval = 22, eend = -1
  integer, parameter :: seek_set = 0

contains

  subroutine make_file(path, text)
    character(*), intent(in) :: path, text
    integer :: unit
    open (newunit=unit, file=path, status='replace', access='stream', form='unformatted')
    write (unit) text
    close (unit)
  end subroutine

  function contents(path) result(found)
    character(*), intent(in) :: path
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

  ! What the run-time's status has.
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

end module
