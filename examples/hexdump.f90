! hexdump [-v] [-s OFFSET] [-n LENGTH] [--] [FILE]: the bytes of a file, in hexadecimal and as text.
!
! -s begins at a byte, a negative one counted from the end; -n shows that many; -v shows lines too that equal the one
! before, which else are one *. Numbers are decimal, or hexadecimal behind 0x, and K, M and G behind them multiply by
! powers of 1024. Without a file, and for -, it is the standard input. The status is 0, 1 when the bytes cannot be read or
! shown, and 2 after wrong arguments.
program hexdump
  use, intrinsic :: iso_fortran_env, only: error_unit, int64
  use qxport, only: error_text, exit, fgetc, fseek, ftelli8, pxffgetc
  use qxport_numbers, only: ESPIPE, SEEK_END, SEEK_SET
  use standard_output, only: flush_lines, program_name, put_line
  implicit none
  integer, parameter :: WIDTH = 16, AT_END = -1, HIGHEST_OF_RUN_TIME = 5000
  integer(int64), parameter :: NO_LIMIT = huge(0_int64)
  character(:), allocatable, save :: name
  integer(int64), save :: offset = 0, length = NO_LIMIT
  logical, save :: all_lines = .false.
  integer :: unit

  program_name = 'hexdump'
  call take_arguments()
  call open_file()
  call go_to_offset()
  call dump()
  call flush_lines()

