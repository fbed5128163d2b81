! The routines for processes, environment and signals as programs call them that know of no module.
program posix_processes_external
  use, intrinsic :: iso_fortran_env, only: output_unit
  use checks, only: check, finish
  implicit none
  integer(4), parameter :: einval = 22, echild = 10, sigkill = 9, sigusr1 = 10, sig_setmask = 2
  integer(4), external :: ipxfargc, ipxfwexitstatus, ipxfwtermsig, ipxfwstopsig
  logical(4), external :: pxfwifexited, pxfwifsignaled, pxfwifstopped
  external :: pxffork, pxfwait, pxfwaitpid, pxfexit, pxffastexit, pxfexecv, pxfexecve, pxfexecvp, pxfkill, pxfpause
  external :: pxfgetpid, pxfgetppid, pxfgetuid, pxfgeteuid, pxfgetgid, pxfgetegid, pxfsetuid, pxfsetgid, pxfgetgroups
  external :: pxfgetpgrp, pxfsetsid, pxfsetpgid, pxfisatty, pxfsysconf, pxftime, pxflocaltime, pxfgetlogin, pxfctermid
  external :: pxfttyname, pxfgetarg, pxfgetenv, pxfsetenv, pxfclearenv, pxfalarm, pxfsleep, pxfsigprocmask
  external :: pxfstructcreate, pxfsigaddset, pxfsigpending, pxfsigismember, pxfuname, pxftimes
  character(16) :: arguments(3) = [character(16) :: 'sh', '-c', 'exit $A']
  character(16) :: environment(1) = 'A=6'
  character(64) :: text
  integer(4) :: child, status, ended, ierror, length, id, other, groups(1), calendar(9), set
  logical(4) :: answer

  flush (output_unit)
  call pxffork(child, ierror)
  if (child == 0) call pxfexit(3)
  call pxfwaitpid(child, status, 0, ended, ierror)
  call check(pxfwifexited(status), 'wifexited')
  call check(ipxfwexitstatus(status), 3, 'exit')
  call pxffork(child, ierror)
  if (child == 0) call pxffastexit(4)
  call pxfwait(status, ended, ierror)
  call check(ended, child, 'wait')
  call check(ipxfwexitstatus(status), 4, 'fastexit')
  call pxffork(child, ierror)
  if (child == 0) then
    call pxfexecve('/bin/sh', 0, arguments, [0, 0, 0], 3, environment, [0], 1, ierror)
    call pxffastexit(98)
  end if
  call pxfwait(status, ended, ierror)
  call check(ipxfwexitstatus(status), 6, 'execve')
  arguments(3) = 'exit 7'
  call pxffork(child, ierror)
  if (child == 0) then
    call pxfexecv('/bin/sh', 7, arguments, [2, 2, 6], 3, ierror)
    call pxffastexit(98)
  end if
  call pxfwait(status, ended, ierror)
  call check(ipxfwexitstatus(status), 7, 'execv')
  call pxffork(child, ierror)
  if (child == 0) then
    call pxfexecvp('sh', 0, arguments, [0, 0, 0], 3, ierror)
    call pxffastexit(98)
  end if
  call pxfwait(status, ended, ierror)
  call check(ipxfwexitstatus(status), 7, 'execvp')
  call pxffork(child, ierror)
  if (child == 0) then
    do
      call pxfpause(ierror)
    end do
  end if
  call pxfkill(child, sigkill, ierror)
  call check(ierror, 0, 'kill')
  call pxfwait(status, ended, ierror)
  call check(pxfwifsignaled(status), 'wifsignaled')
  call check(ipxfwtermsig(status), sigkill, 'wtermsig')
  answer = pxfwifstopped(status)
  call check(.not. answer, 'wifstopped')
  call check(ipxfwstopsig(19 * 256 + 127), 19, 'wstopsig')
  call pxfwait(status, ended, ierror)
  call check(ierror, echild, 'no child')

  call pxfgetpid(id, ierror)
  call check(id > 1, 'getpid')
  call pxfgetppid(other, ierror)
  call check(other /= id, 'getppid')
  call pxfgetuid(id, ierror)
  call pxfgeteuid(other, ierror)
  call check(id, other, 'geteuid')
  call pxfsetuid(id, ierror)
  call check(ierror, 0, 'setuid')
  call pxfgetgid(id, ierror)
  call pxfgetegid(other, ierror)
  call check(id, other, 'getegid')
  call pxfsetgid(id, ierror)
  call check(ierror, 0, 'setgid')
  call pxfgetgroups(0, groups, id, ierror)
  call check(ierror, 0, 'getgroups')
  call pxffork(child, ierror)
  if (child == 0) then
    call pxfsetsid(id, ierror)
    call pxfgetpgrp(other, ierror)
    if (id /= other) call pxffastexit(1)
    call pxfsetpgid(0, 0, ierror)
    call pxffastexit(merge(0, 2, ierror /= 0))
  end if
  call pxfwait(status, ended, ierror)
  call check(status, 0, 'setsid')

  text = '#'
  call pxfgetlogin(text, length, ierror)
  call check(text /= '#', 'getlogin')
  call pxfctermid(text, length, ierror)
  call check(text(1:length), '/dev/tty', 'ctermid')
  call pxfisatty(-1, answer, ierror)
  call check(.not. answer, 'isatty')
  call check(ierror, 0, 'error of isatty')
  call pxfttyname(-1, text, length, ierror)
  call check(ierror /= 0, 'ttyname')
  call pxfstructcreate('utsname', set, ierror)
  call pxfuname(set, ierror)
  call check(ierror, 0, 'uname')
  call pxfstructcreate('tms', set, ierror)
  call pxftimes(set, id, ierror)
  call check(ierror, 0, 'times')
  call pxfsysconf(-1, id, ierror)
  call check(ierror, einval, 'sysconf')
  call pxftime(id, ierror)
  call check(ierror, 0, 'time')
  call pxflocaltime(id, calendar, ierror)
  call check(calendar(6) >= 2024, 'localtime')

  call check(ipxfargc(), 0, 'argc')
  call pxfgetarg(0, text, length, ierror)
  call check(length > 0, 'getarg')
  call pxfsetenv('QXPORT_TEST', 0, 'value', 0, 1, ierror)
  call pxfgetenv('QXPORT_TEST', 0, text, length, ierror)
  call check(text(1:length), 'value', 'getenv')
  call pxfclearenv(ierror)
  call pxfgetenv('QXPORT_TEST', 0, text, length, ierror)
  call check(ierror, einval, 'clearenv')

  call pxfstructcreate('sigset', set, ierror)
  call pxfsigaddset(set, sigusr1, ierror)
  call pxfsigprocmask(sig_setmask, set, 0, ierror)
  call check(ierror, 0, 'sigprocmask')
  call pxfgetpid(id, ierror)
  call pxfkill(id, sigusr1, ierror)
  call pxfsigpending(set, ierror)
  call pxfsigismember(set, sigusr1, answer, ierror)
  call check(answer, 'sigpending')
  call pxfalarm(100, other, ierror)
  call pxfalarm(0, other, ierror)
  call check(other > 90, 'alarm')
  call pxfsleep(0, other, ierror)
  call check(other, 0, 'sleep')
  call finish()
end program
