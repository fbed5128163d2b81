!finds: missing-module oldlib
!prints: /usr
module helpers
  use oldlib
  implicit none
contains
  subroutine show(path)
    character(*), intent(in) :: path
    character(64) :: drive, directory, name, extension
    if (splitpathqq(path, drive, directory, name, extension) > 0) print '(a)', '/'//trim(name)
  end subroutine
end module
program uses
  use helpers
  call show('/usr')
end program
