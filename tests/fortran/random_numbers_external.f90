! Random numbers as older programs call them: by name alone.
program random_numbers_external
  use, intrinsic :: iso_c_binding, only: c_float, c_int32_t
  use checks, only: check, finish
  implicit none
  interface
    ! What a compiler calls for RANDOM.
    real(c_float) function own_random(iflag) bind(C, name='$$msportlib$random_')
      import :: c_float, c_int32_t
      integer(c_int32_t), intent(in) :: iflag
    end function
    ! An argument that may be absent needs an interface.
    real(c_float) function next_rand(iflag) bind(C, name='rand_')
      import :: c_float, c_int32_t
      integer(c_int32_t), intent(in), optional :: iflag
    end function
    integer(c_int32_t) function next_irand(iflag) bind(C, name='irand_')
      import :: c_int32_t
      integer(c_int32_t), intent(in), optional :: iflag
    end function
  end interface
  real(8), external :: drand, drandm
  real(4), external :: ran, rand, ranf
  integer(4), external :: irand, irandm, random_restore, random_save
  external :: dranset, iranget, iranset, ranget, ranset, srand
  integer(8) :: state(6)
  integer(4) :: seed, i
  real(8) :: x
  real(4) :: y

  call srand(42)
  call ranget(seed)
  call check(seed, 42, 'srand')
  y = ranf()
  call srand(42)
  call check(ranf(), y, 'ranf')
  x = drand(42)
  call check(drandm(42), x, 'drandm')
  y = rand(42)
  call check(abs(y - x) < 1e-7, 'rand')
  call check(own_random(42), y, 'random')
  y = next_rand()
  call iranset(42)
  x = rand(0)
  call check(rand(0), y, 'rand without its argument goes on')
  i = irandm(42)
  call check(irand(42), i, 'irandm')
  call iranset(42)
  call check(next_irand(), mod(i, 32768), 'irand without its argument')
  call iranset(-7)
  call iranget(seed)
  call check(seed, -7, 'iranset')
  call ranset(-3.9)
  call iranget(seed)
  call check(seed, -3, 'ranset')
  call dranset(3.9d0)
  call iranget(seed)
  call check(seed, 3, 'dranset')
  call check(random_save(state, 6), 0, 'random_save')
  x = drand(0)
  call check(random_restore(state, 6), 0, 'random_restore')
  call check(drand(0), x, 'the sequence goes on')
  state(3:) = 0
  call check(random_restore(state, 6), 22, 'random_restore of zeros')
  call check(ran(1), 48271 * 2.0**(-31), 'ran of the constant 1')
  seed = -5
  y = ran(seed)
  call check(seed, int(mod(48271_8 * 2147483642_8, 2147483647_8)), 'ran')
  call finish()
end program
