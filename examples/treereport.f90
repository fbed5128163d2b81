! treereport [DIRECTORY]: reports what a directory tree holds, by default the one of the current directory.
!
! Symbolic links are counted and not followed; mounted file systems are entered. What cannot be examined is named in
! the report, with the reason, and does not end it.

! What is known of a tree, and the walk that finds it out.
module trees
  use, intrinsic :: iso_fortran_env, only: int64
  use directories, only: is_self_or_parent, read_directory
  use names, only: before
  use qxport, only: access, error_text, lstati8, stati8, MODE_DIRECTORY, MODE_REGULAR, MODE_SYMLINK, MODE_TYPE_MASK, STAT_MODE, &
    STAT_MTIME, STAT_SIZE
  use qxport_numbers, only: EACCES
  use text_lists, only: text_list
  implicit none
  private
  public :: survey, why_refused

  ! Behind a path: blanks at the end of a CHARACTER argument do not count, but those before a NUL do.
  character, parameter :: NUL = achar(0)
  integer, parameter, public :: MOST_RANKED = 10, LAST_CLASS = 32

  type, public :: ranked_file
    integer(int64) :: key, bytes, modified
    character(:), allocatable :: path  ! from the root on
  end type ranked_file

  ! The files with the greatest keys, greatest first; equal keys in the order of the paths.
  type, public :: ranking
    integer :: count = 0
    type(ranked_file) :: files(MOST_RANKED)
  end type ranking

  type, public :: tree
    character(:), allocatable :: root
    integer(int64) :: files = 0, directories = 0, links = 0, others = 0
    integer(int64) :: bytes = 0                  ! of the files
    integer(int64) :: unreadable = 0             ! files that this user may not read
    integer(int64) :: classes(0:LAST_CLASS) = 0  ! empty files, and those of 4**(class - 1) bytes or more
    type(ranking) :: largest, newest
    type(text_list) :: problems, reasons
  end type tree

