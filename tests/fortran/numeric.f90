! Bits, numbers, Bessel functions and QSORT through the module.
program numeric
  use, intrinsic :: ieee_arithmetic, only: ieee_negative_inf, ieee_positive_inf, ieee_value
  use, intrinsic :: iso_fortran_env, only: int32
  use checks, only: check, finish
  use qxport, only: besj0, besj1, besjn, besy0, besy1, besyn, bic, bici8, bis, bisi8, bit, biti8, cdfloat, complint, &
    compllog, complreal, csmg, dbesj0, dbesj1, dbesjn, dbesy0, dbesy1, dbesyn, ddim, dfloati, dfloatj, dfloatk, idfloat, &
    ifloati, ifloatj, iidim, inmax, intc, jabs, jdim, jmod, long, lshift, qsort, rshift, short
  implicit none

  call test_bits()
  call test_both_kinds()
  call test_numbers()
  call test_bessel()
  call test_qsort()
  call finish()

contains

  include 'numeric.inc'

  ! Names that take words of either kind.
  subroutine test_both_kinds()
    integer(8) :: word
    real(8) :: infinity
    word = 0
    call bis(40, word)
    call check(word, 2_8**40, 'bis of an INTEGER(8)')
    call check(logical(bit(40, word), 4), 'bit of an INTEGER(8)')
    call bic(40, word)
    call check(word, 0_8, 'bic of an INTEGER(8)')
    infinity = ieee_value(0d0, ieee_positive_inf)
    call check(besy0(infinity), 0d0, 'besy0 of a REAL(8)')
    call check(besy1(infinity), 0d0, 'besy1 of a REAL(8)')
    call check(besyn(2, infinity), 0d0, 'besyn of a REAL(8)')
    call check(besj0(2d0), dbesj0(2d0), 'besj0 of a REAL(8)')
    call check(besj1(2d0), dbesj1(2d0), 'besj1 of a REAL(8)')
    call check(besjn(3, 2d0), dbesjn(3, 2d0), 'besjn of a REAL(8)')
  end subroutine

  integer(4) function descending(a, b)
    integer(8), intent(in) :: a, b
    descending = merge(1, merge(-1, 0, a > b), a < b)
  end function

  integer(4) function by_text(a, b)
    character(3), intent(in) :: a, b
    by_text = merge(-1, merge(1, 0, a > b), a < b)
  end function

  subroutine test_qsort()
    integer(8) :: values(5)
    character(3) :: words(4)
    values = [3, -1, 2, 0, -7]
    call qsort(values, 5, 8, descending)
    call check(all(values == [3, 2, 0, -1, -7]), 'qsort counted by INTEGER(4)')
    values = [3, -1, 2, 0, -7]
    call qsort(values, 5_8, 8_8, descending)
    call check(all(values == [3, 2, 0, -1, -7]), 'qsort counted by INTEGER(8)')
    values = [3, -1, 2, 0, -7]
    call qsort(values, 4, storage_size(values, kind=8) / 8, descending)
    call check(all(values == [3, 2, 0, -1, -7]), 'qsort counted by both')
    values = [3, -1, 2, 0, -7]
    call qsort(values(2:), 3, 8, descending)
    call check(all(values == [3, 2, 0, -1, -7]), 'qsort of a part')
    words = ['xyz', 'abd', 'abc', '   ']
    call qsort(words, 4, 3, by_text)
    call check(all(words == ['   ', 'abc', 'abd', 'xyz']), 'qsort of CHARACTER elements')
    call qsort(words, 0, 3, by_text)
    call qsort(words, -4, 3, by_text)
    call qsort(words, 4, 0, by_text)
    call check(all(words == ['   ', 'abc', 'abd', 'xyz']), 'qsort of nothing')
  end subroutine

end program
