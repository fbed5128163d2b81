// What no routine of 4-byte integers can do for integers of 8 bytes.
#ifndef QXPORT_I8_OWN_H
#define QXPORT_I8_OWN_H

#include <cstdint>

namespace qxport::i8 {

int64_t own_lshift(const int64_t *ival, const int64_t *ishift);
int64_t own_rshift(const int64_t *ival, const int64_t *ishift);
int64_t own_complint(const int64_t *i);
int64_t own_csmg(const int64_t *x, const int64_t *y, const int64_t *z);
int64_t own_jdim(const int64_t *i, const int64_t *j);
int64_t own_jabs(const int64_t *i);
int64_t own_inmax();
float own_ifloatj(const int64_t *i);
double own_dfloatj(const int64_t *i);
double own_idfloat(const int64_t *i);
int16_t own_short(const int64_t *i);
int16_t own_intc(const int64_t *i);
double own_complreal(const double *x);
double own_cdfloat(const double *x);
void own_pxfucompare(const int64_t *i1, const int64_t *i2, int64_t *icmpr, int64_t *idiff);
void own_qsort(void *array, const int64_t *len, const int64_t *isize, void (*compar)());

}  // namespace qxport::i8

#endif
