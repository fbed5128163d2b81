// QSORT: the host's sort with a Fortran function as comparison.
#include "portability/qsort.h"

#include "frame/fortran.h"

using namespace qxport;

namespace {

using Comparison = int (*)(const void *, const void *);

void sort(void *array, int64_t len, int64_t isize, void (*compar)()) {
  const auto compare = reinterpret_cast<Comparison>(reinterpret_cast<void *>(compar));
  sort_by(array, len, isize, compare,
          [compare](void *elements, size_t count, size_t size) { qsort(elements, count, size, compare); });
}

}  // namespace

// CALL QSORT(ARRAY, LEN, ISIZE, COMPAR)
void qsort_(void *array, const int64_t *len, const int64_t *isize, void (*compar)()) {
  sort(array, *len, *isize, compar);
}

// The same with LEN and ISIZE of other kinds.
void qsort_ii_(void *array, const int32_t *len, const int32_t *isize, void (*compar)()) {
  sort(array, *len, *isize, compar);
}

void qsort_il_(void *array, const int32_t *len, const int64_t *isize, void (*compar)()) {
  sort(array, *len, *isize, compar);
}

QXPORT_ALIAS(qsort_)
QXPORT_ALIAS(qsort_ii_)
QXPORT_ALIAS(qsort_il_)
