! Paths, directories and drives through the module.
program paths
  use checks, only: check, finish
  use qxport, only: fullpathqq, splitpathqq, changedirqq, makedirqq, deldirqq, renamefileqq, getdrivedirqq, &
                    changedriveqq, getdrivesizeqq, getdrivesizeqqi8, getdrivesqq, getlasterrorqq, errsns, getcwd, &
                    PATHQQ_LENGTH, CURRENT_DRIVE
  use scratch, only: scratch_directory, remove_directory
  implicit none
  integer(4), parameter :: ENOENT = 2, EINVAL = 22
  character(:), allocatable, save :: directory
  character(PATHQQ_LENGTH) :: here

  directory = scratch_directory()
  call check(changedirqq(directory), 'into the directory of the test')
  call check(getcwd(here), 0, 'its resolved name')

  call check(PATHQQ_LENGTH, 1024, 'PATHQQ_LENGTH')
  call check(CURRENT_DRIVE, ' ', 'CURRENT_DRIVE')
  call check_directories()
  call check_full_paths()
  call check_parts()
  call check_drives()

  call check(changedirqq('/'), 'out of the directory of the test')
  call remove_directory(directory)
  call finish()

contains

  subroutine check_status(expected, what)
    integer(4), intent(in) :: expected
    character(*), intent(in) :: what
    integer(4) :: io, number, status, unit, condition
    call errsns(io, number, status, unit, condition)
    call check(number, expected, what)
  end subroutine

  subroutine check_directories()
    integer :: unit
    call check(makedirqq('sub  '), 'make')
    call check(.not. makedirqq('sub'), 'make what exists')
    call check(changedirqq('sub'), 'change')
    call check(.not. changedirqq('none'), 'change to nowhere')
    call check(getlasterrorqq(), ENOENT, 'errno of the change')
    call check_status(ENOENT, 'status of the change')
    open (newunit=unit, file='old name')
    write (unit, *) 'x'
    close (unit)
    call check(renamefileqq('old name  ', 'new'), 'rename')
    call check(.not. renamefileqq('old name', 'new'), 'rename what is gone')
    call check(changedirqq('..'), 'back')
    call check(.not. deldirqq('sub'), 'remove what is not empty')
    open (newunit=unit, file='sub/new')
    close (unit, status='delete')
    call check(deldirqq('sub'), 'remove')
  end subroutine

  subroutine check_full_paths()
    character(PATHQQ_LENGTH) :: path
    character(3) :: short
    integer(4) :: length
    length = fullpathqq('missing.dat', path)
    call check(path(:length), trim(here)//'/missing.dat', 'path of a missing file')
    call check(path(length + 1:) == ' ', 'blanks behind it')
    length = fullpathqq('a/./b/../missing.dat  ', path)
    call check(path(:length), trim(here)//'/a/missing.dat', 'path with dots')
    call check(fullpathqq('/usr/qxport-none/../y', path), 6, 'length below an existing directory')
    call check(path(:6), '/usr/y', 'path below an existing directory')
    call check(fullpathqq('/usr/x', short), 3, 'length of a short variable')
    call check(short, '/us', 'short variable')
    call check(getlasterrorqq(), EINVAL, 'errno of a short variable')
  end subroutine

  subroutine check_parts()
    character(2) :: drive
    character(PATHQQ_LENGTH) :: dir
    character(20) :: name
    character(5) :: ext
    drive = 'c:'
    call check(splitpathqq('run.tar.gz', drive, dir, name, ext), len_trim(here) + 1, 'length of the directory')
    call check(drive, '  ', 'drive')
    call check(trim(dir), trim(here)//'/', 'directory')
    call check(name, 'run.tar'//repeat(' ', 13), 'name')
    call check(ext, '.gz  ', 'extension')
    call check(splitpathqq('/', drive, dir, name, ext), 1, 'length of the root directory')
    call check(trim(dir), '/', 'root directory')
    call check(splitpathqq('  ', drive, dir, name, ext), 0, 'length of no path')
    call check(dir == ' ', 'directory of no path')
  end subroutine

  subroutine check_drives()
    character(PATHQQ_LENGTH) :: current
    integer(4) :: total, free
    integer(8) :: long_total, long_free
    current = CURRENT_DRIVE
    call check(getdrivedirqq(current), len_trim(here), 'length of the current directory')
    call check(current, here, 'current directory')
    call check(getdrivedirqq(current), 0, 'a drive that is not there')
    call check(current, here, 'variable of a drive that is not there')
    call check(.not. changedriveqq('c'), 'change of the drive')
    total = 4711
    free = 4712
    long_total = 4713
    long_free = 4714
    call check(.not. getdrivesizeqq('c', total, free), 'size of a drive')
    call check(.not. getdrivesizeqqi8('c', long_total, long_free), 'long size of a drive')
    call check(total == 4711 .and. free == 4712 .and. long_total == 4713 .and. long_free == 4714, 'sizes untouched')
    call check(getdrivesqq(), repeat(' ', 26), 'drives')
  end subroutine

end program
