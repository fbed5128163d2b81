! Paths, directories and drives as older programs call them: by name alone.
program paths_external
  use checks, only: check, finish
  use scratch, only: scratch_directory, remove_directory
  implicit none
  integer(4), external :: fullpathqq, splitpathqq, getdrivedirqq
  logical(4), external :: changedirqq, makedirqq, deldirqq, renamefileqq, changedriveqq, getdrivesizeqq, getdrivesizeqqi8
  character(26), external :: getdrivesqq
  character(:), allocatable, save :: directory
  character(1024) :: path, dir
  character(3) :: drive
  character(12) :: name, ext
  integer(4) :: length, total, free
  integer(8) :: long_total, long_free

  directory = scratch_directory()
  if (.not. changedirqq(directory)) error stop 'no way into the directory of the test'
  call check(merge(1, 0, makedirqq('sub')), 1, 'make')
  call check(merge(1, 0, renamefileqq('sub', 'other')), 1, 'rename')
  call check(.not. deldirqq('sub'), 'remove the old name')
  if (deldirqq('other')) then
    call check(.true., 'remove')
  else
    call check(.false., 'remove')
  end if
  call check(.not. changedirqq('none'), 'change to nowhere')

  path = ' '
  length = getdrivedirqq(path)
  call check(length > 0 .and. len_trim(path) == length, 'current directory')
  call check(fullpathqq('x.y', dir), length + 4, 'length of the path')
  call check(trim(dir), trim(path)//'/x.y', 'path')
  call check(splitpathqq('x.y', drive, dir, name, ext), length + 1, 'length of the directory')
  call check(drive == ' ' .and. name == 'x' .and. ext == '.y', 'parts')
  call check(trim(dir), trim(path)//'/', 'directory')

  total = 1
  free = 2
  long_total = 3
  long_free = 4
  call check(.not. changedriveqq('c'), 'change of the drive')
  call check(.not. getdrivesizeqq('c', total, free), 'size of a drive')
  call check(.not. getdrivesizeqqi8('c', long_total, long_free), 'long size of a drive')
  call check(total == 1 .and. free == 2 .and. long_total == 3 .and. long_free == 4, 'sizes untouched')
  call check(getdrivesqq(), repeat(' ', 26), 'drives')

  if (.not. changedirqq('/')) error stop 'no way out of the directory of the test'
  call remove_directory(directory)
  call finish()
end program
