!target: 64
!finds: handler-value signal
!mend: integer, value :: number => integer :: number
!prints: 10
subroutine caught(number)
  integer, value :: number
  print '(i2)', number
end subroutine
program handles
  external :: caught
  integer(8), external :: signal
  integer(8) :: former
  former = signal(10, caught, -1)
  call pxfgetpid(id, ierror)
  call pxfkill(id, 10, ierror)
end program
