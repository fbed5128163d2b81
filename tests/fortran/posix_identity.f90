! Who a process is, what it belongs to, and what the system says of itself, through the module.
program posix_identity
  use, intrinsic :: iso_fortran_env, only: output_unit
  use checks, only: check, finish
  use qxport, only: getgid, getuid, ipxfconst, pxfclose, pxfctermid, pxffastexit, pxffork, pxffpathconf, &
    pxfgetegid, pxfgeteuid, pxfgetgid, pxfgetgroups, pxfgetlogin, pxfgetpgrp, pxfgetpid, pxfgetuid, pxfisatty, &
    pxfopen, pxfsetgid, pxfsetpgid, pxfsetsid, pxfsetuid, pxfstrget, pxfstructcreate, pxfstructfree, pxfsysconf, &
    pxftimes, pxfttyname, pxfuname, pxfwaitpid
  implicit none
  integer(4), parameter :: ebadf = 9, einval = 22, enohandle = 127
  character(*), parameter :: untouched = '################'
  integer(4) :: ierror

  call check_users()
  call check_groups()
  call check_sessions()
  call check_terminals()
  call check_limits()
  call check_system()
  call finish()

contains

  subroutine check_users()
    integer(4) :: real_id, effective_id
    real_id = -2
    call pxfgetuid(real_id, ierror)
    call check(real_id, getuid(), 'getuid')
    call check(ierror, 0, 'error of getuid')
    call pxfgeteuid(effective_id, ierror)
    call check(effective_id, real_id, 'geteuid')
    call pxfsetuid(real_id, ierror)
    call check(ierror, 0, 'setuid to what it is')
    call pxfgetgid(real_id, ierror)
    call check(real_id, getgid(), 'getgid')
    call pxfgetegid(effective_id, ierror)
    call check(effective_id, real_id, 'getegid')
    call pxfsetgid(real_id, ierror)
    call check(ierror, 0, 'setgid to what it is')
  end subroutine

  subroutine check_groups()
    integer(4) :: count, stored, groups(64)
    groups = -2
    call pxfgetgroups(0, groups, count, ierror)
    call check(ierror, 0, 'the number of groups')
    call check(all(groups == -2), 'no group is stored where none is asked for')
    call pxfgetgroups(size(groups), groups, stored, ierror)
    call check(ierror, 0, 'groups')
    call check(stored, count, 'all groups')
    call check(all(groups(:stored) >= 0) .and. all(groups(stored + 1:) == -2), 'as many groups as there are')
    call pxfgetgroups(-1, groups, stored, ierror)
    call check(ierror, einval, 'a negative number of groups')
  end subroutine

  subroutine check_sessions()
    integer(4) :: child, status, ended, session, group, pid
    call pxfgetpgrp(group, ierror)
    call check(group > 0, 'getpgrp')
    flush (output_unit)
    call pxffork(child, ierror)
    if (child == 0) then
      call pxfsetpgid(0, 0, ierror)
      if (ierror /= 0) call pxffastexit(1)
      call pxfgetpgrp(group, ierror)
      call pxfgetpid(pid, ierror)
      call pxffastexit(merge(0, 2, group == pid))
    end if
    call pxfwaitpid(child, status, 0, ended, ierror)
    call check(status, 0, 'setpgid makes a group of its own')
    call pxffork(child, ierror)
    if (child == 0) then
      call pxfsetsid(session, ierror)
      if (ierror /= 0) call pxffastexit(1)
      call pxfgetpgrp(group, ierror)
      call pxfsetsid(pid, ierror)
      call pxffastexit(merge(0, 2, group == session .and. ierror /= 0))
    end if
    call pxfwaitpid(child, status, 0, ended, ierror)
    call check(status, 0, 'setsid makes a session once')
  end subroutine

  subroutine check_terminals()
    character(16) :: name
    integer(4) :: length, null
    logical(4) :: answer
    call pxfopen('/dev/null', 0, ipxfconst('O_RDONLY'), 0, null, ierror)
    answer = .true.
    call pxfisatty(null, answer, ierror)
    call check(.not. answer, 'a null device is no terminal')
    name = untouched
    call pxfttyname(null, name, length, ierror)
    call check(ierror /= 0, 'the name of no terminal')
    call pxfttyname(-1, name, length, ierror)
    call check(ierror, ebadf, 'the terminal of no descriptor')
    call pxfclose(null, ierror)
    call pxfctermid(name, length, ierror)
    call check(ierror, 0, 'ctermid')
    call check(name(:length), '/dev/tty', 'the controlling terminal')
    call check(name(length + 1:) == ' ', 'its padding')
    name = untouched
    length = -2
    call pxfgetlogin(name, length, ierror)
    if (ierror == 0) call check(len_trim(name), length, 'the login name''s length')
    if (ierror /= 0) call check(name == ' ' .and. length == -2, 'no login name, a blank variable and no length')
  end subroutine

  subroutine check_limits()
    integer(4) :: value, null
    call pxfsysconf(ipxfconst('_SC_OPEN_MAX'), value, ierror)
    call check(ierror, 0, 'sysconf')
    call check(value > 2, 'descriptors')
    call pxfsysconf(-1, value, ierror)
    call check(ierror, einval, 'sysconf of nothing')
    call pxfopen('/', 0, ipxfconst('O_RDONLY'), 0, null, ierror)
    call pxffpathconf(null, ipxfconst('_PC_NAME_MAX'), value, ierror)
    call check(ierror, 0, 'fpathconf')
    call check(value >= 14, 'the length of names')
    call pxfclose(null, ierror)
    call pxffpathconf(-1, ipxfconst('_PC_NAME_MAX'), value, ierror)
    call check(ierror, ebadf, 'fpathconf of no descriptor')
  end subroutine

  subroutine check_system()
    character(64) :: system
    integer(4) :: names, times, length, ticks
    call pxfstructcreate('utsname', names, ierror)
    call pxfuname(names, ierror)
    call check(ierror, 0, 'uname')
    call pxfstrget(names, 'sysname', system, length, ierror)
    call check(system(:length), 'Linux', 'the system''s name')
    call pxftimes(names, ticks, ierror)
    call check(ierror, einval, 'times into names')
    call pxfstructcreate('tms', times, ierror)
    call pxftimes(times, ticks, ierror)
    call check(ierror, 0, 'times')
    call pxfstructfree(times, ierror)
    call pxfstructfree(names, ierror)
    call pxfuname(names, ierror)
    call check(ierror, enohandle, 'uname into nothing')
  end subroutine

end program
