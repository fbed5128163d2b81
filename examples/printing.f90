! What the examples say, and how it goes out.

! Lines for standard output, through its descriptor: what cannot be written is never overlooked.
module standard_output
  use, intrinsic :: iso_fortran_env, only: error_unit
  use qxport, only: error_text, exit, pxfwrite
  use qxport_numbers, only: EINTR
  implicit none
  private
  public :: put_line, flush_lines

  integer, parameter :: CAPACITY = 65536
  character(CAPACITY), save :: buffer
  integer, save :: used = 0
  character(:), allocatable, save, public :: program_name

contains

  subroutine put_line(text)
    character(*), intent(in) :: text
    call put(text)
    call put(achar(10))
  end subroutine put_line

  subroutine put(text)
    character(*), intent(in) :: text
    integer :: done, part
    done = 0
    do while (done < len(text))
      if (used == CAPACITY) call flush_lines()
      part = min(len(text) - done, CAPACITY - used)
      buffer(used + 1:used + part) = text(done + 1:done + part)
      used = used + part
      done = done + part
    end do
  end subroutine put

  ! Called at the end of a program, and before it says anything else. A failure ends the program with 1.
  subroutine flush_lines()
    integer :: done, written, error
    done = 0
    do while (done < used)
      call pxfwrite(1, buffer(done + 1:), used - done, written, error)
      if (error == 0) then
        done = done + written
      else if (error /= EINTR) then
        write (error_unit, '(4a)') program_name, ': standard output: ', trim(error_text(error))
        call exit(1)
      end if
    end do
    used = 0
  end subroutine flush_lines
end module standard_output

! Names of files, which may hold any bytes.
module names
  implicit none
  private
  public :: before, plain_bytes

contains

  ! Byte by byte, whatever the encoding; trailing blanks count.
  pure logical function before(one, other)
    character(*), intent(in) :: one, other
    integer :: i
    do i = 1, min(len(one), len(other))
      if (one(i:i) == other(i:i)) cycle
      before = iachar(one(i:i)) < iachar(other(i:i))
      return
    end do
    before = len(one) < len(other)
  end function before

  ! How many bytes the first character of a text of UTF-8 has; 0 when it is a control character, or none at all.
  pure integer function plain_bytes(text)
    character(*), intent(in) :: text
    integer :: first, lowest, highest, i
    first = iachar(text(1:1))
    select case (first)
    case (32:126); plain_bytes = 1
    case (194:223); plain_bytes = 2
    case (224:239); plain_bytes = 3
    case (240:244); plain_bytes = 4
    case default; plain_bytes = 0
    end select
    if (plain_bytes > len(text)) plain_bytes = 0
    do i = 2, plain_bytes
      lowest = 128
      highest = 191
      if (i == 2) then
        select case (first)
        case (194); lowest = 160   ! below are more control characters
        case (224); lowest = 160   ! what is shorter otherwise
        case (237); highest = 159  ! surrogates
        case (240); lowest = 144
        case (244); highest = 143  ! behind the last character
        end select
      end if
      if (iachar(text(i:i)) >= lowest .and. iachar(text(i:i)) <= highest) cycle
      plain_bytes = 0
      return
    end do
  end function plain_bytes
end module names
