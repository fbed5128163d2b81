! The host's OPEN, READ, WRITE and FSYNC with failures of the test's own: they stand in front of those that the run-time calls.
module failing_host
  use, intrinsic :: iso_c_binding, only: c_char, c_int, c_intptr_t, c_loc, c_ptr, c_size_t
  implicit none
  ! The calls of one descriptor fail with an error number, after some that a signal interrupts.
  integer(c_int) :: failing = -1, error = 0, interruptions = 0
  integer(c_int) :: synchronised = -1
  integer :: synchronisations = 0
  ! So many files will not be opened, with an error number.
  integer :: refusals = 0
  integer(c_int) :: refusal = 0

  type, bind(C) :: extent
    type(c_ptr) :: address
    integer(c_size_t) :: length
  end type

  interface
    function errno_location() bind(C, name='__errno_location') result(location)
      import :: c_ptr
      type(c_ptr) :: location
    end function
    ! On these machines a call of fixed arguments reaches it.
    function open_at(directory, path, flags, mode) bind(C, name='openat64') result(answer)
      import :: c_char, c_int
      integer(c_int), value :: directory, flags, mode
      character(kind=c_char), intent(in) :: path(*)
      integer(c_int) :: answer
    end function
    function readv(descriptor, extents, count) bind(C) result(answer)
      import :: c_int, c_intptr_t, extent
      integer(c_int), value :: descriptor, count
      type(extent), intent(in) :: extents(*)
      integer(c_intptr_t) :: answer
    end function
    function writev(descriptor, extents, count) bind(C) result(answer)
      import :: c_int, c_intptr_t, extent
      integer(c_int), value :: descriptor, count
      type(extent), intent(in) :: extents(*)
      integer(c_intptr_t) :: answer
    end function
  end interface

contains

  subroutine set_errno(number)
    use, intrinsic :: iso_c_binding, only: c_f_pointer
    integer(c_int), intent(in) :: number
    integer(c_int), pointer :: errno
    call c_f_pointer(errno_location(), errno)
    errno = number
  end subroutine

  logical function fails(descriptor)
    integer(c_int), intent(in) :: descriptor
    integer(c_int), parameter :: eintr = 4
    fails = descriptor == failing .and. (error /= 0 .or. interruptions > 0)
    if (.not. fails) return
    if (interruptions > 0) then
      interruptions = interruptions - 1
      call set_errno(eintr)
    else
      call set_errno(error)
    end if
  end function

  function host_open(path, flags, mode) bind(C, name='open') result(answer)
    character(kind=c_char), intent(in) :: path(*)
    integer(c_int), value :: flags, mode
    integer(c_int) :: answer
    integer(c_int), parameter :: from_working_directory = -100
    answer = -1
    if (refusals > 0) then
      refusals = refusals - 1
      call set_errno(refusal)
    else
      answer = open_at(from_working_directory, path, flags, mode)
    end if
  end function

  ! The same, where sizes of files have another name.
  function host_open_of_large_files(path, flags, mode) bind(C, name='open64') result(answer)
    character(kind=c_char), intent(in) :: path(*)
    integer(c_int), value :: flags, mode
    integer(c_int) :: answer
    answer = host_open(path, flags, mode)
  end function

  function host_read(descriptor, buffer, count) bind(C, name='read') result(answer)
    integer(c_int), value :: descriptor
    type(c_ptr), value :: buffer
    integer(c_size_t), value :: count
    integer(c_intptr_t) :: answer
    answer = -1
    if (.not. fails(descriptor)) answer = readv(descriptor, [extent(buffer, count)], 1_c_int)
  end function

  function host_write(descriptor, buffer, count) bind(C, name='write') result(answer)
    integer(c_int), value :: descriptor
    type(c_ptr), value :: buffer
    integer(c_size_t), value :: count
    integer(c_intptr_t) :: answer
    answer = -1
    if (.not. fails(descriptor)) answer = writev(descriptor, [extent(buffer, count)], 1_c_int)
  end function

  function host_fsync(descriptor) bind(C, name='fsync') result(answer)
    integer(c_int), value :: descriptor
    integer(c_int) :: answer
    synchronised = descriptor
    synchronisations = synchronisations + 1
    answer = 0
    if (fails(descriptor)) answer = -1
  end function

end module

