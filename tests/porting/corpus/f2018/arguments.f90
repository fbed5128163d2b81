!prints: 0 1
program uses
  implicit none
  integer, external :: iargc, nargs
  character(20) :: name
  external :: getarg
  call getarg(1, name)
  if (name /= ' ') error stop 'there is an argument'
  print '(i1, 1x, i1)', iargc(), nargs()
end program
