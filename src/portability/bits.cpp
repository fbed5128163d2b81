// Single bits, shifts, complements and merges.
#include "frame/fortran.h"

using namespace qxport;

namespace {

// A word with that bit alone, and none for a number that no bit has.
template <typename Word>
Word bit_of(int32_t bitnum) {
  constexpr int32_t BITS = 8 * sizeof(Word);
  return bitnum >= 0 && bitnum < BITS ? static_cast<Word>(Word{1} << bitnum) : 0;
}

// LSHIFT and RSHIFT look at six bits of a count and their machines at five of them: a shift by 32 to 63 is
// one by 32 less, and callers rely on it.
bool is_shift(int32_t ishift) {
  return ishift >= 0 && ishift < 64;
}

int32_t shift_count(int32_t ishift) {
  return ishift % 32;
}

// A count beyond the word takes all bits out, and so does a negative one, which is a large number without its
// sign.
bool is_within_word(int32_t ishift) {
  return static_cast<uint32_t>(ishift) < 32;
}

// The upper word of the two put together and shifted left.
uint64_t shifted_left(uint64_t left, uint64_t right, uint64_t count) {
  if (count > 64)
    return 0;
  if (count == 64)
    return right;
  return count == 0 ? left : left << count | right >> (64 - count);
}

// The lower word of the two put together and shifted right: left by what is missing to 64.
uint64_t shifted_right(uint64_t left, uint64_t right, uint64_t count) {
  return count > 64 ? 0 : shifted_left(left, right, 64 - count);
}

}  // namespace

// CALL BIC(BITNUM, TARGET)
void bic_(const int32_t *bitnum, int32_t *target) {
  *target &= ~bit_of<int32_t>(*bitnum);
}

// CALL BICI8(BITNUM, TARGET)
void bici8_(const int32_t *bitnum, int64_t *target) {
  *target &= ~bit_of<int64_t>(*bitnum);
}

// CALL BIS(BITNUM, TARGET)
void bis_(const int32_t *bitnum, int32_t *target) {
  *target |= bit_of<int32_t>(*bitnum);
}

// CALL BISI8(BITNUM, TARGET)
void bisi8_(const int32_t *bitnum, int64_t *target) {
  *target |= bit_of<int64_t>(*bitnum);
}

// L = BIT(BITNUM, SOURCE)
int32_t bit_(const int32_t *bitnum, const int32_t *source) {
  return (*source & bit_of<int32_t>(*bitnum)) != 0;
}

// L = BITI8(BITNUM, SOURCE)
int64_t biti8_(const int32_t *bitnum, const int64_t *source) {
  return (*source & bit_of<int64_t>(*bitnum)) != 0;
}

// I = LSHIFT(IVAL, ISHIFT)
int32_t lshift_(const int32_t *ival, const int32_t *ishift) {
  return is_shift(*ishift) ? *ival << shift_count(*ishift) : 0;
}

// I = RSHIFT(IVAL, ISHIFT): the sign comes in.
int32_t rshift_(const int32_t *ival, const int32_t *ishift) {
  return is_shift(*ishift) ? *ival >> shift_count(*ishift) : 0;
}

// I = SHIFTL(IVAL, ISHIFT)
int32_t shiftl_(const int32_t *ival, const int32_t *ishift) {
  return is_within_word(*ishift) ? *ival << *ishift : 0;
}

// I = SHIFTR(IVAL, ISHIFT): zeros come in.
int32_t shiftr_(const int32_t *ival, const int32_t *ishift) {
  return is_within_word(*ishift) ? static_cast<int32_t>(static_cast<uint32_t>(*ival) >> *ishift) : 0;
}

// I = DSHIFTL(ILEFT, IRIGHT, ISHIFT)
int64_t dshiftl_(const int64_t *ileft, const int64_t *iright, const int64_t *ishift) {
  return static_cast<int64_t>(shifted_left(*ileft, *iright, *ishift));
}

// I = DSHIFTR(ILEFT, IRIGHT, ISHIFT)
int64_t dshiftr_(const int64_t *ileft, const int64_t *iright, const int64_t *ishift) {
  return static_cast<int64_t>(shifted_right(*ileft, *iright, *ishift));
}

// The same for calls that a compiler makes.
int64_t _dshiftl(int64_t ileft, int64_t iright, int64_t ishift) {
  return static_cast<int64_t>(shifted_left(ileft, iright, ishift));
}

int64_t _dshiftr(int64_t ileft, int64_t iright, int64_t ishift) {
  return static_cast<int64_t>(shifted_right(ileft, iright, ishift));
}

// I = COMPLINT(I)
int32_t complint_(const int32_t *i) {
  return ~*i;
}

// X = COMPLREAL(X): the bits alone count, so they move as an integer.
float complreal_(const float *x) {
  uint32_t bits;
  memcpy(&bits, x, sizeof(bits));
  bits = ~bits;
  float complement;
  memcpy(&complement, &bits, sizeof(bits));
  return complement;
}

// L = COMPLLOG(L)
int32_t compllog_(const int32_t *l) {
  return *l == 0;
}

// I = CSMG(X, Y, Z): Z says from which of the two each bit comes.
int32_t csmg_(const int32_t *x, const int32_t *y, const int32_t *z) {
  return (*x & *z) | (*y & ~*z);
}

QXPORT_ALIAS(bic_)
QXPORT_ALIAS(bici8_)
QXPORT_ALIAS(bis_)
QXPORT_ALIAS(bisi8_)
QXPORT_ALIAS(bit_)
QXPORT_ALIAS(biti8_)
QXPORT_ALIAS(lshift_)
QXPORT_ALIAS(rshift_)
QXPORT_ALIAS(complint_)
QXPORT_ALIAS(complreal_)
QXPORT_ALIAS(compllog_)
QXPORT_ALIAS(csmg_)
