! Children, the two ends of a program, and its arguments and environment. The program executes itself with arguments
! to look at them.
program posix_processes
  use, intrinsic :: iso_fortran_env, only: output_unit
  use checks, only: check, finish
  use qxport, only: ipxfargc, ipxfconst, ipxfwexitstatus, ipxfwstopsig, ipxfwtermsig, pxfclearenv, pxfexecv, &
    pxfexecve, pxfexecvp, pxfexit, pxffastexit, pxffork, pxfgetarg, pxfgetenv, pxfgetpid, pxfgetppid, pxfkill, &
    pxflocaltime, pxfpause, pxfsetenv, pxfstrget, pxfstructcreate, pxfstructfree, pxftime, pxftimes, pxfuname, pxfwait, &
    pxfwaitpid, pxfwifexited, pxfwifsignaled, pxfwifstopped
  implicit none
  integer(4), parameter :: einval = 22, etrunc = 129, enoent = 2, echild = 10
  character(*), parameter :: self = '/proc/self/exe'
  character(1024) :: directory
  integer(4) :: length, ierror

  if (ipxfargc() > 0) then
    call check_arguments()
    call finish()
    stop
  end if

  call pxfgetenv('TMPDIR', 0, directory, length, ierror)
  if (ierror /= 0) directory = '/tmp'
  call check_execution()
  call check_exits()
  call check_buffer_is_written_once()
  call check_statuses()
  call check_environment()
  call check_system()
  call finish()

