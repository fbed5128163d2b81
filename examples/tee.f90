! tee [-a] [FILE...]: copies its standard input to its standard output and to each file; -a appends.
!
! All of it through descriptors, so that it serves pipes, FIFOs and terminals byte by byte as they come. It ends at the
! end of its input, or when nobody reads its output any more; what else cannot be written is told, and the rest is copied.
program tee
  use qxport, only: error_text, exit, pxfclose, pxfconst, pxffcntl, pxfintset, pxfopen, pxfread, pxfsigaction
  use qxport, only: pxfstructcreate, pxfwrite
  use, intrinsic :: iso_fortran_env, only: error_unit
  implicit none
  integer, parameter :: capacity = 65536, permissions = int(o'666')
  type :: target
    character(:), allocatable :: name
    integer :: descriptor
  end type
  type(target), allocatable, save :: targets(:)
  character(capacity) :: buffer
  integer :: count, error, i, eintr, epipe, status = 0
  logical :: reader_left = .false.

  call ignore_broken_pipes()
  call open_targets(targets)
  eintr = constant('EINTR')
  epipe = constant('EPIPE')
  do while (.not. reader_left)
    call pxfread(0, buffer, capacity, count, error)
    if (error == eintr) cycle
    if (error /= 0) call complain('standard input', error)
    if (count <= 0) exit
    do i = 1, size(targets)
      call write_all(targets(i), buffer(:count), error)
      if (i == 1 .and. error == epipe) reader_left = .true.
    end do
    if (all(targets%descriptor < 0)) exit
  end do
  do i = 1, size(targets)
    if (targets(i)%descriptor < 0) cycle
    call pxfclose(targets(i)%descriptor, error)
    if (error /= 0) call complain(targets(i)%name, error)
  end do
  call exit(status)

contains

  integer function constant(name)
    character(*), intent(in) :: name
    integer :: ierror
    call pxfconst(name, constant, ierror)
    if (ierror /= 0) error stop 'tee: unknown constant'
  end function

  ! A reader that goes away is an error of a write, which can be told.
  subroutine ignore_broken_pipes()
    integer :: action, ierror
    call pxfstructcreate('sigaction', action, ierror)
    call pxfintset(action, 'sa_handler', constant('SIG_IGN'), ierror)
    call pxfsigaction(constant('SIGPIPE'), action, 0, ierror)
  end subroutine

  function argument(number) result(text)
    integer, intent(in) :: number
    character(:), allocatable :: text
    integer :: length
    call get_command_argument(number, length=length)
    text = repeat(' ', length)
    call get_command_argument(number, text)
  end function

  subroutine open_targets(opened)
    type(target), allocatable, intent(out) :: opened(:)
    integer :: options, flags, number, ierror
    options = 0
    flags = constant('O_TRUNC')
    if (argument(1) == '-a') then
      options = 1
      flags = constant('O_APPEND')
    end if
    flags = ior(flags, ior(constant('O_WRONLY'), constant('O_CREAT')))
    allocate (opened(1 + command_argument_count() - options))
    opened(1)%name = 'standard output'
    opened(1)%descriptor = standard_output()
    do number = 2, size(opened)
      associate (file => opened(number))
        file%name = argument(number - 1 + options)
        call pxfopen(file%name, len(file%name), flags, permissions, file%descriptor, ierror)
        if (ierror /= 0) call complain(file%name, ierror)
      end associate
    end do
  end subroutine

  ! A file that is opened in the place of a closed one must not be taken for it.
  integer function standard_output()
    integer :: none, answer, ierror
    standard_output = 1
    none = 0
    call pxffcntl(1, constant('F_GETFD'), none, answer, ierror)
    if (ierror == 0) return
    call complain('standard output', ierror)
    standard_output = -1
  end function

  ! A target that failed once is left alone from then on.
  subroutine write_all(to, text, ierror)
    type(target), intent(inout) :: to
    character(*), intent(in) :: text
    integer, intent(out) :: ierror
    integer :: done, written
    done = 0
    ierror = 0
    do while (to%descriptor >= 0 .and. done < len(text))
      call pxfwrite(to%descriptor, text(done + 1:), len(text) - done, written, ierror)
      if (ierror == 0) then
        done = done + written
      else if (ierror /= eintr) then
        call complain(to%name, ierror)
        to%descriptor = -1
      end if
    end do
  end subroutine

  subroutine complain(name, ierror)
    character(*), intent(in) :: name
    integer, intent(in) :: ierror
    write (error_unit, '(4a)') 'tee: ', name, ': ', trim(error_text(ierror))
    status = 1
  end subroutine

end program
