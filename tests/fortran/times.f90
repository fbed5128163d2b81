! Clock, calendar and processor time through the module.
program times
  use checks, only: check, finish
  use qxport
  implicit none
  character(*), parameter :: months = 'JanFebMarAprMayJunJulAugSepOctNovDec'
  integer, parameter :: enotsup = 95

  call test_instants()
  call test_texts()
  call test_numbers()
  call test_given_instants()
  call test_zones()
  call test_elapsed()
  call test_processor_time()
  call test_setting()
  call finish()

contains

  ! The date of now as the language itself tells it, at the first of two looks that agree.
  subroutine look(values)
    integer, intent(out) :: values(8)
    call date_and_time(values=values)
  end subroutine

  logical function same_minute(one, other)
    integer, intent(in) :: one(8), other(8)
    same_minute = all(one([1, 2, 3, 5, 6, 7]) == other([1, 2, 3, 5, 6, 7]))
  end function

  subroutine test_instants()
    integer(8) :: before, after, count_rate
    real(8) :: seconds, microseconds
    integer(4) :: tv(2), ierr
    integer(8) :: answers(3)
    before = time()
    seconds = rtc()
    call clockx(microseconds)
    call gettimeofday(tv, ierr)
    after = time()
    answers = [int(seconds, 8), int(microseconds / 1d6, 8), int(tv(1), 8)]
    call check(kind(time()), 8, 'time is an INTEGER(8)')
    call check(before > 1700000000_8, 'time is of this age')
    ! What counts in whole ticks of the host may be behind by one.
    call check(all(answers >= before - 1 .and. answers <= after + 1), 'rtc, clockx and gettimeofday tell the same')
    call check(ierr, 0, 'gettimeofday: ierr')
    call check(tv(2) >= 0 .and. tv(2) <= 999999, 'gettimeofday: microseconds')
    call system_clock(count_rate=count_rate)
    call check(count_rate > 0, 'the intrinsic clock is untouched')
  end subroutine

  subroutine test_texts()
    integer :: now(8), then(8), year
    character(24) :: long
    character(9) :: name
    character(8) :: digits, clocks(2)
    character(11) :: full
    character(5) :: day
    character(7) :: full_day
    character(40) :: expected
    do
      call look(now)
      long = fdate()
      name = date()
      digits = date8()
      full = date4()
      clocks(1) = clock()
      clocks(2) = time2()
      day = jdate()
      full_day = jdate4()
      call look(then)
      if (same_minute(now, then)) exit
    end do
    year = mod(now(1), 100)
    write (expected, '(i2.2, 2(":", i2.2))') now(5:7)
    call check(clocks(1), expected(1:8), 'clock')
    call check(clocks(2), expected(1:8), 'time2')
    call check(long(12:19), expected(1:8), 'fdate: the time')
    write (expected, '(a3, 1x, i2)') month_name(now(2)), now(3)
    call check(long(5:10), expected(1:6), 'fdate: the day')
    write (expected, '(i4.4)') now(1)
    call check(long(21:24), expected(1:4), 'fdate: the year')
    write (expected, '(i2.2, "-", a3, "-", i2.2)') now(3), month_name(now(2)), year
    call check(name, expected(1:9), 'date')
    write (expected, '(i2.2, 2("/", i2.2))') now(2), now(3), year
    call check(digits, expected(1:8), 'date8')
    write (expected, '(i2.2, "-", a3, "-", i0)') now(3), month_name(now(2)), short_year(now(1))
    call check(full, expected(1:11), 'date4')
    write (expected, '(i2.2, i3.3)') year, day_of_year(now)
    call check(day, expected(1:5), 'jdate')
    write (expected, '(i4.4, i3.3)') now(1), day_of_year(now)
    call check(full_day, expected(1:7), 'jdate4')
  end subroutine

  function month_name(month) result(name)
    integer, intent(in) :: month
    character(3) :: name
    name = months(3 * month - 2:3 * month)
  end function

  integer function short_year(year)
    integer, intent(in) :: year
    short_year = mod(year, 100)
    if (short_year < 96) short_year = short_year + 2000
  end function

  integer function day_of_year(now)
    integer, intent(in) :: now(8)
    integer :: days(12)
    days = [31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31]
    if (mod(now(1), 4) == 0 .and. (mod(now(1), 100) /= 0 .or. mod(now(1), 400) == 0)) days(2) = 29
    day_of_year = sum(days(:now(2) - 1)) + now(3)
  end function

  subroutine test_numbers()
    integer :: now(8), then(8), year
    integer(4) :: d(3), d1(3), d4(3), f4(3), t(3), g(3), h(4)
    integer(2) :: g2(3), h2(4)
    do
      call look(now)
      call idate(d)
      call idate1(d1(1), d1(2), d1(3))
      call idate4(d4(1), d4(2), d4(3))
      call f_idate4(f4)
      call itime(t)
      call getdat(g(1), g(2), g(3))
      call getdati2(g2(1), g2(2), g2(3))
      call gettim(h(1), h(2), h(3), h(4))
      call gettimi2(h2(1), h2(2), h2(3), h2(4))
      call look(then)
      if (same_minute(now, then)) exit
    end do
    year = mod(now(1), 100)
    call check(all(d == [now(3), now(2), year]), 'idate')
    call check(all(d1 == [now(2), now(3), year]), 'idate1')
    call check(all(d4 == [now(2), now(3), short_year(now(1))]), 'idate4')
    call check(all(f4 == [now(3), now(2), short_year(now(1))]), 'f_idate4')
    call check(all(t == now(5:7)), 'itime')
    call check(all(g == now(1:3)), 'getdat')
    call check(all(g2 == now(1:3)), 'getdati2')
    call check(all(h(1:3) == now(5:7)), 'gettim')
    call check(all(h2(1:3) == now(5:7)), 'gettimi2')
    call check(h(4) >= now(8) / 10 .and. h(4) <= then(8) / 10, 'gettim: hundredths')
    call check(h2(4) >= now(8) / 10 .and. h2(4) <= then(8) / 10, 'gettimi2: hundredths')
  end subroutine

  ! The zone as a program sets it: in the environment, by no routine of this library.
  subroutine set_zone(zone)
    use, intrinsic :: iso_c_binding, only: c_char, c_int, c_null_char
    character(*), intent(in) :: zone
    interface
      integer(c_int) function setenv(name, value, overwrite) bind(C)
        import :: c_char, c_int
        character(kind=c_char), intent(in) :: name(*), value(*)
        integer(c_int), value :: overwrite
      end function
    end interface
    call check(setenv('TZ' // c_null_char, zone // c_null_char, 1_c_int) == 0, 'setenv')
  end subroutine

  subroutine test_given_instants()
    integer(4) :: fields(9)
    call set_zone('UTC0')
    call check(ctime(0), 'Thu Jan  1 00:00:00 1970' // achar(10), 'ctime of 0')
    call check(ctime(-1), 'Wed Dec 31 23:59:59 1969' // achar(10), 'ctime of -1')
    call check(ctime(4118083200_8), 'Thu Jul  1 00:00:00 2100' // achar(10), 'ctime of an INTEGER(8)')
    call check(len(ctime(time())), 25, 'ctime(time())')
    call ltime(0, fields)
    call check(all(fields == [0, 0, 0, 1, 0, 70, 4, 1, 0]), 'ltime of 0')
    call gmtime(0, fields)
    call check(all(fields == [0, 0, 0, 1, 0, 70, 4, 0, 0]), 'gmtime of 0')
    call ltime(4118083200_8, fields)
    call check(all(fields == [0, 0, 0, 1, 6, 200, 4, 182, 0]), 'ltime of an INTEGER(8)')
    call gmtime(4118083200_8, fields)
    call check(all(fields == [0, 0, 0, 1, 6, 200, 4, 181, 0]), 'gmtime of an INTEGER(8)')
    call ltime(huge(0_8), fields)
    call check(all(fields == 0), 'ltime of an instant without a date')
    call check(ctime(huge(0_8)), repeat(' ', 25), 'ctime of an instant without a date')
  end subroutine

  subroutine test_zones()
    call set_zone('<+0545>-5:45')
    call check(ctime(0), 'Thu Jan  1 05:45:00 1970' // achar(10), 'ctime in Nepal')
    call set_zone('NST3:30NDT,M3.2.0,M11.1.0')
    call check(ctime(0), 'Wed Dec 31 20:30:00 1969' // achar(10), 'ctime in Newfoundland')
    call set_zone('UTC0')
    call check(ctime(0), 'Thu Jan  1 00:00:00 1970' // achar(10), 'ctime in UTC again')
  end subroutine

  subroutine test_elapsed()
    real(4) :: begin, elapsed
    real(8) :: first, second
    call check(abs(timef()) <= 0, 'timef at first')
    call check(timef() >= 0, 'timef later')
    first = dclock()
    second = dclock()
    call check(first > 0 .and. second >= first, 'dclock goes on')
    begin = secnds(0.0)
    call check(begin >= 0 .and. begin < 86400.5, 'secnds since midnight')
    elapsed = secnds(begin)
    call check(elapsed >= 0 .and. elapsed < 3600, 'secnds since an instant')
    call check(f_secnds(0.0) >= begin, 'f_secnds')
    call check(secnds(secnds(0.0) + 0.001) < 3600, 'secnds of a little later')
  end subroutine

  subroutine test_processor_time()
    real(4) :: elements(2), total
    real(8) :: long_elements(2), long_total, work
    integer :: i
    work = 0
    do i = 1, 20000000
      work = work + sqrt(real(i, 8))
    end do
    call check(work > 0, 'work')
    total = etime(elements)
    call check(abs(total - sum(elements)) <= 0, 'etime is the sum')
    call check(total > 0, 'etime')
    total = dtime(elements)
    call check(abs(total - sum(elements)) <= 0, 'dtime is the sum')
    call check(total > 0, 'dtime')
    long_total = dtimer8(long_elements)
    call check(abs(long_total - sum(long_elements)) <= 0, 'dtimer8 is the sum')
    call check(long_total < total + 3600, 'dtimer8 counts from dtime')
  end subroutine

  subroutine test_setting()
    integer(4) :: io, number, status, unit, condition
    call check(.not. setdat(2026, 11, 15), 'setdat')
    call errsns(io, number, status, unit, condition)
    call check(number, enotsup, 'setdat records it')
    call check(.not. setdati2(2026_2, 11_2, 15_2), 'setdati2')
    call check(.not. settim(13, 45, 0, 0), 'settim')
    call check(.not. settimi2(13_2, 45_2, 0_2, 0_2), 'settimi2')
  end subroutine

end program
