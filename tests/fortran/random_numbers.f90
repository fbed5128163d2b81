! Random numbers through the module.
program random_numbers
  use, intrinsic :: iso_fortran_env, only: int32
  use checks, only: check, finish
  use qxport, only: drand, drandm, dranset, errsns, irand, irandm, iranget, iranset, ran, rand, random, random_restore, &
    random_save, ranf, ranget, ranset, srand, RANDOM_STATE_SIZE
  implicit none
  integer(4), parameter :: einval = 22

  call test_draws()
  call test_ranges()
  call test_seeds()
  call test_state()
  call test_ran()
  call finish()

contains

  subroutine test_draws()
    real(8) :: x
    real(4) :: y
    integer(4) :: i
    x = drand(1)
    call check(drand(1), x, 'drand: 1 twice')
    call check(abs(drand(0) - x) > 0, 'drand: the next')
    call check(drandm(1), x, 'drandm is drand')
    y = rand(1)
    call check(abs(y - x) < 1e-7, 'rand: the same upper bits')
    call check(random(1), y, 'random is rand')
    i = irand(1)
    call check(abs(i / 2147483648d0 - x) < 1d-9, 'irand: the same upper bits')
    call check(irandm(1), i, 'irandm is irand')
    y = rand()
    call check(irandm(1), i, 'starting over')
    call check(rand(), y, 'rand without its argument goes on')
    call srand(3)
    y = ranf()
    call check(abs(y - anint(y)) <= 0 .and. y >= 0, 'ranf is not scaled')
    call srand(3)
    call check(ranf(), y, 'srand seeds ranf')
  end subroutine

  subroutine test_ranges()
    integer(4) :: i, j, largest
    real(4) :: y
    real(8) :: x
    logical :: good
    good = .true.
    largest = 0
    do i = 1, 1000
      j = irand()
      y = rand()
      x = drand(0)
      good = good .and. j >= 0 .and. j <= 32767 .and. y >= 0 .and. y < 1 .and. x >= 0 .and. x < 1
      largest = max(largest, irand(0))
    end do
    call check(good, 'the ranges')
    call check(largest > 32767, 'irand with 0 has 31 bits')
  end subroutine

  subroutine check_seed(expected, what)
    integer(4), intent(in) :: expected
    character(*), intent(in) :: what
    integer(4) :: seed
    call ranget(seed)
    call check(seed, expected, what)
    seed = 0
    call iranget(seed)
    call check(seed, expected, what)
  end subroutine

  subroutine test_seeds()
    real(8) :: x
    call iranset(-5)
    call check_seed(-5, 'iranset')
    x = drand(0)
    call check(drand(-5), x, 'a flag is a seed')
    call ranset(3.9)
    call check_seed(3, 'ranset of 3.9')
    call ranset(-3.9)
    call check_seed(-3, 'ranset of -3.9')
    call dranset(1d10)
    call check_seed(-huge(0_int32) - 1, 'dranset out of range')
    call srand(17)
    call check_seed(17, 'srand')
    x = drand(1)
    call check_seed(1, 'seed of a flag of 1')
  end subroutine

  subroutine test_state()
    integer(8) :: state(RANDOM_STATE_SIZE), other(RANDOM_STATE_SIZE)
    integer(4) :: io, number, status, unit, condition, answer
    real(8) :: x(10)
    integer :: i
    call srand(99)
    x(1) = drand(0)
    call check(random_save(state, size(state)), 0, 'random_save')
    do i = 1, 10
      x(i) = drand(0)
    end do
    call srand(1)
    call check(random_restore(state, size(state)), 0, 'random_restore')
    do i = 1, 10
      call check(drand(0), x(i), 'the sequence goes on')
    end do
    call check_seed(99, 'with its seed')
    other = state
    call check(random_save(other, size(state) - 1), einval, 'random_save of a wrong length')
    call check(all(other == state), 'and nothing is stored')
    call check(random_restore(state, 0), einval, 'random_restore of a wrong length')
    other = 0
    answer = random_restore(other, size(other))
    call check(answer, einval, 'random_restore of zeros')
    call errsns(io, number, status, unit, condition)
    call check(number, einval, 'and it is recorded')
  end subroutine

  subroutine test_ran()
    integer(4) :: iseed
    iseed = 12345
    call check(ran(iseed), real(595905495) * 2.0**(-31), 'ran is the seed scaled')
    call check(iseed, 595905495, 'ran of 12345')
    iseed = 1
    call check(ran(iseed), 48271 * 2.0**(-31), 'ran of 1')
    call check(iseed, 1, 'ran leaves 1')
    iseed = 0
    call check(ran(iseed), 1.0, 'ran of 0')
    call check(iseed, 0, 'ran leaves 0')
  end subroutine

end program
