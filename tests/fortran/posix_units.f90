! The bridge between Fortran units and descriptors, on real units: what WRITE and READ do and what the routines do on
! one unit comes out in one order.
program posix_units
  use checks
  use scratch, only: remove_directory, scratch_directory
  use qxport, only: commitqq, flushqq, pxfclose, pxfconst, pxffastexit, pxffdopen, pxffileno, pxffflush, pxffgetc
  use qxport, only: pxffork, pxfgetc, pxfputc, pxfwaitpid
  use qxport, only: pxffputc, pxffseek, pxfftell, pxflseek, pxfopen, pxfpipe, pxfread, pxfwrite, pxfposixio
  implicit none
  integer, parameter :: ebadf = 9, einval = 22, eend = -1
  character(:), allocatable, save :: directory

  directory = scratch_directory()
  call characters_and_records()
  call default_units()
  call positions()
  call behind_the_end_of_the_file()
  call flushing()
  call unconnected_units()
  call pipes()
  call regular_files()
  call bad_descriptors()
  call posix_flag()
  call remove_directory(directory)
  call finish()

contains

  ! The bytes of a file, read through a descriptor of its own.
  function contents(name) result(text)
    character(*), intent(in) :: name
    character(:), allocatable :: text
    character(1000) :: buffer
    integer :: descriptor, count, ierror
    call pxfopen(directory//'/'//name, 0, constant('O_RDONLY'), 0, descriptor, ierror)
    call pxfread(descriptor, buffer, len(buffer), count, ierror)
    text = buffer(:count)
    call pxfclose(descriptor, ierror)
  end function

  integer function constant(name)
    character(*), intent(in) :: name
    integer :: ierror
    call pxfconst(name, constant, ierror)
    call check(ierror, 0, name)
  end function

  subroutine characters_and_records()
    integer :: unit, ierror, i
    character :: ch
    character(20) :: line
    open (newunit=unit, file=directory//'/order', status='replace', action='readwrite')
    write (unit, '(a)', advance='no') 'ab'
    call pxffputc(unit, 'X', ierror)
    call check(ierror, 0, 'pxffputc between two parts of a record')
    write (unit, '(a)') 'cd'
    call pxffputc(unit, 'Y', ierror)
    write (unit, '(a)') 'ef'
    call pxffputc(unit, achar(10), ierror)
    call pxffputc(unit, char(233), ierror)
    call pxffflush(unit, ierror)
    call check(ierror, 0, 'pxffflush')
    call check(contents('order'), 'abXcd'//achar(10)//'Yef'//achar(10)//achar(10)//char(233), &
      'WRITE and pxffputc come out in order')
    call pxffseek(unit, 0, 0, ierror)
    read (unit, '(a)') line
    call check(trim(line), 'abXcd', 'READ behind pxffseek')
    call pxfftell(unit, i, ierror)
    call check(i, 6, 'pxfftell behind READ')
    call pxffgetc(unit, ch, ierror)
    call check(ch, 'Y', 'pxffgetc behind READ and pxfftell')
    read (unit, '(a)') line
    call check(trim(line), 'ef', 'READ behind pxffgetc')
    call pxffseek(unit, -1, 2, ierror)
    call pxffgetc(unit, ch, ierror)
    call check(ichar(ch), 233, 'a byte above 127')
    ch = '#'
    call pxffgetc(unit, ch, ierror)
    call check(ierror, eend, 'pxffgetc at the end')
    call check(ch, '#', 'the character is left alone at the end')
    close (unit)
  end subroutine

  ! Units 5 and 6 in a process of its own, since the checks speak on one of them.
  subroutine default_units()
    integer :: child, status, ended, ierror, i
    character :: ch
    flush (6)
    call pxffork(child, ierror)
    if (child == 0) then
      open (6, file=directory//'/default', status='replace', action='write')
      call pxfputc('a', ierror)
      if (ierror /= 0) call pxffastexit(1)
      write (6, '(a)') 'b'
      call pxfputc(char(233), ierror)
      close (6)
      open (5, file=directory//'/default', status='old', action='read')
      do i = 1, 4
        call pxfgetc(ch, ierror)
        if (ierror /= 0) call pxffastexit(2)
      end do
      if (ichar(ch) /= 233) call pxffastexit(3)
      ch = '#'
      call pxfgetc(ch, ierror)
      if (ierror /= eend .or. ch /= '#') call pxffastexit(4)
      close (5)
      call pxfgetc(ch, ierror)
      if (ierror >= -1) call pxffastexit(5)
      call pxffastexit(0)
    end if
    call pxfwaitpid(child, status, 0, ended, ierror)
    call check(status, 0, 'pxfputc and pxfgetc')
    call check(contents('default'), 'ab'//achar(10)//char(233), 'what pxfputc wrote')
  end subroutine

  subroutine positions()
    integer :: unit, ierror, offset
    open (newunit=unit, file=directory//'/positions', status='replace', action='readwrite')
    write (unit, '(a)') '0123456789'
    call pxffseek(unit, 3, constant('SEEK_SET'), ierror)
    call check(ierror, 0, 'SEEK_SET')
    call pxffseek(unit, 4, constant('SEEK_CUR'), ierror)
    call pxfftell(unit, offset, ierror)
    call check(offset, 7, 'SEEK_CUR')
    call pxffseek(unit, -2, constant('SEEK_END'), ierror)
    call pxfftell(unit, offset, ierror)
    call check(offset, 9, 'SEEK_END')
    call pxffseek(unit, -100, constant('SEEK_CUR'), ierror)
    call check(ierror, einval, 'a position before the file')
    call pxffseek(unit, 0, 3, ierror)
    call check(ierror, einval, 'an origin that is none')
    call pxffseek(unit, 0, -1, ierror)
    call check(ierror, einval, 'a negative origin')
    call pxfftell(unit, offset, ierror)
    call check(offset, 9, 'a failed seek moves nothing')
    ! Nothing behind the position is lost when the middle of a file is written over.
    call pxffseek(unit, 2, constant('SEEK_SET'), ierror)
    call pxffputc(unit, 'x', ierror)
    call pxffflush(unit, ierror)
    call check(contents('positions'), '01x3456789'//achar(10), 'one character written over')
    close (unit)
  end subroutine

  subroutine behind_the_end_of_the_file()
    integer :: unit, ierror, status, lines
    character(20) :: line
    open (newunit=unit, file=directory//'/end', status='replace', action='readwrite')
    write (unit, '(a)') 'one', 'two', 'three'
    rewind (unit)
    lines = 0
    do
      read (unit, '(a)', iostat=status) line
      if (status /= 0) exit
      lines = lines + 1
    end do
    call check(lines, 3, 'lines up to the end')
    call pxffseek(unit, 4, 0, ierror)
    read (unit, '(a)', iostat=status) line
    call check(status, 0, 'READ again behind the end of the file and a seek')
    call check(trim(line), 'two', 'from where the seek led')
    close (unit)
  end subroutine

  subroutine flushing()
    integer :: unit, ierror
    open (newunit=unit, file=directory//'/flush', status='replace')
    write (unit, '(a)') 'kept'
    call check(len(contents('flush')), 0, 'WRITE is buffered')
    call check(flushqq(unit), 'flushqq of a unit')
    call check(contents('flush'), 'kept'//achar(10), 'flushqq writes it out')
    write (unit, '(a)') 'too'
    call pxffflush(unit, ierror)
    call check(contents('flush'), 'kept'//achar(10)//'too'//achar(10), 'pxffflush writes it out')
    call check(commitqq(unit), 'commitqq of a unit')
    close (unit)
  end subroutine

  subroutine unconnected_units()
    integer :: ierror, value
    character :: ch
    ch = '#'
    call pxffgetc(77, ch, ierror)
    call check(ierror, -ebadf, 'pxffgetc of an unconnected unit')
    call check(ch, '#', 'its character is left alone')
    call pxffputc(77, 'x', ierror)
    call check(ierror, -ebadf, 'pxffputc of an unconnected unit')
    value = 4711
    call pxfftell(77, value, ierror)
    call check(ierror, einval, 'pxfftell of an unconnected unit')
    call check(value, 4711, 'its offset is left alone')
    call pxffseek(77, 0, 0, ierror)
    call check(ierror, einval, 'pxffseek of an unconnected unit')
    call pxffflush(77, ierror)
    call check(ierror, ebadf, 'pxffflush of an unconnected unit')
    call pxffileno(77, value, ierror)
    call check(ierror, ebadf, 'pxffileno of an unconnected unit')
    call check(value, -1, 'and its descriptor')
    call check(.not. flushqq(77), 'flushqq of an unconnected unit')
    call check(.not. commitqq(77), 'commitqq of an unconnected unit')
    call pxffileno(6, value, ierror)
    call check(value, 1, 'standard output''s descriptor')
    call pxffileno(0, value, ierror)
    call check(value, 2, 'standard error''s descriptor')
  end subroutine

  subroutine pipes()
    integer :: reader, writer, ierror, status
    character(40) :: line
    call pxfpipe(reader, writer, ierror)
    call pxffdopen(reader, 51, 'r', ierror)
    call check(ierror, 0, 'a unit on the reading end of a pipe')
    call pxffdopen(writer, 52, 'WRITE ', ierror)
    call check(ierror, 0, 'a unit on the writing end of a pipe')
    write (52, '(a, i0)') 'number ', 42
    call pxffflush(52, ierror)
    read (51, '(a)') line
    call check(trim(line), 'number 42', 'READ of what WRITE put into a pipe')
    close (52)
    call pxfclose(writer, ierror)
    read (51, '(a)', iostat=status) line
    call check(is_iostat_end(status), 'the end of a pipe')
    close (51)
    call pxfclose(reader, ierror)
    call check(ierror, 0, 'the descriptor is the caller''s to close')
  end subroutine

  subroutine regular_files()
    integer :: descriptor, ierror, count, position
    character(20) :: text
    call pxfopen(directory//'/shared', 0, ior(constant('O_RDWR'), constant('O_CREAT')), int(o'600'), descriptor, ierror)
    call pxfwrite(descriptor, 'first'//achar(10)//'second'//achar(10), 13, count, ierror)
    call pxflseek(descriptor, 6, 0, position, ierror)
    call pxffdopen(descriptor, 53, 'r+', ierror)
    call check(ierror, 0, 'a unit on a regular file')
    call pxfftell(53, position, ierror)
    call check(position, 6, 'the offset is kept')
    read (53, '(a)') text
    call check(trim(text), 'second', 'READ from there')
    write (53, '(a)') 'third'
    call pxffflush(53, ierror)
    call pxflseek(descriptor, 0, 1, position, ierror)
    call check(position, 19, 'the offset is shared')
    call check(contents('shared'), 'first'//achar(10)//'second'//achar(10)//'third'//achar(10), 'WRITE at the end')
    close (53)
    call pxfclose(descriptor, ierror)
  end subroutine

  subroutine bad_descriptors()
    integer :: ierror, descriptor
    call pxffdopen(-1, 54, 'r', ierror)
    call check(ierror, ebadf, 'descriptor -1')
    call pxffdopen(100000, 54, 'r', ierror)
    call check(ierror, ebadf, 'a descriptor that is not open')
    call pxfopen('/dev/null', 0, constant('O_RDONLY'), 0, descriptor, ierror)
    call pxffdopen(descriptor, 54, 'w', ierror)
    call check(ierror, einval, 'more than the descriptor allows')
    call pxffdopen(descriptor, 54, 'sideways', ierror)
    call check(ierror, einval, 'an unknown access')
    call pxffdopen(descriptor, 54, ' ', ierror)
    call check(ierror, 0, 'blank is what the descriptor allows')
    close (54)
    call pxfclose(descriptor, ierror)
    call pxfopen('/tmp', 0, constant('O_RDONLY'), 0, descriptor, ierror)
    call pxffdopen(descriptor, 54, 'r', ierror)
    call check(ierror, constant('EISDIR'), 'a directory')
    call pxfclose(descriptor, ierror)
  end subroutine

  subroutine posix_flag()
    integer :: former, ierror
    call pxfposixio(1, former, ierror)
    call check(former, 0, 'the flag at first')
    call check(ierror, 0, 'switched on')
    call pxfposixio(0, former, ierror)
    call check(former, 1, 'the flag before')
    call check(ierror, einval, 'switched off is reported')
    call pxfposixio(0, former, ierror)
    call check(former, 0, 'and is stored')
  end subroutine

end program
