! Named constants through the module, against the numbers that Linux is known to have on x86.
program constants
  use, intrinsic :: iso_c_binding, only: c_intptr_t
  use, intrinsic :: iso_fortran_env, only: int32
  use checks, only: check, finish
  use qxport, only: ipxfconst, pxfconst, pxfisconst
  implicit none
  integer(4), parameter :: enoname = 126
  type constant
    character(20) :: name
    integer(4) :: value
  end type

  call check_signals()
  call check_limits()
  call check_files()
  call check_terminal()
  call check_numbers_of_the_binding()
  call check_errors()
  call check_unknown()
  call check_writing()
  call check_truth()
  call finish()

contains

  subroutine check_all(constants)
    type(constant), intent(in) :: constants(:)
    integer(4) :: value, error, i
    do i = 1, size(constants)
      value = 4711
      error = -1
      call pxfconst(constants(i)%name, value, error)
      call check(error, 0, 'pxfconst of '//constants(i)%name)
      call check(value, constants(i)%value, 'value of '//constants(i)%name)
      call check(ipxfconst(trim(constants(i)%name)), constants(i)%value, 'ipxfconst of '//constants(i)%name)
      call check(pxfisconst(constants(i)%name), constants(i)%name//' is a constant')
    end do
  end subroutine

  subroutine check_signals()
    call check_all([constant('SIGHUP', 1), constant('SIGINT', 2), constant('SIGQUIT', 3), constant('SIGILL', 4), &
                    constant('SIGTRAP', 5), constant('SIGABRT', 6), constant('SIGIOT', 6), constant('SIGBUS', 7), &
                    constant('SIGFPE', 8), constant('SIGKILL', 9), constant('SIGUSR1', 10), constant('SIGSEGV', 11), &
                    constant('SIGUSR2', 12), constant('SIGPIPE', 13), constant('SIGALRM', 14), &
                    constant('SIGTERM', 15), constant('SIGCHLD', 17), constant('SIGCONT', 18), &
                    constant('SIGSTOP', 19), constant('SIGTSTP', 20), constant('SIGTTIN', 21), &
                    constant('SIGTTOU', 22), constant('SIGURG', 23), constant('SIGXCPU', 24), &
                    constant('SIGXFSZ', 25), constant('SIGVTALRM', 26), constant('SIGPROF', 27), &
                    constant('SIGWINCH', 28), constant('SIGIO', 29), constant('SIGSYS', 31)])
    call check_all([constant('SIGEMT', -1), constant('SIGINFO', -1)])
    call check_all([constant('SA_NOCLDSTOP', 1), constant('SA_RESTART', 268435456), &
                    constant('SA_NODEFER', 1073741824), constant('SA_RESETHAND', -huge(0_int32) - 1)])
    call check_all([constant('SIG_BLOCK', 0), constant('SIG_UNBLOCK', 1), constant('SIG_SETMASK', 2)])
    call check_all([constant('SIG_DFL', 0), constant('SIG_IGN', 1), constant('SIG_ERR', -1)])
    call check_all([constant('WNOHANG', 1), constant('WUNTRACED', 2)])
  end subroutine

  subroutine check_limits()
    call check_all([constant('_SC_ARG_MAX', 0), constant('_SC_CHILD_MAX', 1), constant('_SC_CLK_TCK', 2), &
                    constant('_SC_OPEN_MAX', 4), constant('_SC_STREAM_MAX', 5), constant('_SC_TZNAME_MAX', 6), &
                    constant('_SC_JOB_CONTROL', 7), constant('_SC_SAVED_IDS', 8), constant('_SC_VERSION', 29), &
                    constant('_SC_PAGESIZE', 30), constant('_SC_PAGE_SIZE', 30), constant('_SC_LINE_MAX', 43)])
    call check_all([constant('_PC_LINK_MAX', 0), constant('_PC_MAX_CANON', 1), constant('_PC_MAX_INPUT', 2), &
                    constant('_PC_NAME_MAX', 3), constant('_PC_PATH_MAX', 4), constant('_PC_PIPE_BUF', 5), &
                    constant('_PC_CHOWN_RESTRICTED', 6), constant('_PC_NO_TRUNC', 7), constant('_PC_VDISABLE', 8)])
  end subroutine

  subroutine check_files()
    logical, parameter :: is_64_bit = storage_size(0_c_intptr_t) == 64
    call check_all([constant('O_RDONLY', 0), constant('O_WRONLY', 1), constant('O_RDWR', 2), &
                    constant('O_CREAT', int(o'100')), constant('O_EXCL', int(o'200')), &
                    constant('O_NOCTTY', int(o'400')), constant('O_TRUNC', int(o'1000')), &
                    constant('O_APPEND', int(o'2000')), constant('O_NONBLOCK', int(o'4000')), &
                    constant('O_NDELAY', int(o'4000')), constant('O_SYNC', int(o'4010000')), &
                    constant('O_NOFOLLOW', int(o'400000'))])
    call check_all([constant('S_IRWXU', int(o'700')), constant('S_IRUSR', int(o'400')), &
                    constant('S_IREAD', int(o'400')), constant('S_IWUSR', int(o'200')), &
                    constant('S_IXUSR', int(o'100')), constant('S_IRWXG', int(o'70')), &
                    constant('S_IRWXO', int(o'7')), constant('S_IXOTH', int(o'1')), &
                    constant('S_IFMT', int(o'170000')), constant('S_IFSOCK', int(o'140000')), &
                    constant('S_IFLNK', int(o'120000')), constant('S_IFREG', int(o'100000')), &
                    constant('S_IFBLK', int(o'60000')), constant('S_IFDIR', int(o'40000')), &
                    constant('S_IFCHR', int(o'20000')), constant('S_IFIFO', int(o'10000')), &
                    constant('S_ISUID', int(o'4000')), constant('S_ISGID', int(o'2000')), &
                    constant('S_ISVTX', int(o'1000'))])
    call check_all([constant('R_OK', 4), constant('W_OK', 2), constant('X_OK', 1), constant('F_OK', 0)])
    call check_all([constant('F_DUPFD', 0), constant('F_GETFD', 1), constant('F_SETFD', 2), constant('F_GETFL', 3), &
                    constant('F_SETFL', 4), constant('F_SETOWN', 8), constant('F_GETOWN', 9)])
    call check_all([constant('F_GETLK', merge(5, 12, is_64_bit)), constant('F_SETLK', merge(6, 13, is_64_bit)), &
                    constant('F_SETLKW', merge(7, 14, is_64_bit))])
    call check_all([constant('SEEK_SET', 0), constant('SEEK_CUR', 1), constant('SEEK_END', 2)])
    call check_all([constant('STDIN_FILENO', 0), constant('STDOUT_FILENO', 1), constant('STDERR_FILENO', 2)])
  end subroutine

  subroutine check_terminal()
    call check_all([constant('IGNBRK', 1), constant('BRKINT', 2), constant('ICRNL', int(o'400')), &
                    constant('IXON', int(o'2000')), constant('IXOFF', int(o'10000')), &
                    constant('IMAXBEL', int(o'20000')), constant('OPOST', 1), constant('ONLCR', 4), &
                    constant('TABDLY', int(o'14000')), &
                    constant('TAB3', int(o'14000')), constant('FFDLY', int(o'100000')), constant('CSIZE', int(o'60')), &
                    constant('CS5', 0), constant('CS6', int(o'20')), constant('CS7', int(o'40')), &
                    constant('CS8', int(o'60')), constant('PARENB', int(o'400')), constant('CLOCAL', int(o'4000')), &
                    constant('CRTSCTS', -huge(0_int32) - 1), constant('ISIG', 1), constant('ICANON', 2), &
                    constant('ECHO', 8), constant('NOFLSH', 128), constant('TOSTOP', int(o'400')), &
                    constant('IEXTEN', int(o'100000'))])
    call check_all([constant('B0', 0), constant('B50', 1), constant('B9600', 13), constant('B38400', 15), &
                    constant('B57600', int(o'10001')), constant('B115200', int(o'10002')), &
                    constant('B230400', int(o'10003'))])
  end subroutine

  ! The same on every host.
  subroutine check_numbers_of_the_binding()
    call check_all([constant('ENONAME', 126), constant('ENOHANDLE', 127), constant('ETRUNC', 129), &
                    constant('EARRAYLEN', 125), constant('EEND', -1)])
    call check_all([constant('STDIN_UNIT', 5), constant('STDOUT_UNIT', 6), constant('STDERR_UNIT', 0)])
    call check_all([constant('NSIG', 32), constant('NCCS', 20), constant('SYS_NMLN', 256), &
                    constant('_SYS_NAMELEN', 256)])
  end subroutine

  subroutine check_errors()
    call check_all([constant('EPERM', 1), constant('ENOENT', 2), constant('ESRCH', 3), constant('EINTR', 4), &
                    constant('EIO', 5), constant('EBADF', 9), constant('ECHILD', 10), constant('EAGAIN', 11), &
                    constant('ENOMEM', 12), constant('EACCES', 13), constant('EEXIST', 17), constant('ENOTDIR', 20), &
                    constant('EINVAL', 22), constant('ENOTTY', 25), constant('ERANGE', 34), constant('EDEADLK', 35), &
                    constant('EDEADLOCK', 35), constant('ENAMETOOLONG', 36), constant('ENOLCK', 37), &
                    constant('ENOSYS', 38), constant('ENOTEMPTY', 39), constant('EILSEQ', 84)])
  end subroutine

  subroutine check_unknown()
    character(20), parameter :: names(6) = [character(20) :: 'SIGRTMIN', 'SIGIN', 'SIGINTX', ' SIGINT', '', 'st_size']
    integer(4) :: value, error, i
    do i = 1, size(names)
      value = 4711
      call pxfconst(names(i), value, error)
      call check(error, enoname, 'pxfconst of '//names(i))
      call check(value, -1, 'value of '//names(i))
      call check(ipxfconst(names(i)), -1, 'ipxfconst of '//names(i))
      call check(.not. pxfisconst(names(i)), names(i)//' is no constant')
    end do
    call check(ipxfconst(repeat('X', 10000)), -1, 'a name of 10,000 characters')
  end subroutine

  subroutine check_writing()
    call check(ipxfconst('sigint'), 2, 'small letters')
    call check(ipxfconst('SigInt'), 2, 'small and large letters')
    call check(ipxfconst('SIGINT  '), 2, 'trailing blanks')
    call check(ipxfconst('SIGINT X'), 2, 'a blank ends the name')
    call check(ipxfconst('SIGINT'//repeat(' ', 10000)), 2, '10,000 blanks')
  end subroutine

  ! A truth of all bits set would stay true under .not. with this compiler.
  subroutine check_truth()
    logical(4) :: is_known
    call check(.not. (.not. pxfisconst('SIGINT')), '.not. pxfisconst is false')
    is_known = pxfisconst('SIGINT')
    call check(transfer(is_known, 0) == 1, 'the truth is the compiler''s own')
    call check(is_known .eqv. .true., 'it is equivalent to a true')
    call check(all([pxfisconst('EEND'), pxfisconst('SIG_ERR')]), 'a constant of -1 is one')
    call check(count([pxfisconst('SIGINT'), pxfisconst('SIGRTMIN'), pxfisconst('SIGEMT')]) == 2, 'truths are counted')
  end subroutine

end program
