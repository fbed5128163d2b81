! How numbers, dates and names read in the report.
module wording
  use, intrinsic :: iso_fortran_env, only: int64, real64
  use names, only: plain_bytes
  implicit none
  private
  public :: decimal, human_size, utc_date, printable

contains

  function decimal(number) result(text)
    integer(int64), intent(in) :: number
    character(:), allocatable :: text
    character(20) :: digits
    write (digits, '(i0)') number
    text = trim(digits)
  end function decimal

  function human_size(bytes) result(text)
    integer(int64), intent(in) :: bytes
    character(:), allocatable :: text
    character(3), parameter :: UNITS(6) = ['KiB', 'MiB', 'GiB', 'TiB', 'PiB', 'EiB']
    real(real64) :: amount
    character(10) :: size
    integer :: unit
    text = decimal(bytes)//' B'
    if (bytes < 1024) return
    amount = bytes/1024.0_real64
    unit = 1
    do while (amount >= 1023.95_real64)  ! would be rounded to 1024.0
      amount = amount/1024
      unit = unit + 1
    end do
    write (size, '(f0.1, " ", a)') amount, UNITS(unit)
    text = trim(size)
  end function human_size

  ! The date of a count of seconds since 1970. Days are counted in the calendar's cycles of 400 years, from a year
  ! that begins with March: so the leap day is the last of its year, and the months' beginnings follow a line.
  function utc_date(seconds) result(text)
    integer(int64), intent(in) :: seconds
    character(:), allocatable :: text
    integer(int64), parameter :: DAY = 86400, CYCLE_DAYS = 146097, FROM_YEAR_0_TO_1970 = 719468
    integer(int64) :: days, cycle_day, cycle_year, year_day, month, year, second
    character(40) :: date
    days = seconds/DAY + FROM_YEAR_0_TO_1970
    second = modulo(seconds, DAY)
    if (seconds < 0 .and. second > 0) days = days - 1
    cycle_day = modulo(days, CYCLE_DAYS)
    cycle_year = (cycle_day - cycle_day/1460 + cycle_day/36524 - cycle_day/146096)/365
    year_day = cycle_day - (365*cycle_year + cycle_year/4 - cycle_year/100)
    month = (5*year_day + 2)/153  ! 0 is March, 10 January of the next year
    year = 400*((days - cycle_day)/CYCLE_DAYS) + cycle_year + month/10
    write (date, '(i0.4, 2("-", i2.2), " ", i2.2, 2(":", i2.2))') year, modulo(month + 2, 12_int64) + 1, &
      year_day - (153*month + 2)/5 + 1, second/3600, mod(second, 3600_int64)/60, mod(second, 60_int64)
    text = trim(date)
  end function utc_date

  ! A name as it may go to a terminal or into a file of UTF-8: names may hold any bytes, and control characters,
  ! backslashes and what is no UTF-8 become octal escapes.
  function printable(name) result(text)
    character(*), intent(in) :: name
    character(:), allocatable :: text
    character(4*len(name)) :: buffer
    integer :: i, bytes, length
    i = 1
    length = 0
    do while (i <= len(name))
      bytes = plain_bytes(name(i:))
      if (bytes > 0 .and. name(i:i) /= '\') then
        buffer(length + 1:length + bytes) = name(i:i + bytes - 1)
        length = length + bytes
        i = i + bytes
      else
        write (buffer(length + 1:length + 4), '("\", o3.3)') iachar(name(i:i))
        length = length + 4
        i = i + 1
      end if
    end do
    text = buffer(1:length)
  end function printable
end module wording
