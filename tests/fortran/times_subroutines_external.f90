! CHARACTER functions of the clock and the calendar called as subroutines, which compiles to the same call.
program times_subroutines_external
  use checks, only: check, finish
  implicit none
  external :: clock, date, date4, fdate, jdate, jdate4, time, time2
  character(24) :: long
  character(11) :: full
  character(9) :: name
  character(8) :: clocks(2), digits, variable
  character(7) :: day_in_full
  character(5) :: day

  do
    call fdate(long)
    call clock(clocks(1))
    call time2(clocks(2))
    call date(name)
    call date(digits)
    call date4(full)
    call jdate(day)
    call jdate4(day_in_full)
    call fdate(variable)
    if (clocks(1) == long(12:19) .and. clocks(2) == long(12:19)) exit
  end do
  call check(variable, long(1:8), 'call fdate(text) into a short variable')
  call check(full(8:11), long(21:24), 'call date4(text): the year')
  call check(full(4:6), long(5:7), 'call date4(text): the month')
  call check(name, full(1:7) // full(10:11), 'call date(text) with nine characters')
  call check(digits(3:6), '/' // full(1:2) // '/', 'call date(text) with eight characters')
  call check(day_in_full(1:4), long(21:24), 'call jdate4(text)')
  call check(day, day_in_full(3:7), 'call jdate(text)')

  ! A routine of other libraries: here it answers a number, and its argument stays as it is.
  variable = 'as it is'
  call time(variable)
  call check(variable, 'as it is', 'call time(text)')
  call finish()
end program
