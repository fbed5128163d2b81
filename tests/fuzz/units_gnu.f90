! Units of the GNU Fortran run-time: of every kind, and what a program does with them between two calls.
integer(c_int32_t) function fuzz_open_units(numbers, room) bind(C) result(opened)
  use, intrinsic :: iso_c_binding, only: c_int32_t
  implicit none
  integer(c_int32_t), value :: room
  integer(c_int32_t), intent(out) :: numbers(room)
  integer :: new

  open (10, file='sequential', iostat=new)
  open (11, file='unformatted', form='unformatted', iostat=new)
  open (12, file='stream', form='unformatted', access='stream', iostat=new)
  open (13, file='text stream', form='formatted', access='stream', iostat=new)
  open (14, file='direct', form='formatted', access='direct', recl=16, iostat=new)
  open (15, file='unformatted direct', access='direct', recl=16, iostat=new)
  open (16, status='scratch', iostat=new)
  open (17, file='file', action='read', iostat=new)
  open (18, file='written', action='write', iostat=new)
  open (newunit=new, file='of a new number')
  write (10, '(a)') 'first', 'second', 'third'
  write (13, '(a)') 'first', 'second', 'third'
  write (12) 'bytes'
  opened = 10
  numbers(:opened) = [10, 11, 12, 13, 14, 15, 16, 17, 18, new]
end function

subroutine fuzz_use_unit(number, what) bind(C)
  use, intrinsic :: iso_c_binding, only: c_int, c_int32_t, c_long
  implicit none
  interface
    integer(c_long) function lseek(fd, offset, whence) bind(C)
      import c_int, c_long
      integer(c_int), value :: fd, whence
      integer(c_long), value :: offset
    end function
  end interface
  integer(c_int32_t), intent(in) :: number, what
  character(20) :: text
  integer :: status, position
  logical :: is_open

  ! The run-time takes the negative numbers for its own.
  if (number < 0) return
  inquire (number, opened=is_open, iostat=status)
  if (.not. is_open .or. status /= 0) return
  select case (what)
  case (0, 1)
    write (number, '(a)', iostat=status) 'a record'
  case (2)
    write (number, '(a)', advance='no', iostat=status) 'a piece'
  case (3)
    read (number, '(a)', iostat=status) text
  case (4)
    read (number, '(a)', advance='no', iostat=status) text(:3)
  case (5)
    write (number, iostat=status) 'a record'
  case (6)
    read (number, iostat=status) text(:4)
  case (7)
    write (number, rec=2, iostat=status) 'a record'
  case (8)
    read (number, '(a)', rec=1, iostat=status) text
  case (9)
    ! A REWIND that cannot move the descriptor leaves the unit locked in this run-time.
    if (lseek(fnum(number), 0_c_long, 1) >= 0) rewind (number, iostat=status)
  case (10)
    backspace (number, iostat=status)
  case (11)
    inquire (number, pos=position, iostat=status)
  case (12)
    endfile (number, iostat=status)
  case (13)
    flush (number, iostat=status)
  case (14)
    write (number, '(a)', pos=3, iostat=status) 'x'
  case default
    if (number > 15) close (number, iostat=status)
  end select
end subroutine
