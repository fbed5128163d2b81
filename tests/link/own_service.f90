! A program that takes the recording of errors over from the run-time's companion.
module own_service
  use, intrinsic :: iso_c_binding, only: c_int32_t
  implicit none
  integer :: recorded = 0

contains

  subroutine record(io, number, status, unit, condition) bind(C, name='for_errsns_load')
    integer(c_int32_t), value :: io, number, status, unit, condition
    if (io /= 0 .or. status /= 0 .or. unit /= 0 .or. condition /= 0) error stop 'more than a number was recorded'
    recorded = number
  end subroutine

end module

program take_service_over
  use own_service, only: recorded
  use qxport, only: access, errsns
  implicit none
  integer :: io, number, status, unit, condition
  if (access('/no/such/name', 'r') /= 22) error stop 'access found a name that is not there'
  if (recorded /= 22) error stop 'the error did not reach the program''s own recorder'
  call errsns(io, number, status, unit, condition)
  if (number /= 0) error stop 'the error reached the companion''s recorder'
end program
