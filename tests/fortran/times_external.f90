! Clock, calendar and processor time as older programs call them: by name alone.
program times_external
  use, intrinsic :: iso_c_binding, only: c_char, c_float, c_int, c_null_char
  use checks, only: check, finish
  implicit none
  interface
    function seconds_since_midnight(t) bind(C, name='fortran_f_secnds') result(answer)
      import :: c_float
      real(c_float), intent(in) :: t
      real(c_float) :: answer
    end function
    integer(c_int) function setenv(name, value, overwrite) bind(C)
      import :: c_char, c_int
      character(kind=c_char), intent(in) :: name(*), value(*)
      integer(c_int), value :: overwrite
    end function
  end interface
  character(25), external :: ctime, ctimei8
  character(24), external :: fdate
  character(8), external :: clock, date8, time2
  character(11), external :: date4
  character(5), external :: jdate
  character(7), external :: jdate4
  integer(8), external :: time
  real(8), external :: dclock, dtimer8, rtc, timef
  real(4), external :: dtime, etime, f_secnds, secnds
  logical(4), external :: setdat, setdati2, settim, settimi2
  external :: clockx, errsns, f_idate4, getdat, getdati2, gettim, gettimeofday, gettimi2, gmtime, gmtimei8, idate, idate1, &
              idate4, itime, ltime, ltimei8

  call check(setenv('TZ' // c_null_char, 'UTC0' // c_null_char, 1) == 0, 'setenv')
  call test_instants()
  call test_texts()
  call test_date()
  call test_numbers()
  call test_given_instants()
  call test_elapsed()
  call test_setting()
  call finish()

contains

  subroutine test_instants()
    integer(8) :: before
    real(8) :: microseconds
    integer(4) :: tv(2), ierr
    before = time()
    call check(before > 1700000000_8, 'time')
    call check(rtc() >= before - 1, 'rtc')
    call clockx(microseconds)
    call check(microseconds / 1d6 >= before, 'clockx')
    call gettimeofday(tv, ierr)
    call check(ierr == 0 .and. tv(1) >= before, 'gettimeofday')
  end subroutine

  subroutine test_texts()
    character(24) :: before
    character(11) :: name
    character(8) :: clocks(2)
    character(7) :: full_day
    character(5) :: day
    do
      before = fdate()
      name = date4()
      clocks(1) = clock()
      clocks(2) = time2()
      full_day = jdate4()
      day = jdate()
      if (fdate() == before) exit
    end do
    call check(clocks(1), before(12:19), 'clock')
    call check(clocks(2), before(12:19), 'time2')
    call check(before(21:24), name(8:11), 'fdate and date4 tell the same year')
    call check(before(5:7), name(4:6), 'fdate and date4 tell the same month')
    call check(full_day, name(8:9) // day, 'jdate4 and jdate')
  end subroutine

  ! The layout depends on the length that the caller declares.
  subroutine test_date()
    character(9) :: name
    character(8) :: digits, other_digits
    do
      name = long_date()
      digits = short_date()
      other_digits = date8()
      if (long_date() == name) exit
    end do
    call check(name(3:3) == '-' .and. name(7:7) == '-', 'date of nine characters')
    call check(digits(3:3) == '/' .and. digits(6:6) == '/', 'date of eight characters')
    call check(name(8:9), digits(7:8), 'the same year in both')
    call check(name(1:2), digits(4:5), 'the same day in both')
    call check(other_digits, digits, 'date8')
  end subroutine

  function long_date() result(text)
    character(9), external :: date
    character(9) :: text
    text = date()
  end function

  function short_date() result(text)
    character(8), external :: date
    character(8) :: text
    text = date()
  end function

  subroutine test_numbers()
    integer(4) :: d(3), d1(3), d4(3), f4(3), g(3), t(3), h(4)
    integer(2) :: g2(3), h2(4)
    do
      call itime(t)
      call getdat(g(1), g(2), g(3))
      call getdati2(g2(1), g2(2), g2(3))
      call idate(d)
      call idate1(d1(1), d1(2), d1(3))
      call idate4(d4(1), d4(2), d4(3))
      call f_idate4(f4)
      call gettim(h(1), h(2), h(3), h(4))
      call gettimi2(h2(1), h2(2), h2(3), h2(4))
      if (all(t == h(1:3)) .and. all(t == h2(1:3))) exit
    end do
    call check(all(g2 == g), 'getdati2 and getdat')
    call check(all(d == [g(3), g(2), mod(g(1), 100)]), 'idate and getdat')
    call check(all(d1 == [g(2), g(3), mod(g(1), 100)]), 'idate1 and getdat')
    call check(all(d4(1:2) == g(2:3)) .and. mod(d4(3), 100) == mod(g(1), 100), 'idate4 and getdat')
    call check(all(f4 == [d4(2), d4(1), d4(3)]), 'f_idate4 and idate4')
    call check(h(4) >= 0 .and. h(4) <= 99 .and. h2(4) >= 0 .and. h2(4) <= 99, 'hundredths')
  end subroutine

  subroutine test_given_instants()
    integer(4) :: fields(9), io, number, status, unit, condition
    call check(ctime(0), 'Thu Jan  1 00:00:00 1970' // achar(10), 'ctime of 0')
    call check(ctimei8(4118083200_8), 'Thu Jul  1 00:00:00 2100' // achar(10), 'ctimei8')
    call check(short_ctime(), 'Thu Jan  1 00:00:00 1970', 'ctime of 24 characters')
    call errsns(io, number, status, unit, condition)
    call check(number, 22, 'the lost line feed is recorded')
    call ltime(0, fields)
    call check(all(fields == [0, 0, 0, 1, 0, 70, 4, 1, 0]), 'ltime of 0')
    call gmtime(0, fields)
    call check(all(fields == [0, 0, 0, 1, 0, 70, 4, 0, 0]), 'gmtime of 0')
    call ltimei8(4118083200_8, fields)
    call check(all(fields == [0, 0, 0, 1, 6, 200, 4, 182, 0]), 'ltimei8')
    call gmtimei8(4118083200_8, fields)
    call check(all(fields == [0, 0, 0, 1, 6, 200, 4, 181, 0]), 'gmtimei8')
  end subroutine

  function short_ctime() result(text)
    character(24), external :: ctime
    character(24) :: text
    text = ctime(0)
  end function

  subroutine test_elapsed()
    real(4) :: begin, elements(2), total
    real(8) :: long_elements(2), long_total
    call check(abs(timef()) <= 0, 'timef at first')
    call check(dclock() > 0, 'dclock')
    begin = secnds(0.0)
    call check(begin >= 0, 'secnds since midnight')
    call check(secnds(begin) >= 0, 'secnds since an instant')
    call check(f_secnds(0.0) >= begin, 'f_secnds')
    call check(seconds_since_midnight(0.0) >= begin, 'fortran_f_secnds')
    total = etime(elements)
    call check(abs(total - sum(elements)) <= 0, 'etime')
    total = dtime(elements)
    call check(abs(total - sum(elements)) <= 0, 'dtime')
    long_total = dtimer8(long_elements)
    call check(abs(long_total - sum(long_elements)) <= 0, 'dtimer8')
  end subroutine

  subroutine test_setting()
    call check(.not. setdat(2026, 11, 15), 'setdat')
    call check(.not. setdati2(2026_2, 11_2, 15_2), 'setdati2')
    call check(.not. settim(13, 45, 0, 0), 'settim')
    call check(.not. settimi2(13_2, 45_2, 0_2, 0_2), 'settimi2')
  end subroutine

end program
