! montecarlo [-s SEED] [-f FILE] pi|walk SAMPLES: estimates pi by random points, or how far a random walk of a thousand
! steps leads, and says how far off the estimate may be.
!
! A bar on the terminal shows the progress. With a FILE the computation is saved there, at Ctrl-C and at its end, and the
! next call goes on from it: what comes out is the same, to the last digit, as without the interruption.
module interruption
  implicit none
  private
  public :: is_interrupted, on_interrupt
  logical, volatile :: is_interrupted = .false.

contains

  subroutine on_interrupt(number)
    integer, intent(in) :: number
    if (number > 0) is_interrupted = .true.
  end subroutine
end module

! What is computed, how far it has come, and how it is saved.
module experiments
  use, intrinsic :: iso_fortran_env, only: int64, real64
  use qxport, only: RANDOM_STATE_SIZE
  implicit none
  private
  public :: add_samples, experiment, load, mean_of, error_of, save_to

  type :: experiment
    character(4) :: what = ''
    integer(int64) :: samples = 0
    real(real64) :: total = 0, squares = 0
  end type
  character(*), parameter :: signature = 'montecarlo 1'
  integer, parameter :: steps = 1000

contains

  subroutine add_samples(run, number)
    type(experiment), intent(inout) :: run
    integer(int64), intent(in) :: number
    integer(int64) :: i
    real(real64) :: x
    do i = 1, number
      if (run%what == 'pi') then
        x = point()
      else
        x = walk()
      end if
      run%total = run%total + x
      run%squares = run%squares + x**2
    end do
    run%samples = run%samples + number
  end subroutine

  ! 4 for a point of the unit square that lies in the quarter of a circle, else 0: pi on the average.
  real(real64) function point()
    use qxport, only: drand
    real(real64) :: x, y
    x = drand(0)
    y = drand(0)
    point = merge(4, 0, x**2 + y**2 < 1)
  end function

  ! The square of the distance from the beginning: the number of steps on the average.
  real(real64) function walk()
    use qxport, only: irandm
    integer, parameter :: east(0:3) = [1, 0, -1, 0], north(0:3) = [0, 1, 0, -1]
    integer :: i, direction, x, y
    x = 0
    y = 0
    do i = 1, steps
      direction = ishft(irandm(0), -29)  ! the two upper bits of 31
      x = x + east(direction)
      y = y + north(direction)
    end do
    walk = real(x, real64)**2 + real(y, real64)**2
  end function

  real(real64) function mean_of(run)
    type(experiment), intent(in) :: run
    mean_of = run%total / real(max(run%samples, 1_int64), real64)
  end function

  ! The standard error of the mean.
  real(real64) function error_of(run)
    type(experiment), intent(in) :: run
    real(real64) :: n
    n = real(max(run%samples, 2_int64), real64)
    error_of = sqrt(max(run%squares / n - mean_of(run)**2, 0d0) / (n - 1))
  end function

  ! Into a new file that takes the old one's place when it is whole. The message is blank when all is well.
  subroutine save_to(file, run, message)
    use qxport, only: commitqq, random_save, rename, unlink
    character(*), intent(in) :: file
    type(experiment), intent(in) :: run
    character(*), intent(out) :: message
    integer(int64) :: state(RANDOM_STATE_SIZE)
    integer :: unit, status
    logical :: committed
    status = random_save(state, size(state))
    open (newunit=unit, file=file//'.new', status='replace', action='write', iostat=status, iomsg=message)
    if (status /= 0) return
    write (unit, '(a)', iostat=status, iomsg=message) signature, run%what
    if (status == 0) write (unit, '(i0)', iostat=status, iomsg=message) run%samples, state
    if (status == 0) write (unit, '(es26.17e3)', iostat=status, iomsg=message) run%total, run%squares
    committed = .false.
    if (status == 0) committed = commitqq(unit)
    if (status == 0 .and. .not. committed) message = 'it cannot be written to its device'
    close (unit, iostat=status)
    if (committed .and. status == 0) then
      message = ''
      if (rename(file//'.new', file) /= 0) message = 'it cannot be replaced'
    end if
    if (message /= '') status = unlink(file//'.new')
  end subroutine

  ! The message is blank when all is well.
  subroutine load(file, run, message)
    use qxport, only: random_restore
    character(*), intent(in) :: file
    type(experiment), intent(out) :: run
    character(*), intent(out) :: message
    character(len(signature)) :: first
    integer(int64) :: state(RANDOM_STATE_SIZE)
    integer :: unit, status
    open (newunit=unit, file=file, status='old', action='read', iostat=status, iomsg=message)
    if (status /= 0) return
    read (unit, '(a)', iostat=status) first, run%what
    if (status == 0) read (unit, *, iostat=status) run%samples, state, run%total, run%squares
    if (status == 0 .and. first /= signature) status = 1
    if (status == 0 .and. run%samples < 0) status = 1
    if (status == 0) status = random_restore(state, size(state))
    close (unit)
    message = ''
    if (status /= 0) message = 'it holds no computation of this program'
  end subroutine
end module

program montecarlo
  use, intrinsic :: iso_c_binding, only: c_intptr_t
  use, intrinsic :: iso_fortran_env, only: error_unit, int64, output_unit, real64
  use experiments, only: add_samples, error_of, experiment, load, mean_of, save_to
  use interruption, only: is_interrupted, on_interrupt
  use qxport, only: dclock, exit, isatty, iranget, iranset, signal
  implicit none
  integer, parameter :: sigint = 2, call_it = -1
  real(real64), parameter :: between_bars = 0.1, between_savings = 60
  type(experiment) :: run
  character(:), allocatable, save :: file, what
  integer(int64) :: wanted, at_begin, piece
  integer :: seed
  logical :: seed_given, has_bar
  real(real64) :: begin, now, last_bar, last_saving

  seed = 1
  seed_given = .false.
  file = ''
  call read_arguments()
  call begin_or_go_on()
  if (signal(sigint, on_interrupt, call_it) == -1_c_intptr_t) write (error_unit, '(a)') 'montecarlo: Ctrl-C saves nothing'

  has_bar = isatty(error_unit)
  piece = merge(100000, 100, what == 'pi')
  begin = dclock()
  now = begin
  last_bar = begin - between_bars
  last_saving = begin
  at_begin = run%samples
  do while (run%samples < wanted .and. .not. is_interrupted)
    call add_samples(run, min(piece, wanted - run%samples))
    now = dclock()
    if (has_bar .and. now - last_bar >= between_bars) then
      call show_bar()
      last_bar = now
    end if
    if (now - last_saving >= between_savings) then
      call save()
      last_saving = now
    end if
  end do
  if (has_bar) then
    call show_bar()
    write (error_unit, '(a)') ''
  end if
  call save()
  call print_result()
  if (is_interrupted .and. run%samples < wanted) then
    if (file == '') write (error_unit, '(a)') 'montecarlo: interrupted; with -f FILE it could go on later'
    if (file /= '') write (error_unit, '(3a)') 'montecarlo: interrupted; the same command goes on from ''', file, ''''
    call exit(130)
  end if

contains

  subroutine fail(message, status)
    character(*), intent(in) :: message
    integer, intent(in) :: status
    write (error_unit, '(2a)') 'montecarlo: ', message
    if (status == 2) write (error_unit, '(a)') 'usage: montecarlo [-s SEED] [-f FILE] pi|walk SAMPLES'
    call exit(status)
  end subroutine

  function argument(number) result(text)
    integer, intent(in) :: number
    character(:), allocatable :: text
    integer :: length
    call get_command_argument(number, length=length)
    allocate (character(length) :: text)
    call get_command_argument(number, text)
  end function

  subroutine read_arguments()
    character(:), allocatable :: text
    integer :: i
    i = 1
    do while (i <= command_argument_count())
      text = argument(i)
      if (text /= '-s' .and. text /= '-f') exit
      if (i == command_argument_count()) call fail(text//' wants a value', 2)
      if (text == '-s') then
        seed = int(number_in(argument(i + 1), -2d0**31, 2d0**31 - 1, 'a seed is a whole number of 32 bits'))
        seed_given = .true.
      else
        file = argument(i + 1)
        if (file == '') call fail('the name of the file is empty', 2)
      end if
      i = i + 2
    end do
    if (command_argument_count() /= i + 1) call fail('it wants two arguments behind the options', 2)
    what = argument(i)
    if (what /= 'pi' .and. what /= 'walk') call fail('it knows pi and walk, not '''//what//'''', 2)
    wanted = number_in(argument(i + 1), 1d0, 1d15, 'SAMPLES is a whole number from 1 to 1e15')
  end subroutine

  ! A whole number, such as 250000 or 1e9.
  integer(int64) function number_in(text, least, most, otherwise)
    character(*), intent(in) :: text, otherwise
    real(real64), intent(in) :: least, most
    real(real64) :: value
    integer :: status
    status = merge(1, 0, text == '' .or. verify(text, '0123456789eE+-') /= 0)
    value = 0
    if (status == 0) read (text, *, iostat=status) value
    if (status == 0) status = merge(0, 1, value >= least .and. value <= most .and. abs(value - anint(value)) <= 0)
    if (status /= 0) call fail(otherwise//', not '''//text//'''', 2)
    number_in = int(value, int64)
  end function

  subroutine begin_or_go_on()
    character(200) :: message
    integer :: seed_of_file
    logical :: exists
    exists = .false.
    if (file /= '') inquire (file=file, exist=exists)
    if (.not. exists) then
      call iranset(seed)
      run%what = what
      call save()  ! that this cannot be done is better known now than in the end
      return
    end if
    call load(file, run, message)
    if (message /= '') call fail(''''//file//''': '//trim(message), 1)
    if (run%what /= what) call fail(''''//file//''' is a computation of '//trim(run%what), 1)
    call iranget(seed_of_file)
    if (seed_given .and. seed_of_file /= seed) call fail(''''//file//''' was begun with another seed', 1)
    print '(a, i0, 2a)', 'going on behind ', run%samples, ' samples of ', trim(what)
    flush (output_unit)
  end subroutine

  subroutine save()
    character(200) :: message
    if (file == '') return
    call save_to(file, run, message)
    if (message /= '') call fail(''''//file//''': '//trim(message), 1)
  end subroutine

  subroutine show_bar()
    integer, parameter :: width = 40
    integer :: filled
    real(real64) :: done
    done = real(run%samples, real64) / real(max(wanted, run%samples), real64)
    filled = int(width * done)
    write (error_unit, '(5a, i3, a, f12.6, a, f10.6)', advance='no') achar(13), '[', repeat('#', filled), &
      repeat('.', width - filled), ']', int(100 * done), ' %', mean_of(run), ' +-', error_of(run)
    flush (error_unit)
  end subroutine

  subroutine print_result()
    real(real64) :: rate
    if (what == 'pi') then
      print '(a, f12.9, a, f11.9, a, i0, a)', 'pi is ', mean_of(run), ' +- ', error_of(run), ' by ', run%samples, ' points'
      print '(a, f12.9)', 'it is ', acos(-1d0)
    else
      print '(a, f12.5, a, f9.5, a, i0, a)', 'the mean square of the distance is ', mean_of(run), ' +- ', error_of(run), &
        ' by ', run%samples, ' walks of 1000 steps'
      print '(a)', 'it is expected to be 1000'
    end if
    rate = real(run%samples - at_begin, real64) / max(now - begin, 1d-6)
    if (run%samples > at_begin) print '(i0, a)', nint(rate, int64), ' samples a second'
  end subroutine
end program