! What the unit routines make of each.
program units_host_errors
  use, intrinsic :: iso_c_binding, only: c_int
  use checks, only: check, finish
  use failing_host, only: error, failing, interruptions, refusal, refusals, synchronisations, synchronised
  use scratch, only: remove_directory, scratch_directory
  use qxport, only: commitqq, errsns, fgetc, flush, flushqq, fputc, fseek, getlasterror, getpos, ierrno, ipxfconst
  use qxport, only: pxfclose, pxffdopen, pxffflush, pxffgetc, pxffileno, pxffputc, pxfopen, pxfpipe, pxfwrite
  implicit none
  integer(4), parameter :: eperm = 1, enoent = 2, eio = 5, ebadf = 9, einval = 22, enospc = 28, epipe = 32, erofs = 30
  integer(4), parameter :: reading_errors(6) = [eperm, enoent, eio, ebadf, einval, 4095]
  integer(4), parameter :: writing_errors(6) = [eperm, enoent, eio, enospc, epipe, 4095]
  character(*), parameter :: accesses(4) = ['sequential', 'stream    ', 'stream    ', 'direct    ']
  character(*), parameter :: forms(4) = ['formatted  ', 'formatted  ', 'unformatted', 'formatted  ']
  character(:), allocatable :: directory, path

  directory = scratch_directory()
  path = directory // '/file'
  call reading_files()
  call reading_a_pipe()
  call writing_a_pipe()
  call writing_files()
  call committing()
  call connecting_in_vain()
  call connecting_without_a_name()
  call remove_directory(directory)
  deallocate (directory, path)
  call finish()

