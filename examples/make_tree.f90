! make_tree DIRECTORY: makes a directory and what the standard input asks for in it, a line a step.
!
!   dir NAME              a directory, with those above it that are missing
!   file NAME             an empty file, or one that is there already
!   stamp TIME NAME       gives a file a time: YYYY-MM-DDThh:mm:ss, local
!   run PROGRAM [WORDS]   runs a program, which must end well
!   shell COMMAND         runs a command through the shell, whatever it answers
!   rename FROM TO        renames a file or a directory
!   remove NAME           removes an empty directory
!
! Empty lines and those that begin with # are passed over. What has blanks in its name can be the last word of a line
! only. Each step is answered by a line: `done`, or `FAILED` with the reason. The exit status is 0, or 1 when a step
! failed, or 2 when there is nothing to begin with.
module steps
  use qxport, only: deldirqq, error_text, getlasterrorqq, makedirqq, packtimeqq, renamefileqq, runqq, &
                    setfiletimeqq, splitpathqq, systemqq, unpacktimeqq, PATHQQ_LENGTH
  implicit none
  private
  public :: last_error, make_directories, take

contains

  ! A directory, and first the one above it.
  recursive logical function make_directories(name) result(made)
    character(*), intent(in) :: name
    character(PATHQQ_LENGTH) :: above, last, extension
    character(1) :: drive
    integer :: length
    made = makedirqq(name)
    if (made) return
    length = splitpathqq(name, drive, above, last, extension)
    if (length > 1) then
      if (.not. exists(above(:length - 1))) then
        if (make_directories(above(:length - 1))) made = makedirqq(name)
      end if
    end if
    if (.not. made) made = exists(name//'/.')
  end function

  logical function exists(name)
    character(*), intent(in) :: name
    inquire (file=name, exist=exists)
  end function

  logical function make_file(name) result(made)
    character(*), intent(in) :: name
    integer :: unit, status
    open (newunit=unit, file=name, status='unknown', action='readwrite', iostat=status)
    made = status == 0
    if (made) close (unit)
  end function

  ! A time that does not exist, as the 30th of February, comes back from the packed time as another.
  logical function stamp(time, name, why) result(stamped)
    character(*), intent(in) :: time, name
    character(:), allocatable, intent(inout) :: why
    integer(2) :: fields(6), shown(6)
    integer(4) :: packed
    integer :: status
    stamped = .false.
    why = 'no such time'
    if (len(time) /= 19) return
    read (time, '(i4, 5(1x, i2))', iostat=status) fields
    if (status /= 0) return
    call packtimeqq(packed, fields(1), fields(2), fields(3), fields(4), fields(5), fields(6))
    call unpacktimeqq(packed, shown(1), shown(2), shown(3), shown(4), shown(5), shown(6))
    if (any(shown /= fields)) return
    stamped = setfiletimeqq(name, packed)
    why = last_error()
  end function

  ! The first word of a text, and what is behind it.
  subroutine split(text, word, rest)
    character(*), intent(in) :: text
    character(:), allocatable, intent(out) :: word, rest
    integer :: end
    end = index(text//' ', ' ')
    word = text(:end - 1)
    rest = adjustl(text(min(end + 1, len(text) + 1):))
    rest = trim(rest)
  end subroutine

  ! What the system said last; asked before any other output or input.
  function last_error() result(text)
    character(:), allocatable :: text
    text = trim(error_text(getlasterrorqq()))
  end function

  ! Takes one step; whether it was done, and if not, why.
  logical function take(step, why) result(done)
    character(*), intent(in) :: step
    character(:), allocatable, intent(out) :: why
    character(:), allocatable :: verb, rest, first, second
    call split(step, verb, rest)
    call split(rest, first, second)
    ! What the program has printed comes before what a command prints.
    flush (6)
    done = .false.
    select case (verb)
    case ('dir')
      done = make_directories(rest)
      why = last_error()
    case ('file')
      done = make_file(rest)
      why = last_error()
    case ('stamp')
      done = stamp(first, second, why)
    case ('run')
      done = runqq(first, second) == 0
      why = 'it cannot be run, or did not end well'
    case ('shell')
      done = systemqq(rest)
      why = last_error()
    case ('rename')
      done = renamefileqq(first, second)
      why = last_error()
    case ('remove')
      done = deldirqq(rest)
      why = last_error()
    case default
      why = 'no such step'
    end select
  end function

end module

program make_tree
  use qxport, only: changedirqq, exit, fullpathqq, PATHQQ_LENGTH
  use steps, only: last_error, make_directories, take
  use, intrinsic :: iso_fortran_env, only: error_unit, input_unit
  implicit none
  character(4096) :: line
  character(:), allocatable :: root, why
  character(PATHQQ_LENGTH) :: path
  integer :: length, status, failures = 0

  call get_command_argument(1, length=length)
  if (command_argument_count() /= 1 .or. length == 0) then
    write (error_unit, '(a)') 'usage: make_tree DIRECTORY <STEPS'
    call exit(2)
  end if
  allocate (character(length) :: root)
  call get_command_argument(1, root)
  if (.not. make_directories(root)) call give_up()
  if (.not. changedirqq(root)) call give_up()
  length = fullpathqq('.', path)
  print '(2a)', 'in ', path(:length)
  do
    read (input_unit, '(a)', iostat=status) line
    if (status /= 0) exit
    line = adjustl(line)
    if (line == ' ' .or. line(1:1) == '#') cycle
    if (take(trim(line), why)) then
      print '(2a)', 'done    ', trim(line)
    else
      failures = failures + 1
      print '(4a)', 'FAILED  ', trim(line), ': ', why
    end if
  end do
  call exit(merge(1, 0, failures > 0))

contains

  subroutine give_up()
    why = last_error()
    write (error_unit, '(4a)') "make_tree: no way into '", root, "': ", why
    call exit(2)
  end subroutine

end program
