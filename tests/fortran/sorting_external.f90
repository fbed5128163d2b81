! Sorting and searching as older programs call them: by name alone, with addresses and codes of their own. The routines
! that count by the other kind, the one that no address has, are named for this target where the program is built.
program sorting_external
  use, intrinsic :: iso_c_binding, only: c_intptr_t
  use checks, only: check, finish
  implicit none
  external :: sortqq, SORTQQ_OTHER
  integer(4), external :: bsearchqq, BSEARCHQQ_OTHER, getlasterrorqq
  integer(4), parameter :: REAL4 = int(z'10000'), INTEGER2 = int(z'40000'), INTEGER4 = int(z'50000')

  call check_sort()
  call check_search()
  call check_errors()
  call check_other_kind()
  call finish()

contains

  subroutine check_sort()
    integer(4) :: values(14)
    real(4) :: reals(13)
    character(5) :: words(3)
    integer(c_intptr_t) :: count
    integer(4) :: i
    values = [(14 - i, i=1, 14)]
    count = 14
    call sortqq(loc(values), count, INTEGER4)
    call check(all(values == [(i, i=0, 13)]), 'INTEGER(4)')
    call check(count == 14, 'the count stays')
    reals = [(-real(i), i=1, 13)]
    count = 13
    call sortqq(loc(reals), count, REAL4)
    call check(all(nint(reals) == [(i - 14, i=1, 13)]), 'REAL(4)')
    words = ['omega', 'alpha', 'Gamma']
    count = 3
    call sortqq(loc(words), count, 5)
    call check(words(1)//words(2)//words(3), 'Gammaalphaomega', 'CHARACTER(5)')
  end subroutine

  subroutine check_search()
    integer(2) :: values(4) = [1_2, 3_2, 5_2, 7_2], key
    integer(c_intptr_t) :: count
    count = 4
    key = 5
    call check(bsearchqq(loc(key), loc(values), count, INTEGER2), 3, 'an element')
    key = 4
    call check(bsearchqq(loc(key), loc(values), count, INTEGER2), 0, 'no element')
    call check(count == 4, 'the count of a search stays')
  end subroutine

  subroutine check_errors()
    integer(4) :: values(2) = [2, 1]
    integer(c_intptr_t) :: count
    count = 0
    call sortqq(loc(values), count, INTEGER4)
    call check(count == 0, 'a count of 0')
    call check(getlasterrorqq(), 22, 'a count of 0: errno')
    count = 2
    call sortqq(loc(values), count, int(z'70000'))
    call check(count == 0, 'the code in the gap')
    call check(getlasterrorqq(), 22, 'the code in the gap: errno')
    call check(all(values == [2, 1]), 'the array is left alone')
  end subroutine

  subroutine check_other_kind()
    integer(4) :: values(14), key
    integer(OTHER_KIND) :: count
    integer(4) :: i
    values = [(14 - i, i=1, 14)]
    count = 14
    call SORTQQ_OTHER(loc(values), count, INTEGER4)
    call check(all(values == [(i, i=0, 13)]) .and. count == 14, 'the other kind of count')
    key = 11
    call check(BSEARCHQQ_OTHER(loc(key), loc(values), count, INTEGER4) == 12, 'a search counted by the other kind')
    count = -1
    call SORTQQ_OTHER(loc(values), count, INTEGER4)
    call check(count == 0, 'a failure by the other kind')
  end subroutine

end program
