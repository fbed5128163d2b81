! fsh [FILE | -c TEXT]: a shell, for commands typed at a terminal, from standard input, from a file or from a text.
!
! Commands have arguments with '...', "..." and \ quoting, $NAME, ${NAME}, $?, $$ and $! (whose values are not split
! into words), redirections < > >> 2> 2>&1 and comments; they are joined by |, ; and &. Variables are those of the
! environment. Built in are bg, cd, exit, export, fg, jobs and wait. At a terminal each job has a process group of its
! own. The exit status is that of the last command, 127 for one not found, 126 for one that cannot be executed and 128
! and the signal's number for one that was killed; 2 after a syntax error.
module fsh_commands
  use fsh_jobs, only: add_job, add_process, announce, complain, constant, continue_command, enter_child
  use fsh_jobs, only: hold_keys, jobs_command, private_copy, put, run_in_foreground, wait_command
  use fsh_syntax, only: command, expand, is_name, last_background, last_status, number_text, pipeline, redirection
  use fsh_syntax, only: variable, word
  use qxport, only: error_text, pxfchdir, pxfclose, pxfdup2, pxfexecvp, pxffastexit, pxffork, pxfgetcwd, pxfopen, pxfpipe, pxfsetenv
  implicit none
  private
  public :: open_file, run, leaving
  integer, parameter :: refused = 2, not_executable = 126, not_found = 127
  logical, save :: leaving = .false.

  type :: saved_descriptor
    integer :: descriptor, copy
  end type

