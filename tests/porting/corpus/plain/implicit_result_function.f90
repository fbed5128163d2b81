!finds: implicit-result findfileqq
!prints: T
subroutine look(found)
  logical :: found
  character(80) :: path
  found = findfileqq('sh', 'PATH', path) > 0
end subroutine
program implicit
  logical :: found
  call look(found)
  print '(l1)', found
end program
