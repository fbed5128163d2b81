! What the Fortran test programs share: a check prints what failed, and the end of the program tells how many did.
module checks
  use, intrinsic :: iso_fortran_env, only: int32
  implicit none
  private
  public :: check, finish
  integer :: failures = 0
  integer :: checked = 0

  interface check
    module procedure check_logical, check_integer, check_long, check_longer, check_shorter, check_real, check_double, check_text
  end interface

contains

  subroutine count_check(passed, what)
    logical, intent(in) :: passed
    character(*), intent(in) :: what
    checked = checked + 1
    if (passed) return
    failures = failures + 1
    print '(2a)', 'FAILED: ', what
  end subroutine

  subroutine check_logical(passed, what)
    logical, intent(in) :: passed
    character(*), intent(in) :: what
    call count_check(passed, what)
  end subroutine

  subroutine check_integer(got, expected, what)
    integer(int32), intent(in) :: got, expected
    character(*), intent(in) :: what
    call count_check(got == expected, what)
    if (got /= expected) print '(2(a, i0))', '  got ', got, ', expected ', expected
  end subroutine

  subroutine check_long(got, expected, what)
    integer(8), intent(in) :: got, expected
    character(*), intent(in) :: what
    call count_check(got == expected, what)
    if (got /= expected) print '(2(a, i0))', '  got ', got, ', expected ', expected
  end subroutine

  subroutine check_longer(got, expected, what)
    integer(8), intent(in) :: got
    integer(int32), intent(in) :: expected
    character(*), intent(in) :: what
    call check_long(got, int(expected, 8), what)
  end subroutine

  subroutine check_shorter(got, expected, what)
    integer(int32), intent(in) :: got
    integer(8), intent(in) :: expected
    character(*), intent(in) :: what
    call check_long(int(got, 8), expected, what)
  end subroutine

  ! Bit for bit.
  subroutine check_real(got, expected, what)
    real(4), intent(in) :: got, expected
    character(*), intent(in) :: what
    logical :: same
    same = transfer(got, 0_int32) == transfer(expected, 0_int32)
    call count_check(same, what)
    if (.not. same) print *, ' got ', got, ', expected ', expected
  end subroutine

  subroutine check_double(got, expected, what)
    real(8), intent(in) :: got, expected
    character(*), intent(in) :: what
    logical :: same
    same = transfer(got, 0_8) == transfer(expected, 0_8)
    call count_check(same, what)
    if (.not. same) print *, ' got ', got, ', expected ', expected
  end subroutine

  subroutine check_text(got, expected, what)
    character(*), intent(in) :: got, expected
    character(*), intent(in) :: what
    logical :: same
    same = got == expected .and. len(got) == len(expected)
    call count_check(same, what)
    if (.not. same) print '(5a)', '  got "', got, '", expected "', expected, '"'
  end subroutine

  subroutine finish()
    print '(i0, a, i0, a)', checked - failures, ' checks passed, ', failures, ' failed'
    if (failures > 0 .or. checked == 0) error stop 1
  end subroutine

end module
