! What a text of commands means to fsh: its pipelines, commands, words and redirections, and what a word stands for.
module fsh_syntax
  use qxport, only: pxfgetenv
  implicit none
  private
  public :: word, redirection, command, pipeline, text_buffer
  public :: parse, expand, variable, is_name, number_text, last_status, shell_process, last_background
  integer, parameter, public :: well_formed = 0, unfinished = 1, malformed = 2

  type :: word
    character(:), allocatable :: text
  end type

  type :: redirection
    integer :: descriptor
    character(2) :: operator
    type(word) :: target
  end type

  type :: command
    type(word), allocatable :: words(:)
    type(redirection), allocatable :: redirections(:)
  end type

  type :: pipeline
    type(command), allocatable :: commands(:)
    logical :: background = .false.
    character(:), allocatable :: text
  end type

  ! Text that grows byte by byte.
  type :: text_buffer
    character(:), allocatable :: bytes
    integer :: used = 0
  contains
    procedure :: append
    procedure :: content
  end type

  ! What $?, $$ and $! stand for.
  integer, save :: last_status = 0, shell_process = 0, last_background = 0

  character, parameter :: newline = achar(10), tab = achar(9)
  character(*), parameter :: letters = 'abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ_'
  character(*), parameter :: digits = '0123456789', word_ends = ' ;&|<>()'//tab//newline