contains

  ! The unit is the one on a file, on a pipe, and on a file again where it was connected before.
  subroutine connecting_in_vain()
    integer(4), parameter :: errors(6) = [eperm, enoent, 12, 13, 23, 24]
    integer(4) :: descriptor, writer, ierror
    integer :: i, j
    logical :: opened
    failing = -1
    do i = 1, size(errors)
      do j = 1, 3
        if (j == 2) then
          call pxfpipe(descriptor, writer, ierror)
        else
          call pxfopen(path, 0, ipxfconst('O_RDONLY'), 0, descriptor, ierror)
        end if
        call check(ierror, 0, 'a descriptor')
        if (j == 3) open (41, file=directory // '/other')
        refusal = errors(i)
        refusals = huge(refusals)
        call pxffdopen(descriptor, 41, 'r', ierror)
        refusals = 0
        call check(ierror, errors(i), 'the number of an OPEN that failed inside pxffdopen')
        inquire (41, opened=opened)
        call check(.not. opened, 'no unit behind it')
        call pxfclose(descriptor, ierror)
        call check(ierror, 0, 'the descriptor is still there')
        if (j == 2) call pxfclose(writer, ierror)
      end do
    end do
  end subroutine

  ! What cannot be opened by its name a second time is connected all the same.
  subroutine connecting_without_a_name()
    integer(4) :: descriptor, ierror
    character(8) :: line
    open (41, file=path, status='replace')
    write (41, '(a)') 'a line'
    close (41)
    call pxfopen(path, 0, ipxfconst('O_RDONLY'), 0, descriptor, ierror)
    refusal = 13
    refusals = 1
    call pxffdopen(descriptor, 41, 'r', ierror)
    call check(refusals, 0, 'the file was refused')
    call check(ierror, 0, 'the unit is connected')
    call pxfclose(descriptor, ierror)
    line = ' '
    read (41, '(a)') line
    call check(trim(line), 'a line', 'READ of the file')
    close (41)
  end subroutine

  subroutine open_file(unit, i)
    integer, intent(out) :: unit
    integer, intent(in) :: i
    if (accesses(i) == 'direct') then
      open (newunit=unit, file=path, access=accesses(i), form=forms(i), recl=4)
    else
      open (newunit=unit, file=path, access=accesses(i), form=forms(i))
    end if
    call pxffileno(unit, failing, error)
  end subroutine

  ! What FGETC and FPUTC make of every failure.
  subroutine check_einval(answer, last, what)
    integer(4), intent(in) :: answer, last
    character(*), intent(in) :: what
    integer(4) :: io, number, status, unit, condition
    call check(answer, einval, what)
    call check(last, einval, what // ': errno')
    call check(ierrno(), einval, what // ': ierrno')
    call errsns(io, number, status, unit, condition)
    call check(number, einval, what // ': errsns')
  end subroutine

  ! A failed read is never the end of the file, and leaves the unit as it was.
  subroutine check_failed_reads(unit, expected, what)
    integer, intent(in) :: unit
    character(*), intent(in) :: expected, what
    integer(4) :: ierror, last
    integer :: i
    character :: next
    do i = 1, size(reading_errors)
      error = reading_errors(i)
      next = '#'
      call pxffgetc(unit, next, ierror)
      call check(ierror, -max(error, 3), what // ': a failed read')
      ierror = fgetc(unit, next)
      last = getlasterror()
      call check_einval(ierror, last, what // ': a read that failed')
      call check(next, '#', what // ': its character')
    end do
    error = 0
    interruptions = 2
    call pxffgetc(unit, next, ierror)
    call check(ierror, 0, what // ': an interrupted read')
    call check(next, expected(1:1), what // ': its character')
    call check(interruptions, 0, what // ': it was interrupted')
    call check(fgetc(unit, next), 0, what // ': the next')
    call check(next, expected(2:2), what // ': the next character')
  end subroutine

  subroutine reading_files()
    integer :: i, unit
    open (newunit=unit, file=path, access='stream')
    write (unit) 'abcd'
    close (unit)
    do i = 1, size(accesses)
      call open_file(unit, i)
      call check_failed_reads(unit, 'ab', trim(accesses(i)) // ' ' // trim(forms(i)))
      close (unit)
    end do
  end subroutine

  subroutine reading_a_pipe()
    integer(4) :: reader, writer, count, ierror
    call pxfpipe(reader, writer, ierror)
    call pxfwrite(writer, 'abc', 3, count, ierror)
    call pxffdopen(reader, 21, 'r', ierror)
    call pxffileno(21, failing, ierror)
    call check_failed_reads(21, 'ab', 'a pipe')
    close (21)
    call pxfclose(reader, ierror)
    call pxfclose(writer, ierror)
  end subroutine

  subroutine writing_a_pipe()
    integer(4) :: reader, writer, ierror, last
    integer :: i
    character :: next
    call pxfpipe(reader, writer, ierror)
    call pxffdopen(writer, 22, 'w', ierror)
    call pxffdopen(reader, 21, 'r', ierror)
    call pxffileno(22, failing, ierror)
    do i = 1, size(writing_errors)
      error = writing_errors(i)
      call pxffputc(22, 'x', ierror)
      call check(ierror, -error, 'a failed write')
      ierror = fputc(22, 'x')
      last = getlasterror()
      call check_einval(ierror, last, 'a write that failed')
    end do
    error = 0
    interruptions = 2
    call pxffputc(22, 'y', ierror)
    call check(ierror, 0, 'an interrupted write')
    call check(interruptions, 0, 'it was interrupted')
    interruptions = 2
    call check(fputc(22, 'z'), 0, 'an interrupted write of fputc')
    call check(interruptions, 0, 'it was interrupted too')
    call pxffgetc(21, next, ierror)
    call check(next, 'y', 'what came through')
    call check(fgetc(21, next), 0, 'fgetc of a pipe')
    call check(next, 'z', 'what came through next')
    close (21)
    close (22)
    call pxfclose(reader, ierror)
    call pxfclose(writer, ierror)
  end subroutine

  ! The buffer takes the character; that the host refuses it is told when the buffer is written.
  subroutine writing_files()
    integer :: i, unit
    integer(4) :: ierror
    logical :: answer
    do i = 1, size(accesses)
      call open_file(unit, i)
      if (accesses(i) == 'stream' .and. forms(i) == 'formatted') then
        error = enospc
        call pxffputc(unit, 'x', ierror)
        call check(ierror, -enospc, 'a formatted stream writes the character at once')
      else
        error = 0
        call pxffputc(unit, 'x', ierror)
        call check(ierror, 0, 'a character for the buffer')
        error = enospc
      end if
      answer = flushqq(unit)
      call check(.not. answer, 'flushqq that cannot write')
      call flush(unit)  ! which tells nothing
      call check(fseek(unit, 0, 0), -eio, 'fseek that cannot write')
      call check(ierrno(), -eio, 'its ierrno')
      call check(getpos(unit), 1, 'it moves nothing')
      synchronisations = 0
      answer = commitqq(unit)
      call check(.not. answer, 'commitqq that cannot write')
      call pxffflush(unit, ierror)
      call check(ierror, ebadf, 'pxffflush that cannot write')
      call check(synchronisations, 0, 'nothing is committed then')
      error = 0
      interruptions = 2
      answer = flushqq(unit)
      call check(answer, 'flushqq that can, if interrupted')
      call check(synchronisations, 0, 'flushqq does not wait for the device')
      close (unit)
    end do
  end subroutine

  ! What has no device to wait for is as committed as it can be.
  subroutine committing()
    integer(4), parameter :: errors(5) = [0, einval, erofs, eio, enospc]
    integer :: i, unit
    integer(4) :: ierror
    logical :: answer
    call open_file(unit, 1)
    do i = 1, size(errors)
      error = errors(i)
      synchronisations = 0
      synchronised = -1
      answer = commitqq(unit)
      call check(answer .eqv. i <= 3, 'commitqq')
      call check(synchronisations, 1, 'commitqq waits for the device')
      call check(synchronised, failing, 'of the unit''s file')
      synchronised = -1
      call pxffflush(unit, ierror)
      call check(ierror, merge(0, ebadf, i <= 3), 'pxffflush')
      call check(synchronisations, 2, 'pxffflush waits for the device')
      call check(synchronised, failing, 'of the unit''s file too')
    end do
    error = 0
    close (unit)
  end subroutine

end program
