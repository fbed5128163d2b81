! Default integers of 8 bytes: what fits arrives and comes back whole, what does not is refused and changes nothing else.
module handlers
  use, intrinsic :: iso_c_binding, only: c_intptr_t
  implicit none
  ! By value 8 bytes have another place than 4 on a target whose addresses have 4.
  integer, parameter :: by_value = merge(8, 4, storage_size(0_c_intptr_t) == 64)
  integer, volatile :: number_seen = 0, calls = 0
  integer, volatile :: code_seen = 0
contains
  subroutine on_signal(number)
    integer, intent(in) :: number
    number_seen = number
    calls = calls + 1
  end subroutine

  integer(by_value) function on_desktop_signal(number) result(answer)
    integer(by_value), value :: number
    number_seen = number
    calls = calls + 1
    answer = 0
  end function

  integer(by_value) function on_exception(number, code) result(answer)
    integer(by_value), value :: number, code
    number_seen = number
    code_seen = code
    answer = 0
  end function

  integer function tripled(n) result(answer)
    integer, intent(inout) :: n
    answer = 3 * n
    n = n + 1
  end function

  ! The low halves of the differences are 0, and of the other sign.
  integer function by_difference(a, b) result(order)
    integer, intent(in) :: a, b
    order = a - b
  end function
end module

program arguments
  use, intrinsic :: iso_c_binding, only: c_funloc, c_funptr, c_intptr_t
  use, intrinsic :: iso_fortran_env, only: int16, int32, int64
  use checks, only: check, finish
  use handlers
  use scratch, only: remove_directory, scratch_directory
  use qxport
  use qxport_numbers, only: EOVERFLOW, O_CREAT, O_RDWR, SIGTERM, SIGUSR1, SIGUSR2
  implicit none
  integer, parameter :: beyond = 2_int64**32, below = -2_int64**31 - 1, untouched = 81985529216486895_int64
  integer, parameter :: enoent = 2
  character(:), allocatable, save :: directory
  integer :: ierror

  call check(kind(ierror), kind(0_int64), 'default integers have 8 bytes')
  call check(kind(O_RDWR), kind(0_int64), 'so have the host''s numbers')
  call check(kind(STAT_SIZE), kind(0_int64), 'and the library''s own')
  directory = scratch_directory()
  call check(chdir(directory), 0, 'chdir')
  call check_descriptors()
  call check_every_mixture()
  call check_refusals_by_number()
  call check_refusals_by_answer()
  call check_refusals_by_errno()
  call check_sentinels()
  call check_arrays()
  call check_status_arrays()
  call check_numbers()
  call check_bits()
  call check_comparison()
  call check_signals()
  call check_procedures_by_handle()
  call check_absent()
  call check_environment()
  call remove_directory(directory)
  call finish()

