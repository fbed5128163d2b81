! The names in a directory, for the examples that read directories.

! Growing lists of texts.
module text_lists
  implicit none
  private

  type :: text
    character(:), allocatable :: value
  end type text

  type, public :: text_list
    integer :: count = 0
    type(text), allocatable :: items(:)
  contains
    procedure :: add
  end type text_list

contains

  ! Doubling keeps the cost of a long list in proportion to its length.
  subroutine add(list, value)
    class(text_list), intent(inout) :: list
    character(*), intent(in) :: value
    type(text), allocatable :: more(:)
    if (.not. allocated(list%items)) allocate (list%items(64))
    if (list%count == size(list%items)) then
      allocate (more(2*list%count))
      more(1:list%count) = list%items
      call move_alloc(more, list%items)
    end if
    list%count = list%count + 1
    list%items(list%count)%value = value
  end subroutine add
end module text_lists

module directories
  use qxport, only: pxfclosedir, pxfgetenv, pxfopendir, pxfreaddir, pxfsetenv, pxfstrget, pxfstructcreate
  use text_lists, only: text_list
  implicit none
  private
  public :: read_directory, is_self_or_parent

contains

  ! All names, "." and ".." among them, in the order that the directory has them. With an error other than 0, the names
  ! are those that came before it.
  subroutine read_directory(path, names, error)
    character(*), intent(in) :: path
    type(text_list), intent(inout) :: names
    integer, intent(out) :: error
    integer, parameter :: END_OF_DIRECTORY = 128
    integer, save :: record = 0
    character(256) :: name
    integer :: stream, length, ierror
    names%count = 0
    if (record == 0) then
      call pxfstructcreate('dirent', record, error)
      if (error /= 0) return
    end if
    call pxfopendir(path, len(path), stream, error)
    if (error /= 0) return
    call clear_error()
    do
      call pxfreaddir(stream, record, error)
      if (error /= 0) exit
      call pxfstrget(record, 'd_name', name, length, ierror)
      call names%add(name(:length))
    end do
    if (error == END_OF_DIRECTORY) error = 0
    call pxfclosedir(stream, ierror)
  end subroutine read_directory

  ! Whether a name is "." or "..", without the blanks at the end that a comparison would overlook.
  pure logical function is_self_or_parent(name)
    character(*), intent(in) :: name
    is_self_or_parent = len(name) <= 2 .and. verify(name, '.') == 0
  end function is_self_or_parent

  ! pxfreaddir reports an error left over from an earlier call at the end of a directory; a successful pxfgetenv leaves
  ! none.
  subroutine clear_error()
    character(*), parameter :: VARIABLE = 'QXPORT_EXAMPLE'
    logical, save :: first = .true.
    character(1) :: text
    integer :: length, ierror
    if (first) call pxfsetenv(VARIABLE, len(VARIABLE), '1', 1, 1, ierror)
    first = .false.
    call pxfgetenv(VARIABLE, len(VARIABLE), text, length, ierror)
  end subroutine clear_error
end module directories
