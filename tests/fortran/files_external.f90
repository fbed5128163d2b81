! The file, process and environment routines as programs call them that know of no module.
program files_external
  use checks, only: check, finish
  use scratch, only: quoted, remove_directory, scratch_directory
  implicit none
  integer(4), parameter :: enoent = 2, einval = 22
  integer(4), external :: access, chdir, chmod, getcwd, rename, unlink
  integer(4), external :: stat, lstat, fstat, stati8, lstati8, fstati8
  integer(4), external :: system, getgid, getuid, getpid, kill, hostnam, hostnm, ierrno
  logical(4), external :: isatty
  character(64), external :: ttynam
  external :: sleep, getlog, getenv, scanenv
  character(1024) :: directory, former, name, other
  integer(4) :: statb(13), unit
  integer(8) :: statb8(13)

  call check(getcwd(former), 0, 'getcwd')
  directory = scratch_directory()
  call check(system('rmdir ' // quoted(trim(directory)) // ' && mkdir ' // quoted(trim(directory))), 0, 'system')
  call check(chdir(directory), 0, 'chdir')

  open (newunit=unit, file='file', access='stream', form='unformatted')
  write (unit) 'ten bytes!'
  flush (unit)
  call check(access('file', 'rw '), 0, 'access')
  call check(access('missing', 'r'), einval, 'access of a missing file')
  call check(ierrno(), einval, 'ierrno')
  call check(chmod('file', '600'), 0, 'chmod')
  call check(chmod('file', '7a'), einval, 'chmod of 7a')

  statb = -77
  call check(stat('file', statb), 0, 'stat')
  call check(statb(8), 10, 'size')
  call check(iand(statb(3), int(o'7777', 4)), int(o'600', 4), 'mode')
  call check(statb(5), getuid(), 'getuid')
  call check(statb(6), getgid(), 'getgid')
  call check(statb(13), -77, 'element 13 stays')
  statb = -77
  call check(lstat('file', statb), 0, 'lstat')
  call check(statb(8), 10, 'size by lstat')
  statb = -77
  call check(fstat(unit, statb), 0, 'fstat')
  call check(statb(8), 10, 'size by fstat')
  statb8 = -77
  call check(stati8('file', statb8), 0, 'stati8')
  call check(statb8(8), 10_8, 'size by stati8')
  call check(statb8(13), -77_8, 'element 13 of INTEGER(8) stays')
  statb8 = -77
  call check(lstati8('file', statb8), 0, 'lstati8')
  call check(statb8(8), 10_8, 'size by lstati8')
  statb8 = -77
  call check(fstati8(unit, statb8), 0, 'fstati8')
  call check(statb8(8), 10_8, 'size by fstati8')
  call check(.not. isatty(unit), 'isatty')
  name = ttynam(unit)
  call check(name, repeat(' ', 1024), 'ttynam as a function')
  close (unit)

  call check(rename('file', 'moved'), 0, 'rename')
  call check(unlink('moved'), 0, 'unlink')
  call check(unlink('moved'), enoent, 'unlink of a missing file')
  call check(kill(getpid(), 0), 0, 'kill')
  call check(hostnm(name), 0, 'hostnm')
  call check(hostnam(other), 0, 'hostnam')
  call check(other, name, 'hostnam is hostnm')
  call sleep(-5)
  name = repeat('#', 1024)
  call getlog(name)
  call check(index(name, '#'), 0, 'getlog')
  call scanenv('PATH', name, other)
  call check(index(name, 'PATH'), 1, 'scanenv')

  call check(chdir(former), 0, 'chdir back')
  call remove_directory(directory)
  call finish()
end program