contains

  function argument(number) result(word)
    integer, intent(in) :: number
    character(:), allocatable :: word
    integer :: letters
    call get_command_argument(number, length=letters)
    allocate (character(letters) :: word)
    if (letters > 0) call get_command_argument(number, word)
  end function

  subroutine take_arguments()
    character(:), allocatable :: word
    integer :: number
    name = '-'
    number = 0
    do while (number < command_argument_count())
      number = number + 1
      word = argument(number)
      select case (word(:min(2, len(word))))
      case ('-v')
        if (len(word) > 2) call refuse()
        all_lines = .true.
      case ('-s')
        call take_number(word(3:), number, offset)
      case ('-n')
        call take_number(word(3:), number, length)
        if (length < 0) call refuse()
      case ('--')
        if (len(word) > 2) call refuse()
        number = number + 1
        exit
      case default
        if (len(word) /= 1 .and. index(word, '-') == 1) call refuse()
        exit
      end select
      if (number == command_argument_count()) return
    end do
    if (number < command_argument_count()) call refuse()
    if (number == command_argument_count() .and. number > 0) name = argument(number)
  end subroutine

  ! The number is the rest of its option's word, or else the next word.
  subroutine take_number(rest, number, value)
    character(*), intent(in) :: rest
    integer, intent(inout) :: number
    integer(int64), intent(out) :: value
    logical :: right
    if (len(rest) > 0) then
      call read_number(rest, value, right)
    else
      number = number + 1
      call read_number(argument(number), value, right)
    end if
    if (.not. right) call refuse()
  end subroutine

  subroutine read_number(text, value, right)
    character(*), intent(in) :: text
    integer(int64), intent(out) :: value
    logical, intent(out) :: right
    character(*), parameter :: digits = '0123456789abcdefABCDEF'
    integer :: base, first, place, digit, power
    logical :: negative
    value = 0
    right = .false.
    negative = index(text, '-') == 1
    first = merge(2, 1, negative)
    base = 10
    if (index(text(min(first, len(text) + 1):), '0x') == 1) base = 16
    if (base == 16) first = first + 2
    do place = first, len(text)
      digit = index(digits, text(place:place)) - 1
      if (digit >= 16) digit = digit - 6
      if (digit < 0 .or. digit >= base) exit
      if (value > (huge(value) - digit)/base) return
      value = value*base + digit
    end do
    if (place == first) return
    power = 0
    if (place == len(text)) power = index('KMG', text(place:))
    if (place < len(text) .or. place == len(text) .and. power == 0) return
    if (value > huge(value)/1024_int64**power) return
    value = value*1024_int64**power
    if (negative) value = -value
    right = .true.
  end subroutine

  subroutine refuse()
    write (error_unit, '(a)') 'usage: hexdump [-v] [-s OFFSET] [-n LENGTH] [--] [FILE]'
    call exit(2)
  end subroutine

  ! What was dumped before is shown first.
  subroutine fail(what)
    character(*), intent(in) :: what
    call flush_lines()
    write (error_unit, '(4a)') 'hexdump: ', name, ': ', what
    call exit(1)
  end subroutine

  ! As a stream of bytes, in which no carriage return ends a record.
  subroutine open_file()
    character(:), allocatable :: path
    character(200) :: message
    integer :: status
    path = name
    if (name == '-' .and. len(name) == 1) then
      name = 'standard input'
      path = '/dev/stdin'
    else if (index(name, '/') /= 1) then
      path = './' // name
    end if
    open (newunit=unit, file=path, status='old', action='read', access='stream', form='unformatted', iostat=status, &
      iomsg=message)
    if (status == 0) return
    if (status < HIGHEST_OF_RUN_TIME) message = error_text(status)
    call fail(trim(message))
  end subroutine

  subroutine go_to_offset()
    integer :: error
    if (offset == 0) return
    error = fseek(unit, offset, merge(SEEK_SET, SEEK_END, offset > 0))
    if (error == 0) then
      offset = ftelli8(unit)
    else if (error == -ESPIPE .and. offset > 0) then
      call pass_over(offset)
    else if (error == -ESPIPE) then
      call fail('only a file has an end to count from')
    else
      call fail('there is no such byte')
    end if
  end subroutine

  ! What has no positions is read up to the first byte.
  subroutine pass_over(count)
    integer(int64), intent(in) :: count
    integer(int64) :: i
    character :: byte
    do i = 1, count
      if (.not. next_byte(byte)) call fail('there is no such byte')
    end do
  end subroutine

  logical function next_byte(byte)
    character, intent(out) :: byte
    integer :: error
    error = fgetc(unit, byte)
    next_byte = error == 0
    if (error == 0 .or. error == AT_END) return
    ! Which failure it was the other routine tells.
    call pxffgetc(unit, byte, error)
    call fail(trim(error_text(error)))
  end function

  subroutine dump()
    character(WIDTH) :: line, former
    integer(int64) :: place
    integer :: count
    logical :: equal
    place = offset
    equal = .false.
    former = ' '
    do
      call get_line(min(int(WIDTH, int64), length - (place - offset)), line, count)
      if (count == 0) exit
      if (count == WIDTH .and. line == former .and. place > offset .and. .not. all_lines) then
        if (.not. equal) call put_line('*')
        equal = .true.
      else
        call put_line(hexadecimal(place) // '  ' // layout(line(:count)))
        equal = .false.
      end if
      former = line
      place = place + count
    end do
    if (place > offset) then
      call put_line(hexadecimal(place))
    else if (length > 0) then
      call check_offset()
    end if
  end subroutine

  subroutine get_line(most, line, count)
    integer(int64), intent(in) :: most
    character(WIDTH), intent(out) :: line
    integer, intent(out) :: count
    line = ' '
    do count = 0, int(most) - 1
      if (.not. next_byte(line(count + 1:count + 1))) return
    end do
  end subroutine

  ! Nothing was there to show: the file may end before the offset.
  subroutine check_offset()
    if (offset == 0) return
    if (fseek(unit, 0, SEEK_END) /= 0) return
    if (ftelli8(unit) < offset) call fail('there is no such byte')
  end subroutine

  ! A position, of eight digits or more.
  function hexadecimal(place) result(digits)
    integer(int64), intent(in) :: place
    character(:), allocatable :: digits
    integer :: shift
    digits = ''
    do shift = 60, 0, -4
      if (shift < 32 .or. shiftr(place, shift) > 0) digits = digits // digit_of(int(ibits(place, shift, 4)))
    end do
  end function

  character function digit_of(value)
    integer, intent(in) :: value
    character(*), parameter :: DIGITS = '0123456789abcdef'
    digit_of = DIGITS(value + 1:value + 1)
  end function

  function layout(bytes) result(text)
    character(*), intent(in) :: bytes
    character(:), allocatable :: text
    character(3*WIDTH + 1) :: digits
    character(len(bytes)) :: plain
    integer :: i, column, code
    digits = ' '
    plain = bytes
    do i = 1, len(bytes)
      code = ichar(bytes(i:i))
      column = 3*i - 2 + merge(1, 0, i > WIDTH/2)
      digits(column:column + 1) = digit_of(code/16) // digit_of(mod(code, 16))
      if (code < 32 .or. code > 126) plain(i:i) = '.'
    end do
    text = digits // ' |' // plain // '|'
  end function

end program
