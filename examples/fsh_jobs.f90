! The jobs of fsh: their processes, what became of them, and which of them has the terminal.
module fsh_jobs
  use fsh_syntax, only: number_text, word
  use qxport, only: error_text, ipxfwexitstatus, ipxfwstopsig, ipxfwtermsig, pxfclose, pxfconst, pxffcntl, pxfgetpgrp, pxfopen
  use qxport, only: pxfgetsubhandle, pxfintset, pxfkill, pxfsetpgid, pxfsigaction, pxfsigaddset, pxfsigprocmask
  use qxport, only: pxfstructcreate, pxfstructfree
  use qxport, only: pxftcgetattr, pxftcgetpgrp, pxftcsetattr, pxftcsetpgrp, pxfwaitpid, pxfwifexited, pxfwifsignaled
  use qxport, only: pxfwifstopped, pxfwrite
  use qxport_numbers, only: TCSADRAIN
  use, intrinsic :: iso_fortran_env, only: error_unit
  implicit none
  private
  public :: constant, complain, put, private_copy, start_jobs, release_terminal, hold_keys, enter_child
  public :: add_job, add_process, announce, run_in_foreground, report_jobs, jobs_command, wait_command, continue_command

  ! The state of a job is the least of its processes'.
  integer, parameter :: running = 0, stopped = 1, ended = 2
  type :: job
    integer :: number = 0, group = 0, modes = 0
    integer, allocatable :: processes(:), states(:), statuses(:)
    logical :: reported = .false.
    character(:), allocatable :: text
  end type
  type(job), allocatable, save :: jobs(:)

  ! With job control: the terminal, its modes while the shell reads, the shell's group and that of the time before.
  logical, save, public :: job_control = .false.
  integer, save :: terminal = -1, shell_modes = 0, shell_group = 0, former_group = 0, key_signals = 0
  character(7), parameter :: ignored(5) = [character(7) :: 'SIGINT', 'SIGQUIT', 'SIGTSTP', 'SIGTTIN', 'SIGTTOU']

