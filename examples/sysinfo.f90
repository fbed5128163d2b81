! sysinfo: a table of what this host's POSIX binding knows: every named constant with its value, every kind of record
! with its components and the routines that get and set them.
!
! The status is 0, or 1 where the library does not know a name or refuses a component, which are named on standard
! error, or where the table cannot be written.

! What goes wrong is told at once and counted.
module complaints
  use, intrinsic :: iso_fortran_env, only: error_unit
  implicit none
  private
  public :: complain
  integer, public, protected :: complaint_count = 0

contains

  subroutine complain(what)
    character(*), intent(in) :: what
    complaint_count = complaint_count + 1
    write (error_unit, '(2a)') 'sysinfo: ', what
  end subroutine complain
end module complaints

! The constants: asked for by name, printed by group in as many columns as a line holds.
module constant_tables
  use complaints, only: complain
  use qxport, only: pxfconst
  use standard_output, only: put_line
  implicit none
  private
  public :: print_constants

  integer, parameter :: LINE_LENGTH = 100, NAME_LENGTH = 20, VALUE_LENGTH = 12
  ! How a group's values are written once more, beside the decimal number: so that bits can be seen.
  character(*), parameter :: PLAIN = '', OCTAL = '("0", o0)', HEXADECIMAL = '("0x", z0)'

  type cell
    character(NAME_LENGTH) :: name = ''
    character(VALUE_LENGTH) :: value = '', bits = ''
  end type cell

