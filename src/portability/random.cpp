// Random numbers: entries of the generator that the run-time shares, RAN with the caller's seed as its state,
// and RANF of the host's generator.
#include "frame/errors.h"
#include "frame/fortran.h"

#include <climits>
#include <cstdlib>

using namespace qxport;

namespace {

// What an IFLAG does before a value is drawn: 1 starts the sequence over, 0 goes on with it, and any other
// number is a seed.
void start_as_told(int32_t iflag) {
  if (iflag == 0) [[likely]]
    return;
  if (iflag == 1)
    __FFresetseed();
  else
    __FFsetseed(iflag);
}

// A seed given as a real: without its fraction, and the least integer for what none can hold.
int32_t seed_of(double real) {
  return real > INT_MIN - 1.0 && real < INT_MAX + 1.0 ? static_cast<int32_t>(real) : INT_MIN;
}

double next_real8(const int32_t *iflag) {
  start_as_told(*iflag);
  return __FFdrand();
}

float next_real4(const int32_t *iflag) {
  start_as_told(*iflag);
  return __FFfrand();
}

int32_t next_integer(const int32_t *iflag) {
  start_as_told(*iflag);
  return __FFirand();
}

}  // namespace

// X = DRAND(IFLAG)
double drand_(const int32_t *iflag) {
  return next_real8(iflag);
}

// X = DRANDM(IFLAG)
double drandm_(const int32_t *iflag) {
  return next_real8(iflag);
}

// X = RAND([IFLAG])
float rand_(const int32_t *iflag) {
  return iflag == nullptr ? __FFfrand() : next_real4(iflag);
}

// X = RANDOM(IFLAG)
float $$msportlib$random_(const int32_t *iflag) {
  return next_real4(iflag);
}

// I = IRAND([IFLAG]): callers count on 15 bits without the argument, and on 31 with it.
int32_t irand_(const int32_t *iflag) {
  constexpr int32_t FIFTEEN_BITS = 32768;
  return iflag == nullptr ? __FFirand() % FIFTEEN_BITS : next_integer(iflag);
}

// I = IRANDM(IFLAG)
int32_t irandm_(const int32_t *iflag) {
  return next_integer(iflag);
}

// CALL SRAND(ISEED), which seeds RANF as well.
void srand_(const int32_t *iseed) {
  __FFsetseed(*iseed);
  srand(static_cast<unsigned>(*iseed));
}

// CALL IRANSET(SEED)
void iranset_(const int32_t *seed) {
  __FFsetseed(*seed);
}

// CALL RANSET(SEED)
void ranset_(const float *seed) {
  __FFsetseed(seed_of(*seed));
}

// CALL DRANSET(SEED)
void dranset_(const double *seed) {
  __FFsetseed(seed_of(*seed));
}

// CALL RANGET(SEED)
void ranget_(int32_t *seed) {
  __FFgetseed(seed);
}

// CALL IRANGET(SEED)
void iranget_(int32_t *seed) {
  __FFgetseed(seed);
}

// X = RANF(): callers scale it themselves.
float ranf_() {
  return static_cast<float>(rand());  // NOLINT(cert-msc30-c,cert-msc50-cpp)
}

// X = RAN(ISEED): 48271 * ISEED mod 2**31 - 1 by Schrage's method, which stays within 32 bits.
float ran_(int32_t *iseed) {
  constexpr int32_t MULTIPLIER = 48271, MODULUS = 2147483647;
  constexpr int32_t QUOTIENT = MODULUS / MULTIPLIER, REMAINDER = MODULUS % MULTIPLIER;
  const int32_t seed = *iseed;
  const int32_t x = seed < 0 ? seed + MODULUS : seed;
  const int32_t high = x / QUOTIENT, low = x % QUOTIENT;
  const int32_t drawn = MULTIPLIER * low - REMAINDER * high;
  const int32_t following = drawn > 0 ? drawn : drawn + MODULUS;
  // Programs pass the constants 0 and 1, which are not to be written to.
  if (seed != 0 && seed != 1)
    *iseed = following;
  return static_cast<float>(following) * 0x1p-31F;
}

// N = RANDOM_SAVE(STATE, COUNT)
int32_t random_save_(int64_t *state, const int32_t *count) {
  const int32_t answer = __FFsavestate(state, *count);
  if (answer != 0)
    set_and_record_status(answer);
  return answer;
}

// N = RANDOM_RESTORE(STATE, COUNT)
int32_t random_restore_(const int64_t *state, const int32_t *count) {
  const int32_t answer = __FFrestorestate(state, *count);
  if (answer != 0)
    set_and_record_status(answer);
  return answer;
}

extern "C" decltype(qxport_random_) qxport_random_ __attribute__((alias("$$msportlib$random_")));
QXPORT_ALIAS(drand_)
QXPORT_ALIAS(drandm_)
QXPORT_ALIAS(rand_)
QXPORT_ALIAS(irand_)
QXPORT_ALIAS(irandm_)
QXPORT_ALIAS(srand_)
QXPORT_ALIAS(iranset_)
QXPORT_ALIAS(ranset_)
QXPORT_ALIAS(dranset_)
QXPORT_ALIAS(ranget_)
QXPORT_ALIAS(iranget_)
QXPORT_ALIAS(ranf_)
QXPORT_ALIAS(ran_)
QXPORT_ALIAS(random_save_)
QXPORT_ALIAS(random_restore_)
