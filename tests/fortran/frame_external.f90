! Strings, error numbers, messages, identity and termination as older programs call them: by name alone.
program frame_external
  use, intrinsic :: iso_c_binding, only: c_int
  use checks, only: check, finish
  use scratch, only: quoted
  implicit none
  interface
    function next_number(number) bind(C, name='for_getsystemerror_dummy') result(answer)
      import :: c_int
      integer(c_int), value :: number
      integer(c_int) :: answer
    end function
  end interface
  integer(4), external :: access, chdir, for_qxcore_version, for_qxport_version, getlasterror, getlasterrorqq, getpid, &
                          ierrno, ipxflentrim, lnblnk, rindex
  external :: abort, errsns, exit, get_error_text, matherrqq, pxfucompare
  character(30), external :: error_text
  integer, parameter :: einval = 22, enoent = 2, sigabrt_in_shell = 128 + 6
  character(*), parameter :: missing = '/no/such/directory'
  character(:), allocatable, save :: self, prefix
  character(32) :: task

  call get_command_argument(1, task)
  if (task /= '') call be_the_child(trim(task))
  call find_names()
  call check_strings()
  call check_error_texts()
  call check_pxfucompare()
  call check_error_numbers()
  call check_identity()
  call check_matherrqq()
  call check_termination()
  call finish()

contains

  subroutine check_strings()
    character(5) :: variable
    variable = '  x'
    call check(lnblnk(variable), 3, 'lnblnk of a padded variable')
    call check(lnblnk('     '), 0, 'lnblnk of blanks')
    call check(lnblnk(''), 0, 'lnblnk of nothing')
    call check(ipxflentrim(variable), 3, 'ipxflentrim of a padded variable')
    call check(ipxflentrim('   '), 0, 'ipxflentrim of blanks')
    call check(rindex('abcabc', 'bc'), 5, 'rindex finds the last occurrence')
    call check(rindex('ab', 'abc'), 0, 'rindex of a longer substring')
    call check(rindex('ab  ', '  '), 3, 'rindex counts trailing blanks')
    call check(rindex('abc', ''), 4, 'rindex of an empty substring')
    call check(next_number(41), 42, 'for_getsystemerror_dummy')
    call check(next_number(-1), 0, 'for_getsystemerror_dummy of -1')
  end subroutine

  subroutine check_error_texts()
    character(20) :: text
    call check(trim(error_text(enoent)), 'No such file or directory', 'error_text of ENOENT')
    call get_error_text(32, text)
    call check(trim(text), 'Broken pipe', 'get_error_text of EPIPE')
  end subroutine

  subroutine check_pxfucompare()
    integer(4) :: order, distance
    call pxfucompare(1, 2, order, distance)
    call check(order, -1, 'pxfucompare orders 1 before 2')
    call check(distance, 1, 'pxfucompare: distance of 1 and 2')
    call pxfucompare(-1, 1, order, distance)
    call check(order, 1, 'pxfucompare: -1 is the greatest number')
    call check(distance, 2, 'pxfucompare: distance of -1 and 1')
  end subroutine

  subroutine check_error_numbers()
    integer(4) :: answer, error
    integer(4) :: io, number, status, unit, condition
    call check(ierrno(), 0, 'ierrno is 0 at first')
    call check(access(missing, 'r'), einval, 'access of a missing file')
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
    call errsns(io, number, status, unit, condition)
    call check(number, enoent, 'errsns reads the number')
    call check(io == 0 .and. status == 0 .and. unit == 0 .and. condition == 0, 'errsns: the other four are 0')
  end subroutine

  subroutine check_identity()
    character(5) :: title
    character(100) :: text
    call check(for_qxport_version(title), 2, 'for_qxport_version answers 2')
    call check(title, 'Zelta', 'the title, cut')
    call check(for_qxcore_version(text), 2, 'for_qxcore_version answers 2')
    call check(index(text, 'Zelta Fortran core services (gnu)') == 1, 'the identity of the companion')
  end subroutine

  subroutine check_matherrqq()
    integer(4) :: kind_of_error
    integer(2) :: answers(3)
    kind_of_error = 7
    answers = 1234_2
    call matherrqq('(a line of matherrqq''s)', 23_2, kind_of_error, answers(2))
    call check(kind_of_error, 0, 'matherrqq corrects the type')
    call check(answers(2) == 0, 'matherrqq answers 0')
    call check(answers(1) == 1234 .and. answers(3) == 1234, 'matherrqq stores 16 bits')
  end subroutine

  subroutine check_termination()
    call check(status_of('exit'), 7, 'exit gives the status')
    call check(first_line('out'), 'standard output', 'exit flushes standard output')
    call check(status_of('abort'), sigabrt_in_shell, 'abort leaves by SIGABRT')
    call check(first_line('err'), 'abort: bad  ', 'abort prints its message')
    call remove('out')
    call remove('err')
  end subroutine

  subroutine be_the_child(what)
    character(*), intent(in) :: what
    write (*, '(a)') 'standard output'
    if (what == 'exit') call exit(7)
    call abort('bad  ')
    error stop 'a child came back'
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
    prefix = trim(text)//'/qxport-frame-external.'//trim(number)//'.'
  end subroutine

  ! The shell tells a signal as 128 and its number; it is asked here, since execute_command_line knows no signals.
  integer function status_of(what)
    character(*), intent(in) :: what
    character(:), allocatable :: status
    call execute_command_line('ulimit -c 0; '//quoted(self)//' '//what//' > '//quoted(prefix//'out')//' 2> ' &
                              //quoted(prefix//'err')//'; echo $? > '//quoted(prefix//'status'))
    status = first_line('status')
    read (status, *) status_of
    call remove('status')
  end function

  ! With its trailing blanks; '(none)' where there is none.
  function first_line(suffix) result(line)
    character(*), intent(in) :: suffix
    character(:), allocatable :: line
    character(1000) :: text
    integer :: unit, length, iostat
    line = '(none)'
    open (newunit=unit, file=prefix//suffix, status='old', action='read', iostat=iostat)
    if (iostat /= 0) return
    read (unit, '(a)', advance='no', size=length, iostat=iostat) text
    if (iostat == 0 .or. is_iostat_eor(iostat)) line = text(1:length)
    close (unit)
  end function

  subroutine remove(suffix)
    character(*), intent(in) :: suffix
    integer :: unit, iostat
    open (newunit=unit, file=prefix//suffix, status='old', iostat=iostat)
    if (iostat == 0) close (unit, status='delete')
  end subroutine

end program
