! What a program can do with floating-point arithmetic beside computing: choose how it rounds, ask what happened, and
! have the last word when something cannot go on.
program traps
  use, intrinsic :: iso_fortran_env, only: error_unit, real32, real64
  use elimination, only: report_trap, solve
  use qxport, only: exit, getcontrolfpqq, ieee_flags, ieee_handler, setcontrolfpqq, &
                    FP_EXCEPTION_DIVISION, FP_EXCEPTION_INEXACT, FP_EXCEPTION_INVALID, FP_EXCEPTION_OVERFLOW, &
                    FP_EXCEPTION_UNDERFLOW, FP_ROUND_DOWN, FP_ROUND_FIELD, FP_ROUND_NEAREST, FP_ROUND_TOZERO, FP_ROUND_UP
  implicit none
  integer, parameter :: n = 5
  integer :: zero_pivot

  call read_argument()
  call show_rounding()
  call show_flags()
  call show_trap()

contains

  subroutine read_argument()
    character(20) :: text
    integer :: status
    zero_pivot = 3
    if (command_argument_count() == 0) return
    call get_command_argument(1, text, status=status)
    if (status == 0) read (text, '(i20)', iostat=status) zero_pivot
    if (command_argument_count() == 1 .and. status == 0 .and. zero_pivot >= 0 .and. zero_pivot <= n) return
    write (error_unit, '(a, i0, a)') 'usage: traps [COLUMN], 1 to ', n, ' or 0 for none'
    call exit(2)
  end subroutine

  ! Numbers are written once rounding is back to nearest: WRITE rounds as the program does.
  subroutine show_rounding()
    character(12), parameter :: names(4) = ['to nearest  ', 'down        ', 'up          ', 'toward zero ']
    integer(2), parameter :: directions(4) = [FP_ROUND_NEAREST, FP_ROUND_DOWN, FP_ROUND_UP, FP_ROUND_TOZERO]
    real(real32) :: sums(4)
    integer(2) :: saved
    integer :: i
    call getcontrolfpqq(saved)
    do i = 1, 4
      call setcontrolfpqq(ior(iand(saved, not(FP_ROUND_FIELD)), directions(i)))
      sums(i) = harmonic_sum()
    end do
    call setcontrolfpqq(saved)
    print '(a)', 'The sum of 1/1 to 1/10000 in REAL(4), rounded'
    do i = 1, 4
      print '(2x, a, f10.6)', names(i), sums(i)
    end do
  end subroutine

  real(real32) function harmonic_sum()
    real(real32), volatile :: total, term
    integer :: i
    total = 0
    do i = 10000, 1, -1
      term = 1 / real(i, real32)
      total = total + term
    end do
    harmonic_sum = total
  end function

  subroutine show_flags()
    real(real64), volatile :: x, y
    character(9) :: out
    print '(a)', 'What computations raise'
    if (ieee_flags('clearall', '', '', out) /= 0) error stop 'the flags cannot be cleared'
    x = 6
    y = x / 2
    call tell_flags('6 / 2')
    y = x / 7
    call tell_flags('6 / 7')
    x = huge(x)
    y = x * x
    call tell_flags('huge * huge')
    x = tiny(x)
    y = x * x
    call tell_flags('tiny * tiny')
    x = 0
    y = 1 / x
    call tell_flags('1 / 0')
    y = x / x
    call tell_flags('0 / 0')
  end subroutine

  ! Names what was raised since the last call, and clears it.
  subroutine tell_flags(computation)
    character(*), intent(in) :: computation
    integer(4), parameter :: bits(5) = [FP_EXCEPTION_INVALID, FP_EXCEPTION_DIVISION, FP_EXCEPTION_OVERFLOW, &
                                        FP_EXCEPTION_UNDERFLOW, FP_EXCEPTION_INEXACT]
    character(9), parameter :: names(5) = ['invalid  ', 'division ', 'overflow ', 'underflow', 'inexact  ']
    character(:), allocatable :: list
    character(9) :: out
    integer(4) :: raised
    integer :: i
    raised = ieee_flags('get', 'exception', '', out)
    if (ieee_flags('clearall', '', '', out) /= 0) error stop 'the flags cannot be cleared'
    list = ''
    do i = 1, 5
      if (iand(raised, bits(i)) /= 0) list = list//' '//trim(names(i))
    end do
    if (list == '') list = ' nothing'
    print '(2x, a12, a)', [character(12) :: computation], list
  end subroutine

  ! The matrix of the smaller indices has pivots of 1; one less on the diagonal makes that pivot 0.
  subroutine show_trap()
    real(real64) :: a(n, n), b(n), x(n)
    integer :: i, j
    a = reshape([((real(min(i, j), real64), i=1, n), j=1, n)], [n, n])
    b = sum(a, dim=2) + 1
    if (zero_pivot > 0) a(zero_pivot, zero_pivot) = a(zero_pivot, zero_pivot) - 1
    print '(a, i0, a)', 'The solution of ', n, ' equations'
    if (ieee_handler('set', 'common', report_trap) /= 0) error stop 'no handler can be set'
    call solve(a, b, x)
    if (ieee_handler('clear', 'common', report_trap) /= 0) error stop 'the handler cannot be cleared'
    print '(2x, *(f6.2))', x
  end subroutine

end program
