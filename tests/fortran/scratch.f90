! Directories for the files of a test: each of a name that nobody else has, below TMPDIR or else /tmp, removed whole.
module scratch
  use, intrinsic :: iso_c_binding, only: c_associated, c_char, c_null_char, c_ptr
  implicit none
  private
  public :: scratch_directory, remove_directory, quoted

  interface
    function mkdtemp(template) bind(C) result(made)
      import :: c_char, c_ptr
      character(kind=c_char), intent(inout) :: template(*)
      type(c_ptr) :: made
    end function
  end interface

contains

  function scratch_directory() result(path)
    character(:), allocatable :: path
    integer :: length
    call get_environment_variable('TMPDIR', length=length)
    allocate (character(length) :: path)
    if (length > 0) call get_environment_variable('TMPDIR', path)
    if (length == 0) path = '/tmp'
    path = path//'/qxport.XXXXXX'//c_null_char
    if (.not. c_associated(mkdtemp(path))) error stop 'no directory for the files of this test'
    path = path(:len(path) - 1)
  end function

  ! With all that is in it.
  subroutine remove_directory(path)
    character(*), intent(in) :: path
    call execute_command_line('rm -rf -- '//quoted(trim(path)))
  end subroutine

  ! A text as one word of a shell's command, whatever is in it.
  pure function quoted(text)
    character(*), intent(in) :: text
    character(:), allocatable :: quoted
    integer :: i
    quoted = "'"
    do i = 1, len(text)
      if (text(i:i) == "'") then
        quoted = quoted//"'\''"
      else
        quoted = quoted//text(i:i)
      end if
    end do
    quoted = quoted//"'"
  end function

end module
