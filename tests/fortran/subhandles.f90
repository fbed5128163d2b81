! Procedures named by handles through the module, and called back.
module callbacks
  implicit none
  private
  public :: twice, add_to_total, squared, total
  integer(4), save :: total = 0

contains

  integer(4) function twice(ival)
    integer(4), intent(inout) :: ival
    ival = 2*ival
    twice = ival + 1000
  end function

  integer(8) function squared(ival)
    integer(8), intent(inout) :: ival
    squared = ival * ival
    ival = ival + 1
  end function

  subroutine add_to_total(ival)
    integer(4), intent(in) :: ival
    total = total + ival
  end subroutine
end module

program subhandles
  use, intrinsic :: iso_c_binding, only: c_intptr_t
  use callbacks, only: add_to_total, squared, total, twice
  use checks, only: check, finish
  use qxport, only: pxfcallsubhandle, pxfcallsubhandlei8, pxfgetsubhandle, pxfintget, pxfintset, pxfstructcreate, pxfstructfree
  implicit none
  integer(4), parameter :: enohandle = 127
  logical, parameter :: handles_are_places = storage_size(0_c_intptr_t) == 64
  integer(4) :: doubling, adding

  call check_handles()
  call check_calls()
  call check_wide_calls()
  call check_refusals()
  call check_component()
  call finish()

contains

  subroutine check_handles()
    integer(4) :: again, error
    call pxfgetsubhandle(twice, doubling, error)
    call check(error, 0, 'the handle of a function')
    call pxfgetsubhandle(add_to_total, adding, error)
    call check(error, 0, 'the handle of a subroutine')
    call pxfgetsubhandle(twice, again, error)
    call check(again, doubling, 'one procedure, one handle')
    if (handles_are_places) call check(doubling == 16 .and. adding == 17, 'the first procedures')
  end subroutine

  ! Of procedures whose integers have 8 bytes.
  subroutine check_wide_calls()
    integer(8) :: value, answer
    integer(4) :: handle, error
    call pxfgetsubhandle(squared, handle, error)
    value = 3000000000_8
    error = -1
    answer = pxfcallsubhandlei8(handle, value, error)
    call check(error, 0, 'call a function of INTEGER(8)')
    call check(answer, 9000000000000000000_8, 'what it answers')
    call check(value, 3000000001_8, 'what it does to its argument')
    answer = pxfcallsubhandlei8(0, value, error)
    call check(error, enohandle, 'no handle of such a function')
    call check(value, 3000000001_8, 'the argument stays')
  end subroutine

  subroutine check_calls()
    integer(4) :: value, answer, error
    value = 21
    error = -1
    answer = pxfcallsubhandle(doubling, value, error)
    call check(error, 0, 'call a function')
    call check(answer, 1042, 'what it answers')
    call check(value, 42, 'what it does to its argument')
    answer = pxfcallsubhandle(adding, value, error)
    answer = pxfcallsubhandle(adding, value, error)
    call check(error, 0, 'call a subroutine')
    call check(total, 84, 'what the subroutine does')
    answer = pxfcallsubhandle(adding, 6, error)
    answer = pxfcallsubhandle(adding, value - 32, error)
    call check(total, 100, 'a literal and an expression as the argument')
  end subroutine

  subroutine check_refusals()
    integer(4) :: value, answer, error, handle
    value = 42
    do handle = 0, 15
      answer = pxfcallsubhandle(handle, value, error)
      call check(error, enohandle, 'call nothing, or a reserved handle')
    end do
    call check(value, 42, 'a refused call leaves the argument')
  end subroutine

  subroutine check_component()
    integer(4) :: action, handle, value, answer, error
    call pxfstructcreate('sigaction', action, error)
    call pxfintset(action, 'sa_handler', doubling, error)
    call pxfintget(action, 'sa_handler', handle, error)
    call check(handle, doubling, 'a procedure handle as a component')
    call pxfstructfree(action, error)
    value = 5
    answer = pxfcallsubhandle(handle, value, error)
    call check(answer, 1010, 'the procedure stays when the record is freed')
  end subroutine

end program
