! Characters and positions of units as programs use them that know of no module.
program unit_characters_external
  use checks, only: check, finish
  use scratch, only: remove_directory, scratch_directory
  implicit none
  integer(4), parameter :: ebadf = 9, einval = 22, eend = -1, unit = 21
  integer(4), external :: fgetc, fputc, fseek, fseeki8, ftell, getc, getpos, ierrno, putc
  integer(8), external :: ftelli8, getposi8
  external :: flush, pxffastexit, pxffork, pxfwaitpid
  character(:), allocatable, save :: directory, name

  directory = scratch_directory()
  name = directory // '/file'
  call check_characters()
  call check_positions()
  call check_closed_unit()
  call check_standard_units()
  call remove_directory(directory)
  call finish()

contains

  integer(4) function size_of_file()
    integer :: other
    open (newunit=other, file=name, status='old', action='read')
    inquire (other, size=size_of_file)
    close (other)
  end function

  subroutine check_characters()
    character(1) :: next
    character(10) :: line
    open (unit, file=name, status='replace')
    write (unit, '(a)', advance='no') 'a'
    call check(fputc(unit, 'b'), 0, 'fputc')
    write (unit, '(a)') 'c'
    call check(fputc(unit, 'd'), 0, 'fputc of a line')
    call check(size_of_file(), 0, 'fputc is buffered')
    call flush(unit)
    call check(size_of_file(), 5, 'flush')
    rewind (unit)
    call check(fgetc(unit, next), 0, 'fgetc')
    call check(next, 'a', 'its character')
    read (unit, '(a)') line
    call check(trim(line), 'bc', 'READ behind fgetc')
    call check(fgetc(unit, next), 0, 'fgetc behind READ')
    call check(next, 'd', 'its character')
    next = '#'
    call check(fgetc(unit, next), eend, 'the end')
    call check(next, '#', 'no character at the end')
    close (unit, status='delete')
  end subroutine

  subroutine check_positions()
    character(1) :: next
    open (unit, file=name, status='replace')
    call check(fseeki8(unit, 4294967301_8, 0), 0, 'fseeki8')
    call check(fputc(unit, 'x'), 0, 'fputc behind 4 GiB')
    call check(ftelli8(unit), 4294967302_8, 'ftelli8')
    call check(getposi8(unit), 4294967302_8, 'getposi8')
    call check(ftell(unit), 6, 'the low 32 bits by ftell')
    call check(getpos(unit), 6, 'the low 32 bits by getpos')
    call check(fseek(unit, 0, 7), -einval, 'an origin that is none')
    call check(ierrno(), -einval, 'its ierrno')
    call check(fseek(unit, -1, 1), 0, 'fseek')
    call check(ierrno(), 0, 'ierrno of a success')
    call check(fgetc(unit, next), 0, 'fgetc behind 4 GiB')
    call check(next, 'x', 'its character')
    close (unit, status='delete')
  end subroutine

  subroutine check_closed_unit()
    character(1) :: next
    next = '#'
    call check(fseek(unit, 0, 0), -ebadf, 'fseek of a closed unit')
    call check(fgetc(unit, next), einval, 'fgetc of a closed unit')
    call check(next, '#', 'its character')
    call check(ierrno(), einval, 'its ierrno')
    call check(fseeki8(unit, 0_8, 0), -ebadf, 'fseeki8 of a closed unit')
    call check(getpos(unit), -ebadf, 'getpos of a closed unit')
    call check(getposi8(unit), -9_8, 'getposi8 of a closed unit')
    call check(ierrno(), -ebadf, 'which tells nothing')
    call check(fputc(unit, 'x'), einval, 'fputc of a closed unit')
    call check(ierrno(), einval, 'its ierrno')
    call check(ftell(unit), -ebadf, 'ftell of a closed unit')
    call check(ierrno(), ebadf, 'its ierrno')
    call check(fputc(unit, 'x'), einval, 'fputc of a closed unit')
    call check(ftelli8(unit), -9_8, 'ftelli8 of a closed unit')
    call check(ierrno(), ebadf, 'its ierrno')
    call flush(unit)
    call check(ierrno(), ebadf, 'flush tells nothing')
  end subroutine

  ! In a process of its own, since the checks speak on one of the units.
  subroutine check_standard_units()
    integer(4) :: child, status, ended, ierror, answer, i
    character(1) :: next
    character(4) :: line
    flush (6)
    call pxffork(child, ierror)
    if (child == 0) then
      open (6, file=name, status='replace', action='write')
      do i = 1, 3
        answer = putc('xyz'(i:i))
        if (answer /= 0) call pxffastexit(1)
      end do
      close (6)
      open (5, file=name, status='old', action='read')
      line = ' '
      do i = 1, 3
        answer = getc(next)
        if (answer /= 0) call pxffastexit(2)
        line(i:i) = next
      end do
      if (line /= 'xyz') call pxffastexit(3)
      answer = getc(next)
      call pxffastexit(merge(0, 4, answer == eend .and. next == 'z'))
    end if
    call pxfwaitpid(child, status, 0, ended, ierror)
    call check(status, 0, 'putc and getc')
  end subroutine

end program
