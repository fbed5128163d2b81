! Bits, numbers, Bessel functions and QSORT as older programs call them: by name alone.
program numeric_external
  use, intrinsic :: ieee_arithmetic, only: ieee_is_nan, ieee_negative_inf, ieee_positive_inf, ieee_quiet_nan, ieee_value
  use, intrinsic :: iso_c_binding, only: c_int64_t
  use, intrinsic :: iso_fortran_env, only: int32
  use checks, only: check, finish
  implicit none
  interface
    ! What compilers call by value.
    integer(c_int64_t) function own_dshiftl(ileft, iright, ishift) bind(C, name='_dshiftl')
      import :: c_int64_t
      integer(c_int64_t), value :: ileft, iright, ishift
    end function
    integer(c_int64_t) function own_dshiftr(ileft, iright, ishift) bind(C, name='_dshiftr')
      import :: c_int64_t
      integer(c_int64_t), value :: ileft, iright, ishift
    end function
  end interface
  real(4), external :: besj0, besj1, besjn, besy0, besy1, besyn, complreal, dim, ifloati, ifloatj
  real(8), external :: cdfloat, dbesj0, dbesj1, dbesjn, dbesy0, dbesy1, dbesyn, ddim, dfloati, dfloatj, dfloatk, idfloat
  integer(2), external :: iidim, intc, jmod, short
  integer(4), external :: complint, csmg, inmax, jabs, jdim, long, lshift, rshift, shiftl, shiftr
  integer(8), external :: dshiftl, dshiftr
  logical(4), external :: bit, compllog
  logical(8), external :: biti8
  integer(4), external :: ascending
  external :: bic, bici8, bis, bisi8, qsort, qsort_ii, qsort_il

  call test_bits()
  call test_numbers()
  call test_bessel()
  call test_names_of_intrinsics()
  call test_qsort()
  call finish()

contains

  include 'numeric.inc'

  subroutine test_names_of_intrinsics()
    real(4) :: nan
    nan = ieee_value(0.0, ieee_quiet_nan)
    call check(dim(3.0, 1.0), 2.0, 'dim')
    call check(dim(1.0, 3.0), 0.0, 'dim of less')
    call check(ieee_is_nan(dim(nan, 1.0)), 'dim of a NaN')
    call check(shiftl(1, 33), 0, 'shiftl by 33')
    call check(shiftl(1, -1), 0, 'shiftl by -1')
    call check(shiftl(1, 4), 16, 'shiftl')
    call check(shiftr(-8, 1), 2147483644, 'shiftr')
    call check(dshiftl(1_8, -1_8, 4_8), 31_8, 'dshiftl')
    call check(dshiftl(5_8, 7_8, 64_8), 7_8, 'dshiftl by 64')
    call check(dshiftl(5_8, 7_8, 65_8), 0_8, 'dshiftl by 65')
    call check(dshiftr(1_8, 16_8, 4_8), ior(2_8**60, 1_8), 'dshiftr')
    call check(own_dshiftl(1_8, -1_8, 4_8), 31_8, 'dshiftl by value')
    call check(own_dshiftr(1_8, 16_8, 4_8), ior(2_8**60, 1_8), 'dshiftr by value')
  end subroutine

  subroutine test_qsort()
    integer(8) :: values(5)
    values = [3, -1, 2, 0, -7]
    call qsort(values, 5_8, 8_8, ascending)
    call check(all(values == [-7, -1, 0, 2, 3]), 'qsort')
    values = [3, -1, 2, 0, -7]
    call qsort_ii(values, 5, 8, ascending)
    call check(all(values == [-7, -1, 0, 2, 3]), 'qsort_ii')
    values = [3, -1, 2, 0, -7]
    call qsort_il(values, 5, 8_8, ascending)
    call check(all(values == [-7, -1, 0, 2, 3]), 'qsort_il')
  end subroutine

end program

integer(4) function ascending(a, b)
  implicit none
  integer(8), intent(in) :: a, b
  ascending = merge(-1, merge(1, 0, a > b), a < b)
end function
