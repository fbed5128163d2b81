! The bridge between units and descriptors as programs use it that know of no module.
program posix_units_external
  use checks, only: check, finish
  use scratch, only: remove_directory, scratch_directory
  implicit none
  integer(4), parameter :: ebadf = 9, einval = 22, eend = -1, unit = 21, other = 22
  logical(4), external :: commitqq, flushqq
  external :: pxfclose, pxffastexit, pxffdopen, pxffflush, pxffgetc, pxffileno, pxffork, pxffputc, pxffseek, pxfftell, &
    pxfgetc, pxfpipe, pxfposixio, pxfputc, pxfwaitpid, pxfwrite
  character(:), allocatable, save :: directory, name

  directory = scratch_directory()
  name = directory//'/file'
  call check_characters()
  call check_default_units()
  call check_pipe()
  call check_flag()
  call remove_directory(directory)
  call finish()

contains

  subroutine check_characters()
    integer(4) :: ierror, offset, descriptor
    character(1) :: next
    logical(4) :: answer
    open (unit, file=name, status='replace', action='readwrite')
    call pxffputc(unit, 'a', ierror)
    call check(ierror, 0, 'pxffputc')
    write (unit, '(a)') 'bc'
    call pxffflush(unit, ierror)
    call check(ierror, 0, 'pxffflush')
    answer = flushqq(unit)
    call check(answer, 'flushqq')
    answer = commitqq(unit)
    call check(answer, 'commitqq')
    call pxffseek(unit, 0, 0, ierror)
    call check(ierror, 0, 'pxffseek')
    call pxffgetc(unit, next, ierror)
    call check(next, 'a', 'pxffgetc')
    call pxfftell(unit, offset, ierror)
    call check(offset, 1, 'pxfftell')
    call pxffseek(unit, 0, 2, ierror)
    call pxffgetc(unit, next, ierror)
    call check(ierror, eend, 'the end')
    call pxffileno(unit, descriptor, ierror)
    call check(ierror, 0, 'pxffileno')
    call check(descriptor > 2, 'a descriptor')
    close (unit)
    call pxffileno(unit, descriptor, ierror)
    call check(ierror, ebadf, 'pxffileno of a closed unit')
    answer = flushqq(unit)
    call check(.not. answer, 'flushqq of a closed unit')
    answer = commitqq(unit)
    call check(.not. answer, 'commitqq of a closed unit')
  end subroutine

  ! Units 5 and 6 in a process of its own, since the checks speak on one of them.
  subroutine check_default_units()
    integer(4) :: child, status, ended, ierror, i
    character(1) :: next
    character(4) :: line
    flush (6)
    call pxffork(child, ierror)
    if (child == 0) then
      open (6, file=name, status='replace', action='write')
      do i = 1, 3
        call pxfputc('xyz'(i:i), ierror)
        if (ierror /= 0) call pxffastexit(1)
      end do
      close (6)
      open (5, file=name, status='old', action='read')
      line = ' '
      do i = 1, 3
        call pxfgetc(next, ierror)
        if (ierror /= 0) call pxffastexit(2)
        line(i:i) = next
      end do
      if (line /= 'xyz') call pxffastexit(3)
      call pxfgetc(next, ierror)
      call pxffastexit(merge(0, 4, ierror == eend .and. next == 'z'))
    end if
    call pxfwaitpid(child, status, 0, ended, ierror)
    call check(status, 0, 'pxfputc and pxfgetc')
  end subroutine

  subroutine check_pipe()
    integer(4) :: reading, writing, count, ierror
    character(5) :: line
    call pxfpipe(reading, writing, ierror)
    call pxfwrite(writing, 'text'//achar(10), 5, count, ierror)
    call pxfclose(writing, ierror)
    call pxffdopen(reading, other, 'r', ierror)
    call check(ierror, 0, 'pxffdopen')
    read (other, '(a)') line
    call check(line, 'text ', 'a line of a pipe')
    close (other)
    call pxfclose(reading, ierror)
  end subroutine

  subroutine check_flag()
    integer(4) :: former, ierror
    call pxfposixio(1, former, ierror)
    call check(former, 0, 'the flag at first')
    call check(ierror, 0, 'the flag set')
    call pxfposixio(0, former, ierror)
    call check(former, 1, 'the flag that was set')
    call check(ierror, einval, 'the flag taken back')
  end subroutine

end program