contains

  subroutine check_descriptors()
    integer :: descriptor, count
    character(20) :: text
    descriptor = untouched
    ierror = untouched
    call pxfopen('file', 0, ior(O_CREAT, O_RDWR), int(o'600'), descriptor, ierror)
    call check(ierror, 0, 'pxfopen')
    call check(descriptor > 2 .and. descriptor < 1000, 'the whole descriptor is stored')
    count = untouched
    call pxfwrite(descriptor, 'eight bytes', 11, count, ierror)
    call check(count, 11, 'pxfwrite')
    call pxflseek(descriptor, 6, 0, count, ierror)
    call check(count, 6, 'pxflseek')
    text = ' '
    call pxfread(descriptor, text, 20, count, ierror)
    call check(count, 5, 'pxfread')
    call check(trim(text), 'bytes', 'what was read')
    call pxfclose(descriptor, ierror)
    call check(ierror, 0, 'pxfclose')
  end subroutine

  ! Variables that are declared with 4 bytes beside literals and variables of the default kind.
  subroutine check_every_mixture()
    integer(int32) :: short_descriptor, short_error, short_length
    integer :: descriptor
    short_length = 4
    short_error = -1
    call pxfopen('file', short_length, O_RDWR, 0, short_descriptor, short_error)
    call check(short_error, 0, 'pxfopen of variables of 4 bytes')
    call pxfclose(short_descriptor, ierror)
    call check(ierror, 0, 'pxfclose of one')
    call pxfopen('file', short_length, O_RDWR, 0, descriptor, short_error)
    call check(short_error, 0, 'pxfopen with one output of each size')
    call pxfopen('file', beyond, O_RDWR, 0, short_descriptor, short_error)
    call check(short_error, EOVERFLOW, 'a refusal in 4 bytes')
    call pxfclose(descriptor, short_error)
    call check(short_error, 0, 'pxfclose')
    call pxfaccess('file', 4_int32, 0_int32, short_error)
    call check(short_error, 0, 'all of 4 bytes')
    call check(kind(kill(getpid(), 0)), kind(0_int64), 'an answer has the default kind')
    call check(kill(int(getpid(), int32), 0), 0, 'kill')
  end subroutine

  subroutine check_refusals_by_number()
    integer :: descriptor, count, handle
    descriptor = untouched
    call pxfopen('new', 3, beyond + O_CREAT, int(o'600'), descriptor, ierror)
    call check(ierror, EOVERFLOW, 'flags beyond 4 bytes')
    call check(descriptor, untouched, 'no descriptor is stored')
    call check(errno(), EOVERFLOW, 'errno is the number too')
    call pxfaccess('new', 3, 0, ierror)
    call check(ierror, enoent, 'no file is made')
    call pxfopen('new', below, O_CREAT, int(o'600'), descriptor, ierror)
    call check(ierror, EOVERFLOW, 'a length below 4 bytes')
    call pxfclose(beyond + 1, ierror)
    call check(ierror, EOVERFLOW, 'standard output is not closed')
    count = untouched
    call pxfwrite(1, 'never', beyond + 5, count, ierror)
    call check(ierror, EOVERFLOW, 'a count beyond 4 bytes')
    call check(count, untouched, 'nothing is written')
    call pxfkill(beyond, SIGTERM, ierror)
    call check(ierror, EOVERFLOW, 'the own process group is not signalled')
    call pxfkill(getpid(), beyond + SIGTERM, ierror)
    call check(ierror, EOVERFLOW, 'nor the process')
    call pxfstructcreate('flock', handle, ierror)
    call check(ierror, 0, 'pxfstructcreate')
    call pxfintset(handle, 'l_start', beyond, ierror)
    call check(ierror, EOVERFLOW, 'a component''s value beyond 4 bytes')
    call pxfint8set(handle, 'l_start', beyond + 7, ierror)
    call check(ierror, 0, 'pxfint8set takes 8')
    count = untouched
    call pxfintget(handle, 'l_start', count, ierror)
    call check(ierror, 34, 'ERANGE, where a component does not fit 4 bytes')
    call pxfstructfree(handle, ierror)
    call check(ierror, 0, 'pxfstructfree')
    handle = beyond + 256
    call pxfstructfree(handle, ierror)
    call check(ierror, EOVERFLOW, 'a handle that is read and written')
    call check(handle, beyond + 256, 'it stays')
  end subroutine

  subroutine check_refusals_by_answer()
    integer :: seed
    character(10) :: text
    call check(kill(beyond, 0), -1, 'kill')
    call check(ierrno(), EOVERFLOW, 'kill: ierrno')
    call check(fseek(beyond + 6, 0, 0), -EOVERFLOW, 'fseek')
    call check(ftell(beyond + 6), -EOVERFLOW, 'ftell')
    call check(fgetc(beyond + 5, text(1:1)), EOVERFLOW, 'fgetc')
    call check(fputc(beyond + 6, 'x'), EOVERFLOW, 'fputc')
    call check(raiseqq(beyond + SIGQQ_TERM), -1, 'raiseqq')
    call check(signalqq(beyond + SIGQQ_TERM, on_desktop_signal) == -1, 'signalqq')
    call check(signal(beyond + SIGTERM, on_signal, -1) == EOVERFLOW, 'signal')
    call check(alarm(beyond + 1, nothing), -1, 'alarm')
    call check(.not. isatty(beyond), 'isatty')
    call check(.not. setdat(beyond + 2000, 1, 1), 'setdat')
    call check(.not. commitqq(beyond + 6), 'commitqq')
    call check(.not. pxfisdir(beyond + int(o'40000')), 'pxfisdir')
    call check(pxfisdir(int(o'40000')), 'pxfisdir of a directory')
    call check(ipxfwexitstatus(beyond), -1, 'ipxfwexitstatus')
    call check(nint(drand(beyond)), -1, 'drand')
    call check(nint(rand(beyond)), -1, 'rand')
    call check(irand(beyond), -1, 'irand')
    seed = beyond + 3
    call check(nint(ran(seed)), -1, 'ran')
    call check(seed, beyond + 3, 'ran: the seed stays')
    call check(isnan(besjn(beyond, 1.0)), 'besjn')
    call check(isnan(dbesyn(beyond, 1d0)), 'dbesyn')
    call check(error_text(beyond + 2), repeat(' ', 80), 'error_text')
    call check(index(error_text(2), 'No such'), 1, 'error_text of a number that fits')
  end subroutine

  subroutine nothing()
  end subroutine

  ! What can tell nothing leaves everything as it is.
  subroutine check_refusals_by_errno()
    integer :: seed, status
    character(8) :: text
    call iranset(4711)
    call iranset(beyond + 5)
    call check(ierrno(), EOVERFLOW, 'iranset: ierrno')
    seed = untouched
    call iranget(seed)
    call check(seed, 4711, 'the seed stays')
    call chdir_fails()
    call flush(beyond + 6)
    call check(ierrno(), EOVERFLOW, 'flush')
    call chdir_fails()
    call sleep(beyond)
    call check(ierrno(), EOVERFLOW, 'sleep returns')
    call chdir_fails()
    call sleepqq(below)
    call check(ierrno(), EOVERFLOW, 'sleepqq returns')
    text = 'full'
    status = untouched
    call getarg(beyond, text, status)
    call check(text, repeat(' ', len(text)), 'getarg: no argument')
    call check(status, -1, 'getarg: its length')
    text = 'full'
    call getarg(beyond, text)
    call check(text, repeat(' ', len(text)), 'getarg without a status')
    text = 'full'
    call get_error_text(beyond, text)
    call check(text, repeat(' ', len(text)), 'get_error_text')
  end subroutine

  subroutine chdir_fails()
    call check(chdir('no such directory'), enoent, 'chdir')
    call check(ierrno(), enoent, 'its number')
  end subroutine

  ! What the routine leaves alone keeps all its bytes, and what it stores replaces all of them.
  subroutine check_sentinels()
    integer :: descriptor, value, child, status
    descriptor = untouched
    call pxfopen('no such file', 0, O_RDWR, 0, descriptor, ierror)
    call check(ierror, enoent, 'pxfopen')
    call check(descriptor == untouched .or. descriptor == -1, 'the descriptor is left or stored whole')
    value = beyond
    call pxfgetuid(value, ierror)
    call check(value, getuid(), 'an output that held no 4 bytes')
    value = -1
    call pxfgetpid(value, ierror)
    call check(value, getpid(), 'one that held as many ones')
    ierror = untouched
    call pxfgetpid(value, ierror)
    call check(ierror, 0, 'an error number of which only the upper half was wrong')
    ierror = beyond
    call pxfgetpid(value, ierror)
    call check(ierror, 0, 'a zero in the low half is no zero')
    child = 12
    status = untouched
    call pxfwaitpid(999999999, status, 0, child, ierror)
    call check(ierror, 10, 'ECHILD')
    call check(status == untouched .or. status == 0, 'no status of 4 bytes')
  end subroutine

  subroutine check_arrays()
    integer :: parts(9), termios, letters(20), length, groups(500), count, seconds(2)
    parts = untouched
    call gmtime(86399, parts)
    call check(all(parts(1:6) == [59, 59, 23, 1, 0, 70]), 'gmtime')
    call check(all(abs(parts) < 1000), 'all nine elements')
    call itime(parts)
    call check(all(parts(4:) < 1000), 'elements behind those that itime stores')
    parts = untouched
    call itime(parts(2:4))
    call check(parts(1) == untouched .and. all(parts(5:) == untouched), 'itime stores three')
    call check(all(parts(2:4) >= 0 .and. parts(2:4) < 61), 'itime')
    call pxflocaltime(0, parts, ierror)
    call check(ierror, 0, 'pxflocaltime')
    call check(all(abs(parts) < 2000), 'pxflocaltime stores nine')
    seconds = untouched
    call gettimeofday(seconds, ierror)
    call check(abs(seconds(1) - time()) <= 1 .and. seconds(2) < 1000000, 'gettimeofday')
    call pxfstructcreate('termios', termios, ierror)
    call check(ierror, 0, 'a termios')
    letters = [(count, count=1, 20)]
    call pxfaintset(termios, 'c_cc', letters, 20, ierror)
    call check(ierror, 0, 'pxfaintset')
    letters = untouched
    length = 3
    call pxfaintget(termios, 'c_cc', letters, length, ierror)
    call check(all(letters(1:3) == [1, 2, 3]), 'pxfaintget')
    call check(all(letters(4:) == untouched), 'elements that are not asked for')
    letters(2) = beyond
    call pxfaintset(termios, 'c_cc', letters, 3, ierror)
    call check(ierror, EOVERFLOW, 'an element beyond 4 bytes')
    call pxfaintset(termios, 'c_cc', letters, 1, ierror)
    call check(ierror, 0, 'one that is not looked at')
    call pxfeintget(termios, 'c_cc', 2, count, ierror)
    call check(count, 2, 'the refused call has set none')
    length = 99
    call pxfaintset(termios, 'c_cc', [(count, count=1, 99)], length, ierror)
    call check(length, 99, 'a length beyond the component''s stays')
    call pxfstructfree(termios, ierror)
    groups = untouched
    count = untouched
    call pxfgetgroups(0, groups, count, ierror)
    call check(groups(1), untouched, 'the number of groups only')
    length = count
    call pxfgetgroups(500, groups, count, ierror)
    call check(count, length, 'the groups')
    call check(all(groups(count + 1:) == untouched), 'the elements behind them')
    call check(all(groups(:count) >= 0 .and. groups(:count) < beyond), 'whole numbers')
  end subroutine

  subroutine check_status_arrays()
    integer :: status(13), sparse, length
    integer(int32) :: short_status(13)
    call execute_command_line('truncate -s 5368709120 sparse')
    status = untouched
    call check(stat('sparse', status), 0, 'stat')
    call check(status(STAT_SIZE), 5368709120_int64, 'a size beyond 4 bytes is a value like others')
    call check(all(status(1:12) /= untouched), 'all elements but the last are stored')
    call check(lstat('sparse', status), 0, 'lstat')
    call check(stat('file', short_status), 0, 'stat of INTEGER(4)')
    call check(short_status(STAT_SIZE), 11, 'its size')
    open (newunit=sparse, file='sparse', access='stream')
    call check(fstat(sparse, status), 0, 'fstat')
    call check(status(STAT_SIZE), 5368709120_int64, 'the size of a unit')
    call check(fseek(sparse, 5368709000_int64, 0), 0, 'fseek')
    call check(ftell(sparse), 5368709000_int64, 'ftell')
    call check(getpos(sparse), 5368709000_int64, 'getpos')
    close (sparse, status='delete')
    length = 0
    call check(index(ctime(beyond), '2106'), 21, 'ctime')
    status(1:9) = 0
    call gmtime(beyond, status(1:9))
    call check(status(6), 206, 'gmtime')
  end subroutine

  subroutine check_numbers()
    integer :: i
    i = beyond + 5
    call check(jabs(-i), i, 'jabs')
    call check(jdim(i, 5), beyond, 'jdim')
    call check(jdim(5, i), 0, 'jdim, the other way round')
    call check(inmax(), huge(i), 'inmax')
    call check(abs(dfloatj(i) - 4294967301d0) <= 0, 'dfloatj')
    call check(abs(idfloat(i) - 4294967301d0) <= 0, 'idfloat')
    call check(abs(ifloatj(beyond) - 2.0_4**32) <= 0, 'ifloatj')
    call check(int(short(beyond + 7)), 7, 'short takes the low 16 bits')
    call check(int(intc(-1)), -1, 'intc')
    call check(long(7_int16), 7, 'long')
  end subroutine

  subroutine check_bits()
    integer :: word
    call check(lshift(1, 40), 2_int64**40, 'lshift')
    call check(lshift(1, 64), 0, 'lshift by all bits')
    call check(lshift(1, beyond), 0, 'lshift by more')
    call check(lshift(1_int32, 33), 2, 'the word decides: one of 4 bytes')
    call check(lshift(1_int32, beyond), 0, 'one of 4 bytes, by more')
    call check(rshift(-2_int64**40, 38), -4, 'rshift')
    call check(complint(beyond), not(beyond), 'complint')
    call check(csmg(beyond, 3, beyond + 1), beyond + 2, 'csmg')
    word = 0
    call bis(40, word)
    call check(word, 2_int64**40, 'bis')
    call check(bit(40, word), 'bit')
    call bic(40, word)
    call check(word, 0, 'bic')
  end subroutine

  subroutine check_comparison()
    integer :: order, distance, values(5), unsigned
    call pxfucompare(4294967295_int64, 1, order, distance)
    call check(order, 1, 'an unsigned number of 32 bits')
    call check(distance, 2, 'its distance')
    call pxfucompare(-1, 4294967295_int64, order, distance)
    call check(order, 0, 'the same with a sign')
    order = untouched
    call pxfucompare(beyond, 1, order, distance)
    call check(order, untouched, 'more than 32 bits')
    values = [beyond, 0_int64, -3 * beyond, 2 * beyond, -beyond]
    call qsort(values, 5, 8, by_difference)
    call check(all(values == [-3 * beyond, -beyond, 0_int64, beyond, 2 * beyond]), 'qsort by differences beyond 4 bytes')
    values = [5, 4, 3, 2, 1]
    call qsort(values, 5_int32, 8_int32, by_difference)
    call check(all(values == [1, 2, 3, 4, 5]), 'qsort of counts of 4 bytes')
    unsigned = 5
    call sortqq(loc(values), unsigned, SORT_INTEGER8)
    call check(unsigned, 5, 'sortqq')
    call check(bsearchqq(loc(values(4)), loc(values), 5, SORT_INTEGER8), 4, 'bsearchqq')
    values = [5, 4, 3, 2, 1]
    unsigned = 5
    call sortqq(loc(values), unsigned, beyond + SORT_INTEGER8)
    call check(values(1), 5, 'sortqq of a type beyond 4 bytes')
    call check(bsearchqq(loc(values(4)), loc(values), 5, beyond + SORT_INTEGER8), 0, 'bsearchqq of one')
  end subroutine

  subroutine check_signals()
    integer(c_intptr_t) :: former
    type(c_funptr) :: unused
    integer :: code
    unused = c_funloc(on_signal)
    former = signal(SIGUSR1, on_signal, -1)
    call check(former == 0, 'signal')
    number_seen = untouched
    call check(kill(getpid(), SIGUSR1), 0, 'kill')
    call await(1)
    call check(number_seen, SIGUSR1, 'a handler''s number has 8 bytes')
    former = signal(SIGUSR1, on_signal, 0)
    call check(signalqq(SIGQQ_USR2, on_desktop_signal) == 0, 'signalqq')
    number_seen = untouched
    call check(raiseqq(SIGQQ_USR2), 0, 'raiseqq')
    call await(2)
    call check(number_seen, SIGQQ_USR2, 'a desktop handler''s number')
    call check(signalfpeqq(on_exception) == 0, 'signalfpeqq')
    number_seen = untouched
    code_seen = untouched
    call check(kill(getpid(), 8), 0, 'SIGFPE')
    do code = 1, 100
      if (code_seen /= untouched) exit
      call sleepqq(50)
    end do
    call check(number_seen, SIGQQ_FPE, 'an exception''s number')
    call check(code_seen, FPEQQ_OTHER, 'its code')
  end subroutine

  subroutine await(count)
    integer, intent(in) :: count
    integer :: i
    do i = 1, 100
      if (calls >= count) return
      call sleepqq(50)
    end do
  end subroutine

  subroutine check_procedures_by_handle()
    integer :: handle, n, action, answer
    integer(int32) :: short
    call pxfgetsubhandle(tripled, handle, ierror)
    call check(ierror, 0, 'pxfgetsubhandle')
    n = beyond
    answer = pxfcallsubhandle(handle, n, ierror)
    call check(answer, 3 * beyond, 'the argument and the answer are whole')
    call check(n, beyond + 1, 'what the procedure stores')
    call check(ierror, 0, 'pxfcallsubhandle')
    short = int(handle, int32)
    call check(pxfcallsubhandle(short, n, ierror), 3 * beyond + 3, 'a handle of 4 bytes')
    call check(pxfcallsubhandle(handle + beyond, n, ierror), 0, 'a handle beyond 4 bytes')
    call check(ierror, EOVERFLOW, 'its number')
    call check(n, beyond + 2, 'the procedure is not called')
    call pxfgetsubhandle(on_signal, handle, ierror)
    call pxfstructcreate('sigaction', action, ierror)
    call pxfintset(action, 'sa_handler', handle, ierror)
    call pxfsigaction(SIGUSR2, action, 0, ierror)
    call check(ierror, 0, 'pxfsigaction')
    number_seen = untouched
    calls = 0
    call pxfkill(getpid(), SIGUSR2, ierror)
    call await(1)
    call check(number_seen, SIGUSR2, 'the number of a signal by handle')
    call pxfstructfree(action, ierror)
  end subroutine

  ! Arguments that are left out, in front of a kind or behind it.
  subroutine check_absent()
    character(100) :: text
    integer(int32) :: short
    real(4) :: x
    call sleep()
    call sleep(0)
    call sleep(0_int32)
    call check(irand() >= 0, 'irand')
    x = rand()
    call check(x >= 0 .and. x < 1, 'rand')
    call getarg(0, text)
    call check(len_trim(text) > 0, 'getarg')
    short = -5
    call getarg(0, text, short)
    call check(short >= len_trim(text), 'getarg with a status of 4 bytes')
  end subroutine

  subroutine check_environment()
    integer :: length
    character(20) :: value
    call pxfsetenv('QXPORT_I8', 0, 'whole', 0, 1, ierror)
    call check(ierror, 0, 'pxfsetenv')
    length = untouched
    call pxfgetenv('QXPORT_I8', 0, value, length, ierror)
    call check(length, 5, 'pxfgetenv')
    call check(trim(value), 'whole', 'its value')
    call check(getenvqq('QXPORT_I8', value), 5, 'getenvqq')
    call check(fullpathqq('.', value) >= 0, 'fullpathqq')
    call pxfsetenv('QXPORT_I8', beyond, 'cut', 0, 1, ierror)
    call check(ierror, EOVERFLOW, 'a length')
    call check(getenvqq('QXPORT_I8', value), 5, 'the variable stays')
  end subroutine

  integer function errno()
    interface
      function errno_location() bind(C, name='__errno_location') result(location)
        use, intrinsic :: iso_c_binding, only: c_ptr
        type(c_ptr) :: location
      end function
    end interface
    errno = number_at(errno_location())
  end function

  integer function number_at(location)
    use, intrinsic :: iso_c_binding, only: c_f_pointer, c_int, c_ptr
    type(c_ptr), intent(in) :: location
    integer(c_int), pointer :: number
    call c_f_pointer(location, number)
    number_at = number
  end function

end program
