! List a directory
! `getfileinfoqqi8` answers one name after the other that matches a pattern at a time, with size and time. (For all
! names as they come, also of millions of files, see `pxfopendir` and `pxfreaddir`.)
program list_directory
  use, intrinsic :: iso_c_binding, only: c_intptr_t
  use qxport, only: file_info_i8, file_length, getfileinfoqqi8, FILE_ATTRIBUTE_DIRECTORY, FILE_SEARCH_BEGIN
  implicit none
  type(file_info_i8) :: info
  integer(c_intptr_t) :: handle
  integer :: length, unit
  open (newunit=unit, file='alpha.txt')
  write (unit, '(a)') 'some text'
  close (unit)
  handle = FILE_SEARCH_BEGIN
  do
    length = getfileinfoqqi8('*.txt', info, handle)
    if (length == 0) exit
    if (iand(info%attributes, FILE_ATTRIBUTE_DIRECTORY) /= 0) cycle
    print '(i8, 2x, a)', file_length(info), info%name(:length)
  end do
end program