contains

  ! Why there can be no report on a tree, or nothing when there can.
  function why_refused(root) result(why)
    character(*), intent(in) :: root
    character(:), allocatable :: why
    integer(int64) :: status(13)
    integer :: error
    why = ''
    error = stati8(root//'/.', status)
    if (error == 0) error = access(root//'/.', 'rx')
    if (error /= 0) why = trim(error_text(error))
  end function why_refused

  ! Each directory is read whole before its entries are examined, so that no more than one is open at a time.
  subroutine survey(found)
    type(tree), intent(inout) :: found
    type(text_list) :: pending, names
    character(:), allocatable :: directory
    integer :: i, error
    found%directories = 1
    call pending%add(found%root)
    do while (pending%count > 0)
      directory = pending%items(pending%count)%value
      pending%count = pending%count - 1
      call read_directory(directory, names, error)
      if (error /= 0) call add_problem(found, directory, error)
      do i = 1, names%count
        associate (name => names%items(i)%value)
          if (.not. is_self_or_parent(name)) call examine(directory//'/'//name, found, pending)
        end associate
      end do
    end do
  end subroutine survey

  subroutine examine(path, found, pending)
    character(*), intent(in) :: path
    type(tree), intent(inout) :: found
    type(text_list), intent(inout) :: pending
    integer(int64) :: status(13)
    integer :: error
    error = lstati8(path//NUL, status)
    if (error /= 0) then
      call add_problem(found, path, error)
      return
    end if
    select case (iand(int(status(STAT_MODE)), MODE_TYPE_MASK))
    case (MODE_REGULAR)
      call add_file(found, path, status(STAT_SIZE), status(STAT_MTIME))
    case (MODE_DIRECTORY)
      found%directories = found%directories + 1
      call pending%add(path)
    case (MODE_SYMLINK)
      found%links = found%links + 1
    case default
      found%others = found%others + 1
    end select
  end subroutine examine

  subroutine add_file(found, path, bytes, modified)
    type(tree), intent(inout) :: found
    character(*), intent(in) :: path
    integer(int64), intent(in) :: bytes, modified
    integer :: class
    found%files = found%files + 1
    ! Files with holes may claim more bytes together than can be counted.
    found%bytes = found%bytes + min(bytes, huge(bytes) - found%bytes)
    if (access(path//NUL, 'r') == EACCES) found%unreadable = found%unreadable + 1
    class = (64 - leadz(bytes) + 1)/2
    found%classes(class) = found%classes(class) + 1
    call rank(found%largest, ranked_file(bytes, bytes, modified, path(len(found%root) + 2:)))
    call rank(found%newest, ranked_file(modified, bytes, modified, path(len(found%root) + 2:)))
  end subroutine add_file

  subroutine rank(ranks, file)
    type(ranking), intent(inout) :: ranks
    type(ranked_file), intent(in) :: file
    integer :: place, i
    place = ranks%count + 1
    do while (place > 1)
      if (.not. precedes(file, ranks%files(place - 1))) exit
      place = place - 1
    end do
    if (place > MOST_RANKED) return
    ranks%count = min(ranks%count + 1, MOST_RANKED)
    do i = ranks%count, place + 1, -1
      ranks%files(i) = ranks%files(i - 1)
    end do
    ranks%files(place) = file
  end subroutine rank

  pure logical function precedes(one, other)
    type(ranked_file), intent(in) :: one, other
    precedes = one%key > other%key .or. (one%key == other%key .and. before(one%path, other%path))
  end function precedes

  subroutine add_problem(found, path, error)
    type(tree), intent(inout) :: found
    character(*), intent(in) :: path
    integer, intent(in) :: error
    call found%problems%add(path(len(found%root) + 2:))
    call found%reasons%add(trim(error_text(error)))
  end subroutine add_problem
end module trees

program treereport
  use, intrinsic :: iso_fortran_env, only: error_unit, int64
  use qxport, only: exit, getcwd, getenv, getlog, getuid, hostnm
  use standard_output, only: flush_lines, program_name, put_line
  use trees, only: ranking, survey, tree, why_refused, LAST_CLASS
  use wording, only: decimal, human_size, printable, utc_date
  implicit none

  program_name = 'treereport'
  call report(argument())
  call flush_lines()

contains

  function argument() result(directory)
    character(:), allocatable :: directory
    integer :: length
    directory = '.'
    if (command_argument_count() == 0) return
    call get_command_argument(1, length=length)
    directory = repeat(' ', length)
    call get_command_argument(1, directory)
    ! No argument is an option: one that begins with "-" asks for help, or so its writer thinks.
    if (command_argument_count() == 1 .and. scan(directory//'-', '-') > 1) return
    write (error_unit, '(a)') 'usage: treereport [DIRECTORY]', &
      'Reports what a directory tree holds, by default the one of the current directory.'
    call exit(2)
  end function argument

  subroutine report(directory)
    character(*), intent(in) :: directory
    character(:), allocatable :: why
    type(tree) :: found
    why = why_refused(directory)
    if (len(why) > 0) then
      write (error_unit, '(4a)') 'treereport: ', printable(directory), ': ', why
      call exit(1)
    end if
    found%root = directory
    call survey(found)
    call print_header(directory)
    call print_contents(found)
    call print_ranking('The largest files', found%largest)
    call print_ranking('The newest files', found%newest)
    call print_classes(found%classes)
    call print_problems(found)
  end subroutine report

  subroutine print_header(directory)
    character(*), intent(in) :: directory
    character(255) :: host, user
    character(10) :: date, time, zone
    if (hostnm(host) > 0) host = 'unknown'
    call getlog(user)
    ! A process without a terminal of its own has no login name; its environment may tell.
    if (user == '') call getenv('LOGNAME', user)
    if (user == '') call getenv('USER', user)
    if (user == '') user = 'user id '//decimal(int(getuid(), int64))
    call date_and_time(date, time, zone)
    call put_line('Tree report')
    call put_line('  host         '//printable(trim(host)))
    call put_line('  user         '//printable(trim(user)))
    call put_line('  directory    '//printable(absolute(directory)))
    call put_line('  date         '//date(1:4)//'-'//date(5:6)//'-'//date(7:8)//' '// &
      time(1:2)//':'//time(3:4)//':'//time(5:6)//' '//trim(zone))
  end subroutine print_header

  function absolute(directory) result(path)
    character(*), intent(in) :: directory
    character(:), allocatable :: path
    character(4096) :: current
    path = directory
    if (directory(1:1) == '/') return
    if (getcwd(current) /= 0) return
    path = trim(current)
    if (directory /= '.') path = path//'/'//directory
  end function absolute

  subroutine print_contents(found)
    type(tree), intent(in) :: found
    call put_line('')
    call put_line('Contents')
    call put_line('  total size   '//human_size(found%bytes)//' ('//decimal(found%bytes)//' bytes)')
    call put_line('  files        '//decimal(found%files))
    call put_line('  directories  '//decimal(found%directories))
    call put_line('  links        '//decimal(found%links))
    call put_line('  others       '//decimal(found%others))
    if (found%unreadable > 0) call put_line('  unreadable   '//decimal(found%unreadable)//' of the files')
  end subroutine print_contents

  subroutine print_ranking(title, ranks)
    character(*), intent(in) :: title
    type(ranking), intent(in) :: ranks
    character(31) :: sizes
    integer :: i
    if (ranks%count == 0) return
    call put_line('')
    call put_line(title//' (bytes, size, date of the last change in UTC, path)')
    do i = 1, ranks%count
      associate (file => ranks%files(i))
        write (sizes, '(i19, a12)') file%bytes, human_size(file%bytes)
        call put_line(sizes//'  '//utc_date(file%modified)//'  '//printable(file%path))
      end associate
    end do
  end subroutine print_ranking

  ! A bar for each class from the smallest to the largest that occurs.
  subroutine print_classes(classes)
    integer(int64), intent(in) :: classes(0:LAST_CLASS)
    integer(int64), parameter :: LONGEST_BAR = 50
    character(:), allocatable :: label
    integer(int64) :: length
    integer :: class
    if (all(classes == 0)) return
    call put_line('')
    call put_line('Sizes of the files (from, number)')
    do class = findloc(classes > 0, .true., dim=1) - 1, findloc(classes > 0, .true., dim=1, back=.true.) - 1
      label = 'empty'
      if (class > 0) label = human_size(4_int64**(class - 1))
      length = classes(class)*LONGEST_BAR/maxval(classes)
      if (classes(class) > 0) length = max(length, 1_int64)
      call put_line(repeat(' ', 12 - len(label))//label//'  |'//repeat('#', length)//' '//decimal(classes(class)))
    end do
  end subroutine print_classes

  subroutine print_problems(found)
    type(tree), intent(in) :: found
    character(:), allocatable :: path
    integer :: i
    call put_line('')
    if (found%problems%count == 0) then
      call put_line('Everything was examined.')
      return
    end if
    call put_line('Not examined, or not to the end ('//decimal(int(found%problems%count, int64))//')')
    do i = 1, found%problems%count
      path = found%problems%items(i)%value
      if (len(path) == 0) path = '.'
      call put_line('  "'//printable(path)//'": '//found%reasons%items(i)%value)
    end do
  end subroutine print_problems
end program treereport
