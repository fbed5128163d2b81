// Positive differences, absolute values and remainders, and conversions between kinds.
#include "frame/fortran.h"

#include <climits>

using namespace qxport;

namespace {

// A NaN is neither greater nor less, so the difference is one too.
template <typename Real>
Real positive_difference(Real x, Real y) {
  return y > x ? 0 : x - y;
}

// The difference and the absolute value wrap around, as the machine's do.
int32_t wrapped_difference(int32_t i, int32_t j) {
  return static_cast<int32_t>(static_cast<uint32_t>(i) - static_cast<uint32_t>(j));
}

}  // namespace

// Z = DIM(X, Y)
float dim_(const float *x, const float *y) {
  return positive_difference(*x, *y);
}

// Z = DDIM(X, Y)
double ddim_(const double *x, const double *y) {
  return positive_difference(*x, *y);
}

// K = IIDIM(I, J)
int16_t iidim_(const int16_t *i, const int16_t *j) {
  return *i < *j ? int16_t{0} : static_cast<int16_t>(*i - *j);
}

// K = JDIM(I, J): the sign of the wrapped difference decides, not which is less.
int32_t jdim_(const int32_t *i, const int32_t *j) {
  const int32_t difference = wrapped_difference(*i, *j);
  return difference < 0 ? 0 : difference;
}

// J = JABS(I)
int32_t jabs_(const int32_t *i) {
  return *i < 0 ? wrapped_difference(0, *i) : *i;
}

// K = JMOD(I, J): a J of 0 is the processor's to refuse.
__attribute__((no_sanitize("integer-divide-by-zero"))) int16_t jmod_(const int16_t *i, const int16_t *j) {
  return static_cast<int16_t>(*i % *j);
}

// I = INMAX()
int32_t inmax_() {
  return INT_MAX;
}

// X = IFLOATI(I)
float ifloati_(const int16_t *i) {
  return *i;
}

// X = IFLOATJ(I)
float ifloatj_(const int32_t *i) {
  return static_cast<float>(*i);
}

// X = DFLOATI(I)
double dfloati_(const int16_t *i) {
  return *i;
}

// X = DFLOATJ(I)
double dfloatj_(const int32_t *i) {
  return *i;
}

// X = IDFLOAT(I)
double idfloat_(const int32_t *i) {
  return *i;
}

// X = DFLOATK(I)
double dfloatk_(const int64_t *i) {
  return static_cast<double>(*i);
}

// Y = CDFLOAT(X)
double cdfloat_(const float *x) {
  return *x;
}

// J = LONG(I)
int32_t long_(const int16_t *i) {
  return *i;
}

// J = SHORT(I)
int16_t short_(const int32_t *i) {
  return static_cast<int16_t>(*i);
}

// J = INTC(I)
int16_t intc_(const int32_t *i) {
  return static_cast<int16_t>(*i);
}

QXPORT_ALIAS(ddim_)
QXPORT_ALIAS(iidim_)
QXPORT_ALIAS(jdim_)
QXPORT_ALIAS(jabs_)
QXPORT_ALIAS(jmod_)
QXPORT_ALIAS(inmax_)
QXPORT_ALIAS(ifloati_)
QXPORT_ALIAS(ifloatj_)
QXPORT_ALIAS(dfloati_)
QXPORT_ALIAS(dfloatj_)
QXPORT_ALIAS(idfloat_)
QXPORT_ALIAS(dfloatk_)
QXPORT_ALIAS(cdfloat_)
QXPORT_ALIAS(long_)
QXPORT_ALIAS(short_)
QXPORT_ALIAS(intc_)