contains

  subroutine append(self, text)
    class(text_buffer), intent(inout) :: self
    character(*), intent(in) :: text
    character(:), allocatable :: larger
    if (.not. allocated(self%bytes)) allocate (character(64) :: self%bytes)
    if (self%used + len(text) > len(self%bytes)) then
      allocate (character(2*(self%used + len(text))) :: larger)
      larger(:self%used) = self%bytes(:self%used)
      call move_alloc(larger, self%bytes)
    end if
    self%bytes(self%used + 1:self%used + len(text)) = text
    self%used = self%used + len(text)
  end subroutine

  function content(self) result(text)
    class(text_buffer), intent(in) :: self
    character(:), allocatable :: text
    text = ''
    if (self%used > 0) text = self%bytes(:self%used)
  end function

  function number_text(number) result(text)
    integer, intent(in) :: number
    character(:), allocatable :: text
    character(12) :: buffer
    write (buffer, '(i0)') number
    text = trim(buffer)
  end function

  pure logical function is_name(text)
    character(*), intent(in) :: text
    is_name = .false.
    if (len(text) > 0) is_name = verify(text, letters//digits) == 0 .and. scan(text(1:1), digits) == 0
  end function

  ! The pipelines of a text. An unfinished text, one that ends inside quotes or behind a |, needs another line.
  subroutine parse(text, pipelines, outcome)
    character(*), intent(in) :: text
    type(pipeline), allocatable, intent(out) :: pipelines(:)
    integer, intent(out) :: outcome
    type(pipeline), allocatable :: more(:)
    type(pipeline) :: parsed
    integer :: place, start, count
    allocate (pipelines(4))
    count = 0
    place = 1
    outcome = well_formed
    do
      call skip_blanks(newline)
      if (outcome /= well_formed .or. place > len(text)) exit
      start = place
      call parse_pipeline(parsed)
      if (outcome /= well_formed) exit
      parsed%text = trim(text(start:place - 1))
      parsed%background = next() == '&'
      if (place <= len(text) .and. scan(next(), ';&'//newline) == 0) outcome = malformed
      place = place + 1
      if (count == size(pipelines)) then
        allocate (more(2*count))
        more(:count) = pipelines
        call move_alloc(more, pipelines)
      end if
      count = count + 1
      pipelines(count) = parsed
    end do
    pipelines = pipelines(:count)

  contains

    ! At the end of the text, the end of a line.
    character function next()
      next = newline
      if (place <= len(text)) next = text(place:place)
    end function

    ! Blanks, comments and continued line ends, with the characters given.
    subroutine skip_blanks(others)
      character(*), intent(in) :: others
      do while (place <= len(text) .and. outcome == well_formed)
        if (next() == '#') then
          do while (next() /= newline)
            place = place + 1
          end do
        else if (next() == '\') then
          if (place == len(text)) outcome = unfinished
          if (text(place:min(place + 1, len(text))) /= '\'//newline) exit
          place = place + 2
        else if (scan(next(), ' '//tab//others) == 1) then
          place = place + 1
        else
          exit
        end if
      end do
    end subroutine

    subroutine parse_pipeline(into)
      type(pipeline), intent(out) :: into
      type(command), allocatable :: longer(:)
      integer :: number
      allocate (into%commands(0))
      number = 0
      do
        number = number + 1
        allocate (longer(number))
        longer(:number - 1) = into%commands
        call move_alloc(longer, into%commands)
        call parse_command(into%commands(number))
        if (outcome /= well_formed .or. next() /= '|') return
        place = place + 1
        call skip_blanks(newline)
        if (place > len(text)) outcome = unfinished
        if (outcome /= well_formed) return
      end do
    end subroutine

    subroutine parse_command(into)
      type(command), intent(out) :: into
      type(word), allocatable :: longer(:)
      integer :: number
      allocate (into%words(8), into%redirections(0))
      number = 0
      do
        call skip_blanks('')
        if (outcome /= well_formed) return
        if (is_redirection()) then
          call parse_redirection(into%redirections)
        else if (scan(next(), word_ends) == 0) then
          if (number == size(into%words)) then
            allocate (longer(2*number))
            longer(:number) = into%words
            call move_alloc(longer, into%words)
          end if
          number = number + 1
          call parse_word(into%words(number))
        else
          exit
        end if
        if (outcome /= well_formed) return
      end do
      into%words = into%words(:number)
      if (number == 0 .and. size(into%redirections) == 0) outcome = malformed
    end subroutine

    ! < and >, and these right behind a digit.
    logical function is_redirection()
      is_redirection = scan(next(), '<>') == 1
      if (scan(next(), digits) == 1 .and. place < len(text)) is_redirection = scan(text(place + 1:place + 1), '<>') == 1
    end function

    subroutine parse_redirection(redirections)
      type(redirection), allocatable, intent(inout) :: redirections(:)
      type(redirection), allocatable :: longer(:)
      type(redirection) :: parsed_one
      parsed_one%descriptor = index(digits, next()) - 1
      if (parsed_one%descriptor >= 0) place = place + 1
      parsed_one%operator = next()
      if (parsed_one%descriptor < 0) parsed_one%descriptor = merge(0, 1, next() == '<')
      place = place + 1
      if (next() == '&' .or. (next() == '>' .and. parsed_one%operator == '>')) then
        parsed_one%operator(2:2) = next()
        place = place + 1
      end if
      call skip_blanks('')
      if (outcome == well_formed .and. scan(next(), word_ends) == 1) outcome = malformed
      if (outcome /= well_formed) return
      call parse_word(parsed_one%target)
      allocate (longer(size(redirections) + 1))
      longer(:size(redirections)) = redirections
      longer(size(longer)) = parsed_one
      call move_alloc(longer, redirections)
    end subroutine

    ! A word as it is written, with its quotes.
    subroutine parse_word(into)
      type(word), intent(out) :: into
      integer :: first, length
      first = place
      do while (scan(next(), word_ends) == 0)
        select case (next())
        case ('\')
          if (place == len(text)) outcome = unfinished
          place = place + 1
        case ('''')
          length = index(text(place + 1:), '''')
          if (length == 0) outcome = unfinished
          place = place + length
        case ('"')
          place = place + 1
          do while (place <= len(text) .and. next() /= '"')
            if (next() == '\') place = place + 1
            place = place + 1
          end do
          if (place > len(text)) outcome = unfinished
        end select
        if (outcome /= well_formed) return
        place = place + 1
      end do
      into%text = text(first:place - 1)
    end subroutine

  end subroutine

  ! What a word stands for. A word of nothing but variables without values is absent, "" is there and empty.
  subroutine expand(raw, text, present)
    character(*), intent(in) :: raw
    character(:), allocatable, intent(out) :: text
    logical, intent(out) :: present
    type(text_buffer) :: expansion
    logical :: in_quotes, quoted
    integer :: place, length
    in_quotes = .false.
    quoted = .false.
    place = 1
    do while (place <= len(raw))
      length = 1
      select case (raw(place:place))
      case ('"')
        in_quotes = .not. in_quotes
        quoted = .true.
      case ('\')
        length = 2
        call append_escaped(raw(place + 1:place + 1))
      case ('$')
        call append_value(raw(place + 1:), length)
        length = length + 1
      case ('''')
        if (in_quotes) then
          call expansion%append('''')
        else
          length = index(raw(place + 1:), '''') + 1
          call expansion%append(raw(place + 1:place + length - 2))
          quoted = .true.
        end if
      case default
        call expansion%append(raw(place:place))
      end select
      place = place + length
    end do
    text = expansion%content()
    present = quoted .or. len(text) > 0

  contains

    ! Between double quotes a backslash protects only what is special there.
    subroutine append_escaped(character)
      character, intent(in) :: character
      if (character == newline) return
      if (in_quotes .and. scan(character, '$`"\') == 0) call expansion%append('\')
      call expansion%append(character)
    end subroutine

    ! The value of the variable whose name begins the text; taken is how much of the text the name is.
    subroutine append_value(behind, taken)
      character(*), intent(in) :: behind
      integer, intent(out) :: taken
      taken = verify(behind, letters//digits) - 1
      if (taken < 0) taken = len(behind)
      if (is_name(behind(:taken))) then
        call expansion%append(variable(behind(:taken)))
        return
      end if
      taken = 0
      if (len(behind) > 0) taken = 1
      select case (behind(:taken))
      case ('?')
        call expansion%append(number_text(last_status))
      case ('$')
        call expansion%append(number_text(shell_process))
      case ('!')
        if (last_background /= 0) call expansion%append(number_text(last_background))
      case ('{')
        taken = index(behind, '}')
        if (is_name(behind(2:taken - 1))) then
          call expansion%append(variable(behind(2:taken - 1)))
        else
          taken = 0
          call expansion%append('$')
        end if
      case default
        taken = 0
        call expansion%append('$')
      end select
    end subroutine

  end subroutine

  ! The value of a variable of the environment, empty without one.
  function variable(name) result(value)
    character(*), intent(in) :: name
    character(:), allocatable :: value
    integer :: length, ierror
    character(1) :: probe
    length = 0
    call pxfgetenv(name, len(name), probe, length, ierror)
    value = repeat(' ', length)
    if (length > 0) call pxfgetenv(name, len(name), value, length, ierror)
  end function

end module
