! Print the date, and the date of an instant
! `fdate` is the date now; `ctime` that of an instant in seconds since the year 1970; `unpacktimeqq` and `ltime` give numbers.
program date_texts
  use qxport, only: ctime, fdate, gmtime, setenvqq
  implicit none
  integer(4) :: parts(9)
  print '(2a)', 'now it is ', fdate()
  if (setenvqq('TZ=UTC')) print '(a)', ctime(951782400_8)
  call gmtime(951782400, parts)
  print '(3(a, i0))', 'year ', 1900 + parts(6), ', month ', 1 + parts(5), ', day ', parts(4)
end program
