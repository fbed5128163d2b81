#include "failing_allocations.h"

#include <cstdlib>
#include <cstring>
#include <malloc.h>

namespace {

constexpr size_t MOST_SIZES = 1000;

bool active = false;
size_t failing_number = 0;
int failing_error = ENOMEM;
size_t count = 0;
size_t sizes[MOST_SIZES];

bool fails(size_t size) {
  if (!active)
    return false;
  if (count < MOST_SIZES)
    sizes[count] = size;
  if (++count != failing_number)
    return false;
  errno = failing_error;
  return true;
}

}  // namespace

extern "C" {

void *__real_malloc(size_t size);
void *__real_calloc(size_t number, size_t size);
void *__real_realloc(void *block, size_t size);
void *__real_reallocarray(void *block, size_t number, size_t size);

void *__wrap_malloc(size_t size) {
  return fails(size) ? nullptr : __real_malloc(size);
}
void *__wrap_calloc(size_t number, size_t size) {
  return fails(number * size) ? nullptr : __real_calloc(number, size);
}
void *__wrap_realloc(void *block, size_t size) {
  return fails(size) ? nullptr : __real_realloc(block, size);
}

void *__wrap_reallocarray(void *block, size_t number, size_t size) {
  return fails(number * size) ? nullptr : __real_reallocarray(block, number, size);
}

char *__wrap_strndup(const char *text, size_t limit) {
  const size_t length = strnlen(text, limit);
  if (fails(length + 1))
    return nullptr;
  char *copy = static_cast<char *>(__real_malloc(length + 1));
  memcpy(copy, text, length);
  copy[length] = '\0';
  return copy;
}

char *__wrap_strdup(const char *text) {
  return __wrap_strndup(text, strlen(text));
}

}  // extern "C"

FailingAllocation::FailingAllocation(size_t n, int error) {
  failing_number = n;
  failing_error = error;
  count = 0;
  active = true;
}

FailingAllocation::~FailingAllocation() {
  active = false;
}

bool FailingAllocation::failed() const {
  return failing_number != 0 && count >= failing_number;
}

size_t FailingAllocation::allocations() const {
  return count;
}

size_t FailingAllocation::requested(size_t n) const {
  return n >= 1 && n <= count && n <= MOST_SIZES ? sizes[n - 1] : 0;
}

size_t heap_in_use() {
  const struct mallinfo2 heap = mallinfo2();
  return heap.uordblks + heap.hblkhd;
}
