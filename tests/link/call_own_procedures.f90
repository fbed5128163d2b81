! Plain calls reach the program's own procedures, calls through the module reach ours.
program call_own_procedures
  use qxport, only: our_access => access, our_exit => exit, our_getenv => getenv, our_rename => rename, &
    our_sleep => sleep, ierrno
  implicit none
  integer, external :: access, rename, own_count
  external :: exit, getenv, sleep
  character(80) :: home
  integer :: word

  call expect(access(1) == 1001, 'access is not the program''s own')
  call expect(rename(2) == 2002, 'rename is not the program''s own')
  call getenv(word)
  call expect(word == 3000, 'getenv is not the program''s own')
  call sleep()
  call exit()
  call expect(own_count() == 5, 'sleep or exit is not the program''s own')

  call expect(our_access('/', 'x ') == 0, 'the module''s access does not know /')
  call expect(our_access('/no/such/name', ' ') == 22, 'the module''s access knows a name that is not there')
  call expect(our_rename('/no/such/name', '/no/such/target') == 2, 'the module''s rename is not ours')
  call expect(ierrno() == 2, 'the module''s rename recorded nothing')
  call our_getenv('QXPORT_TEST_WORD', home)
  call expect(home == 'a word', 'the module''s getenv does not see the environment')
  call our_sleep(0)
  call expect(own_count() == 5, 'the module called the program''s own')
  call our_exit(0)
  error stop 'the module''s exit did not end the program'

contains

  subroutine expect(holds, otherwise)
    logical, intent(in) :: holds
    character(*), intent(in) :: otherwise
    if (holds) return
    print '(a)', otherwise
    error stop
  end subroutine

end program
