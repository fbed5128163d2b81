// QSORT with a comparison whose result has 8 bytes.
#include "portability/qsort.h"

#include "i8/own.h"

namespace qxport::i8 {

namespace {

using Comparison = int64_t (*)(const void *, const void *);

// The host asks for a number of 4 bytes, in which the low half of a difference may say the contrary.
int compare_by(const void *a, const void *b, void *context) {
  const int64_t order = reinterpret_cast<Comparison>(context)(a, b);
  return (order > 0) - (order < 0);
}

}  // namespace

// CALL QSORT(ARRAY, LEN, ISIZE, COMPAR)
void own_qsort(void *array, const int64_t *len, const int64_t *isize, void (*compar)()) {
  void *const context = reinterpret_cast<void *>(compar);
  sort_by(array, *len, *isize, reinterpret_cast<Comparison>(context),
          [context](void *elements, size_t count, size_t size) {
            qsort_r(elements, count, size, compare_by, context);
          });
}

}  // namespace qxport::i8
