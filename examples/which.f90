! which [-al] NAME...: where the programs of these names are, along the directories of PATH.
!
! -a every program of the name, not only the first; -l what else is known of its path: what it is without links, and its
! parts. A name with a slash is looked at as it is. Empty elements of PATH are passed over. The exit status is 0, or 1
! when a name was not found, or 2 for a wrong option.
module programs
  use qxport, only: access, findfileqq, fullpathqq, getenvqq, pxfsetenv, splitpathqq, stat
  use qxport, only: MODE_DIRECTORY, MODE_TYPE_MASK, PATHQQ_LENGTH, STAT_MODE
  implicit none
  private
  public :: describe, is_program, show_programs

  ! The directories that are still to be searched.
  character(*), parameter :: REST = 'QXPORT_WHICH_REST'

contains

  logical function is_program(path)
    character(*), intent(in) :: path
    integer(4) :: status(13)
    is_program = .false.
    if (access(path, 'x') /= 0) return
    if (stat(path, status) /= 0) return
    is_program = iand(status(STAT_MODE), MODE_TYPE_MASK) /= MODE_DIRECTORY
  end function

  function variable(name) result(value)
    character(*), intent(in) :: name
    character(:), allocatable :: value
    integer :: length, stored
    call get_environment_variable(name, length=length)
    allocate (character(length) :: value)
    if (length > 0) stored = getenvqq(name, value)
  end function

  subroutine set_rest(directories)
    character(*), intent(in) :: directories
    integer :: ierror
    call pxfsetenv(REST, len(REST), directories//':', len(directories) + 1, 1, ierror)
    if (ierror /= 0) error stop 'which: no memory'
  end subroutine

  ! What is behind the first element that is this directory.
  function behind(directories, directory) result(others)
    character(*), intent(in) :: directories, directory
    character(:), allocatable :: others
    integer :: place
    place = index(':'//directories//':', ':'//directory//':')
    others = directories(min(place + len(directory) + 1, len(directories) + 1):)
  end function

  ! Prints the programs of a name, the first or all; whether there is any.
  logical function show_programs(name, all, long) result(found)
    character(*), intent(in) :: name
    logical, intent(in) :: all, long
    character(:), allocatable :: directories
    character(PATHQQ_LENGTH + 256) :: path
    integer :: length
    found = .false.
    directories = variable('PATH')
    do
      call set_rest(directories)
      ! A slash before the name keeps the current directory out of the search.
      length = findfileqq('/'//name, REST, path)
      if (length == 0) return
      if (is_program(path(:length))) then
        found = .true.
        call describe(path(:length), long)
        if (.not. all) return
      end if
      directories = behind(directories, path(:length - len(name) - 1))
    end do
  end function

  subroutine describe(path, long)
    character(*), intent(in) :: path
    logical, intent(in) :: long
    character(PATHQQ_LENGTH) :: resolved, directory, name, extension
    character(1) :: drive
    integer :: length, directory_length
    print '(a)', path
    if (.not. long) return
    length = fullpathqq(path, resolved)
    directory_length = splitpathqq(path, drive, directory, name, extension)
    print '(2a)', '  resolved   ', resolved(:length)
    print '(2a)', '  directory  ', directory(:directory_length)
    print '(2a)', '  name       ', trim(name)
    if (extension /= ' ') print '(2a)', '  extension  ', trim(extension)
  end subroutine

end module

program which
  use programs, only: describe, is_program, show_programs
  use qxport, only: exit
  use, intrinsic :: iso_fortran_env, only: error_unit
  implicit none
  character(:), allocatable :: word
  logical :: all = .false., long = .false., options_ended = .false., any_missing = .false., found
  integer :: number, place, names = 0

  do number = 1, command_argument_count()
    word = argument(number)
    if (options_ended .or. len(word) < 2 .or. index(word, '-') /= 1) then
      names = names + 1
      found = .false.
      if (index(word, '/') > 0) then
        found = is_program(word)
        if (found) call describe(word, long)
      else if (len(word) > 0) then
        found = show_programs(word, all, long)
      end if
      if (.not. found) write (error_unit, '(3a)') "which: no program '", word, "'"
      any_missing = any_missing .or. .not. found
    else if (word == '--') then
      options_ended = .true.
    else
      do place = 2, len(word)
        call set_option(word(place:place))
      end do
    end if
  end do
  if (names == 0) call refuse()
  call exit(merge(1, 0, any_missing))

contains

  function argument(number) result(text)
    integer, intent(in) :: number
    character(:), allocatable :: text
    integer :: length
    call get_command_argument(number, length=length)
    allocate (character(length) :: text)
    if (length > 0) call get_command_argument(number, text)
  end function

  subroutine set_option(letter)
    character, intent(in) :: letter
    select case (letter)
    case ('a')
      all = .true.
    case ('l')
      long = .true.
    case default
      call refuse()
    end select
  end subroutine

  subroutine refuse()
    write (error_unit, '(a)') 'usage: which [-al] NAME...'
    call exit(2)
  end subroutine

end program
