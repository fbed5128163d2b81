! Procedures of a program's own that happen to have our names, and arguments unlike ours.
module own_calls
  implicit none
  integer :: calls = 0
end module

integer function access(word)
  use own_calls, only: calls
  implicit none
  integer, intent(in) :: word
  calls = calls + 1
  access = 1000 + word
end function

integer function rename(word)
  use own_calls, only: calls
  implicit none
  integer, intent(in) :: word
  calls = calls + 1
  rename = 2000 + word
end function

subroutine getenv(word)
  use own_calls, only: calls
  implicit none
  integer, intent(out) :: word
  calls = calls + 1
  word = 3000
end subroutine

subroutine sleep()
  use own_calls, only: calls
  implicit none
  calls = calls + 1
end subroutine

subroutine exit()
  use own_calls, only: calls
  implicit none
  calls = calls + 1
end subroutine

! The one name that none of our libraries has: a program that calls it needs this file's object.
integer function own_count()
  use own_calls, only: calls
  implicit none
  own_count = calls
end function
