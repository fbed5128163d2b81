! Draw random numbers, and the same ones again
! The same seed gives the same sequence on every machine.
program random_numbers
  use qxport, only: irand, rand, srand
  implicit none
  integer :: throws(5), i
  real :: first
  call srand(2026)
  first = rand()
  call srand(2026)
  if (rand() == first) print '(a)', 'the same number again'
  do i = 1, size(throws)
    throws(i) = mod(irand(), 6) + 1
  end do
  if (all(throws >= 1 .and. throws <= 6)) print '(a)', 'five throws of a die'
end program
