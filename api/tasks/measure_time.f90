! Measure elapsed and processor time
! `dclock` counts seconds of real time, `etime` the processor time of the process so far.
program measure_time
  use qxport, only: dclock, etime
  implicit none
  real(8) :: begun, total
  real(4) :: times(2), used
  integer :: i
  begun = dclock()
  total = 0
  do i = 1, 1000000
    total = total + sqrt(real(i, 8))
  end do
  used = etime(times)
  print '(a, es11.4)', 'sum ', total
  if (dclock() - begun >= 0 .and. used >= 0) print '(a)', 'measured'
end program
