!finds: does-not-compile does_not_compile.f90
!mend: print *, ) => print '(a)', 'now'
!prints: now
program broken
  print *, )
end program
