! ls [-alRtS] [NAME...]: lists files and directories, one name a line, with -l all that is known of each.
!
! -a names that begin with a dot too, -R subdirectories too, -t the newest first, -S the largest first.
! Where the output is a terminal, a ? stands for each byte of a name that a terminal might obey. The exit status is 0, or
! 1 when a subdirectory could not be read or the list not be written, or 2 for a wrong option or name.
module ls_entries
  use directories, only: read_directory
  use names, only: before, plain_bytes
  use qxport, only: error_text, lstati8, pxfisatty, STAT_MTIME, STAT_SIZE
  use standard_output, only: flush_lines
  use text_lists, only: text_list
  use, intrinsic :: iso_fortran_env, only: error_unit, int64
  implicit none
  private
  public :: entry, options, examine, read_entries, sort_entries, complain, exit_status, shown

  type :: entry
    character(:), allocatable :: name
    integer(int64) :: status(13) = 0
    logical :: examined = .false.
  end type

  type :: option_set
    logical :: all = .false., long = .false., recursive = .false., by_time = .false., by_size = .false.
  end type

  type(option_set), save :: options
  integer, save :: exit_status = 0

contains

  subroutine complain(what, path, error, severity)
    character(*), intent(in) :: what, path
    integer, intent(in) :: error, severity
    call flush_lines()
    write (error_unit, '(6a)') 'ls: ', what, " '", shown(path), "': ", trim(error_text(error))
    exit_status = max(exit_status, severity)
  end subroutine

  ! A name as it is, or as a terminal may have it.
  function shown(name)
    character(*), intent(in) :: name
    character(:), allocatable :: shown
    logical, save :: asked = .false., careful = .false.
    integer :: place, length, ierror
    if (.not. asked) call pxfisatty(1, careful, ierror)
    asked = .true.
    shown = name
    if (.not. careful) return
    place = 1
    do while (place <= len(name))
      length = plain_bytes(name(place:))
      if (length == 0) shown(place:place) = '?'
      place = place + max(length, 1)
    end do
  end function

  ! A link itself, not what it points to. The NUL keeps blanks at the end of a name from being dropped.
  subroutine examine(path, item, error)
    character(*), intent(in) :: path
    type(entry), intent(inout) :: item
    integer, intent(out) :: error
    error = lstati8(path//achar(0), item%status)
    item%examined = error == 0
  end subroutine

  subroutine read_entries(path, entries, error)
    character(*), intent(in) :: path
    type(entry), allocatable, intent(out) :: entries(:)
    integer, intent(out) :: error
    type(text_list) :: names
    integer :: i, count
    call read_directory(path, names, error)
    allocate (entries(names%count))
    count = 0
    do i = 1, names%count
      if (names%items(i)%value(1:1) == '.' .and. .not. options%all) cycle
      count = count + 1
      entries(count)%name = names%items(i)%value
    end do
    entries = entries(:count)
  end subroutine

  pure logical function precedes(a, b)
    type(entry), intent(in) :: a, b
    integer(int64) :: difference
    difference = 0
    if (options%by_size) then
      difference = b%status(STAT_SIZE) - a%status(STAT_SIZE)
    else if (options%by_time) then
      difference = b%status(STAT_MTIME) - a%status(STAT_MTIME)
    end if
    precedes = difference < 0 .or. (difference == 0 .and. before(a%name, b%name))
  end function

  recursive subroutine merge_sort(entries, order)
    type(entry), intent(in) :: entries(:)
    integer, intent(inout) :: order(:)
    integer :: left(size(order)/2), right(size(order) - size(order)/2)
    integer :: i, j, k
    if (size(order) < 2) return
    left = order(:size(order)/2)
    right = order(size(order)/2 + 1:)
    call merge_sort(entries, left)
    call merge_sort(entries, right)
    j = 1
    k = 1
    do i = 1, size(order)
      if (k > size(right)) then
        order(i) = left(j)
        j = j + 1
      else if (j > size(left)) then
        order(i) = right(k)
        k = k + 1
      else if (precedes(entries(right(k)), entries(left(j)))) then
        order(i) = right(k)
        k = k + 1
      else
        order(i) = left(j)
        j = j + 1
      end if
    end do
  end subroutine

  subroutine sort_entries(entries)
    type(entry), allocatable, intent(inout) :: entries(:)
    integer :: order(size(entries))
    integer :: i
    order = [(i, i=1, size(entries))]
    call merge_sort(entries, order)
    entries = entries(order)
  end subroutine

end module

! Local time beyond the seconds that the binding can be asked for.
module ls_calendar
  use qxport, only: pxflocaltime
  use, intrinsic :: iso_fortran_env, only: int64
  implicit none
  private
  public :: local_time

  integer(int64), parameter :: day = 86400

contains

  ! As pxflocaltime has it, and the year as a number of its own. For an instant that its seconds cannot tell another of a
  ! year like that one is asked for: a year as long that begins with the same day of the week, among the latest that can
  ! be told, since the rules of daylight saving go on as they were last.
  subroutine local_time(seconds, local, year)
    integer(int64), intent(in) :: seconds
    integer, intent(out) :: local(9)
    integer(int64), intent(out) :: year
    integer(int64) :: true_year, like
    integer :: ierror
    if (abs(seconds) < huge(0)) then
      call pxflocaltime(int(seconds), local, ierror)
      year = local(6)
      return
    end if
    ! A day around the turn of a year is in either, here and there.
    true_year = year_of(seconds)
    like = 2037
    do while (length_of(like) /= length_of(true_year) .or. &
              modulo(first_day(like) - first_day(true_year), 7_int64) /= 0)
      like = like - 1
    end do
    call pxflocaltime(int(seconds - day*(first_day(true_year) - first_day(like))), local, ierror)
    year = true_year + local(6) - like
  end subroutine

  ! The days from 1970 to the first of a year.
  pure integer(int64) function first_day(year)
    integer(int64), intent(in) :: year
    integer(int64) :: before
    before = year - 1
    first_day = 365*before + floored(before, 4_int64) - floored(before, 100_int64) + floored(before, 400_int64) - 719162
  end function

  pure integer(int64) function length_of(year)
    integer(int64), intent(in) :: year
    length_of = first_day(year + 1) - first_day(year)
  end function

  ! By UTC.
  pure integer(int64) function year_of(seconds)
    integer(int64), intent(in) :: seconds
    integer(int64) :: number
    number = floored(seconds, day)
    year_of = 1970 + floored(400*number, 146097_int64)
    do while (first_day(year_of) > number)
      year_of = year_of - 1
    end do
    do while (first_day(year_of + 1) <= number)
      year_of = year_of + 1
    end do
  end function

  pure integer(int64) function floored(a, b)
    integer(int64), intent(in) :: a, b
    floored = (a - modulo(a, b))/b
  end function

end module

module ls_long
  use ls_calendar, only: local_time
  use ls_entries, only: entry, shown
  use qxport, only: pxfgetgrgid, pxfgetpwuid, pxfstrget, pxfstructcreate, pxftime
  use qxport, only: MODE_BLOCK_DEVICE, MODE_CHARACTER_DEVICE, MODE_DIRECTORY, MODE_FIFO, MODE_REGULAR, MODE_SOCKET
  use qxport, only: MODE_SYMLINK, MODE_TYPE_MASK, STAT_GID, STAT_LINKS, STAT_MODE, STAT_MTIME, STAT_RDEV, STAT_SIZE
  use qxport, only: STAT_UID
  use standard_output, only: put_line
  use, intrinsic :: iso_c_binding, only: c_char, c_null_char, c_size_t
  use, intrinsic :: iso_fortran_env, only: int64
  implicit none
  private
  public :: is_directory, print_long

  ! The binding is older than symbolic links.
  interface
    function readlink(path, target, size) bind(C) result(length)
      import :: c_char, c_size_t
      character(kind=c_char), intent(in) :: path(*)
      character(kind=c_char), intent(out) :: target(*)
      integer(c_size_t), value :: size
      integer(c_size_t) :: length
    end function
  end interface

contains

  pure logical function is_directory(item)
    type(entry), intent(in) :: item
    is_directory = iand(int(item%status(STAT_MODE)), MODE_TYPE_MASK) == MODE_DIRECTORY
  end function

  pure function mode_text(mode) result(text)
    integer, intent(in) :: mode
    character(10) :: text
    integer, parameter :: types(7) = [MODE_REGULAR, MODE_DIRECTORY, MODE_SYMLINK, MODE_CHARACTER_DEVICE, &
      MODE_BLOCK_DEVICE, MODE_FIFO, MODE_SOCKET]
    character(7), parameter :: letters = '-dlcbps', special = 'sst'
    character(9), parameter :: permissions = 'rwxrwxrwx'
    integer :: i
    text = '?---------'
    do i = 1, 7
      if (iand(mode, MODE_TYPE_MASK) == types(i)) text(1:1) = letters(i:i)
    end do
    do i = 1, 9
      if (btest(mode, 9 - i)) text(i + 1:i + 1) = permissions(i:i)
    end do
    ! Set-user-id, set-group-id and sticky show in the place of x: small with it, capital without.
    do i = 1, 3
      if (.not. btest(mode, 12 - i)) cycle
      if (btest(mode, 9 - 3*i)) then
        text(3*i + 1:3*i + 1) = special(i:i)
      else
        text(3*i + 1:3*i + 1) = achar(iachar(special(i:i)) - 32)
      end if
    end do
  end function

  function number_text(value) result(text)
    integer(int64), intent(in) :: value
    character(:), allocatable :: text
    character(20) :: buffer
    write (buffer, '(i0)') value
    text = trim(buffer)
  end function

  ! The name of a user (kind 'passwd') or a group, or the number of one that has no name.
  function id_text(kind, id) result(text)
    character(*), intent(in) :: kind
    integer, intent(in) :: id
    character(:), allocatable :: text
    integer, save :: users = 0, groups = 0
    character(256) :: name
    integer :: ierror, length
    if (users == 0) call pxfstructcreate('passwd', users, ierror)
    if (groups == 0) call pxfstructcreate('group', groups, ierror)
    length = 0
    ! A lookup that succeeds leaves ierror alone, and one that finds nobody may set it to 0: the record tells.
    ierror = -1
    if (kind == 'passwd') then
      call pxfgetpwuid(id, users, ierror)
      if (ierror == -1) call pxfstrget(users, 'pw_name', name, length, ierror)
    else
      call pxfgetgrgid(id, groups, ierror)
      if (ierror == -1) call pxfstrget(groups, 'gr_name', name, length, ierror)
    end if
    if (length > 0) then
      text = name(:length)
    else
      text = number_text(iand(int(id, int64), int(z'ffffffff', int64)))
    end if
  end function

  ! Recent times with hour and minute, others with the year.
  function time_text(seconds) result(text)
    integer(int64), intent(in) :: seconds
    character(:), allocatable :: text
    character(32) :: buffer
    character(3), parameter :: months(12) = ['Jan', 'Feb', 'Mar', 'Apr', 'May', 'Jun', 'Jul', 'Aug', 'Sep', 'Oct', &
      'Nov', 'Dec']
    integer, parameter :: half_a_year = 31556952/2
    integer(int64) :: year
    integer :: local(9), now, ierror
    call pxftime(now, ierror)
    call local_time(seconds, local, year)
    if (seconds <= now .and. seconds > now - half_a_year) then
      write (buffer, '(a, i3, i3.2, a, i2.2)') months(local(5)), local(4), local(3), ':', local(2)
    else
      write (buffer, '(a, i3, 2x, i0)') months(local(5)), local(4), year
    end if
    text = trim(buffer)
  end function

  function size_text(item) result(text)
    type(entry), intent(in) :: item
    character(:), allocatable :: text, minor
    integer(int64) :: device
    integer :: kind
    kind = iand(int(item%status(STAT_MODE)), MODE_TYPE_MASK)
    if (kind == MODE_CHARACTER_DEVICE .or. kind == MODE_BLOCK_DEVICE) then
      device = item%status(STAT_RDEV)
      minor = number_text(ior(iand(device, 255_int64), iand(ishft(device, -12), int(z'fff00', int64))))
      text = number_text(iand(ishft(device, -8), 4095_int64))//', '//repeat(' ', max(3 - len(minor), 0))//minor
    else
      text = number_text(item%status(STAT_SIZE))
    end if
  end function

  ! Behind the name of a symbolic link: where it leads.
  function target_text(directory, item) result(text)
    character(*), intent(in) :: directory
    type(entry), intent(in) :: item
    character(:), allocatable :: text
    character(4096) :: target
    integer(c_size_t) :: length
    text = ''
    if (iand(int(item%status(STAT_MODE)), MODE_TYPE_MASK) /= MODE_SYMLINK) return
    length = readlink(directory//item%name//c_null_char, target, len(target, c_size_t))
    if (length > 0) text = ' -> '//shown(target(:length))
  end function

  ! The names are those of a directory, which ends with a slash, or paths as they are.
  subroutine print_long(directory, entries)
    character(*), intent(in) :: directory
    type(entry), intent(in) :: entries(:)
    type :: row
      character(:), allocatable :: links, owner, group, size
    end type
    type(row), allocatable :: rows(:)
    integer :: widths(4), i
    allocate (rows(size(entries)))
    widths = 0
    do i = 1, size(entries)
      associate (status => entries(i)%status)
        rows(i)%links = number_text(status(STAT_LINKS))
        rows(i)%owner = id_text('passwd', int(status(STAT_UID)))
        rows(i)%group = id_text('group', int(status(STAT_GID)))
        rows(i)%size = size_text(entries(i))
      end associate
      widths = max(widths, [len(rows(i)%links), len(rows(i)%owner), len(rows(i)%group), len(rows(i)%size)])
    end do
    do i = 1, size(entries)
      call put_line(mode_text(int(entries(i)%status(STAT_MODE)))//' '// &
        repeat(' ', widths(1) - len(rows(i)%links))//rows(i)%links//' '// &
        rows(i)%owner//repeat(' ', widths(2) - len(rows(i)%owner))//' '// &
        rows(i)%group//repeat(' ', widths(3) - len(rows(i)%group))//' '// &
        repeat(' ', widths(4) - len(rows(i)%size))//rows(i)%size//' '// &
        time_text(entries(i)%status(STAT_MTIME))//' '//shown(entries(i)%name)//target_text(directory, entries(i)))
    end do
  end subroutine

end module

program ls
  use directories, only: is_self_or_parent
  use ls_entries
  use ls_long
  use qxport, only: exit
  use standard_output, only: flush_lines, program_name, put_line
  use, intrinsic :: iso_fortran_env, only: error_unit
  implicit none
  type(entry), allocatable :: operands(:), files(:), directories(:)
  logical :: something_printed = .false., with_headers
  integer :: i

  program_name = 'ls'
  call read_command_line(operands)
  do i = 1, size(operands)
    call classify(operands(i))
  end do
  files = chosen(operands, .false.)
  directories = chosen(operands, .true.)
  with_headers = size(operands) > 1 .or. options%recursive
  call sort_entries(files)
  call sort_entries(directories)
  call print_entries('', files)
  do i = 1, size(directories)
    call list_directory(directories(i)%name, 2)
  end do
  call flush_lines()
  call exit(exit_status)

contains

  function argument(number) result(text)
    integer, intent(in) :: number
    character(:), allocatable :: text
    integer :: length
    call get_command_argument(number, length=length)
    allocate (character(length) :: text)
    if (length > 0) call get_command_argument(number, text)
  end function

  subroutine read_command_line(names)
    type(entry), allocatable, intent(out) :: names(:)
    type(entry) :: operand
    character(:), allocatable :: text
    logical :: options_ended
    integer :: number, place
    allocate (names(0))
    options_ended = .false.
    do number = 1, command_argument_count()
      text = argument(number)
      if (options_ended .or. len(text) < 2 .or. text(1:min(1, len(text))) /= '-') then
        operand%name = text
        names = [names, operand]
      else if (text == '--') then
        options_ended = .true.
      else
        do place = 2, len(text)
          call set_option(text(place:place))
        end do
      end if
    end do
    if (size(names) == 0) then
      operand%name = '.'
      names = [operand]
    end if
  end subroutine

  subroutine set_option(letter)
    character, intent(in) :: letter
    select case (letter)
    case ('a')
      options%all = .true.
    case ('l')
      options%long = .true.
    case ('R')
      options%recursive = .true.
    case ('t')
      options%by_time = .true.
    case ('S')
      options%by_size = .true.
    case default
      write (error_unit, '(3a)') 'ls: unknown option -', letter, '; usage: ls [-alRtS] [NAME...]'
      call exit(2)
    end select
  end subroutine

  subroutine classify(operand)
    type(entry), intent(inout) :: operand
    integer :: error
    call examine(operand%name, operand, error)
    if (error /= 0) call complain('cannot access', operand%name, error, 2)
  end subroutine

  ! Those that are directories, or those that are not.
  function chosen(entries, wanted) result(kept)
    type(entry), intent(in) :: entries(:)
    logical, intent(in) :: wanted
    type(entry), allocatable :: kept(:)
    logical :: mask(size(entries))
    integer :: place
    do place = 1, size(entries)
      mask(place) = entries(place)%examined .and. (is_directory(entries(place)) .eqv. wanted)
    end do
    kept = entries(pack([(place, place=1, size(entries))], mask))
  end function

  subroutine print_entries(directory, entries)
    character(*), intent(in) :: directory
    type(entry), intent(in) :: entries(:)
    integer :: place
    if (size(entries) == 0) return
    something_printed = .true.
    if (options%long) then
      call print_long(directory, entries)
    else
      do place = 1, size(entries)
        call put_line(shown(entries(place)%name))
      end do
    end if
  end subroutine

  recursive subroutine list_directory(path, severity)
    character(*), intent(in) :: path
    integer, intent(in) :: severity
    type(entry), allocatable :: entries(:)
    integer :: place, error
    call read_entries(path, entries, error)
    if (error /= 0) call complain('cannot open directory', path, error, severity)
    if (with_headers) then
      if (something_printed) call put_line('')
      call put_line(shown(path)//':')
      something_printed = .true.
    end if
    do place = 1, size(entries)
      call examine(path//'/'//entries(place)%name, entries(place), error)
      if (error /= 0) call complain('cannot access', path//'/'//entries(place)%name, error, 1)
    end do
    call sort_entries(entries)
    call print_entries(path//'/', entries)
    if (.not. options%recursive) return
    do place = 1, size(entries)
      if (is_self_or_parent(entries(place)%name)) cycle
      if (is_directory(entries(place))) call list_directory(path//'/'//entries(place)%name, 1)
    end do
  end subroutine

end program
