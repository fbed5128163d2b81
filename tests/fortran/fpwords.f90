! Control and status words through the module. With an argument the program is one of its own children, which traps.
program fpwords
  use, intrinsic :: iso_c_binding, only: c_intptr_t
  use checks, only: check, finish
  use scratch, only: quoted, remove_directory, scratch_directory
  use qxport, only: clearstatusfpqq, getcontrolfpqq, getstatusfpqq, lcwrqq, scwrqq, setcontrolfpqq, sswrqq, &
                    FP_MASK_INVALID, FP_MASK_DENORMAL, FP_MASK_ZERODIVIDE, FP_MASK_OVERFLOW, FP_MASK_UNDERFLOW, &
                    FP_MASK_INEXACT, FP_MASK_ALL, FP_PRECISION_FIELD, FP_PRECISION_24, FP_PRECISION_53, FP_PRECISION_64, &
                    FP_ROUND_FIELD, FP_ROUND_NEAREST, FP_ROUND_DOWN, FP_ROUND_UP, FP_ROUND_TOZERO, FP_INFINITY_AFFINE, &
                    FP_RAISED_INVALID, FP_RAISED_DENORMAL, FP_RAISED_ZERODIVIDE, FP_RAISED_OVERFLOW, FP_RAISED_UNDERFLOW, &
                    FP_RAISED_INEXACT, FP_RAISED_ALL
  implicit none
  logical, parameter :: is_64_bit = bit_size(0_c_intptr_t) == 64
  integer, parameter :: sigfpe_in_shell = 128 + 8
  character(:), allocatable, save :: self, directory
  character(32) :: task

  call get_command_argument(1, task)
  if (task /= '') call be_the_child(trim(task))
  call find_self()
  directory = scratch_directory()
  call check_constants()
  call check_words()
  call check_rounding()
  call check_precision()
  call check_exceptions()
  call remove_directory(directory)
  call finish()

contains

  ! The fields of the words, as the processor lays them out.
  subroutine check_constants()
    call check(all([FP_MASK_INVALID, FP_MASK_DENORMAL, FP_MASK_ZERODIVIDE, FP_MASK_OVERFLOW, FP_MASK_UNDERFLOW, &
                    FP_MASK_INEXACT, FP_MASK_ALL] == [1_2, 2_2, 4_2, 8_2, 16_2, 32_2, 63_2]), 'masks')
    call check(all([FP_RAISED_INVALID, FP_RAISED_DENORMAL, FP_RAISED_ZERODIVIDE, FP_RAISED_OVERFLOW, &
                    FP_RAISED_UNDERFLOW, FP_RAISED_INEXACT, FP_RAISED_ALL] == [1_2, 2_2, 4_2, 8_2, 16_2, 32_2, 63_2]), &
               'flags')
    call check(all([FP_PRECISION_24, FP_PRECISION_53, FP_PRECISION_64, FP_PRECISION_FIELD] &
                   == [0_2, 512_2, 768_2, 768_2]), 'precisions')
    call check(all([FP_ROUND_NEAREST, FP_ROUND_DOWN, FP_ROUND_UP, FP_ROUND_TOZERO, FP_ROUND_FIELD, FP_INFINITY_AFFINE] &
                   == [0_2, 1024_2, 2048_2, 3072_2, 3072_2, 4096_2]), 'rounding and infinity')
  end subroutine

  include 'fpwords.inc'
end program
