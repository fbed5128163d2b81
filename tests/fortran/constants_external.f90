! Named constants as older programs ask for them: by the routines' names alone.
program constants_external
  use checks, only: check, finish
  implicit none
  external :: pxfconst
  integer(4), external :: ipxfconst
  logical(4), external :: pxfisconst
  integer(4), parameter :: enoname = 126
  integer(4) :: value, error

  value = 4711
  error = -1
  call pxfconst('SIGINT', value, error)
  call check(error, 0, 'pxfconst')
  call check(value, 2, 'the value of SIGINT')
  call pxfconst('sigusr1  ', value, error)
  call check(value, 10, 'the value of sigusr1')
  call pxfconst('SIGRTMIN', value, error)
  call check(error, enoname, 'pxfconst of an unknown name')
  call check(value, -1, 'the value of an unknown name')
  call pxfconst(' SIGINT', value, error)
  call check(error, enoname, 'pxfconst of a name that begins with a blank')
  call pxfconst('EEND', value, error)
  call check(error == 0 .and. value == -1, 'a constant of -1')
  call check(ipxfconst('ENONAME'), 126, 'ipxfconst')
  call check(ipxfconst('SIGINT X'), 2, 'a name ends at its blank')
  call check(ipxfconst('SIGRTMIN'), -1, 'ipxfconst of an unknown name')
  call check(truth_of('SIGINT'), -1, 'true is all bits set')
  call check(truth_of('SIGEMT'), -1, 'a name that the host lacks is known')
  call check(truth_of('SIGRTMIN'), 0, 'false')
  call finish()

contains

  integer(4) function truth_of(name)
    character(*), intent(in) :: name
    logical(4) :: truth
    truth = pxfisconst(name)
    truth_of = transfer(truth, truth_of)
  end function

end program
