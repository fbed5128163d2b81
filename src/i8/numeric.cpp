// Bits, differences and conversions of INTEGER(8) and REAL(8), by the rules of the routines of 4 bytes.
#include "frame/errors.h"
#include "i8/own.h"

#include <bit>

namespace qxport::i8 {

namespace {

bool is_shift(int64_t ishift) {
  return ishift >= 0 && ishift < 64;
}

int64_t wrapped_difference(int64_t i, int64_t j) {
  return static_cast<int64_t>(static_cast<uint64_t>(i) - static_cast<uint64_t>(j));
}

// Whether it is a number of 32 bits, with a sign or without.
bool has_32_bits(int64_t value) {
  return value >= INT32_MIN && value <= UINT32_MAX;
}

}  // namespace

// I = LSHIFT(IVAL, ISHIFT)
int64_t own_lshift(const int64_t *ival, const int64_t *ishift) {
  return is_shift(*ishift) ? *ival << *ishift : 0;
}

// I = RSHIFT(IVAL, ISHIFT): the sign comes in.
int64_t own_rshift(const int64_t *ival, const int64_t *ishift) {
  return is_shift(*ishift) ? *ival >> *ishift : 0;
}

// J = COMPLINT(I)
int64_t own_complint(const int64_t *i) {
  return ~*i;
}

// I = CSMG(X, Y, Z)
int64_t own_csmg(const int64_t *x, const int64_t *y, const int64_t *z) {
  return (*x & *z) | (*y & ~*z);
}

// K = JDIM(I, J): the sign of the wrapped difference decides, not which is less.
int64_t own_jdim(const int64_t *i, const int64_t *j) {
  const int64_t difference = wrapped_difference(*i, *j);
  return difference < 0 ? 0 : difference;
}

// J = JABS(I)
int64_t own_jabs(const int64_t *i) {
  return *i < 0 ? wrapped_difference(0, *i) : *i;
}

// I = INMAX()
int64_t own_inmax() {
  return INT64_MAX;
}

// X = IFLOATJ(I)
float own_ifloatj(const int64_t *i) {
  return static_cast<float>(*i);
}

// X = DFLOATJ(I)
double own_dfloatj(const int64_t *i) {
  return static_cast<double>(*i);
}

// X = IDFLOAT(I)
double own_idfloat(const int64_t *i) {
  return static_cast<double>(*i);
}

// J = SHORT(I)
int16_t own_short(const int64_t *i) {
  return static_cast<int16_t>(*i);
}

// J = INTC(I)
int16_t own_intc(const int64_t *i) {
  return static_cast<int16_t>(*i);
}

// Y = COMPLREAL(X)
double own_complreal(const double *x) {
  return std::bit_cast<double>(~std::bit_cast<uint64_t>(*x));
}

// Y = CDFLOAT(X)
double own_cdfloat(const double *x) {
  return *x;
}

// CALL PXFUCOMPARE(I1, I2, ICMPR, IDIFF)
// A number of 32 bits without a sign needs no negative one to stand for it here.
void own_pxfucompare(const int64_t *i1, const int64_t *i2, int64_t *icmpr, int64_t *idiff) {
  if (!has_32_bits(*i1) || !has_32_bits(*i2)) {
    set_and_record_local(EOVERFLOW);
    return;
  }
  const auto first = static_cast<int32_t>(*i1), second = static_cast<int32_t>(*i2);
  int32_t order, distance;
  pxfucompare_(&first, &second, &order, &distance);
  *icmpr = order;
  *idiff = distance;
}

}  // namespace qxport::i8
