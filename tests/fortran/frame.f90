! Strings, error numbers, messages, identity and termination through the module. With an argument the program is one of
! its own children: it does what the argument says and ends, and the parent looks at the status and at what was written.
program frame
  use, intrinsic :: iso_c_binding, only: c_int32_t
  use, intrinsic :: iso_fortran_env, only: error_unit
  use checks, only: check, finish
  use scratch, only: quoted
  use qxport, only: abort, access, chdir, error_text, errsns, exit, for_qxcore_version, for_qxport_version, &
                    get_error_text, getlasterror, getlasterrorqq, getpid, ierrno, ipxflentrim, lnblnk, matherrqq, &
                    portlib_local_errno, pxfucompare, rindex
  implicit none
  integer, parameter :: einval = 22, enoent = 2, sigabrt_in_shell = 128 + 6
  character(*), parameter :: missing = '/no/such/directory'
  character(:), allocatable, save :: self, prefix
  character(32) :: task

  call get_command_argument(1, task)
  if (task /= '') call be_the_child(trim(task))
  call find_names()
  call check_trimming()
  call check_rindex()
  call check_pxfucompare()
  call check_error_numbers()
  call check_error_texts()
  call check_recorded_status()
  call check_identity()
  call check_matherrqq()
  call check_exit()
  call check_abort()
  call finish()

