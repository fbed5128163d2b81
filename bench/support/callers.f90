! Calls as a Fortran program makes them: ours through the module, gfortran's own as an intrinsic. All are compiled alike,
! so what they cost beside the call is the same on both sides.

integer function qx_access(name, mode)
  use qxport, only: access
  implicit none
  character(*), intent(in) :: name, mode
  qx_access = access(name, mode)
end function

integer function gnu_access(name, mode)
  implicit none
  character(*), intent(in) :: name, mode
  intrinsic :: access
  gnu_access = access(name, mode)
end function

integer function qx_chdir(name)
  use qxport, only: chdir
  implicit none
  character(*), intent(in) :: name
  qx_chdir = chdir(name)
end function

integer function gnu_chdir(name)
  implicit none
  character(*), intent(in) :: name
  intrinsic :: chdir
  gnu_chdir = chdir(name)
end function

integer function qx_stat(name, values)
  use qxport, only: stat
  implicit none
  character(*), intent(in) :: name
  integer, intent(out) :: values(13)
  qx_stat = stat(name, values)
end function

integer function gnu_stat(name, values)
  implicit none
  character(*), intent(in) :: name
  integer, intent(out) :: values(13)
  intrinsic :: stat
  gnu_stat = stat(name, values)
end function

integer function qx_lstat(name, values)
  use qxport, only: lstat
  implicit none
  character(*), intent(in) :: name
  integer, intent(out) :: values(13)
  qx_lstat = lstat(name, values)
end function

integer function gnu_lstat(name, values)
  implicit none
  character(*), intent(in) :: name
  integer, intent(out) :: values(13)
  intrinsic :: lstat
  gnu_lstat = lstat(name, values)
end function

integer function qx_getcwd(name)
  use qxport, only: getcwd
  implicit none
  character(*), intent(out) :: name
  qx_getcwd = getcwd(name)
end function

integer function gnu_getcwd(name)
  implicit none
  character(*), intent(out) :: name
  intrinsic :: getcwd
  gnu_getcwd = getcwd(name)
end function

subroutine qx_getenv(name, value)
  use qxport, only: getenv
  implicit none
  character(*), intent(in) :: name
  character(*), intent(out) :: value
  call getenv(name, value)
end subroutine

subroutine gnu_getenv(name, value)
  implicit none
  character(*), intent(in) :: name
  character(*), intent(out) :: value
  intrinsic :: getenv
  call getenv(name, value)
end subroutine

integer function qx_lnblnk(text)
  use qxport, only: lnblnk
  implicit none
  character(*), intent(in) :: text
  qx_lnblnk = lnblnk(text)
end function

integer function gnu_len_trim(text)
  implicit none
  character(*), intent(in) :: text
  intrinsic :: len_trim
  gnu_len_trim = len_trim(text)
end function

integer function qx_rindex(text, part)
  use qxport, only: rindex
  implicit none
  character(*), intent(in) :: text, part
  qx_rindex = rindex(text, part)
end function

integer function gnu_index_back(text, part)
  implicit none
  character(*), intent(in) :: text, part
  intrinsic :: index
  gnu_index_back = index(text, part, back=.true.)
end function

! Reads a unit of a whole file character by character; how many there were.
integer function qx_count_characters(unit)
  use qxport, only: pxffgetc, pxffseek
  implicit none
  integer, intent(in) :: unit
  character :: ch
  integer :: ierror
  call pxffseek(unit, 0, 0, ierror)
  qx_count_characters = -1
  do while (ierror == 0)
    qx_count_characters = qx_count_characters + 1
    call pxffgetc(unit, ch, ierror)
  end do
end function

integer function gnu_count_characters(unit)
  implicit none
  integer, intent(in) :: unit
  intrinsic :: fgetc, fseek
  character :: ch
  integer :: status
  call fseek(unit, 0, 0, status)
  gnu_count_characters = -1
  do while (status == 0)
    gnu_count_characters = gnu_count_characters + 1
    call fgetc(unit, ch, status)
  end do
end function

! The same as functions, to the end of the file or for a number of characters.
integer function qx_read_characters(unit)
  use qxport, only: fgetc, fseek
  implicit none
  integer, intent(in) :: unit
  character :: ch
  qx_read_characters = 0
  if (fseek(unit, 0, 0) /= 0) return
  do while (fgetc(unit, ch) == 0)
    qx_read_characters = qx_read_characters + 1
  end do
end function

integer function gnu_read_characters(unit)
  implicit none
  integer, intent(in) :: unit
  intrinsic :: fgetc, fseek
  character :: ch
  integer :: status
  gnu_read_characters = 0
  call fseek(unit, 0, 0, status)
  if (status /= 0) return
  do while (fgetc(unit, ch) == 0)
    gnu_read_characters = gnu_read_characters + 1
  end do
end function

integer function qx_write_characters(unit, count)
  use qxport, only: fputc, fseek
  implicit none
  integer, intent(in) :: unit, count
  qx_write_characters = 0
  if (fseek(unit, 0, 0) /= 0) return
  do while (qx_write_characters < count)
    if (fputc(unit, 'x') /= 0) return
    qx_write_characters = qx_write_characters + 1
  end do
end function

