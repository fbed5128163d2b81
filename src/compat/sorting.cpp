// SORTQQ and BSEARCHQQ: arrays that the caller names by their addresses.
#include "sorting/sorting.h"
#include "frame/errors.h"
#include "frame/fortran.h"

#include <cstdlib>

using namespace qxport;
using sorting::Element;

namespace {

struct NumericType {
  int32_t code;
  Element element;
};

constexpr NumericType NUMERIC_TYPES[] = {
    {QXPORT_SORT_REAL4, Element::Real4},       {QXPORT_SORT_REAL8, Element::Real8},
    {QXPORT_SORT_INTEGER1, Element::Integer1}, {QXPORT_SORT_INTEGER2, Element::Integer2},
    {QXPORT_SORT_INTEGER4, Element::Integer4}, {QXPORT_SORT_INTEGER8, Element::Integer8},
    {QXPORT_SORT_REAL16, Element::Real16},
};

constexpr int32_t LONGEST_STRING = 32766;

// The elements of a caller's array by its type code. The code of CHARACTER elements is their length.
class ElementType {
public:
  explicit ElementType(int32_t code) {
    for (const NumericType &type : NUMERIC_TYPES)
      if (type.code == code) {
        number_ = &type;
        width_ = sorting::width_of(type.element);
        return;
      }
    if (code >= 1 && code <= LONGEST_STRING)
      width_ = static_cast<size_t>(code);
  }

  bool valid() const { return width_ > 0; }
  bool is_number() const { return number_ != nullptr; }
  Element element() const { return number_->element; }
  size_t width() const { return width_; }

  // No array lies at the null address, or goes on past the last one.
  bool has_array(intptr_t address, int64_t count) const {
    const uintptr_t begin = static_cast<uintptr_t>(address);
    return begin != 0 && count >= 1 && static_cast<uint64_t>(count) <= (UINTPTR_MAX - begin) / width_;
  }

private:
  const NumericType *number_ = nullptr;
  size_t width_ = 0;
};

// 0, or an error number.
int32_t sort(intptr_t address, int64_t count, int32_t code) {
  const ElementType type(code);
  if (!type.valid() || !type.has_array(address, count))
    return EINVAL;
  void *array = reinterpret_cast<void *>(address);
  const size_t elements = static_cast<size_t>(count);
  if (type.is_number()) {
    sorting::sort_numbers(sorting::best_tier(), type.element(), array, elements);
    return 0;
  }
  void *scratch = malloc(type.width());
  if (scratch == nullptr)
    return ENOMEM;
  sorting::sort_strings(sorting::best_tier(), array, elements, type.width(), scratch);
  free(scratch);
  return 0;
}

// A count of 0 is the caller's way of seeing an error.
template <typename Count>
void sort_and_report(const intptr_t *adrarray, Count *count, const int32_t *size) {
  const int32_t error = sort(*adrarray, *count, *size);
  if (error == 0)
    return;
  *count = 0;
  set_and_record_status(error);
}

int32_t search(intptr_t key, intptr_t address, int64_t count, int32_t code) {
  const ElementType type(code);
  if (!type.valid() || !type.has_array(address, count) || !type.has_array(key, 1)) {
    set_and_record_status(EINVAL);
    return 0;
  }
  const void *wanted = reinterpret_cast<const void *>(key);
  const void *array = reinterpret_cast<const void *>(address);
  const size_t elements = static_cast<size_t>(count);
  // The index of an element behind the first 2**31 - 1 keeps its low 32 bits.
  return static_cast<int32_t>(type.is_number()
                                  ? sorting::search_numbers(type.element(), wanted, array, elements)
                                  : sorting::search_strings(wanted, array, elements, type.width()));
}

}  // namespace

// CALL SORTQQ(ADRARRAY, COUNT, SIZE)
void sortqq_(const intptr_t *adrarray, intptr_t *count, const int32_t *size) {
  sort_and_report(adrarray, count, size);
}

// N = BSEARCHQQ(ADRKEY, ADRARRAY, COUNT, SIZE)
int32_t bsearchqq_(const intptr_t *adrkey, const intptr_t *adrarray, const intptr_t *count,
                   const int32_t *size) {
  return search(*adrkey, *adrarray, *count, *size);
}

QXPORT_ALIAS(sortqq_)
QXPORT_ALIAS(bsearchqq_)

// What the module adds: a count of the kind that is not the size of an address.
#if UINTPTR_MAX > UINT32_MAX

// CALL SORTQQ(ADRARRAY, COUNT, SIZE)
void sortqqi4_(const intptr_t *adrarray, int32_t *count, const int32_t *size) {
  sort_and_report(adrarray, count, size);
}

// N = BSEARCHQQ(ADRKEY, ADRARRAY, COUNT, SIZE)
int32_t bsearchqqi4_(const intptr_t *adrkey, const intptr_t *adrarray, const int32_t *count,
                     const int32_t *size) {
  return search(*adrkey, *adrarray, *count, *size);
}

QXPORT_ALIAS(sortqqi4_)
QXPORT_ALIAS(bsearchqqi4_)

#else

// CALL SORTQQ(ADRARRAY, COUNT, SIZE)
void sortqqi8_(const intptr_t *adrarray, int64_t *count, const int32_t *size) {
  sort_and_report(adrarray, count, size);
}

// N = BSEARCHQQ(ADRKEY, ADRARRAY, COUNT, SIZE)
int32_t bsearchqqi8_(const intptr_t *adrkey, const intptr_t *adrarray, const int64_t *count,
                     const int32_t *size) {
  return search(*adrkey, *adrarray, *count, *size);
}

QXPORT_ALIAS(sortqqi8_)
QXPORT_ALIAS(bsearchqqi8_)

#endif
