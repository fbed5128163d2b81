// Bessel functions: those of the host's math library, in both precisions.
#include "frame/fortran.h"

#include <cmath>

using namespace qxport;

namespace {

// Of the second kind an infinity of either sign has the value 0, and the host is not asked. All else is for
// the host to answer: 0, negative values and NaN.
template <typename Function>
double unless_infinite(double x, Function function) {
  return std::isinf(x) ? 0 : function(x);
}

double second_kind_0(double x) {
  return unless_infinite(x, y0);
}

double second_kind_1(double x) {
  return unless_infinite(x, y1);
}

double second_kind_n(int32_t n, double x) {
  return unless_infinite(x, [n](double finite) { return yn(n, finite); });
}

}  // namespace

// Y = BESJ0(X)
float besj0_(const float *x) {
  return static_cast<float>(j0(*x));
}

// Y = BESJ1(X)
float besj1_(const float *x) {
  return static_cast<float>(j1(*x));
}

// Y = BESJN(N, X)
float besjn_(const int32_t *n, const float *x) {
  return static_cast<float>(jn(*n, *x));
}

// Y = BESY0(X)
float besy0_(const float *x) {
  return static_cast<float>(second_kind_0(*x));
}

// Y = BESY1(X)
float besy1_(const float *x) {
  return static_cast<float>(second_kind_1(*x));
}

// Y = BESYN(N, X)
float besyn_(const int32_t *n, const float *x) {
  return static_cast<float>(second_kind_n(*n, *x));
}

// Y = DBESJ0(X)
double dbesj0_(const double *x) {
  return j0(*x);
}

// Y = DBESJ1(X)
double dbesj1_(const double *x) {
  return j1(*x);
}

// Y = DBESJN(N, X)
double dbesjn_(const int32_t *n, const double *x) {
  return jn(*n, *x);
}

// Y = DBESY0(X)
double dbesy0_(const double *x) {
  return second_kind_0(*x);
}

// Y = DBESY1(X)
double dbesy1_(const double *x) {
  return second_kind_1(*x);
}

// Y = DBESYN(N, X)
double dbesyn_(const int32_t *n, const double *x) {
  return second_kind_n(*n, *x);
}

QXPORT_ALIAS(besj0_)
QXPORT_ALIAS(besj1_)
QXPORT_ALIAS(besjn_)
QXPORT_ALIAS(besy0_)
QXPORT_ALIAS(besy1_)
QXPORT_ALIAS(besyn_)
QXPORT_ALIAS(dbesj0_)
QXPORT_ALIAS(dbesj1_)
QXPORT_ALIAS(dbesjn_)
QXPORT_ALIAS(dbesy0_)
QXPORT_ALIAS(dbesy1_)
QXPORT_ALIAS(dbesyn_)
