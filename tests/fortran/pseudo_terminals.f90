! Terminals for the Fortran test programs: the program plays the user at one side of each.
module pseudo_terminals
  use, intrinsic :: iso_c_binding, only: c_char, c_int, c_null_char, c_size_t
  use checks, only: check
  implicit none
  private
  public :: open_pseudo_terminal

  interface
    function posix_openpt(flags) bind(C) result(descriptor)
      import :: c_int
      integer(c_int), value :: flags
      integer(c_int) :: descriptor
    end function
    function grantpt(descriptor) bind(C) result(answer)
      import :: c_int
      integer(c_int), value :: descriptor
      integer(c_int) :: answer
    end function
    function unlockpt(descriptor) bind(C) result(answer)
      import :: c_int
      integer(c_int), value :: descriptor
      integer(c_int) :: answer
    end function
    function ptsname_r(descriptor, name, length) bind(C) result(answer)
      import :: c_char, c_int, c_size_t
      integer(c_int), value :: descriptor
      character(kind=c_char), intent(out) :: name(*)
      integer(c_size_t), value :: length
      integer(c_int) :: answer
    end function
  end interface

contains

  ! The user's side as a descriptor, the program's by the name of its device.
  subroutine open_pseudo_terminal(master, device)
    integer(c_int), intent(out) :: master
    character(:), allocatable, intent(out) :: device
    integer(c_int), parameter :: o_rdwr = 2
    character(kind=c_char) :: letters(300)
    character(300) :: name
    master = posix_openpt(o_rdwr)
    call check(grantpt(master), 0, 'grantpt')
    call check(unlockpt(master), 0, 'unlockpt')
    call check(ptsname_r(master, letters, size(letters, kind=c_size_t)), 0, 'ptsname_r')
    name = transfer(letters, name)
    device = name(:index(name, c_null_char) - 1)
  end subroutine

end module