contains

  ! A command of the shell itself runs in the shell, unless it is part of a longer pipeline or in the background.
  subroutine run(line)
    type(pipeline), intent(in) :: line
    type(word), allocatable :: arguments(:)
    integer :: status
    call expand_words(line%commands(1)%words, arguments)
    if (size(line%commands) > 1 .or. line%background .or. .not. is_for_the_shell(arguments)) then
      call launch(line)
    else
      call run_here(line%commands(1), arguments, status)
      last_status = status
    end if
  end subroutine

  subroutine expand_words(words, arguments)
    type(word), intent(in) :: words(:)
    type(word), allocatable, intent(inout) :: arguments(:)
    type(word) :: expanded(size(words))
    logical :: present
    integer :: i, count
    count = 0
    do i = 1, size(words)
      call expand(words(i)%text, expanded(count + 1)%text, present)
      if (present) count = count + 1
    end do
    arguments = expanded(:count)
  end subroutine

  ! Starts a process for each command, joined by pipes. A descriptor of -1 stands for none.
  subroutine launch(line)
    type(pipeline), intent(in) :: line
    type(word), allocatable :: arguments(:)
    integer :: job, i, input, next_input, output, process, group, error
    job = add_job(line%text)
    input = -1
    group = 0
    process = 0
    error = 0
    do i = 1, size(line%commands)
      call expand_words(line%commands(i)%words, arguments)
      next_input = -1
      output = -1
      if (i < size(line%commands)) call pxfpipe(next_input, output, error)
      call hold_keys(.true.)
      if (error == 0) call pxffork(process, error)
      if (error == 0 .and. process == 0) then
        call enter_child(group, line%background)
        call close_descriptor(next_input)
        call move_descriptor(input, 0)
        call move_descriptor(output, 1)
        call run_child(line%commands(i), arguments)
      end if
      call hold_keys(.false.)
      call close_descriptor(input)
      call close_descriptor(output)
      input = next_input
      if (error /= 0) exit
      call add_process(job, process)
      if (i == 1) group = process
    end do
    if (error /= 0) then
      call close_descriptor(input)
      call complain('cannot start a process: '//trim(error_text(error)))
    else if (line%background) then
      last_background = process
      last_status = 0
      call announce(job, process)
      return
    end if
    call run_in_foreground(job, last_status)
    if (error /= 0) last_status = refused
  end subroutine

  subroutine close_descriptor(descriptor)
    integer, intent(in) :: descriptor
    integer :: ierror
    if (descriptor >= 0) call pxfclose(descriptor, ierror)
  end subroutine

  subroutine move_descriptor(from, to)
    integer, intent(in) :: from, to
    integer :: ierror
    if (from < 0 .or. from == to) return
    call pxfdup2(from, to, ierror)
    call pxfclose(from, ierror)
  end subroutine

  ! Does not return.
  subroutine run_child(item, arguments)
    type(command), intent(in) :: item
    type(word), intent(in) :: arguments(:)
    integer :: status
    status = refused
    if (redirected(item%redirections)) then
      if (is_for_the_shell(arguments)) then
        call run_builtin(arguments, status)
      else
        call execute(arguments, status)
      end if
    end if
    call pxffastexit(status)
  end subroutine

  ! Returns only when the program cannot be executed. A NUL behind each argument lets it be empty or end with blanks.
  subroutine execute(arguments, status)
    type(word), intent(in) :: arguments(:)
    integer, intent(out) :: status
    character(longest(arguments) + 1) :: vector(size(arguments))
    integer :: lengths(size(arguments)), i, error
    do i = 1, size(arguments)
      vector(i) = arguments(i)%text//achar(0)
      lengths(i) = len(arguments(i)%text) + 1
    end do
    call pxfexecvp(vector(1), lengths(1), vector, lengths, size(arguments), error)
    status = not_executable
    if (any(error == [constant('ENOENT'), constant('ENOTDIR')])) status = not_found
    ! A search in PATH ends so too where a directory on the way may not be searched.
    if (error == constant('EACCES') .and. index(arguments(1)%text, '/') == 0) status = not_found
    if (status == not_found) then
      call complain(arguments(1)%text//': not found')
    else
      call complain(arguments(1)%text//': '//trim(error_text(error)))
    end if
  end subroutine

  pure integer function longest(words)
    type(word), intent(in) :: words(:)
    integer :: i
    longest = maxval([(len(words(i)%text), i=1, size(words))])
  end function

  ! Does the redirections of a command; what they replace is kept, if asked for.
  logical function redirected(redirections, saved)
    type(redirection), intent(in) :: redirections(:)
    type(saved_descriptor), allocatable, intent(inout), optional :: saved(:)
    character(:), allocatable :: target
    logical :: given
    integer :: i, source, copy, error
    redirected = .true.
    do i = 1, size(redirections)
      associate (one => redirections(i))
        call expand(one%target%text, target, given)
        error = 0
        if (present(saved)) then
          copy = private_copy(one%descriptor, error)
          if (error == 0) saved = [saved, saved_descriptor(one%descriptor, copy)]
        end if
        if (error /= 0) then
          target = number_text(one%descriptor)
        else if (one%operator(2:2) == '&') then
          source = -1
          if (len(target) == 1) source = index('0123456789', target) - 1
          call pxfdup2(source, one%descriptor, error)
        else
          call open_file(target, one%operator, source, error)
          if (error == 0) call move_descriptor(source, one%descriptor)
        end if
      end associate
      if (error == 0) cycle
      call complain(target//': '//trim(error_text(error)))
      redirected = .false.
      return
    end do
  end function

  subroutine open_file(name, operator, descriptor, error)
    character(*), intent(in) :: name, operator
    integer, intent(out) :: descriptor, error
    integer, parameter :: permissions = int(o'666')
    integer :: flags
    flags = ior(constant('O_WRONLY'), constant('O_CREAT'))
    select case (operator)
    case ('<')
      flags = constant('O_RDONLY')
    case ('>')
      flags = ior(flags, constant('O_TRUNC'))
    case ('>>')
      flags = ior(flags, constant('O_APPEND'))
    end select
    call pxfopen(name//achar(0), len(name) + 1, flags, permissions, descriptor, error)
  end subroutine

  ! No command at all is the shell's affair too.
  logical function is_for_the_shell(arguments)
    type(word), intent(in) :: arguments(:)
    is_for_the_shell = .true.
    if (size(arguments) > 0) is_for_the_shell = is_builtin(arguments)
  end function

  logical function is_builtin(arguments)
    type(word), intent(in) :: arguments(:)
    is_builtin = index(' bg cd exit export fg jobs wait ', ' '//arguments(1)%text//' ') > 0
    if (scan(arguments(1)%text, ' ') > 0) is_builtin = .false.
  end function

  ! Runs a command in the shell itself: one of its own or none, with redirections that hold no longer than it does.
  subroutine run_here(item, arguments, status)
    type(command), intent(in) :: item
    type(word), intent(in) :: arguments(:)
    integer, intent(out) :: status
    type(saved_descriptor), allocatable :: saved(:)
    integer :: i, ierror
    allocate (saved(0))
    status = refused
    if (redirected(item%redirections, saved)) call run_builtin(arguments, status)
    do i = size(saved), 1, -1
      if (saved(i)%copy < 0) call pxfclose(saved(i)%descriptor, ierror)
      call move_descriptor(saved(i)%copy, saved(i)%descriptor)
    end do
  end subroutine

  subroutine run_builtin(arguments, status)
    type(word), intent(in) :: arguments(:)
    integer, intent(out) :: status
    status = 0
    if (size(arguments) == 0) return
    select case (arguments(1)%text)
    case ('cd')
      call change_directory(arguments, status)
    case ('exit')
      call leave(arguments, status)
    case ('export')
      call export(arguments, status)
    case ('jobs')
      call jobs_command(status)
    case ('wait')
      call wait_command(arguments, status)
    case ('bg', 'fg')
      call continue_command(arguments, status)
    end select
  end subroutine

  subroutine change_directory(arguments, status)
    type(word), intent(in) :: arguments(:)
    integer, intent(out) :: status
    character(:), allocatable :: directory, former
    integer :: error
    former = variable('PWD')
    if (former == '') former = working_directory()
    if (size(arguments) == 1) then
      directory = variable('HOME')
    else if (arguments(2)%text == '-') then
      directory = variable('OLDPWD')
    else
      directory = arguments(2)%text
    end if
    call pxfchdir(directory//achar(0), len(directory) + 1, error)
    if (error /= 0) then
      call complain('cd: '//directory//': '//trim(error_text(error)))
      status = refused
      return
    end if
    call set_variable('OLDPWD', former, error)
    call set_variable('PWD', working_directory(), error)
    status = 0
    if (size(arguments) > 1) then
      if (arguments(2)%text == '-') call put(1, directory//achar(10))
    end if
  end subroutine

  ! Empty for one that has no name any more or an excessive one.
  function working_directory() result(name)
    character(:), allocatable :: name
    character(4096) :: buffer
    integer :: length, ierror
    call pxfgetcwd(buffer, length, ierror)
    name = buffer(:length)
  end function

  subroutine set_variable(name, value, error)
    character(*), intent(in) :: name, value
    integer, intent(out) :: error
    call pxfsetenv(name, len(name), value//achar(0), len(value) + 1, 1, error)
  end subroutine

  ! A name alone changes nothing: all variables are exported.
  subroutine export(arguments, status)
    type(word), intent(in) :: arguments(:)
    integer, intent(out) :: status
    integer :: i, split, error
    status = 0
    do i = 2, size(arguments)
      associate (text => arguments(i)%text)
        split = index(text//'=', '=')
        error = 0
        if (.not. is_name(text(:split - 1))) then
          call complain('export: '//text//': not a name')
          status = refused
        else if (split < len(text) + 1) then
          call set_variable(text(:split - 1), text(split + 1:), error)
        end if
      end associate
      if (error == 0) cycle
      call complain('export: '//trim(error_text(error)))
      status = refused
    end do
  end subroutine

  subroutine leave(arguments, status)
    type(word), intent(in) :: arguments(:)
    integer, intent(out) :: status
    integer :: error
    leaving = .true.
    status = last_status
    if (size(arguments) == 1) return
    associate (text => arguments(2)%text)
      read (text, '(i9)', iostat=error) status
      if (error == 0 .and. len(text) > 0 .and. len(text) < 10 .and. verify(text, '0123456789') == 0) then
        status = iand(status, 255)
      else
        call complain('exit: '//text//': not a number')
        status = refused
      end if
    end associate
  end subroutine

end module

program fsh
  use fsh_commands, only: leaving, open_file, run
  use fsh_jobs, only: complain, constant, job_control, private_copy, put, release_terminal, report_jobs, start_jobs
  use fsh_syntax, only: last_status, parse, pipeline, shell_process, text_buffer, unfinished, well_formed
  use qxport, only: error_text, pxfclose, pxfexit, pxfgetpid, pxfisatty, pxfread
  implicit none
  character, parameter :: newline = achar(10)
  integer, parameter :: failure = 2, no_script = 127, interrupted = 130
  character(*), parameter :: usage = 'usage: fsh [FILE | -c TEXT]'
  type(pipeline), allocatable, save :: pipelines(:)
  ! Lines come from the descriptor, or from the text where there is one.
  integer :: descriptor = 0
  character(:), allocatable, save :: text
  integer :: outcome, i, ierror

  call pxfgetpid(shell_process, ierror)
  call open_input()
  do while (.not. leaving)
    call report_jobs()
    if (.not. read_commands(pipelines, outcome)) exit
    if (outcome /= well_formed) then
      call complain('syntax error')
      last_status = failure
      if (.not. job_control) exit
      cycle
    end if
    do i = 1, size(pipelines)
      call run(pipelines(i))
      if (leaving .or. (job_control .and. last_status == interrupted)) exit
    end do
  end do
  if (job_control .and. .not. leaving) call put(2, newline)
  call end_shell(last_status)

contains

  subroutine end_shell(status)
    integer, intent(in) :: status
    call release_terminal()
    call pxfexit(status)
  end subroutine

  subroutine end_with(complaint, status)
    character(*), intent(in) :: complaint
    integer, intent(in) :: status
    call complain(complaint)
    call end_shell(status)
  end subroutine

  function argument(number) result(value)
    integer, intent(in) :: number
    character(:), allocatable :: value
    integer :: length
    call get_command_argument(number, length=length)
    value = repeat(' ', length)
    if (length > 0) call get_command_argument(number, value)
  end function

  subroutine open_input()
    logical :: interactive
    interactive = .false.
    select case (command_argument_count())
    case (0)
      call pxfisatty(0, interactive, ierror)
    case (1)
      if (argument(1) == '-c') call end_with(usage, failure)
      call open_script(argument(1))
    case (2)
      if (argument(1) /= '-c') call end_with(usage, failure)
      text = argument(2)
    case default
      call end_with(usage, failure)
    end select
    call start_jobs(interactive)
  end subroutine

  subroutine open_script(name)
    character(*), intent(in) :: name
    integer :: opened, error
    call open_file(name, '<', opened, error)
    if (error /= 0) call end_with(name//': '//trim(error_text(error)), no_script)
    descriptor = private_copy(opened, error)
    if (error /= 0) call end_with(name//': '//trim(error_text(error)), no_script)
    call pxfclose(opened, ierror)
  end subroutine

  ! Reads lines until they are complete; false at the end of the input.
  logical function read_commands(commands, result)
    type(pipeline), allocatable, intent(out) :: commands(:)
    integer, intent(out) :: result
    character(:), allocatable :: line, lines
    result = well_formed
    read_commands = next_line('fsh$ ', lines)
    if (.not. read_commands) return
    do
      call parse(lines, commands, result)
      if (result /= unfinished) return
      if (.not. next_line('> ', line)) return
      lines = lines//newline//line
    end do
  end function

  logical function next_line(prompt, line)
    character(*), intent(in) :: prompt
    character(:), allocatable, intent(out) :: line
    integer :: length
    if (job_control) call put(2, prompt)
    if (allocated(text)) then
      next_line = len(text) > 0
      length = index(text//newline, newline) - 1
      line = text(:length)
      text = text(length + 2:)
    else
      next_line = line_read(line)
    end if
  end function

  ! One byte at a time: what follows the line on standard input is for the commands. NULs are dropped.
  logical function line_read(line)
    character(:), allocatable, intent(out) :: line
    type(text_buffer) :: buffer
    character :: byte
    integer :: count, error
    do
      call pxfread(descriptor, byte, 1, count, error)
      if (error == constant('EINTR')) cycle
      if (error /= 0) call end_with('cannot read commands: '//trim(error_text(error)), failure)
      line_read = buffer%used > 0 .or. count == 1
      if (count == 0) exit
      if (byte == newline) exit
      if (byte /= achar(0)) call buffer%append(byte)
    end do
    line = buffer%content()
  end function

end program
