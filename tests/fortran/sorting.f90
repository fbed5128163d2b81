! Sorting and searching through the module: every type, and counts of both kinds.
program sorting
  use, intrinsic :: iso_c_binding, only: c_intptr_t, c_loc, c_ptr
  use, intrinsic :: iso_fortran_env, only: int32, real128
  use, intrinsic :: ieee_arithmetic, only: ieee_is_nan, ieee_value, ieee_quiet_nan
  use checks, only: check, finish
  use qxport, only: sortqq, bsearchqq, getlasterrorqq, errsns, SORT_INTEGER1, SORT_INTEGER2, SORT_INTEGER4, &
                    SORT_INTEGER8, SORT_REAL4, SORT_REAL8, SORT_REAL16
  implicit none
  integer(4), parameter :: EINVAL = 22

  call check_numbers()
  call check_texts()
  call check_counts()
  call check_errors()
  call check_many()
  call check_any_array()
  call finish()

contains

  integer(c_intptr_t) function address(pointer)
    type(c_ptr), intent(in) :: pointer
    address = transfer(pointer, 0_c_intptr_t)
  end function

  subroutine check_numbers()
    integer(1), target :: i1(4) = [127_1, -127_1, 0_1, -1_1]
    integer(2), target :: i2(4) = [300_2, -300_2, 0_2, -1_2]
    integer(int32), target :: i4(4) = [integer(int32) :: 7, -70000, 0, huge(0_int32)]
    integer(8), target :: i8(4) = [5000000000_8, -5000000000_8, 0_8, 1_8], key = 5000000000_8
    real(4), target :: r4(4) = [1.5, -1.5, 0.25, 1e30]
    real(8), target :: r8(4) = [1.5d0, -1.5d300, 0.25d-300, 1d30], wanted = 1d30
    real(real128), target :: r16(4) = [1.5_real128, -1.5e4000_real128, 0.25e-4000_real128, 1e30_real128]
    integer :: count
    count = 4
    call sortqq(address(c_loc(i1)), count, SORT_INTEGER1)
    call sortqq(address(c_loc(i2)), count, SORT_INTEGER2)
    call sortqq(address(c_loc(i4)), count, SORT_INTEGER4)
    call sortqq(address(c_loc(i8)), count, SORT_INTEGER8)
    call sortqq(address(c_loc(r4)), count, SORT_REAL4)
    call sortqq(address(c_loc(r8)), count, SORT_REAL8)
    call sortqq(address(c_loc(r16)), count, SORT_REAL16)
    call check(count, 4, 'the count of a sorted array stays')
    call check(all(i1 == [-127_1, -1_1, 0_1, 127_1]), 'INTEGER(1)')
    call check(all(i2 == [-300_2, -1_2, 0_2, 300_2]), 'INTEGER(2)')
    call check(all(i4 == [integer(int32) :: -70000, 0, 7, huge(0_int32)]), 'INTEGER(4)')
    call check(all(i8 == [-5000000000_8, 0_8, 1_8, 5000000000_8]), 'INTEGER(8)')
    call check(all(abs(r4 - [-1.5, 0.25, 1.5, 1e30]) <= 0), 'REAL(4)')
    call check(all(abs(r8 - [-1.5d300, 0.25d-300, 1.5d0, 1d30]) <= 0), 'REAL(8)')
    call check(all(abs(r16 - [-1.5e4000_real128, 0.25e-4000_real128, 1.5_real128, 1e30_real128]) <= 0), 'REAL(16)')
    call check(bsearchqq(address(c_loc(key)), address(c_loc(i8)), 4, SORT_INTEGER8), 4, 'search of INTEGER(8)')
    call check(bsearchqq(address(c_loc(wanted)), address(c_loc(r8)), 4, SORT_REAL8), 4, 'search of REAL(8)')
    wanted = 2
    call check(bsearchqq(address(c_loc(wanted)), address(c_loc(r8)), 4, SORT_REAL8), 0, 'search for nothing')
  end subroutine

  subroutine check_texts()
    character(3), target :: words(4) = ['abc', 'ABC', 'ab ', 'b  '], key
    integer :: count
    count = size(words)
    call sortqq(address(c_loc(words)), count, len(words))
    call check(words(1)//words(2)//words(3)//words(4), 'ABCab abcb  ', 'CHARACTER(3)')
    key = 'abc'
    call check(bsearchqq(address(c_loc(key)), address(c_loc(words)), count, len(words)), 3, 'search of CHARACTER(3)')
    key = 'ab'
    call check(bsearchqq(address(c_loc(key)), address(c_loc(words)), count, len(words)), 2, 'a padded key')
    key = 'aba'
    call check(bsearchqq(address(c_loc(key)), address(c_loc(words)), count, len(words)), 0, 'no such text')
  end subroutine

  ! Either kind, and literals of either kind where the count is only read.
  subroutine check_counts()
    integer(int32), target :: values(5) = [5_int32, 4_int32, 3_int32, 2_int32, 1_int32], key = 4_int32
    integer(4) :: short
    integer(8) :: long
    short = 5
    call sortqq(address(c_loc(values)), short, SORT_INTEGER4)
    call check(all(values == [1, 2, 3, 4, 5]), 'an INTEGER(4) count')
    values = [5_int32, 4_int32, 3_int32, 2_int32, 1_int32]
    long = 5
    call sortqq(address(c_loc(values)), long, SORT_INTEGER4)
    call check(all(values == [1, 2, 3, 4, 5]), 'an INTEGER(8) count')
    call check(bsearchqq(address(c_loc(key)), address(c_loc(values)), 5_4, SORT_INTEGER4), 4, 'search, INTEGER(4)')
    call check(bsearchqq(address(c_loc(key)), address(c_loc(values)), 5_8, SORT_INTEGER4), 4, 'search, INTEGER(8)')
    short = -1
    call sortqq(address(c_loc(values)), short, SORT_INTEGER4)
    call check(short, 0, 'a refused INTEGER(4) count')
    long = -1
    call sortqq(address(c_loc(values)), long, SORT_INTEGER4)
    call check(long, 0_8, 'a refused INTEGER(8) count')
  end subroutine

  subroutine check_errors()
    integer(int32), target :: values(3) = [3_int32, 2_int32, 1_int32]
    integer :: count, recorded(5)
    count = 3
    call sortqq(address(c_loc(values)), count, 458752)
    call check(count, 0, 'the code in the gap: count')
    call check(getlasterrorqq(), EINVAL, 'the code in the gap: errno')
    call errsns(recorded(1), recorded(2), recorded(3), recorded(4), recorded(5))
    call check(recorded(2), EINVAL, 'the code in the gap: recorded')
    call check(all(values == [3, 2, 1]), 'the array is left alone')
    count = huge(count)
    call sortqq(0_c_intptr_t, count, SORT_REAL8)
    call check(count, 0, 'no array')
    call check(bsearchqq(address(c_loc(values)), address(c_loc(values)), 3, 0), 0, 'search with a code of 0')
    call check(bsearchqq(address(c_loc(values)), address(c_loc(values)), 0, SORT_INTEGER4), 0, 'search in nothing')
  end subroutine

  ! A large array, a part of one, and one with NaNs, which keeps all that it had.
  subroutine check_many()
    integer, parameter :: n = 200000
    real(8), allocatable, target :: values(:)
    real(8) :: former
    integer :: count, nans
    allocate (values(n))
    call random_number(values)
    former = values(n)
    count = n - 1
    call sortqq(address(c_loc(values)), count, SORT_REAL8)
    call check(all(values(2:n - 1) >= values(1:n - 2)), 'many elements')
    call check(abs(values(n) - former) <= 0, 'the element behind the last one')
    call check(bsearchqq(address(c_loc(values(1000))), address(c_loc(values)), count, SORT_REAL8) > 0, 'search in many')
    call random_number(values)
    values(::1000) = ieee_value(1d0, ieee_quiet_nan)
    count = n
    call sortqq(address(c_loc(values)), count, SORT_REAL8)
    nans = sum(merge(1, 0, ieee_is_nan(values)))
    call check(nans, n/1000, 'all NaNs are still there')
  end subroutine

  ! Arrays of any rank, allocated or not, and records, which are strings of bytes.
  subroutine check_any_array()
    type record
      sequence
      character(4) :: key
      integer(4) :: number
    end type
    type(record), target :: records(4) = [record('pear', 1), record('fig ', 2), record('plum', 3), record('date', 4)]
    type(record), target :: wanted = record('pear', 1)
    integer(1), allocatable, target :: cube(:, :, :)
    integer(2), target :: matrix(2, 3) = reshape([6_2, 5_2, 4_2, 3_2, 2_2, 1_2], [2, 3])
    real(4), pointer :: column(:)
    real(4), target :: table(3, 2) = reshape([3.0, 2.0, 1.0, 30.0, 20.0, 10.0], [3, 2])
    real(8), target :: scalar = 7
    integer(4) :: short, i
    integer(8) :: long
    long = size(records)
    call sortqq(loc(records), long, storage_size(records)/8)
    call check(all(records%number == [4, 2, 1, 3]), 'records')
    call check(bsearchqq(loc(wanted), loc(records), long, storage_size(records)/8), 3, 'search of records')
    short = size(matrix)
    call sortqq(loc(matrix), short, SORT_INTEGER2)
    call check(all(reshape(matrix, [6]) == [1_2, 2_2, 3_2, 4_2, 5_2, 6_2]), 'an array of rank 2')
    allocate (cube(4, 4, 4))
    cube = reshape([(int(31 - i, 1), i=0, 63)], [4, 4, 4])
    long = size(cube)
    call sortqq(loc(cube), long, SORT_INTEGER1)
    call check(all(reshape(cube, [64]) == [(int(i - 32, 1), i=0, 63)]), 'an allocated array of rank 3')
    column => table(:, 2)
    short = size(column)
    call sortqq(loc(column), short, SORT_REAL4)
    call check(all(nint(table) == reshape([3, 2, 1, 10, 20, 30], [3, 2])), 'a column by a pointer')
    long = 1
    call sortqq(loc(scalar), long, SORT_REAL8)
    call check(long == 1 .and. nint(scalar) == 7, 'a scalar')
  end subroutine

end program
