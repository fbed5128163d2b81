! Control and status words as older programs use them: by name alone, with numbers of their own. With an argument the
! program is one of its own children, which traps.
program fpwords_external
  use, intrinsic :: iso_c_binding, only: c_intptr_t
  use checks, only: check, finish
  use scratch, only: quoted, remove_directory, scratch_directory
  implicit none
  external :: clearstatusfpqq, getcontrolfpqq, getstatusfpqq, lcwrqq, scwrqq, setcontrolfpqq, sswrqq
  integer(2), parameter :: FP_MASK_INVALID = 1, FP_MASK_ZERODIVIDE = 4, FP_MASK_OVERFLOW = 8, FP_MASK_UNDERFLOW = 16, &
    FP_MASK_INEXACT = 32, FP_MASK_ALL = 63, FP_PRECISION_FIELD = 768, FP_PRECISION_24 = 0, FP_PRECISION_53 = 512, &
    FP_PRECISION_64 = 768, FP_ROUND_FIELD = 3072, FP_ROUND_NEAREST = 0, FP_ROUND_DOWN = 1024, FP_ROUND_UP = 2048, &
    FP_ROUND_TOZERO = 3072, FP_INFINITY_AFFINE = 4096, FP_MASK_DENORMAL = 2, FP_RAISED_INVALID = 1, FP_RAISED_DENORMAL = 2, &
    FP_RAISED_ZERODIVIDE = 4, FP_RAISED_OVERFLOW = 8, FP_RAISED_UNDERFLOW = 16, FP_RAISED_INEXACT = 32, FP_RAISED_ALL = 63
  logical, parameter :: is_64_bit = bit_size(0_c_intptr_t) == 64
  integer, parameter :: sigfpe_in_shell = 128 + 8
  character(:), allocatable, save :: self, directory
  character(32) :: task

  call get_command_argument(1, task)
  if (task /= '') call be_the_child(trim(task))
  call find_self()
  directory = scratch_directory()
  call check_words()
  call check_rounding()
  call check_precision()
  call check_exceptions()
  call remove_directory(directory)
  call finish()

contains

  include 'fpwords.inc'
end program
