! Packed times as older programs call them: by name alone.
program packed_time_external
  use checks, only: check, finish
  use scratch, only: scratch_directory, remove_directory
  implicit none
  external :: packtimeqq, packtimeqqi4, unpacktimeqq, unpacktimeqqi4
  logical(4), external :: setfiletimeqq, setenvqq
  character(:), allocatable, save :: directory
  integer(2) :: year, month, day, hour, minute, second
  integer(4) :: time, wide(6)
  integer :: unit

  call check(setenvqq('TZ=UTC0'), 'set the zone')
  year = 1999
  month = 13
  day = 1
  hour = 0
  minute = 0
  second = -1
  call packtimeqqi4(time, 2000, 2, 29, 12, 30, 45)
  call check(time, 951827445, 'packed time of INTEGER(4)')
  call packtimeqq(time, year, month, day, hour, minute, second)
  call check(time, 946684799, 'packed time')
  call unpacktimeqq(time, year, month, day, hour, minute, second)
  call check(all([year, month, day, hour, minute, second] == [1999_2, 12_2, 31_2, 23_2, 59_2, 59_2]), 'fields')
  call unpacktimeqqi4(951827445, wide(1), wide(2), wide(3), wide(4), wide(5), wide(6))
  call check(all(wide == [2000, 2, 29, 12, 30, 45]), 'INTEGER(4) fields')
  directory = scratch_directory()
  open (newunit=unit, file=directory//'/file')
  close (unit)
  call check(setfiletimeqq(directory//'/file', time), 'set a time')
  call check(.not. setfiletimeqq(directory//'/none', time), 'no such file')
  call remove_directory(directory)
  call finish()
end program