integer function gnu_write_characters(unit, count)
  implicit none
  integer, intent(in) :: unit, count
  intrinsic :: fputc, fseek
  integer :: status
  gnu_write_characters = 0
  call fseek(unit, 0, 0, status)
  if (status /= 0) return
  do while (gnu_write_characters < count)
    if (fputc(unit, 'x') /= 0) return
    gnu_write_characters = gnu_write_characters + 1
  end do
end function

subroutine open_for_writing(unit, path)
  implicit none
  integer, intent(in) :: unit
  character(*), intent(in) :: path
  open (unit, file=path, action='write', status='replace')
end subroutine

subroutine open_for_reading(unit, path)
  implicit none
  integer, intent(in) :: unit
  character(*), intent(in) :: path
  open (unit, file=path, action='read', status='old')
end subroutine

integer function open_new_unit_for_reading(path)
  implicit none
  character(*), intent(in) :: path
  open (newunit=open_new_unit_for_reading, file=path, action='read', status='old')
end function

subroutine qx_idate(values)
  use qxport, only: idate
  implicit none
  integer, intent(out) :: values(3)
  call idate(values)
end subroutine

subroutine gnu_idate(values)
  implicit none
  integer, intent(out) :: values(3)
  intrinsic :: idate
  call idate(values)
end subroutine

subroutine qx_itime(values)
  use qxport, only: itime
  implicit none
  integer, intent(out) :: values(3)
  call itime(values)
end subroutine

subroutine gnu_itime(values)
  implicit none
  integer, intent(out) :: values(3)
  intrinsic :: itime
  call itime(values)
end subroutine

subroutine qx_ltime(instant, values)
  use qxport, only: ltime
  implicit none
  integer, intent(in) :: instant
  integer, intent(out) :: values(9)
  call ltime(instant, values)
end subroutine

subroutine gnu_ltime(instant, values)
  implicit none
  integer, intent(in) :: instant
  integer, intent(out) :: values(9)
  intrinsic :: ltime
  call ltime(instant, values)
end subroutine

subroutine qx_gmtime(instant, values)
  use qxport, only: gmtime
  implicit none
  integer, intent(in) :: instant
  integer, intent(out) :: values(9)
  call gmtime(instant, values)
end subroutine

subroutine gnu_gmtime(instant, values)
  implicit none
  integer, intent(in) :: instant
  integer, intent(out) :: values(9)
  intrinsic :: gmtime
  call gmtime(instant, values)
end subroutine

subroutine qx_ctime(instant, text)
  use qxport, only: ctime
  implicit none
  integer, intent(in) :: instant
  character(*), intent(out) :: text
  text = ctime(instant)
end subroutine

subroutine gnu_ctime(instant, text)
  implicit none
  integer, intent(in) :: instant
  character(*), intent(out) :: text
  intrinsic :: ctime
  text = ctime(instant)
end subroutine

subroutine qx_fdate(text)
  use qxport, only: fdate
  implicit none
  character(*), intent(out) :: text
  text = fdate()
end subroutine

subroutine gnu_fdate(text)
  implicit none
  character(*), intent(out) :: text
  intrinsic :: fdate
  text = fdate()
end subroutine

real function qx_etime(elements)
  use qxport, only: etime
  implicit none
  real, intent(out) :: elements(2)
  qx_etime = etime(elements)
end function

real function gnu_etime(elements)
  implicit none
  real, intent(out) :: elements(2)
  intrinsic :: etime
  gnu_etime = etime(elements)
end function

real function qx_secnds(t)
  use qxport, only: secnds
  implicit none
  real, intent(in) :: t
  qx_secnds = secnds(t)
end function

real function gnu_secnds(t)
  implicit none
  real, intent(in) :: t
  intrinsic :: secnds
  gnu_secnds = secnds(t)
end function

real function qx_sum_of_rand(draws) result(total)
  use qxport, only: rand
  implicit none
  integer, intent(in) :: draws
  integer :: i
  total = 0
  do i = 1, draws
    total = total + rand(0)
  end do
end function

real function gnu_sum_of_rand(draws) result(total)
  implicit none
  integer, intent(in) :: draws
  intrinsic :: rand
  integer :: i
  total = 0
  do i = 1, draws
    total = total + rand(0)
  end do
end function

real function gnu_sum_of_random_number_4(draws) result(total)
  implicit none
  integer, intent(in) :: draws
  real :: drawn
  integer :: i
  total = 0
  do i = 1, draws
    call random_number(drawn)
    total = total + drawn
  end do
end function

double precision function qx_sum_of_drand(draws) result(total)
  use qxport, only: drand
  implicit none
  integer, intent(in) :: draws
  integer :: i
  total = 0
  do i = 1, draws
    total = total + drand(0)
  end do
end function

double precision function gnu_sum_of_random_number_8(draws) result(total)
  implicit none
  integer, intent(in) :: draws
  double precision :: drawn
  integer :: i
  total = 0
  do i = 1, draws
    call random_number(drawn)
    total = total + drawn
  end do
end function

! Not their sum, which would overflow.
integer function qx_sum_of_irand(draws) result(total)
  use qxport, only: irand
  implicit none
  integer, intent(in) :: draws
  integer :: i
  total = 0
  do i = 1, draws
    total = ieor(total, irand(0))
  end do
end function

real function qx_sum_of_ran(draws) result(total)
  use qxport, only: ran
  implicit none
  integer, intent(in) :: draws
  integer :: i, iseed
  total = 0
  iseed = 12345
  do i = 1, draws
    total = total + ran(iseed)
  end do
end function
