! Sorts the lines of a file that all have one length, such as records of fixed width, by their bytes.
!
!   sortlines [-p] INPUT OUTPUT
!
! How far it is shows on the standard error when that is a terminal, or with -p. The status is 0, 1 when a file cannot
! be read, written or sorted, and 2 after wrong arguments. The whole file is held in memory.
program sortlines
  use, intrinsic :: iso_c_binding, only: c_intptr_t, c_loc
  use, intrinsic :: iso_fortran_env, only: error_unit, int64
  use qxport, only: sortqq, isatty
  implicit none
  integer(int64), parameter :: CHUNK = 4*1024*1024
  integer, parameter :: LONGEST = 32766
  character(1), allocatable, target, save :: text(:)
  character(:), allocatable, save :: input, output
  integer :: width
  integer(int64) :: lines
  logical :: shown

  call arguments()
  call read_all()
  call measure()
  call sort()
  call write_all()

contains

  subroutine arguments()
    character(:), allocatable :: word
    integer :: first
    first = 1
    shown = isatty(error_unit)
    word = argument(1)
    if (word == '-p') then
      shown = .true.
      first = 2
    end if
    if (command_argument_count() /= first + 1) then
      write (error_unit, '(a)') 'usage: sortlines [-p] INPUT OUTPUT'
      stop 2, quiet=.true.
    end if
    input = argument(first)
    output = argument(first + 1)
  end subroutine

  function argument(number) result(word)
    integer, intent(in) :: number
    character(:), allocatable :: word
    integer :: length
    call get_command_argument(number, length=length)
    allocate (character(length) :: word)
    call get_command_argument(number, word)
  end function

  subroutine fail(name, what)
    character(*), intent(in) :: name, what
    write (error_unit, '(4a)') 'sortlines: ', name, ': ', what
    stop 1, quiet=.true.
  end subroutine

  subroutine show(what, done)
    character(*), intent(in) :: what
    integer(int64), intent(in) :: done
    if (.not. shown) return
    write (error_unit, '(3a, i4, a)', advance='no') achar(13), what, ':', 100*done/max(1_int64, size(text, kind=int64)), ' %'
    if (done == size(text, kind=int64)) write (error_unit, '(a)') ''
    flush (error_unit)
  end subroutine

  subroutine read_all()
    integer :: unit, status
    integer(int64) :: length, first, last
    character(200) :: message
    open (newunit=unit, file=input, access='stream', form='unformatted', status='old', action='read', &
          iostat=status, iomsg=message)
    if (status /= 0) call fail(input, trim(message))
    inquire (unit, size=length)
    if (length < 0) call fail(input, 'its size cannot be told')
    allocate (text(length), stat=status)
    if (status /= 0) call fail(input, 'there is no memory for it')
    do first = 1, length, CHUNK
      last = min(length, first + CHUNK - 1)
      read (unit, iostat=status, iomsg=message) text(first:last)
      if (status /= 0) call fail(input, trim(message))
      call show('read', last)
    end do
    close (unit)
  end subroutine

  ! The first line tells the width. Each line must end where it says.
  subroutine measure()
    integer(int64) :: line
    if (size(text) == 0) then
      lines = 0
      return
    end if
    width = 0
    do line = 1, min(size(text, kind=int64), int(LONGEST, int64))
      if (text(line) == new_line('a')) then
        width = int(line)
        exit
      end if
    end do
    if (width == 0) call fail(input, 'its first line is too long, or has no end')
    lines = size(text, kind=int64)/width
    do line = 1, lines
      if (text(line*width) /= new_line('a')) call fail(input, 'its lines are not all of one length')
      if (any(text((line - 1)*width + 1:line*width - 1) == new_line('a'))) &
        call fail(input, 'its lines are not all of one length')
    end do
    if (lines*width /= size(text, kind=int64)) call fail(input, 'its last line is not of the length of the others')
  end subroutine

  subroutine sort()
    integer(int64) :: count, begin, end, rate
    if (lines == 0) return
    count = lines
    call system_clock(begin, rate)
    call sortqq(transfer(c_loc(text), 0_c_intptr_t), count, width)
    call system_clock(end)
    if (count == 0) call fail(input, 'it could not be sorted')
    if (shown) write (error_unit, '(a, i0, a, f0.3, a)') 'sorted: ', lines, ' lines in ', &
      real(end - begin)/real(rate), ' s'
  end subroutine

  subroutine write_all()
    integer :: unit, status
    integer(int64) :: first, last
    character(200) :: message
    open (newunit=unit, file=output, access='stream', form='unformatted', status='replace', action='write', &
          iostat=status, iomsg=message)
    if (status /= 0) call fail(output, trim(message))
    do first = 1, size(text, kind=int64), CHUNK
      last = min(size(text, kind=int64), first + CHUNK - 1)
      write (unit, iostat=status, iomsg=message) text(first:last)
      if (status /= 0) call fail(output, trim(message))
      call show('written', last)
    end do
    close (unit, iostat=status, iomsg=message)
    if (status /= 0) call fail(output, trim(message))
  end subroutine

end program
