! Sort an array and search in it
! The routines take the address of the array, how many elements it has, and of what type they are.
program sort_arrays
  use, intrinsic :: iso_c_binding, only: c_intptr_t, c_loc
  use qxport, only: bsearchqq, sortqq, SORT_REAL8
  implicit none
  real(8), target :: values(5) = [3.5d0, -1d0, 2d0, 1d1, 0.25d0], wanted = 2d0
  integer(c_intptr_t) :: address
  integer :: count
  address = transfer(c_loc(values), address)
  count = size(values)
  call sortqq(address, count, SORT_REAL8)
  print '(*(f6.2))', values
  print '(a, i0)', '2.0 is element ', &
    bsearchqq(transfer(c_loc(wanted), address), address, count, SORT_REAL8)
end program
