! Default reals of 8 bytes beside such integers, and truths.
program kinds
  use, intrinsic :: iso_fortran_env, only: int64, real32, real64
  use checks, only: check, finish
  use qxport
  implicit none
  integer, parameter :: untouched = 81985529216486895_int64
  logical :: answer

  call check(kind(1.0), kind(1.0_real64), 'default reals have 8 bytes')
  call check_clocks()
  call check_functions()
  call check_components()
  call check_truths()
  call finish()

contains

  subroutine check_clocks()
    real :: parts(2), elapsed, since
    real(real32) :: short_parts(2), short
    parts = -1
    elapsed = etime(parts)
    call check(all(parts >= 0 .and. parts < 10000), 'etime stores both')
    call check(abs(elapsed - sum(parts)) < 1e-3, 'their sum')
    parts = 1e300
    elapsed = dtime(parts)
    call check(all(parts >= 0 .and. parts < 10000), 'dtime replaces what no REAL(4) holds')
    short = etime(short_parts)
    call check(abs(short - sum(short_parts)) < 1e-3, 'etime of REAL(4)')
    since = secnds(0.0)
    call check(since >= 0 .and. since < 86401, 'secnds')
    call check(kind(secnds(0.0)), kind(1.0_real64), 'an answer of the argument''s kind')
  end subroutine

  subroutine check_functions()
    call check(besj0(0.5), dbesj0(0.5), 'besj0 of 8 bytes is dbesj0')
    call check(besjn(2, 0.5), dbesjn(2, 0.5), 'besjn')
    call check(besj0(0.5_real32), besj0_of_4(), 'besj0 of REAL(4)')
    call check(cdfloat(1e300), 1e300, 'cdfloat')
    call check(complreal(complreal(0.1)), 0.1_real64, 'complreal')
    call iranset(5)
    call ranset(77.0)
    call check(seed(), 77, 'ranset')
    call ranset(1e300)
    call check(seed(), -2147483648_int64, 'ranset of what no seed can hold')
  end subroutine

  real(real32) function besj0_of_4()
    besj0_of_4 = besj0(0.5_real32)
  end function

  integer function seed()
    seed = untouched
    call iranget(seed)
  end function

  ! No component of any record is a real or a truth.
  subroutine check_components()
    integer :: record, ierror, numbers
    real :: value, values(3)
    logical :: truth, truths(2)
    call pxfstructcreate('stat', record, ierror)
    value = 0.1
    values = 0.1
    call pxfrealget(record, 'st_size', value, ierror)
    call check(ierror /= 0, 'pxfrealget')
    call check(value, 0.1_real64, 'a REAL(8) that is left alone is not rounded')
    call pxfrealset(record, 'st_size', value, ierror)
    call check(ierror /= 0, 'pxfrealset')
    numbers = 1000000000
    call pxfarealget(record, 'st_size', values, numbers, ierror)
    call check(ierror /= 0 .and. all(abs(values - 0.1) <= 0), 'pxfarealget looks at none')
    truth = .true.
    truths = [.true., .false.]
    call pxflgclget(record, 'st_size', truth, ierror)
    call check(ierror /= 0 .and. truth, 'pxflgclget')
    call pxfalgclget(record, 'st_size', truths, 2, ierror)
    call check(truths(1) .and. .not. truths(2), 'pxfalgclget')
    call pxfstructfree(record, ierror)
  end subroutine

  subroutine check_truths()
    integer :: set, ierror
    logical :: is_member
    call pxfstructcreate('sigset', set, ierror)
    call pxfsigaddset(set, 2, ierror)
    is_member = .false.
    call pxfsigismember(set, 2, is_member, ierror)
    call check(is_member .and. ierror == 0, 'a truth that is stored')
    call pxfsigismember(set, 3, is_member, ierror)
    call check(.not. is_member, 'one that is not so')
    call pxfstructfree(set, ierror)
    answer = changedirqq('.')
    call check(answer, 'changedirqq')
    answer = .not. changedirqq('no such directory')
    call check(answer, 'the opposite of a truth')
    call check(compllog(.false.), 'compllog')
    call check(kind(answer), kind(changedirqq('.')), 'a truth has the default kind')
  end subroutine

end program
