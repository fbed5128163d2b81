! IEEE_FLAGS and IEEE_HANDLER through the module. With arguments the program is one of its own children, which traps.
module last_words
  implicit none
  integer, parameter :: journal = 10

contains

  subroutine last_word(number, code)
    integer(4), intent(in) :: number, code
    write (journal, '(a, i0, 1x, i0)') 'last word ', number, code
  end subroutine
end module

program ieee
  use, intrinsic :: iso_c_binding, only: c_funloc, c_int, c_int32_t, c_intptr_t
  use checks, only: check, finish
  use last_words, only: journal, last_word
  use scratch, only: quoted, remove_directory, scratch_directory
  use qxport, only: getpid, ieee_flags, ieee_handler, ipxfconst, pxfkill, valFPE_INEXACT, valFPE_INVALID, valFPE_OVERFLOW, &
                    valFPE_UNDERFLOW, valFPE_ZERODIVIDE, FP_CODE_DIVISION, FP_CODE_INEXACT, FP_CODE_INVALID, &
                    FP_CODE_OVERFLOW, FP_CODE_UNDERFLOW, FP_DIRECTION_NEAREST, FP_DIRECTION_NEGATIVE, &
                    FP_DIRECTION_POSITIVE, FP_DIRECTION_TOZERO, FP_EXCEPTION_DIVISION, FP_EXCEPTION_INEXACT, &
                    FP_EXCEPTION_INVALID, FP_EXCEPTION_OVERFLOW, FP_EXCEPTION_UNDERFLOW, FP_WIDTH_DOUBLE, FP_WIDTH_EXTENDED, &
                    FP_WIDTH_SINGLE
  implicit none
  interface
    subroutine ieee_set_mxcsr(bits) bind(C)
      import :: c_int32_t
      integer(c_int32_t), value :: bits
    end subroutine
    subroutine ieee_clear_mxcsr(bits) bind(C)
      import :: c_int32_t
      integer(c_int32_t), value :: bits
    end subroutine
  end interface
  integer, parameter :: came_back = 4, killed_by_sigfpe = 128 + 8
  character(:), allocatable, save :: self, directory
  character(32) :: task

  call get_command_argument(1, task)
  if (task /= '') call be_the_child(trim(task))
  call find_self()
  directory = scratch_directory()
  call check_constants()
  call check_direction()
  call check_precision()
  call check_words()
  call check_exceptions()
  call check_handler_words()
  call check_address()
  call check_traps()
  call check_unmasked_flags()
  call check_sse_masks()
  call remove_directory(directory)
  call finish()

contains

  subroutine check_constants()
    call check(all([FP_DIRECTION_NEAREST, FP_DIRECTION_NEGATIVE, FP_DIRECTION_POSITIVE, FP_DIRECTION_TOZERO] &
                   == [0, 1, 2, 3]), 'directions')
    call check(all([FP_WIDTH_SINGLE, FP_WIDTH_DOUBLE, FP_WIDTH_EXTENDED] == [0, 2, 3]), 'precisions')
    call check(all([FP_EXCEPTION_INVALID, FP_EXCEPTION_DIVISION, FP_EXCEPTION_OVERFLOW, FP_EXCEPTION_UNDERFLOW, &
                    FP_EXCEPTION_INEXACT] == [1, 4, 8, 16, 32]), 'exceptions')
    call check(all([FP_CODE_INVALID, FP_CODE_DIVISION, FP_CODE_OVERFLOW, FP_CODE_UNDERFLOW, FP_CODE_INEXACT] &
                   == [valFPE_INVALID, valFPE_ZERODIVIDE, valFPE_OVERFLOW, valFPE_UNDERFLOW, valFPE_INEXACT]), &
               'codes and their cells')
    call check(all([FP_CODE_INVALID, FP_CODE_DIVISION, FP_CODE_OVERFLOW, FP_CODE_UNDERFLOW, FP_CODE_INEXACT] &
                   == [129, 131, 132, 133, 134]), 'codes')
  end subroutine

  subroutine check_address()
    call check(ieee_handler('set', 'underflow', last_word) == 0_c_intptr_t, 'set underflow')
    call check(ieee_handler('get', 'underflow', last_word) == transfer(c_funloc(last_word), 0_c_intptr_t), &
               'the address is that of C_FUNLOC')
    call check(ieee_handler('clear', 'all', last_word) == 0_c_intptr_t, 'clear all')
  end subroutine

  ! Masks of the SSE unit, by way of C. Where the compiler computes in the x87 unit, as it may for a 32-bit target, that one
  ! has masks of its own; its registers hold what overflows a REAL(8).
  subroutine check_sse_masks()
    real(8), volatile :: largest
    logical :: is_sse
    largest = huge(largest)
    is_sse = largest * 2 / 2 > largest
    call check(status_of('sse-unmasked_division8'), merge(killed_by_sigfpe, came_back, is_sse), 'unmasked in the SSE unit')
    call check(status_of('sse-masked_division8'), came_back, 'masked again in the SSE unit')
    call check(status_of('sse-unmasked_division10'), came_back, 'the x87 unit stays masked')
  end subroutine

  subroutine set_masks(how, exception)
    character(*), intent(in) :: how, exception
    select case (how)
    case ('sse-unmasked')
      call ieee_set_mxcsr(8_c_int32_t)
    case ('sse-masked')
      call ieee_set_mxcsr(8_c_int32_t)
      call ieee_clear_mxcsr(8_c_int32_t)
    case default
      call set_flags(how, exception)
    end select
  end subroutine

  subroutine kill_self()
    integer(4) :: error
    call pxfkill(getpid(), ipxfconst('SIGFPE'), error)
    call check(error, 0, 'pxfkill')
  end subroutine

  include 'ieee.inc'
end program
