! Packed times through the module.
program packed_time
  use checks, only: check, finish
  use qxport, only: packtimeqq, unpacktimeqq, setfiletimeqq, setenvqq, stat, getlasterrorqq, FILE_TIME_NOW, STAT_ATIME, &
                    STAT_MTIME
  use scratch, only: scratch_directory, remove_directory
  implicit none
  integer(4), parameter :: ENOENT = 2
  character(:), allocatable, save :: directory

  call check(FILE_TIME_NOW, -1, 'FILE_TIME_NOW')
  call check_fields('UTC0', 951827445, [2000_2, 2_2, 29_2, 12_2, 30_2, 45_2])
  call check_fields('UTC0', 0, [1970_2, 1_2, 1_2, 0_2, 0_2, 0_2])
  call check_fields('EST5EDT,M3.2.0,M11.1.0', 1689429600, [2023_2, 7_2, 15_2, 10_2, 0_2, 0_2])
  call check_fields('EST5EDT,M3.2.0,M11.1.0', 1673787600, [2023_2, 1_2, 15_2, 8_2, 0_2, 0_2])
  call check_literals()
  directory = scratch_directory()
  call check_file_times()
  call remove_directory(directory)
  call finish()

contains

  subroutine check_fields(zone, time, fields)
    character(*), intent(in) :: zone
    integer(4), intent(in) :: time
    integer(2), intent(in) :: fields(6)
    integer(4) :: packed
    integer(2) :: shown(6)
    integer(4) :: wide(8)
    call check(setenvqq('TZ='//zone), 'set the zone')
    call packtimeqq(packed, fields(1), fields(2), fields(3), fields(4), fields(5), fields(6))
    call check(packed, time, 'packed time')
    call packtimeqq(packed, int(fields(1), 4), int(fields(2), 4), int(fields(3), 4), int(fields(4), 4), &
                    int(fields(5), 4), int(fields(6), 4))
    call check(packed, time, 'packed time of INTEGER(4)')
    call unpacktimeqq(time, shown(1), shown(2), shown(3), shown(4), shown(5), shown(6))
    call check(all(shown == fields), 'fields of a packed time')
    wide = 77
    call unpacktimeqq(time, wide(2), wide(3), wide(4), wide(5), wide(6), wide(7))
    call check(all(wide(2:7) == int(fields, 4)), 'INTEGER(4) fields of a packed time')
    call check(wide(1) == 77 .and. wide(8) == 77, 'nothing beside the fields')
  end subroutine

  subroutine check_literals()
    integer(4) :: packed
    call check(setenvqq('TZ=UTC0'), 'set the zone')
    call packtimeqq(packed, 2000, 2, 29, 12, 30, 45)
    call check(packed, 951827445, 'packed time of literals')
    call packtimeqq(packed, 2000, 1, 1, 0, 0, 5142645)
    call check(packed, 951827445, 'packed time of more seconds than an INTEGER(2) counts')
  end subroutine

  subroutine check_file_times()
    integer(4) :: status(13)
    integer :: unit
    open (newunit=unit, file=directory//'/file')
    close (unit)
    call check(setfiletimeqq(directory//'/file  ', 86400), 'set a time')
    call check(stat(directory//'/file', status), 0, 'status')
    call check(status(STAT_MTIME), 86400, 'time of the last change')
    call check(status(STAT_ATIME), 86400, 'time of the last access')
    call check(setfiletimeqq(directory//'/file', FILE_TIME_NOW), 'set the current time')
    call check(stat(directory//'/file', status), 0, 'status again')
    call check(status(STAT_MTIME) > 86400, 'the current time')
    call check(.not. setfiletimeqq(directory//'/none', 0), 'no such file')
    call check(getlasterrorqq(), ENOENT, 'errno of that')
  end subroutine

end program