contains

  ! The child of a fork, behind which no buffer waits.
  subroutine fork(child)
    integer(4), intent(out) :: child
    integer(4) :: ierror
    flush (output_unit)
    call pxffork(child, ierror)
    call check(ierror, 0, 'fork')
  end subroutine

  subroutine wait_for(child, status)
    integer(4), intent(in) :: child
    integer(4), intent(out) :: status
    integer(4) :: ended, ierror
    call pxfwaitpid(child, status, 0, ended, ierror)
    call check(ierror, 0, 'waitpid')
    call check(ended, child, 'the child that ended')
  end subroutine

  subroutine check_end(child, expected, what)
    integer(4), intent(in) :: child, expected
    character(*), intent(in) :: what
    integer(4) :: status
    call wait_for(child, status)
    call check(pxfwifexited(status), what // ': an exit')
    call check(ipxfwexitstatus(status), expected, what // ': exit status')
  end subroutine

  subroutine check_execution()
    character(20) :: arguments(4) = [character(20) :: 'the program', 'one', '  two blanks', '']
    character(20) :: environment(2) = [character(20) :: 'FIRST=1', 'SECOND= 2 ']
    integer(4) :: child, ierror
    call fork(child)
    if (child == 0) then
      call pxfexecv(self, 0, arguments, [0, 20, 0, 0], 4, ierror)
      call pxffastexit(98)
    end if
    call check_end(child, 0, 'execv')
    call fork(child)
    if (child == 0) then
      call pxfexecve(self, len(self), arguments, [0, 20, 0, 0], 4, environment, [0, 10], 2, ierror)
      call pxffastexit(98)
    end if
    call check_end(child, 0, 'execve')
    call fork(child)
    if (child == 0) then
      call pxfexecvp('sh', 0, [character(10) :: 'sh', '-c', 'exit 5'], [0, 0, 0], 3, ierror)
      call pxffastexit(98)
    end if
    call check_end(child, 5, 'execvp')
    call pxfexecv('/nowhere/at/all', 0, arguments, [0, 0, 0, 0], 4, ierror)
    call check(ierror, enoent, 'execv of a missing file')
    call pxfexecv(self, 0, arguments, [0, 21, 0, 0], 4, ierror)
    call check(ierror, einval, 'a length of execv that is too large')
    call pxfexecve(self, 0, arguments, [0, 21, 0, 0], 4, environment, [0, 0], 2, ierror)
    call check(ierror, -1, 'a length of execve''s arguments that is too large')
    call pxfexecve(self, 0, arguments, [0, 0, 0, 0], 4, environment, [21, 0], 2, ierror)
    call check(ierror, einval, 'a length of execve''s environment that is too large')
  end subroutine

  ! What the program got that was started above.
  subroutine check_arguments()
    character(40) :: value
    integer(4) :: length, ierror
    call check(ipxfargc(), 3, 'ipxfargc')
    call check(ipxfargc(), command_argument_count(), 'ipxfargc is the run-time''s')
    call check_argument(0, 'the program')
    call check_argument(1, 'one                 ')
    call check_argument(2, '  two blanks')
    call check_argument(3, ' ')
    call pxfgetarg(4, value, length, ierror)
    call check(ierror, einval, 'no such argument')
    call check(length, 0, 'length of no argument')
    call pxfgetarg(-1, value, length, ierror)
    call check(ierror, einval, 'a negative argument')
    call pxfgetarg(0, value(1:3), length, ierror)
    call check(value(1:3), 'the', 'a cut argument')
    call check(ierror, etrunc, 'error of a cut argument')
    call check(length, 11, 'length of a cut argument')
    call pxfgetenv('SECOND', 0, value, length, ierror)
    if (ierror /= 0) return
    call check(value(1:length), ' 2 ', 'the environment of execve')
    call pxfgetenv('PATH', 0, value, length, ierror)
    call check(ierror, einval, 'none of the caller''s environment')
  end subroutine

  subroutine check_argument(number, expected)
    integer(4), intent(in) :: number
    character(*), intent(in) :: expected
    character(40) :: value
    integer(4) :: length, ierror
    call pxfgetarg(number, value, length, ierror)
    call check(ierror, 0, 'getarg')
    call check(value(1:length), expected, 'argument')
    call check(value(length + 1:), repeat(' ', 40 - length), 'blanks behind it')
    call get_command_argument(number, value, length)
    call check(value(1:length), expected, 'the run-time''s argument')
  end subroutine

  ! What a file holds, whose name is made here; it is removed.
  subroutine read_and_remove(name, text, size)
    character(*), intent(in) :: name
    character(*), intent(out) :: text
    integer, intent(out) :: size
    integer :: unit, status
    text = ' '
    open (newunit=unit, file=name, access='stream', form='unformatted', status='old')
    inquire (unit, size=size)
    read (unit, iostat=status) text(1:size)
    close (unit, status='delete')
  end subroutine

  function file_name() result(name)
    character(1100) :: name
    integer(4) :: pid, ierror
    call pxfgetpid(pid, ierror)
    write (name, '(2a, i0)') trim(directory), '/qxport.processes.', pid
  end function

  subroutine check_exits()
    character(1100) :: name
    character(20) :: text
    integer(4) :: child
    integer :: unit, size
    name = file_name()
    call fork(child)
    if (child == 0) then
      open (newunit=unit, file=name, status='new')
      write (unit, '(a)') 'buffered'
      call pxfexit(7)
    end if
    call check_end(child, 7, 'pxfexit')
    call read_and_remove(name, text, size)
    call check(text(1:size), 'buffered' // new_line('a'), 'pxfexit writes the units'' buffers')
    call fork(child)
    if (child == 0) then
      open (newunit=unit, file=name, status='new')
      write (unit, '(a)') 'buffered'
      call pxffastexit(8)
    end if
    call check_end(child, 8, 'pxffastexit')
    call read_and_remove(name, text, size)
    call check(size, 0, 'pxffastexit writes no buffer')
    call fork(child)
    if (child == 0) call pxfexit(256 + 9)
    call check_end(child, 9, 'the low eight bits')
  end subroutine

  subroutine check_buffer_is_written_once()
    character(1100) :: name
    character(40) :: text
    integer(4) :: child
    integer :: unit, size
    name = file_name()
    open (newunit=unit, file=name, status='new')
    write (unit, '(a)') 'once'
    call fork(child)
    if (child == 0) call pxffastexit(0)
    call check_end(child, 0, 'a child with the parent''s buffer')
    close (unit)
    call read_and_remove(name, text, size)
    call check(text(1:size), 'once' // new_line('a'), 'the buffer is the parent''s to write')
  end subroutine

  subroutine check_statuses()
    integer(4) :: child, status, ended, ierror
    call pxfwait(status, ended, ierror)
    call check(ierror, echild, 'no child')
    call check(ended, -1, 'no child''s number')
    call fork(child)
    if (child == 0) then
      do
        call pxfpause(ierror)
      end do
    end if
    call pxfwaitpid(child, status, ipxfconst('WNOHANG'), ended, ierror)
    call check(ierror, 0, 'waitpid without waiting')
    call check(ended, 0, 'no child has ended')
    call pxfkill(child, ipxfconst('SIGSTOP'), ierror)
    call pxfwaitpid(child, status, ipxfconst('WUNTRACED'), ended, ierror)
    call check(pxfwifstopped(status), 'stopped')
    call check(.not. pxfwifexited(status), 'a stop is no exit')
    call check(.not. pxfwifsignaled(status), 'a stop is no end')
    call check(ipxfwstopsig(status), ipxfconst('SIGSTOP'), 'the signal that stopped it')
    call pxfkill(child, ipxfconst('SIGKILL'), ierror)
    call pxfwait(status, ended, ierror)
    call check(ended, child, 'the killed child')
    call check(pxfwifsignaled(status), 'killed')
    call check(.not. pxfwifstopped(status), 'an end is no stop')
    call check(.not. pxfwifexited(status), 'an end by a signal is no exit')
    call check(ipxfwtermsig(status), ipxfconst('SIGKILL'), 'the signal that killed it')
  end subroutine

  subroutine check_environment()
    character(10) :: value
    integer(4) :: length, ierror, child
    call pxfsetenv('  QXPORT_TEST ', 0, '  a value  ', 0, 1, ierror)
    call check(ierror, 0, 'setenv')
    call pxfgetenv(' QXPORT_TEST  ', 0, value, length, ierror)
    call check(ierror, 0, 'getenv')
    call check(value, 'a value   ', 'the value')
    call check(length, 7, 'its length')
    call pxfgetenv('QXPORT_TEST', 0, value(1:3), length, ierror)
    call check(ierror, etrunc, 'a cut value')
    call check(length, 7, 'the length of a cut value')
    call pxfsetenv('QXPORT_TEST', 0, 'another', 0, 0, ierror)
    call pxfgetenv('QXPORT_TEST', 0, value, length, ierror)
    call check(value, 'a value   ', 'not overwritten')
    call pxfsetenv('QXPORT_TEST', 12, 'another', 0, 0, ierror)
    call check(ierror, einval, 'a length that is too large')
    call pxfgetenv('QXPORT_UNSET', 0, value, length, ierror)
    call check(ierror, einval, 'an unset variable')
    call check(value, repeat(' ', 10), 'value of an unset variable')
    call fork(child)
    if (child == 0) then
      call pxfclearenv(ierror)
      if (ierror /= 0) call pxffastexit(1)
      call pxfgetenv('PATH', 0, value, length, ierror)
      call pxffastexit(merge(0, 2, ierror == einval))
    end if
    call check_end(child, 0, 'clearenv')
  end subroutine

  subroutine check_system()
    integer(4) :: names, used, seconds, before, ticks, length, ierror, calendar(9), pid, parent, child
    character(80) :: value
    call pxfstructcreate('utsname', names, ierror)
    call pxfuname(names, ierror)
    call check(ierror, 0, 'uname')
    call pxfstrget(names, 'sysname', value, length, ierror)
    call check(value(1:length), 'Linux', 'the name of the system')
    call pxfstructfree(names, ierror)
    call pxfuname(names, ierror)
    call check(ierror, 127, 'uname of a freed record')
    call pxfstructcreate('tms', used, ierror)
    call pxftimes(used, ticks, ierror)
    call check(ierror, 0, 'times')
    call pxfstructfree(used, ierror)
    call pxftime(before, ierror)
    call check(ierror, 0, 'time')
    call pxftime(seconds, ierror)
    call check(seconds >= before .and. seconds - before < 100, 'time goes on')
    call pxfsetenv('TZ', 0, 'UTC', 0, 1, ierror)
    call pxflocaltime(0, calendar, ierror)
    call check(ierror, 0, 'localtime')
    call check(all(calendar == [0, 0, 0, 1, 1, 1970, 4, 1, 0]), 'the epoch')
    call pxfgetpid(pid, ierror)
    call fork(child)
    if (child == 0) then
      call pxfgetppid(parent, ierror)
      call pxffastexit(merge(0, 1, parent == pid))
    end if
    call check_end(child, 0, 'the child''s parent')
  end subroutine

end program
