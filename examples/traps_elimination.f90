! The solution of linear equations without a choice of pivots, and a last word about where a zero one was met.
module elimination
  use, intrinsic :: iso_fortran_env, only: output_unit, real64
  use qxport, only: FP_CODE_DIVISION, FP_CODE_INVALID, FP_CODE_OVERFLOW, FP_CODE_UNDERFLOW
  implicit none
  private
  public :: solve, report_trap

  ! Where the computation is. VOLATILE, so that it is stored before the division that traps.
  integer, volatile :: column = 0
  character(17), volatile :: phase = 'nothing'

contains

  ! Solves a x = b; a and b are overwritten.
  subroutine solve(a, b, x)
    real(real64), intent(inout) :: a(:, :), b(:)
    real(real64), intent(out) :: x(:)
    real(real64) :: factor
    integer :: row, n
    n = size(b)
    phase = 'elimination'
    do column = 1, n - 1
      do row = column + 1, n
        factor = a(row, column) / a(column, column)
        a(row, column:) = a(row, column:) - factor * a(column, column:)
        b(row) = b(row) - factor * b(column)
      end do
    end do
    phase = 'back substitution'
    do column = n, 1, -1
      x(column) = (b(column) - dot_product(a(column, column + 1:), x(column + 1:))) / a(column, column)
    end do
  end subroutine

  ! The procedure for exceptions that trap. The program ends when it returns.
  subroutine report_trap(number, code)
    integer(4), intent(in) :: number, code
    character(:), allocatable :: what
    select case (code)
    case (FP_CODE_DIVISION)
      what = 'division by zero'
    case (FP_CODE_INVALID)
      what = 'invalid operation'
    case (FP_CODE_OVERFLOW)
      what = 'overflow'
    case (FP_CODE_UNDERFLOW)
      what = 'underflow'
    case default
      what = 'exception'
    end select
    write (output_unit, '(5a, i0, a, i0)') '  ', what, ' in the ', trim(phase), ', column ', column, ': signal ', number
  end subroutine

end module