contains

  subroutine check_trimming()
    character(5) :: variable
    variable = '  x'
    call check(lnblnk(variable), 3, 'lnblnk of a padded variable')
    call check(lnblnk('     '), 0, 'lnblnk of blanks')
    call check(lnblnk(''), 0, 'lnblnk of nothing')
    call check(lnblnk('x'//achar(9)//' '), 2, 'lnblnk keeps a tab')
    call check(lnblnk(repeat('x', 100000)//'   '), 100000, 'lnblnk of 100,000 characters')
    call check(ipxflentrim(variable), 3, 'ipxflentrim of a padded variable')
    call check(ipxflentrim('x   '), 1, 'ipxflentrim of x')
    call check(ipxflentrim('   '), 0, 'ipxflentrim of blanks')
    call check(ipxflentrim(''), 0, 'ipxflentrim of nothing')
  end subroutine

  subroutine check_rindex()
    character(6) :: variable
    variable = 'ab'
    call check(rindex('abcabc', 'bc'), 5, 'rindex finds the last occurrence')
    call check(rindex('ab', 'abc'), 0, 'rindex of a longer substring')
    call check(rindex('ab  ', '  '), 3, 'rindex counts trailing blanks')
    call check(rindex('abc', ''), 4, 'rindex of an empty substring')
    call check(rindex('', ''), 1, 'rindex of nothing in nothing')
    call check(rindex(variable, variable(1:3)), 1, 'rindex of a substring with a blank')
    call check(rindex(variable, ' '), 6, 'rindex in a padded variable')
    call check(rindex('abcabc', 'x'), 0, 'rindex of an absent substring')
  end subroutine

  subroutine check_pxfucompare()
    integer(4) :: order, distance
    call pxfucompare(1, 2, order, distance)
    call check(order, -1, 'pxfucompare orders 1 before 2')
    call check(distance, 1, 'pxfucompare: distance of 1 and 2')
    call pxfucompare(-1, 1, order, distance)
    call check(order, 1, 'pxfucompare: -1 is the greatest number')
    call check(distance, 2, 'pxfucompare: distance of -1 and 1')
    call pxfucompare(-5, -5, order, distance)
    call check(order, 0, 'pxfucompare of equal numbers')
    call check(distance, 0, 'pxfucompare: distance of equal numbers')
    call pxfucompare(0, -huge(0), order, distance)
    call check(order, -1, 'pxfucompare orders 0 before the upper half')
    call check(distance, huge(0), 'pxfucompare: the distance wraps around')
  end subroutine

  subroutine check_error_numbers()
    integer(4) :: answer, error
    call check(portlib_local_errno, 0, 'the cell is 0 at first')
    call check(ierrno(), 0, 'ierrno is 0 at first')
    call check(access(missing, 'r'), einval, 'access of a missing file')
    call check(portlib_local_errno, einval, 'the cell after access')
    call check(ierrno(), einval, 'ierrno after access')
    call check(chdir('.'), 0, 'chdir to where we are')
    call check(ierrno(), einval, 'ierrno after a success')
    answer = chdir(missing)
    error = getlasterror()
    call check(answer, enoent, 'chdir to a missing directory')
    call check(error, enoent, 'getlasterror after chdir')
    answer = chdir(missing)
    error = getlasterrorqq()
    call check(answer, enoent, 'chdir to a missing directory, again')
    call check(error, enoent, 'getlasterrorqq after chdir')
    call check(ierrno(), enoent, 'ierrno after chdir')
    portlib_local_errno = 77
    call check(ierrno(), 77, 'ierrno reads what the program stored')
    portlib_local_errno = 0
  end subroutine

  subroutine check_error_texts()
    character(20) :: text
    character(80) :: whole
    call check(trim(error_text(enoent)), 'No such file or directory', 'error_text of ENOENT')
    call check(trim(error_text(126)), 'Unknown structure, component or constant name', 'error_text of ENONAME')
    call check(trim(error_text(access(missing, 'r'))), 'Invalid argument', 'error_text of a result')
    write (whole, '(3a)') '<', trim(error_text(32)), '>'
    call check(trim(whole), '<Broken pipe>', 'error_text in an output list')
    call get_error_text(-1, text)
    call check(trim(text), 'End of file', 'get_error_text of EEND')
    call get_error_text(enoent, text)
    call check(text, 'No such file or dire', 'get_error_text cuts')
  end subroutine

  subroutine check_recorded_status()
    interface
      subroutine record(io, number, status, unit, condition) bind(C, name='for_errsns_load')
        import :: c_int32_t
        integer(c_int32_t), value :: io, number, status, unit, condition
      end subroutine
    end interface
    integer(4) :: io, number, status, unit, condition
    call check(chdir(missing), enoent, 'chdir to record a status')
    io = -1
    number = -1
    status = -1
    unit = -1
    condition = -1
    call errsns(io, number, status, unit, condition)
    call check(number, enoent, 'errsns reads the number')
    call check(io == 0 .and. status == 0 .and. unit == 0 .and. condition == 0, 'errsns: the other four are 0')
    call record(1_c_int32_t, 2_c_int32_t, 3_c_int32_t, 4_c_int32_t, 5_c_int32_t)
    call errsns(io, number, status, unit, condition)
    call check(all([io, number, status, unit, condition] == [1, 2, 3, 4, 5]), 'errsns reads all five')
  end subroutine

  subroutine check_identity()
    character(5) :: title
    character(100) :: text
    character(0) :: nothing
    call check(for_qxport_version(title), 2, 'for_qxport_version answers 2')
    call check(title, 'Zelta', 'the title, cut')
    call check(for_qxport_version(text), 2, 'for_qxport_version of a long variable')
    call check(index(text, 'Zelta Fortran portability library'//achar(9)//'V1.0-001'//achar(9)) == 1, 'the identity')
    call check(len_trim(text) == 33 + 1 + 8 + 1 + 11, 'the identity ends with a date')
    call check(for_qxport_version(nothing), 2, 'for_qxport_version of no characters')
    call check(for_qxcore_version(text), 2, 'for_qxcore_version answers 2')
    call check(index(text, 'Zelta Fortran core services (gnu)') == 1, 'the identity of the companion')
  end subroutine

  subroutine check_matherrqq()
    integer(4) :: kind_of_error
    integer(2) :: answers(3)
    call check(status_of('matherr'), 0, 'matherrqq comes back')
    call check(line_of('out', 1), 'EXP: Overflow error', 'matherrqq of type 3')
    call check(line_of('out', 2), 'SQ: Unknown error', 'matherrqq of type 7')
    kind_of_error = 7
    answers = 1234_2
    call matherrqq('(a line of matherrqq''s)', 23_2, kind_of_error, answers(2))
    call check(kind_of_error, 0, 'matherrqq corrects the type')
    call check(answers(2) == 0, 'matherrqq answers 0')
    call check(answers(1) == 1234 .and. answers(3) == 1234, 'matherrqq stores 16 bits')
    kind_of_error = 6
    call matherrqq('(another)', 9_2, kind_of_error, answers(2))
    call check(kind_of_error, 6, 'matherrqq leaves a known type')
    call remove('out')
    call remove('err')
  end subroutine

  ! The child leaves its units open and its records in their buffers.
  subroutine check_exit()
    call check(status_of('exit'), 7, 'exit gives the status')
    call check(line_of('unit', 1), 'first record', 'exit flushes the units')
    call check(line_of('unit', 1000), 'last record', 'exit flushes the units to their end')
    call check(line_of('out', 1), 'standard output', 'exit flushes standard output')
    call remove('unit')
    call check(status_of('exit-absent'), 0, 'exit without a status is 0')
    call check(status_of('exit-256'), 0, 'exit keeps the low eight bits')
    call check(status_of('exit-minus'), 255, 'exit of -1')
    call remove('out')
    call remove('err')
  end subroutine

  subroutine check_abort()
    call check(status_of('abort'), sigabrt_in_shell, 'abort leaves by SIGABRT')
    call check(line_of('err', 1), 'abort: bad', 'abort prints its message')
    call check(status_of('abort-absent'), sigabrt_in_shell, 'abort without a message leaves by SIGABRT')
    call check(line_of('err', 1), 'abort: Fortran Abort Called', 'abort without a message')
    call check(status_of('abort-blanks'), sigabrt_in_shell, 'abort with blanks leaves by SIGABRT')
    call check(line_of('err', 1), 'abort: bad  ', 'abort keeps trailing blanks')
    call check(status_of('abort-long'), sigabrt_in_shell, 'abort with a long message leaves by SIGABRT')
    call check(line_of('err', 1), 'abort: '//repeat('x', 240), 'abort cuts its message')
    call check(status_of('abort-in-write'), sigabrt_in_shell, 'abort in the midst of a WRITE leaves by SIGABRT')
    call check(line_of('err', 1), 'abort: in a list', 'abort in the midst of a WRITE')
    call remove('out')
    call remove('err')
  end subroutine

  subroutine be_the_child(what)
    character(*), intent(in) :: what
    character(300) :: long
    integer(4) :: kind_of_error
    integer(2) :: answer
    select case (what)
    case ('matherr')
      kind_of_error = 3
      call matherrqq('EXP', 3_2, kind_of_error, answer)
      kind_of_error = 7
      call matherrqq('SQRT', 2_2, kind_of_error, answer)
      stop
    case ('exit')
      call write_records()
      call exit(7)
    case ('exit-absent')
      call exit()
    case ('exit-256')
      call exit(256)
    case ('exit-minus')
      call exit(-1)
    case ('abort')
      call abort('bad')
    case ('abort-absent')
      call abort()
    case ('abort-blanks')
      call abort('bad  ')
    case ('abort-long')
      long = repeat('x', 300)
      call abort(long)
    case ('abort-in-write')
      write (error_unit, '(i0)') abort_in_a_list()
    end select
    error stop 'a child came back'
  end subroutine

  integer function abort_in_a_list()
    abort_in_a_list = 0
    call abort('in a list')
  end function

  subroutine write_records()
    character(1000) :: path
    integer :: unit, i
    call get_command_argument(2, path)
    open (newunit=unit, file=trim(path)//'unit', status='replace', action='write')
    write (unit, '(a)') 'first record'
    do i = 2, 999
      write (unit, '(i0)') i
    end do
    write (unit, '(a)') 'last record'
    write (*, '(a)') 'standard output'
  end subroutine

  ! Where the children write, and by which command they are started.
  subroutine find_names()
    character(1000) :: text
    integer :: length, status
    character(16) :: number
    call get_command_argument(0, text)
    self = trim(text)
    call get_environment_variable('TMPDIR', text, length, status)
    if (status /= 0 .or. length == 0) text = '/tmp'
    write (number, '(i0)') getpid()
    prefix = trim(text)//'/qxport-frame.'//trim(number)//'.'
  end subroutine

  ! Its output is in the files "out" and "err". The shell tells a signal as 128 and its number; it is asked here, since
  ! execute_command_line knows no signals.
  integer function status_of(what)
    character(*), intent(in) :: what
    character(:), allocatable :: status
    call execute_command_line('ulimit -c 0; '//quoted(self)//' '//what//' '//quoted(prefix)//' > '//quoted(prefix//'out')//' 2> ' &
                              //quoted(prefix//'err')//'; echo $? > '//quoted(prefix//'status'))
    status = line_of('status', 1)
    read (status, *) status_of
    call remove('status')
  end function

  ! A line of a file of the child, with its trailing blanks; '(none)' where it has fewer.
  function line_of(suffix, number) result(line)
    character(*), intent(in) :: suffix
    integer, intent(in) :: number
    character(:), allocatable :: line
    character(1000) :: text
    integer :: unit, i, length, iostat
    length = 0
    open (newunit=unit, file=prefix//suffix, status='old', action='read', iostat=iostat)
    do i = 1, number
      if (iostat == 0) read (unit, '(a)', advance='no', size=length, iostat=iostat) text
      if (is_iostat_eor(iostat)) iostat = 0
    end do
    line = '(none)'
    if (iostat == 0) line = text(1:length)
    close (unit)
  end function

  subroutine remove(suffix)
    character(*), intent(in) :: suffix
    integer :: unit, iostat
    open (newunit=unit, file=prefix//suffix, status='old', iostat=iostat)
    if (iostat == 0) close (unit, status='delete')
  end subroutine

end program
