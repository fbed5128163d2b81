! The file, process and environment routines through the module, on real files.

! The strings of a symbolic CHMOD stay allocated. The leak checker of an instrumented program asks here what it shall
! not report.
module kept_on_purpose
  use, intrinsic :: iso_c_binding, only: c_char, c_loc, c_null_char, c_ptr
  implicit none
  private
  public :: suppressions
  character(kind=c_char, len=12), target, save :: text = 'leak:chmod_' // c_null_char

contains

  function suppressions() bind(C, name='__lsan_default_suppressions') result(answer)
    type(c_ptr) :: answer
    answer = c_loc(text)
  end function

end module

program files
  use checks, only: check, finish
  use qxport
  use scratch, only: remove_directory, scratch_directory
  implicit none
  integer(4), parameter :: enoent = 2, einval = 22, eisdir = 21, erange = 34, enotempty = 39
  character(1024) :: directory
  character(4096) :: former

  call check(getcwd(former), 0, 'getcwd at the start')
  directory = scratch_directory()
  call check(chdir(directory // '   '), 0, 'chdir into the directory')
  call test_access()
  call test_chmod()
  call test_directories()
  call test_names()
  call test_getcwd()
  call test_stat()
  call test_status_arrays_of_any_length_and_kind()
  call test_large_file()
  call test_processes()
  call test_host_and_login()
  call test_getenv()
  call test_scanenv()
  call check(chdir(former), 0, 'chdir back')
  call remove_directory(directory)
  call finish()

contains

  ! A failure as a caller sees it: the number, and the same in the two places where it can be read again.
  subroutine check_failure(answer, expected, what)
    integer(4), intent(in) :: answer, expected
    character(*), intent(in) :: what
    integer(4) :: io, number, status, unit, condition
    call errsns(io, number, status, unit, condition)
    call check(answer, expected, what)
    call check(ierrno(), expected, what // ': ierrno')
    call check(number, expected, what // ': errsns')
    call check(all([io, status, unit, condition] == 0), what // ': the rest of errsns')
  end subroutine

  subroutine make_file(name, text)
    character(*), intent(in) :: name, text
    integer :: unit
    open (newunit=unit, file=name, status='replace', access='stream', form='unformatted')
    write (unit) text
    close (unit)
  end subroutine

  logical function exists(name)
    character(*), intent(in) :: name
    inquire (file=name, exist=exists)
  end function

  integer(4) function permissions(name)
    character(*), intent(in) :: name
    integer(4) :: statb(13)
    call check(stat(name, statb), 0, 'stat of ' // name)
    permissions = iand(statb(STAT_MODE), int(o'7777', 4))
  end function

  subroutine test_access()
    call make_file('both', 'text')
    call check(chmod('both', '644'), 0, 'chmod of a file')
    call check(access('both', 'rw '), 0, 'readable and writable')
    call check(access('both    ', 'WR'), 0, 'capital letters, trailing blanks')
    call check(access('both', ' '), 0, 'existence')
    call check(access(directory, 'rwx'), 0, 'a directory')
    call check_failure(access('missing', ' '), einval, 'a missing file is EINVAL')
    call check_failure(access('both', ''), einval, 'a mode of length 0')
    call check_failure(access('both', 'q'), einval, 'mode q')
    call check_failure(access('both/below', 'r'), einval, 'a path through a file')
    call check(access('both', 'r'), 0, 'success behind a failure')
    call check(ierrno(), einval, 'success leaves the last failure')
  end subroutine

  subroutine test_chmod()
    call make_file('modes', 'text')
    call check(chmod('modes', '644 '), 0, 'octal')
    call check(permissions('modes'), int(o'644', 4), 'octal 644')
    call check(chmod('modes', 'u+x'), 0, 'u+x')
    call check(permissions('modes'), int(o'744', 4), 'u+x adds user execute')
    call check(chmod('modes', '+x'), 0, '+x')
    call check(permissions('modes'), int(o'755', 4), '+x adds 0111')
    call check(chmod('modes', 'a=r'), 0, 'a=r')
    call check(permissions('modes'), int(o'444', 4), 'a=r sets 0444')
    call check(chmod('modes', 'u+s'), 0, 'u+s')
    call check(permissions('modes'), int(o'6444', 4), 'u+s sets both set-id bits')
    call check(chmod('modes', 'go-'), 0, 'go-')
    call check(permissions('modes'), int(o'6444', 4), 'go- leaves the bits')
    call check_failure(chmod('modes', '0'), einval, 'mode 0')
    call check_failure(chmod('modes', '7a'), einval, 'mode 7a')
    call check_failure(chmod('modes', 'u+r,g+w'), einval, 'two clauses')
    call check_failure(chmod('modes', 'u+v'), einval, 'u+v')
    call check(permissions('modes'), int(o'6444', 4), 'refused modes leave the bits')
    call check_failure(chmod('missing', '644'), enoent, 'chmod of a missing file')
    call check(getlasterror(), enoent, 'chmod leaves errno')
  end subroutine

  subroutine test_directories()
    character(4096) :: before, after
    call check(system('mkdir below'), 0, 'mkdir below')
    call check(getcwd(before), 0, 'getcwd')
    call check_failure(chdir('missing'), enoent, 'chdir to a missing directory')
    call check_failure(chdir(' '), enoent, 'chdir to blanks')
    call check(getcwd(after), 0, 'getcwd again')
    call check(after, before, 'a failed chdir stays')
    call check(chdir('below'), 0, 'chdir below')
    call check(getcwd(after), 0, 'getcwd below')
    call check(after, trim(before) // '/below' // repeat(' ', 4096 - 6 - len_trim(before)), 'the new directory')
    call check(chdir('..'), 0, 'chdir up')
  end subroutine

  subroutine test_names()
    call make_file('from', 'text')
    call check(rename('from  ', 'to   '), 0, 'rename')
    call check(exists('to'), 'the file has its new name')
    call check(.not. exists('from'), 'the file has its former name no more')
    call check_failure(rename('from', 'other'), enoent, 'rename of a missing file')
    call check_failure(rename('to', 'below'), eisdir, 'rename to a directory')
    call make_file('below/file', 'text')
    call check(system('mkdir empty'), 0, 'mkdir empty')
    call check_failure(rename('empty', 'below'), enotempty, 'rename to a directory that is not empty')
    call check(unlink('to '), 0, 'unlink')
    call check(.not. exists('to'), 'the file is gone')
    call check_failure(unlink('to'), enoent, 'unlink of a missing file')
    call check_failure(unlink('below'), eisdir, 'unlink of a directory')
    call make_file(' leading blank', 'text')
    call check(unlink(' leading blank'), 0, 'unlink of a name with blanks')
  end subroutine

  subroutine test_getcwd()
    character(4096) :: path
    character(:), allocatable :: exact
    character(0) :: nothing
    call check(getcwd(path), 0, 'getcwd')
    allocate (character(len_trim(path)) :: exact)
    call check(getcwd(exact), 0, 'getcwd into an exact variable')
    call check(exact, trim(path), 'exact path')
    deallocate (exact)
    allocate (character(len_trim(path) - 1) :: exact)
    call check_failure(getcwd(exact), erange, 'getcwd into a shorter variable')
    call check(exact, repeat(' ', len(exact)), 'shorter variable is blank')
    call check(getcwd(nothing), enoent, 'getcwd into CHARACTER(0)')
    call check(ierrno(), enoent, 'ierrno of CHARACTER(0)')
  end subroutine

  subroutine test_stat()
    integer(4) :: statb(13), link(13)
    integer(8) :: statb8(13), link8(13)
    call make_file('target', 'ten bytes!')
    call check(chmod('target', '640'), 0, 'chmod of the target')
    call check(system('ln -s target link'), 0, 'ln -s')
    statb = -77
    statb8 = -77
    call check(stat('link', statb), 0, 'stat')
    call check(stati8('link', statb8), 0, 'stati8')
    call check(statb(STAT_SIZE), 10, 'size')
    call check(statb(STAT_LINKS), 1, 'links')
    call check(statb(STAT_UID), getuid(), 'owner')
    call check(iand(statb(STAT_MODE), MODE_TYPE_MASK), MODE_REGULAR, 'type')
    call check(iand(statb(STAT_MODE), int(o'7777', 4)), int(o'640', 4), 'permissions')
    call check(statb(STAT_MTIME) > 1500000000 .and. statb(STAT_CTIME) >= statb(STAT_MTIME), 'times')
    call check(statb(STAT_BLKSIZE) > 0, 'block size')
    call check(statb(13), -77, 'element 13 stays')
    call check(all(int(statb8(3:12)) == statb(3:12)), 'both kinds agree')
    call check(statb8(13), -77_8, 'element 13 of INTEGER(8) stays')

    link = -77
    link8 = -77
    call check(lstat('link', link), 0, 'lstat')
    call check(lstati8('link', link8), 0, 'lstati8')
    call check(iand(link(STAT_MODE), MODE_TYPE_MASK), MODE_SYMLINK, 'a link')
    call check(link(STAT_SIZE), 6, 'size of a link')
    call check(link8(STAT_SIZE), 6_8, 'size of a link in INTEGER(8)')
    call check(link(13) == -77 .and. link8(13) == -77, 'element 13 of a link stays')

    call check(stat('.', statb), 0, 'stat of a directory')
    call check(iand(statb(STAT_MODE), MODE_TYPE_MASK), MODE_DIRECTORY, 'a directory')
    call check(stat('/dev/null', statb), 0, 'stat of a device')
    call check(iand(statb(STAT_MODE), MODE_TYPE_MASK), MODE_CHARACTER_DEVICE, 'a device')
    call check(statb(STAT_RDEV), 259, 'device number')

    statb = -77
    statb8 = -77
    call check_failure(stat('missing', statb), enoent, 'stat of a missing file')
    call check_failure(lstat('missing', statb), enoent, 'lstat of a missing file')
    call check_failure(stati8('missing', statb8), enoent, 'stati8 of a missing file')
    call check_failure(lstati8('missing', statb8), enoent, 'lstati8 of a missing file')
    call check(all(statb == -77) .and. all(statb8 == -77), 'a failure leaves the array')
  end subroutine

  ! GNU Fortran would take its own intrinsics for calls that did not fit, and they end the program for so few elements.
  ! Of ours the recorded error tells.
  subroutine test_status_arrays_of_any_length_and_kind()
    integer(4) :: few(12), many(20)
    integer(8) :: few8(12), wanted(13)
    integer :: unit
    few = -77
    many = -77
    few8 = -77
    call check_failure(stat('missing', few), enoent, 'stat into 12 elements')
    call check_failure(lstat('missing', few(:)), enoent, 'lstat into 12 elements')
    call check_failure(fstat(99, few), einval, 'fstat into 12 elements')
    call check_failure(stat('missing', few8), enoent, 'stat into 12 elements of INTEGER(8)')
    call check_failure(lstat('missing', few8), enoent, 'lstat into 12 elements of INTEGER(8)')
    call check_failure(fstat(99, few8), einval, 'fstat into 12 elements of INTEGER(8)')
    call check_failure(fstati8(99, few8), einval, 'fstati8 into 12 elements')
    call check(all(few == -77) .and. all(few8 == -77), 'failures leave them')
    call check(stati8('target', wanted), 0, 'stati8 of a file')
    call check(stat('target', few8), 0, 'stat of a file, of INTEGER(8)')
    call check(all(few8 == wanted(:12)), 'the same as stati8')
    call check(stat('target', many), 0, 'stat into 20 elements')
    call check(all(many(3:12) == int(wanted(3:12))), 'the same in INTEGER(4)')
    call check(all(many(13:) == -77), 'those behind stay')
    call check(lstati8('link', wanted), 0, 'lstati8 of a link')
    call check(lstat('link', few8), 0, 'lstat of a link, of INTEGER(8)')
    call check(all(few8 == wanted(:12)), 'the same as lstati8')
    open (newunit=unit, file='target')
    call check(fstati8(unit, wanted), 0, 'fstati8 of a unit')
    call check(fstat(unit, few8), 0, 'fstat of a unit, of INTEGER(8)')
    call check(all(few8 == wanted(:12)), 'the same as fstati8')
    close (unit)
  end subroutine

  subroutine test_large_file()
    integer(8), parameter :: size = 3221225472_8
    integer(4) :: statb(13)
    integer(8) :: statb8(13)
    integer :: unit
    open (newunit=unit, file='large', access='stream', form='unformatted')
    write (unit, pos=size) 'x'
    close (unit)
    statb = -77
    call check_failure(stat('large', statb), erange, 'stat of 3 GB')
    call check(getlasterror(), erange, 'errno of 3 GB')
    call check(statb(STAT_SIZE), -1, 'size of 3 GB')
    call check(statb(STAT_LINKS), 1, 'all else of 3 GB is filled')
    call check(statb(13), -77, 'element 13 of 3 GB stays')
    call check_failure(lstat('large', statb), erange, 'lstat of 3 GB')
    call check(stati8('large', statb8), 0, 'stati8 of 3 GB')
    call check(statb8(STAT_SIZE), size, 'size of 3 GB in INTEGER(8)')
    call check(unlink('large'), 0, 'unlink of 3 GB')
  end subroutine

  subroutine test_processes()
    integer(8) :: begin, end, rate
    call check(system('exit 3'), 768, 'raw status')
    call check(system('kill -9 $$'), 9, 'status of a killed command')
    call check(system('echo text > output   '), 0, 'command')
    call check(exists('output'), 'the command ran')
    call check(kill(getpid(), 0), 0, 'kill with signal 0')
    call check(kill(huge(0), 0), -1, 'kill of no process')
    call check(getpid() > 1, 'getpid')
    call system_clock(begin, rate)
    call sleep(-5)
    call sleep(0)
    call sleep()
    call system_clock(end)
    call check(end - begin < 4*rate, 'sleep of nothing returns at once')
    call system_clock(begin)
    call sleep(1)
    call system_clock(end)
    call check(end - begin >= rate - rate/100, 'sleep of a second')
  end subroutine

  subroutine test_host_and_login()
    character(256) :: host, other
    character(3) :: brief
    character(32) :: login
    integer(4) :: expected
    call check(hostnm(host), 0, 'hostnm')
    call check(hostnam(other), 0, 'hostnam')
    call check(other, host, 'both names of the routine agree')
    expected = merge(-1, 0, len_trim(host) > 3)
    call check(hostnm(brief), expected, 'hostnm into CHARACTER(3)')
    call check(brief, host(1:3), 'beginning of the name')
    login = repeat('#', 32)
    call getlog(login)
    call check(index(login, '#'), 0, 'getlog fills its variable')
  end subroutine

  subroutine test_getenv()
    character(8192) :: home, intrinsic_home
    character(1) :: first
    call get_environment_variable('PATH', intrinsic_home)
    call getenv('PATH', home)
    call check(home, intrinsic_home, 'getenv')
    call getenv('PATH and more', home)
    call check(home, intrinsic_home, 'a name ends at its first blank')
    call getenv('PATH', first)
    call check(first, home(1:1), 'a value is cut')
    call getenv(' PATH', home)
    call check(home, repeat(' ', 8192), 'a leading blank makes an empty name')
    call getenv('QXPORT_IS_MISSING', home)
    call check(home, repeat(' ', 8192), 'a missing variable is blank')
  end subroutine

  ! Every variable that SCANENV finds has the value that GETENV knows, and the scan ends.
  subroutine test_scanenv()
    character(256) :: name
    character(8192) :: text, known
    integer :: found, i
    found = 0
    do i = 1, 10000
      call scanenv('PA', name, text)
      if (name == ' ') exit
      found = found + 1
      call check(index(name, 'PA'), 1, 'the name begins with the template')
      call getenv(name, known)
      call check(text, known, 'the value of ' // trim(name))
    end do
    call check(found >= 1 .and. found < 10000, 'PATH is among the variables')
    call check(text, repeat(' ', 8192), 'the end is blank')
    call scanenv('   ', name, text)
    call check(name, repeat(' ', 256), 'a blank template')
  end subroutine

end program