contains

  integer function constant(name)
    character(*), intent(in) :: name
    integer :: ierror
    call pxfconst(name, constant, ierror)
    if (ierror /= 0) error stop 'fsh: unknown constant'
  end function

  ! The unit is flushed so that a child never inherits a message, and no message is worth the shell's life.
  subroutine complain(text)
    character(*), intent(in) :: text
    integer :: status
    write (error_unit, '(2a)', iostat=status) 'fsh: ', text
    flush (error_unit, iostat=status)
  end subroutine

  ! Everything the shell says but complaints goes out through descriptors at once: no unit's buffer holds it at a fork.
  subroutine put(descriptor, text, error)
    integer, intent(in) :: descriptor
    character(*), intent(in) :: text
    integer, intent(out), optional :: error
    integer :: done, written, ierror
    done = 0
    ierror = 0
    do while (done < len(text) .and. ierror == 0)
      call pxfwrite(descriptor, text(done + 1:), len(text) - done, written, ierror)
      if (ierror == 0) done = done + written
      if (ierror == constant('EINTR')) ierror = 0
    end do
    if (present(error)) error = ierror
  end subroutine

  ! A copy of a descriptor that commands neither meet nor inherit; -1 of one that is not open, which is no error.
  integer function private_copy(descriptor, error)
    integer, intent(in) :: descriptor
    integer, intent(out) :: error
    integer :: lowest, close_on_exec, answer, ierror
    lowest = 10
    close_on_exec = 1
    call pxffcntl(descriptor, constant('F_DUPFD'), lowest, private_copy, error)
    if (error == 0) then
      call pxffcntl(private_copy, constant('F_SETFD'), close_on_exec, answer, ierror)
      return
    end if
    private_copy = -1
    if (error == constant('EBADF')) error = 0
    ! A limit so low that no descriptor from the lowest on can be had.
    if (error == constant('EINVAL')) error = constant('EMFILE')
  end function

  subroutine set_signal(name, handler)
    character(*), intent(in) :: name
    integer, intent(in) :: handler
    integer :: action, ierror
    call pxfstructcreate('sigaction', action, ierror)
    call pxfintset(action, 'sa_handler', handler, ierror)
    call pxfsigaction(constant(name), action, 0, ierror)
    call pxfstructfree(action, ierror)
  end subroutine

  ! Gives an interactive shell a group of its own, which has the terminal and takes no harm from its keys.
  subroutine start_jobs(interactive)
    logical, intent(in) :: interactive
    integer :: ierror, group, i
    allocate (jobs(0))
    if (.not. interactive) return
    terminal = private_copy(0, ierror)
    call pxfgetpgrp(group, ierror)
    call pxftcgetpgrp(terminal, former_group, ierror)
    if (ierror /= 0) return
    if (former_group /= group) call pxfkill(0, constant('SIGTTIN'), ierror)
    job_control = .true.
    call pxfstructcreate('sigset', key_signals, ierror)
    do i = 1, size(ignored)
      call set_signal(ignored(i), constant('SIG_IGN'))
      call pxfsigaddset(key_signals, constant(ignored(i)), ierror)
    end do
    call pxftcgetpgrp(terminal, former_group, ierror)
    call pxfsetpgid(0, 0, ierror)
    call pxfgetpgrp(shell_group, ierror)
    call pxftcsetpgrp(terminal, shell_group, ierror)
    call pxfstructcreate('termios', shell_modes, ierror)
    call pxftcgetattr(terminal, shell_modes, ierror)
  end subroutine

  subroutine release_terminal()
    integer :: ierror
    if (job_control) call pxftcsetpgrp(terminal, former_group, ierror)
  end subroutine

  ! Around a fork the signals of keys wait, so that none meets a child which still ignores it as the shell does.
  subroutine hold_keys(held)
    logical, intent(in) :: held
    integer :: ierror
    if (job_control) call pxfsigprocmask(constant(merge('SIG_BLOCK  ', 'SIG_UNBLOCK', held)), key_signals, 0, ierror)
  end subroutine

  ! What a child does first. Its own job, the last one, is none of its jobs; group is 0 in the first process of a job.
  ! Parent and child both set the group and the terminal's, so that neither depends on the other being faster.
  subroutine enter_child(group, background)
    integer, intent(in) :: group
    logical, intent(in) :: background
    integer :: ierror, own_group, i
    call remove_job(size(jobs))
    if (job_control) then
      call pxfsetpgid(0, group, ierror)
      call pxfgetpgrp(own_group, ierror)
      if (.not. background) call pxftcsetpgrp(terminal, own_group, ierror)
      do i = 1, size(ignored)
        call set_signal(ignored(i), constant('SIG_DFL'))
      end do
      call hold_keys(.false.)
      job_control = .false.
    else if (background) then
      call set_signal('SIGINT', constant('SIG_IGN'))
      call set_signal('SIGQUIT', constant('SIG_IGN'))
      if (group == 0) call read_nothing()
    end if
  end subroutine

  ! Without job control nothing else keeps a background job from taking the shell's input.
  subroutine read_nothing()
    integer :: descriptor, ierror
    call pxfclose(0, ierror)
    call pxfopen('/dev/null', 9, constant('O_RDONLY'), 0, descriptor, ierror)
  end subroutine

  ! The place of a new job without processes yet.
  integer function add_job(text)
    character(*), intent(in) :: text
    type(job), allocatable :: more(:)
    add_job = size(jobs) + 1
    allocate (more(add_job))
    more(:size(jobs)) = jobs
    if (size(jobs) > 0) more(add_job)%number = jobs(size(jobs))%number
    call move_alloc(more, jobs)
    associate (last => jobs(add_job))
      last%number = last%number + 1
      last%text = text
      allocate (last%processes(0), last%states(0), last%statuses(0))
    end associate
  end function

  subroutine add_process(place, process)
    integer, intent(in) :: place, process
    integer :: ierror
    associate (to => jobs(place))
      if (to%group == 0) to%group = process
      if (job_control) call pxfsetpgid(process, to%group, ierror)
      to%processes = [to%processes, process]
      to%states = [to%states, running]
      to%statuses = [to%statuses, 0]
    end associate
  end subroutine

  subroutine announce(place, process)
    integer, intent(in) :: place, process
    if (job_control) call put(2, '['//number_text(jobs(place)%number)//'] '//number_text(process)//achar(10))
  end subroutine

  subroutine remove_job(place)
    integer, intent(in) :: place
    type(job), allocatable :: fewer(:)
    integer :: ierror
    if (jobs(place)%modes /= 0) call pxfstructfree(jobs(place)%modes, ierror)
    allocate (fewer(size(jobs) - 1))
    fewer(:place - 1) = jobs(:place - 1)
    fewer(place:) = jobs(place + 1:)
    call move_alloc(fewer, jobs)
  end subroutine

  subroutine remove_ended_jobs()
    integer :: place
    do place = size(jobs), 1, -1
      if (state_of(jobs(place)) == ended) call remove_job(place)
    end do
  end subroutine

  pure integer function state_of(one)
    type(job), intent(in) :: one
    state_of = minval([one%states, ended])
  end function

  ! The status of the last process, or of what stopped the job.
  integer function status_of(one)
    type(job), intent(in) :: one
    integer :: place, raw
    place = size(one%states)
    if (state_of(one) == stopped) place = findloc(one%states, stopped, dim=1)
    status_of = 0
    if (place == 0) return
    raw = one%statuses(place)
    if (pxfwifstopped(raw)) then
      status_of = 128 + ipxfwstopsig(raw)
    else if (pxfwifsignaled(raw)) then
      status_of = 128 + ipxfwtermsig(raw)
    else
      status_of = ipxfwexitstatus(raw)
    end if
  end function

  logical function killed(one)
    type(job), intent(in) :: one
    killed = .false.
    if (size(one%statuses) > 0) killed = pxfwifsignaled(one%statuses(size(one%statuses)))
  end function

  ! Notes one change of any child. No process: none changed so far, or there is none left (error).
  subroutine note_change(options, process, error)
    integer, intent(in) :: options
    integer, intent(out) :: process, error
    integer :: raw, i, j
    call pxfwaitpid(-1, raw, options, process, error)
    if (process <= 0) return
    do i = 1, size(jobs)
      j = findloc(jobs(i)%processes, process, dim=1)
      if (j == 0) cycle
      if (jobs(i)%states(j) == ended) cycle
      jobs(i)%statuses(j) = raw
      jobs(i)%states(j) = merge(stopped, ended, pxfwifstopped(raw))
      jobs(i)%reported = .false.
    end do
  end subroutine

  ! Waits until no process of a job runs; false after a caught signal.
  logical function has_paused(place)
    integer, intent(in) :: place
    integer :: process, error
    has_paused = .true.
    do while (state_of(jobs(place)) == running)
      call note_change(merge(constant('WUNTRACED'), 0, job_control), process, error)
      if (error == constant('ECHILD')) jobs(place)%states = ended
      if (error == constant('EINTR')) has_paused = .false.
      if (.not. has_paused) return
    end do
  end function

  ! Gives a job the terminal until it ends or stops; stopped jobs are continued.
  subroutine run_in_foreground(place, status)
    integer, intent(in) :: place
    integer, intent(out) :: status
    integer :: ierror
    logical :: done
    if (job_control) then
      call pxftcsetpgrp(terminal, jobs(place)%group, ierror)
      if (jobs(place)%modes /= 0) call pxftcsetattr(terminal, TCSADRAIN, jobs(place)%modes, ierror)
      call continue_job(jobs(place))
    end if
    done = has_paused(place)
    status = status_of(jobs(place))
    if (job_control) call take_terminal_back(jobs(place))
    if (state_of(jobs(place)) == ended) call remove_job(place)
  end subroutine

  ! A job that ended by itself may have changed the modes for good; one that was stopped or killed may not.
  subroutine take_terminal_back(from)
    type(job), intent(inout) :: from
    integer :: ierror
    call pxftcsetpgrp(terminal, shell_group, ierror)
    if (state_of(from) == stopped) then
      if (from%modes == 0) call pxfstructcreate('termios', from%modes, ierror)
      call pxftcgetattr(terminal, from%modes, ierror)
    else if (.not. killed(from)) then
      call pxftcgetattr(terminal, shell_modes, ierror)
      return
    end if
    call pxftcsetattr(terminal, TCSADRAIN, shell_modes, ierror)
    call put(2, achar(10))
    if (status_of(from) /= 128 + constant('SIGINT')) call put(2, description(from))
    from%reported = .true.
  end subroutine

  subroutine continue_job(which)
    type(job), intent(inout) :: which
    integer :: ierror
    if (state_of(which) /= stopped) return
    where (which%states == stopped) which%states = running
    call pxfkill(-which%group, constant('SIGCONT'), ierror)
  end subroutine

  function description(one) result(text)
    type(job), intent(in) :: one
    character(:), allocatable :: text
    integer :: status
    status = status_of(one)
    select case (state_of(one))
    case (running)
      text = 'Running'
    case (stopped)
      text = 'Stopped'
    case default
      text = 'Done'
      if (status > 0) text = 'Exit '//number_text(status)
      if (killed(one)) text = 'Killed by signal '//number_text(status - 128)
    end select
    text = '['//number_text(one%number)//'] '//text//repeat(' ', max(12 - len(text), 2))//one%text//achar(10)
  end function

  ! Notes what changed in the background; an interactive shell tells it and forgets what has ended.
  subroutine report_jobs()
    integer :: process, error, place
    do
      call note_change(constant('WNOHANG') + merge(constant('WUNTRACED'), 0, job_control), process, error)
      if (process <= 0) exit
    end do
    if (.not. job_control) return
    do place = 1, size(jobs)
      if (jobs(place)%reported .or. state_of(jobs(place)) == running) cycle
      call put(2, description(jobs(place)))
      jobs(place)%reported = .true.
    end do
    call remove_ended_jobs()
  end subroutine

  subroutine jobs_command(status)
    integer, intent(out) :: status
    integer :: place, error
    status = 0
    do place = 1, size(jobs)
      call put(1, description(jobs(place)), error)
      if (error == 0) cycle
      call complain('jobs: '//trim(error_text(error)))
      status = 1
    end do
    call remove_ended_jobs()
  end subroutine

  ! The place of the job %NUMBER or with a process of that number; without arguments, of the last one that stopped or
  ! else of the last one; 0 when there is none.
  integer function job_named(arguments) result(place)
    type(word), intent(in) :: arguments(:)
    integer :: number, i, status
    if (size(arguments) < 2) then
      place = findloc([(state_of(jobs(i)) == stopped, i=1, size(jobs))], .true., dim=1, back=.true.)
      if (place == 0) place = size(jobs)
      return
    end if
    associate (text => arguments(2)%text)
      i = merge(2, 1, index(text, '%') == 1)
      read (text(i:), *, iostat=status) number
      if (verify(text(i:), '0123456789') /= 0) status = 1
      do place = size(jobs), 1, -1
        if (status /= 0) cycle
        if (i == 2 .and. jobs(place)%number == number) return
        if (i == 1 .and. any(jobs(place)%processes == number)) return
      end do
    end associate
  end function

  ! wait: for all jobs that run, or for one.
  subroutine wait_command(arguments, status)
    type(word), intent(in) :: arguments(:)
    integer, intent(out) :: status
    integer :: place, handler, ierror
    logical :: done
    if (job_control) then
      call pxfgetsubhandle(end_waiting, handler, ierror)
      call set_signal('SIGINT', handler)
    end if
    status = 0
    done = .true.
    if (size(arguments) > 1) then
      place = job_named(arguments)
      status = 127
      if (place > 0) then
        done = has_paused(place)
        status = status_of(jobs(place))
        if (state_of(jobs(place)) == ended) call remove_job(place)
      end if
    else
      do place = 1, size(jobs)
        if (done) done = has_paused(place)
      end do
      if (.not. job_control) call remove_ended_jobs()
    end if
    if (.not. done) status = 128 + constant('SIGINT')
    if (job_control) call set_signal('SIGINT', constant('SIG_IGN'))
  end subroutine

  ! Nothing but the interruption itself matters.
  subroutine end_waiting(signal)
    integer(4), intent(in) :: signal
    if (signal < 0) return
  end subroutine

  ! fg and bg.
  subroutine continue_command(arguments, status)
    type(word), intent(in) :: arguments(:)
    integer, intent(out) :: status
    integer :: place
    status = 1
    place = job_named(arguments)
    if (.not. job_control) then
      call complain(arguments(1)%text//': no job control')
    else if (place == 0) then
      call complain(arguments(1)%text//': no such job')
    else if (arguments(1)%text == 'fg') then
      call put(1, jobs(place)%text//achar(10))
      call run_in_foreground(place, status)
    else
      call continue_job(jobs(place))
      call put(1, description(jobs(place)))
      status = 0
    end if
  end subroutine

end module