contains

  subroutine print_constants()
    call print_group('Signals (-1: the host has none of this name)', PLAIN, &
      'SIGHUP SIGINT SIGQUIT SIGILL SIGTRAP SIGABRT SIGIOT SIGEMT SIGFPE SIGKILL SIGBUS SIGSEGV SIGSYS SIGPIPE '// &
      'SIGALRM SIGTERM SIGURG SIGSTOP SIGTSTP SIGCONT SIGCHLD SIGTTIN SIGTTOU SIGIO SIGXCPU SIGXFSZ SIGVTALRM '// &
      'SIGPROF SIGWINCH SIGINFO SIGUSR1 SIGUSR2')
    call print_group('Number of signals in a set', PLAIN, 'NSIG')
    call print_group('Dispositions of a signal', PLAIN, 'SIG_DFL SIG_IGN SIG_ERR')
    call print_group('Flags of a signal action', HEXADECIMAL, 'SA_NOCLDSTOP SA_NODEFER SA_RESETHAND SA_RESTART')
    call print_group('Changes of the signal mask', PLAIN, 'SIG_BLOCK SIG_UNBLOCK SIG_SETMASK')
    call print_group('Waiting for children', HEXADECIMAL, 'WNOHANG WUNTRACED')
    call print_group('Opening a file', OCTAL, &
      'O_RDONLY O_WRONLY O_RDWR O_CREAT O_EXCL O_NOCTTY O_TRUNC O_APPEND O_NONBLOCK O_NDELAY O_SYNC O_NOFOLLOW')
    call print_group('Type and permissions of a file', OCTAL, &
      'S_IFMT S_IFSOCK S_IFLNK S_IFREG S_IFBLK S_IFDIR S_IFCHR S_IFIFO S_ISUID S_ISGID S_ISVTX S_IRWXU S_IRUSR '// &
      'S_IREAD S_IWUSR S_IWRITE S_IXUSR S_IEXEC S_IRWXG S_IRGRP S_IWGRP S_IXGRP S_IRWXO S_IROTH S_IWOTH S_IXOTH')
    call print_group('Questions about access', PLAIN, 'R_OK W_OK X_OK F_OK')
    call print_group('Origins of a position', PLAIN, 'SEEK_SET SEEK_CUR SEEK_END')
    call print_group('Commands for a descriptor', PLAIN, &
      'F_DUPFD F_GETFD F_SETFD F_GETFL F_SETFL F_GETLK F_SETLK F_SETLKW F_GETOWN F_SETOWN')
    call print_group('Standard units and descriptors', PLAIN, &
      'STDIN_UNIT STDOUT_UNIT STDERR_UNIT STDIN_FILENO STDOUT_FILENO STDERR_FILENO')
    call print_group('Number of control characters of a terminal', PLAIN, 'NCCS')
    call print_group('Modes of a terminal', OCTAL, &
      'IGNBRK BRKINT IGNPAR PARMRK INPCK ISTRIP INLCR IGNCR ICRNL IXON IXANY IXOFF IMAXBEL OPOST ONLCR OCRNL ONOCR '// &
      'ONLRET OFILL OFDEL NLDLY CRDLY TABDLY TAB0 TAB1 TAB2 TAB3 BSDLY BS0 BS1 VTDLY VT0 VT1 FFDLY FF0 FF1 CSIZE '// &
      'CS5 CS6 CS7 CS8 CSTOPB CREAD PARENB PARODD HUPCL CLOCAL CRTSCTS ISIG ICANON ECHO ECHOE ECHOK ECHONL ECHOCTL '// &
      'ECHOPRT ECHOKE FLUSHO NOFLSH TOSTOP PENDIN IEXTEN')
    call print_group('Speeds of a line', PLAIN, &
      'B0 B50 B75 B110 B134 B150 B200 B300 B600 B1200 B1800 B2400 B4800 B9600 B19200 B38400 B57600 B115200 B230400')
    call print_group('Limits and options of the system, by sysconf', PLAIN, &
      '_SC_ARG_MAX _SC_CHILD_MAX _SC_CLK_TCK _SC_STREAM_MAX _SC_TZNAME_MAX _SC_OPEN_MAX _SC_JOB_CONTROL '// &
      '_SC_SAVED_IDS _SC_VERSION _SC_BC_BASE_MAX _SC_BC_DIM_MAX _SC_BC_SCALE_MAX _SC_BC_STRING_MAX '// &
      '_SC_COLL_WEIGHTS_MAX _SC_EXPR_NEST_MAX _SC_LINE_MAX _SC_RE_DUP_MAX _SC_2_VERSION _SC_2_C_DEV _SC_2_FORT_DEV '// &
      '_SC_2_FORT_RUN _SC_2_LOCALEDEF _SC_2_SW_DEV _SC_PAGESIZE _SC_PAGE_SIZE')
    call print_group('Limits and options of a file, by pathconf', PLAIN, &
      '_PC_LINK_MAX _PC_MAX_CANON _PC_MAX_INPUT _PC_NAME_MAX _PC_PATH_MAX _PC_PIPE_BUF _PC_CHOWN_RESTRICTED '// &
      '_PC_NO_TRUNC _PC_VDISABLE')
    call print_group('Length of a system name', PLAIN, 'SYS_NMLN _SYS_NAMELEN')
    call print_group('Error numbers of the system', PLAIN, &
      'EPERM ENOENT ESRCH EINTR EIO ENXIO E2BIG ENOEXEC EBADF ECHILD EAGAIN ENOMEM EACCES EFAULT EBUSY EEXIST '// &
      'EXDEV ENODEV ENOTDIR EISDIR EINVAL ENFILE EMFILE ENOTTY EFBIG ENOSPC ESPIPE EROFS EMLINK EPIPE EDOM ERANGE '// &
      'EDEADLK EDEADLOCK ENAMETOOLONG ENOLCK ENOSYS ENOTEMPTY EILSEQ')
    call print_group('Error numbers of the binding', PLAIN, 'EARRAYLEN ENONAME ENOHANDLE ETRUNC EEND')
  end subroutine print_constants

  subroutine print_group(title, format_of_bits, list)
    character(*), intent(in) :: title, format_of_bits, list
    character(NAME_LENGTH), allocatable :: names(:)
    type(cell), allocatable :: cells(:)
    integer :: i
    allocate (names(word_count(list)), cells(word_count(list)))
    read (list, *) names
    do i = 1, size(names)
      cells(i) = cell_of(names(i), format_of_bits)
    end do
    call put_line('')
    call put_line(title)
    call print_in_columns(cells)
  end subroutine print_group

  pure integer function word_count(text)
    character(*), intent(in) :: text
    integer :: i
    word_count = count([(text(i:i) /= ' ' .and. (i == 1 .or. text(max(i - 1, 1):max(i - 1, 1)) == ' '), &
      i=1, len(text))])
  end function word_count

  function cell_of(name, format_of_bits) result(found)
    character(*), intent(in) :: name, format_of_bits
    type(cell) :: found
    integer(4) :: value, error
    found%name = name
    call pxfconst(name, value, error)
    if (error /= 0) then
      call complain('the library does not know '//trim(name))
      found%value = 'unknown'
      return
    end if
    write (found%value, '(i0)') value
    if (format_of_bits == PLAIN) return
    write (found%bits, format_of_bits) value
    if (found%bits == '00') found%bits = '0'
  end function cell_of

  ! Downwards, then to the right, as wide as the widest of the group.
  subroutine print_in_columns(cells)
    type(cell), intent(in) :: cells(:)
    character(:), allocatable :: line
    integer :: name_width, value_width, bits_width, columns, rows, row, i
    name_width = maxval(len_trim(cells%name))
    value_width = maxval(len_trim(cells%value)) + 2
    bits_width = maxval(len_trim(cells%bits))
    if (bits_width > 0) bits_width = bits_width + 2
    columns = LINE_LENGTH/(2 + name_width + value_width + bits_width)
    rows = (size(cells) + columns - 1)/columns
    do row = 1, rows
      line = ''
      do i = row, size(cells), rows
        line = line//'  '//cells(i)%name(:name_width)//right(cells(i)%value, value_width)// &
          right(cells(i)%bits, bits_width)
      end do
      call put_line(line)
    end do
  end subroutine print_in_columns

  pure function right(text, width) result(moved)
    character(*), intent(in) :: text
    integer, intent(in) :: width
    character(width) :: moved
    moved = repeat(' ', width - len_trim(text))//text
  end function right
end module constant_tables

! The kinds of record: each is made, and each of its components is got and set by the routines printed beside it.
module record_tables
  use, intrinsic :: iso_fortran_env, only: int64
  use complaints, only: complain
  use qxport, only: pxfaint8get, pxfaint8set, pxfaintget, pxfaintset, pxfeintget, pxfeintset, pxfestrget, pxfint8get, &
    pxfint8set, pxfintget, pxfintset, pxfstrget, pxfstrset, pxfstructcreate, pxfstructfree
  use standard_output, only: put_line
  implicit none
  private
  public :: print_records

  integer(4), parameter :: ELEMENTS = 20, NO_SUCH_ELEMENT = 125
  enum, bind(C)
    enumerator :: NONE, NUMBER, WIDE, COUNT, ARRAY, ELEMENT, TEXT, MEMBERS
  end enum

  type component
    character(9) :: record
    character(10) :: name
    character(14) :: type
    integer :: form
  end type component

  type(component), parameter :: COMPONENTS(*) = [ &
    component('sigset', '', 'no components', NONE), &
    component('sigaction', 'sa_handler', 'INTEGER(8)', WIDE), &
    component('sigaction', 'sa_mask', 'INTEGER(4)', NUMBER), &
    component('sigaction', 'sa_flags', 'INTEGER(4)', NUMBER), &
    component('utsname', 'sysname', 'CHARACTER(256)', TEXT), &
    component('utsname', 'nodename', 'CHARACTER(255)', TEXT), &
    component('utsname', 'release', 'CHARACTER(255)', TEXT), &
    component('utsname', 'version', 'CHARACTER(255)', TEXT), &
    component('utsname', 'machine', 'CHARACTER(255)', TEXT), &
    component('tms', 'tms_utime', 'INTEGER(8)', WIDE), &
    component('tms', 'tms_stime', 'INTEGER(8)', WIDE), &
    component('tms', 'tms_cutime', 'INTEGER(8)', WIDE), &
    component('tms', 'tms_cstime', 'INTEGER(8)', WIDE), &
    component('dirent', 'd_name', 'CHARACTER(255)', TEXT), &
    component('stat', 'st_mode', 'INTEGER(4)', NUMBER), &
    component('stat', 'st_ino', 'INTEGER(8)', WIDE), &
    component('stat', 'st_dev', 'INTEGER(8)', WIDE), &
    component('stat', 'st_nlink', 'INTEGER(8)', WIDE), &
    component('stat', 'st_uid', 'INTEGER(4)', NUMBER), &
    component('stat', 'st_gid', 'INTEGER(4)', NUMBER), &
    component('stat', 'st_size', 'INTEGER(8)', WIDE), &
    component('stat', 'st_atime', 'INTEGER(8)', WIDE), &
    component('stat', 'st_mtime', 'INTEGER(8)', WIDE), &
    component('stat', 'st_ctime', 'INTEGER(8)', WIDE), &
    component('utimbuf', 'actime', 'INTEGER(8)', WIDE), &
    component('utimbuf', 'modtime', 'INTEGER(8)', WIDE), &
    component('flock', 'l_type', 'INTEGER(4)', NUMBER), &
    component('flock', 'l_whence', 'INTEGER(4)', NUMBER), &
    component('flock', 'l_start', 'INTEGER(8)', WIDE), &
    component('flock', 'l_len', 'INTEGER(8)', WIDE), &
    component('flock', 'l_pid', 'INTEGER(4)', NUMBER), &
    component('termios', 'c_iflag', 'INTEGER(4)', NUMBER), &
    component('termios', 'c_oflag', 'INTEGER(4)', NUMBER), &
    component('termios', 'c_cflag', 'INTEGER(4)', NUMBER), &
    component('termios', 'c_lflag', 'INTEGER(4)', NUMBER), &
    component('termios', 'c_cc', '20 INTEGER(4)', ARRAY), &
    component('termios', 'c_cc', 'one of these', ELEMENT), &
    component('group', 'gr_name', 'CHARACTER(*)', TEXT), &
    component('group', 'gr_gid', 'INTEGER(4)', NUMBER), &
    component('group', 'gr_nmem', 'INTEGER(4)', COUNT), &
    component('group', 'gr_mem', 'gr_nmem names', MEMBERS), &
    component('passwd', 'pw_name', 'CHARACTER(*)', TEXT), &
    component('passwd', 'pw_uid', 'INTEGER(4)', NUMBER), &
    component('passwd', 'pw_gid', 'INTEGER(4)', NUMBER), &
    component('passwd', 'pw_dir', 'CHARACTER(*)', TEXT), &
    component('passwd', 'pw_shell', 'CHARACTER(*)', TEXT)]

contains

  subroutine print_records()
    character(9) :: former
    integer :: i
    call put_line('')
    call put_line('Records: made by pxfstructcreate, copied by pxfstructcopy, freed by pxfstructfree')
    call print_row('record', 'component', 'type', 'got by', 'set by')
    former = ''
    do i = 1, size(COMPONENTS)
      call print_component(COMPONENTS(i), former)
      call try(COMPONENTS(i))
      former = COMPONENTS(i)%record
    end do
    call put_line('  An INTEGER(8) that an INTEGER(4) cannot hold is refused by pxfintget with ERANGE (but sa_handler,')
    call put_line('  which is cut); pxfint8get writes the low 32 bits of any number into the low half of its variable.')
  end subroutine print_records

  ! A record's name stands at its first component only.
  subroutine print_component(part, former)
    type(component), intent(in) :: part
    character(*), intent(in) :: former
    call print_row(merge(part%record, '         ', part%record /= former), part%name, part%type, getters(part%form), &
      setters(part%form))
  end subroutine print_component

  subroutine print_row(record, name, type, getter, setter)
    character(*), intent(in) :: record, name, type, getter, setter
    character(100) :: row
    row = '  '//record
    row(14:) = name
    row(26:) = type
    row(42:) = getter
    row(66:) = setter
    call put_line(trim(row))
  end subroutine print_row

  pure function getters(form) result(routines)
    integer, intent(in) :: form
    character(23) :: routines
    select case (form)
    case (NUMBER, WIDE, COUNT)
      routines = 'pxfintget  pxfint8get'
    case (ARRAY)
      routines = 'pxfaintget pxfaint8get'
    case (ELEMENT)
      routines = 'pxfeintget'
    case (TEXT)
      routines = 'pxfstrget'
    case (MEMBERS)
      routines = 'pxfestrget, one by one'
    case default
      routines = ''
    end select
  end function getters

  pure function setters(form) result(routines)
    integer, intent(in) :: form
    character(23) :: routines
    select case (form)
    case (NUMBER, WIDE)
      routines = 'pxfintset  pxfint8set'
    case (ARRAY)
      routines = 'pxfaintset pxfaint8set'
    case (ELEMENT)
      routines = 'pxfeintset'
    case (TEXT)
      routines = 'pxfstrset'
    case default
      routines = ''
    end select
  end function setters

  ! What the table says of a component must be true here.
  subroutine try(part)
    type(component), intent(in) :: part
    integer(4) :: record, error
    call pxfstructcreate(part%record, record, error)
    if (error /= 0) then
      call complain('the library makes no record '//trim(part%record))
      return
    end if
    if (.not. works(record, part)) &
      call complain('the library does not treat '//trim(part%name)//' of '//trim(part%record)//' as it is told here')
    call pxfstructfree(record, error)
  end subroutine try

  logical function works(record, part)
    integer(4), intent(in) :: record
    type(component), intent(in) :: part
    integer(4) :: errors(4), value, length, values(ELEMENTS)
    integer(int64) :: long, longs(ELEMENTS)
    character(255) :: string
    errors = 0
    values = 0
    longs = 0
    length = ELEMENTS
    select case (part%form)
    case (NUMBER, WIDE)
      call pxfintset(record, part%name, -1, errors(1))
      call pxfintget(record, part%name, value, errors(2))
      call pxfint8set(record, part%name, 2_int64, errors(3))
      call pxfint8get(record, part%name, long, errors(4))
    case (COUNT)
      call pxfintget(record, part%name, value, errors(1))
      call pxfint8get(record, part%name, long, errors(2))
    case (ARRAY)
      call pxfaintget(record, part%name, values, length, errors(1))
      call pxfaintset(record, part%name, values, length, errors(2))
      call pxfaint8get(record, part%name, longs, length, errors(3))
      call pxfaint8set(record, part%name, longs, length, errors(4))
    case (ELEMENT)
      call pxfeintset(record, part%name, ELEMENTS, 1, errors(1))
      call pxfeintget(record, part%name, ELEMENTS, value, errors(2))
    case (TEXT)
      string = 'text'
      call pxfstrset(record, part%name, string, len(string), errors(1))
      call pxfstrget(record, part%name, string, length, errors(2))
    case (MEMBERS)
      ! A new record has none.
      call pxfestrget(record, part%name, 1, string, length, errors(1))
      errors(1) = errors(1) - NO_SUCH_ELEMENT
    end select
    works = all(errors == 0)
  end function works
end module record_tables

program sysinfo
  use complaints, only: complaint_count
  use constant_tables, only: print_constants
  use qxport, only: exit
  use record_tables, only: print_records
  use standard_output, only: flush_lines, program_name, put_line
  implicit none
  program_name = 'sysinfo'
  call put_line('The POSIX binding on this host')
  call print_constants()
  call print_records()
  call flush_lines()
  if (complaint_count > 0) call exit(1)
end program sysinfo
